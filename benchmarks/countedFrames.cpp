// Draws a number of frames of a benchmark's scene and nothing else, for counting instructions:
//
//   valgrind --tool=callgrind --instr-atstart=no countedFrames tree 1
//
// The first frames, in which textures go up and the driver compiles, are left out of the count. The
// keys of bench::effects stand for the effects' scene. instructions.py makes a table of it.

#include "benchScene.h"
#include "jobs.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVNODE.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#endif

namespace {

constexpr int firstFrames = 2;

void drawFrame(const bench::Scene &scene) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(scene.camera);
    scene.root->pass(true);
    RAVOLT::end3D(true);
    RAVOLT::swap();
}

// Makes the scene of that name, with the engine as it needs it; without a root for an unknown name.
bench::Scene make(const char *name) {
    for (const bench::Effects &effects : bench::effects) {
        if (std::strcmp(name, effects.key) != 0)
            continue;
        bench::startEngine(true);
        bench::Scene scene = bench::makeEffectScene();
        bench::use(effects);
        return scene;
    }
    const bool tree = !std::strcmp(name, "tree");
    if (!tree && std::strcmp(name, "lit") != 0)
        return {};
    bench::startEngine(false);
    return tree ? bench::makeTreeScene() : bench::makeLitScene();
}

// Counts the frames of the job of that key, by the engine or by hand. False for an unknown one.
bool countJob(const std::string &key, int frames) {
    for (const bench::JobKind &kind : bench::jobKinds()) {
        const bool hand = key == std::string(kind.key) + "ByHand";
        if (!hand && key != kind.key)
            continue;
        const auto job = kind.make();
        for (int frame = 0; frame < bench::jobWarmUp; ++frame)
            job->drawByEngine();
        if (hand)
            bench::prepareHand(*job);
        CALLGRIND_START_INSTRUMENTATION;
        for (; frames > 0; --frames)
            hand ? job->drawByHand() : job->drawByEngine();
        CALLGRIND_STOP_INSTRUMENTATION;
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 3 && countJob(argv[1], std::atoi(argv[2])))
        return 0;
    bench::Scene scene = argc == 3 ? make(argv[1]) : bench::Scene();
    if (!scene.root) {
        std::fprintf(stderr, "usage: countedFrames SCENE FRAMES\n  SCENE: tree lit");
        for (const bench::Effects &effects : bench::effects)
            std::fprintf(stderr, " %s", effects.key);
        for (const bench::JobKind &kind : bench::jobKinds())
            std::fprintf(stderr, " %s %sByHand", kind.key, kind.key);
        std::fprintf(stderr, "\n");
        return 2;
    }
    for (int frame = 0; frame < firstFrames; ++frame)
        drawFrame(scene);
    CALLGRIND_START_INSTRUMENTATION;
    for (int frame = std::atoi(argv[2]); frame > 0; --frame)
        drawFrame(scene);
    CALLGRIND_STOP_INSTRUMENTATION;
    bench::destroy(scene);
    bench::stopEngine();
    return 0;
}
