// The frame's effects: a frame of the engine's with each of them beside the same passes by
// hand-written OpenGL, which shares buffers and lights once, or takes the meshes one by one as the
// engine does.

#include "benchScene.h"
#include "handEffects.h"

#include "ravolt/RAVOLT.h"
#include "tools/process/scopedSilentLog.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace {

// The first frames pick lights, fill the driver's caches and let the tone mapping settle.
constexpr int warmUp = 3;

struct Started {
    bench::Scene scene;

    explicit Started(const bench::Effects &effects) {
        bench::startEngine(true);
        scene = bench::makeEffectScene();
        bench::use(effects);
        for (int frame = 0; frame < warmUp; ++frame)
            bench::drawByEngine(scene);
    }
    ~Started() {
        bench::use(bench::effects[0]);
        bench::destroy(scene);
    }
};

void byEngine(benchmark::State &state, const bench::Effects &effects) {
    const ravolt::tool::ScopedSilentLog silence;
    const Started started(effects);
    for (auto _ : state)
        bench::drawByEngine(started.scene);
}

void byHand(benchmark::State &state, const bench::Effects &effects, bench::Buffers buffers) {
    const ravolt::tool::ScopedSilentLog silence;
    const Started started(effects);
    const bench::Pixels wanted = bench::readWindow();
    bench::HandEffects hand(started.scene, effects, buffers);
    // Resets the state that the engine's frame has left.
    RAVOLT::begin3D(started.scene.camera);
    hand.draw();
    state.counters["pictures_differ"] = bench::difference(wanted, bench::readWindow());
    for (auto _ : state)
        hand.draw();
}

using Job = std::function<void(benchmark::State &)>;

void add(const std::string &name, const Job &job) {
    benchmark::RegisterBenchmark(name.c_str(), job)->Unit(benchmark::kMillisecond);
}

[[maybe_unused]] const bool registered = [] {
    using bench::Effects, bench::Buffers;
    for (const Effects &effects : bench::effects) {
        const Job engine = [&effects](benchmark::State &state) { byEngine(state, effects); };
        const auto hand = [&effects](Buffers buffers) {
            return
                [&effects, buffers](benchmark::State &state) { byHand(state, effects, buffers); };
        };
        const std::string job = std::string("1,000 lit nodes: ") + effects.name;
        add(job + "/ravolt", engine);
        add(job + "/baseline", hand(Buffers::shared));
        add(job + "/one by one", hand(Buffers::own));
    }
    return true;
}();

} // namespace
