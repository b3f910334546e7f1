// Draws a number of frames of a benchmark's scene and nothing else, for counting instructions:
//
//   valgrind --tool=callgrind --dump-instr=no countedFrames tree 10
//
// The difference between two runs with different numbers is what the frames cost.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVNODE.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv) {
    const bool tree = argc == 3 && !std::strcmp(argv[1], "tree");
    const bool lit = argc == 3 && !std::strcmp(argv[1], "lit");
    if (!tree && !lit) {
        std::fprintf(stderr, "usage: countedFrames tree|lit FRAMES\n");
        return 2;
    }
    if (!bench::startEngine())
        return 1;
    bench::Scene scene = tree ? bench::makeTreeScene() : bench::makeLitScene();
    for (int frame = std::atoi(argv[2]); frame > 0; --frame) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(scene.camera);
        scene.root->pass(true);
        RAVOLT::end3D(true);
        RAVOLT::swap();
    }
    bench::destroy(scene);
    bench::stopEngine();
    return 0;
}
