// The frame's effects: a frame of the engine's with each of them beside the same passes by
// hand-written OpenGL.

#include "benchScene.h"
#include "handEffects.h"

#include "ravolt/RAVOLT.h"

#include <benchmark/benchmark.h>

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
    const bench::Silence silence;
    const Started started(effects);
    for (auto _ : state)
        bench::drawByEngine(started.scene);
}

void byHand(benchmark::State &state, const bench::Effects &effects) {
    const bench::Silence silence;
    const Started started(effects);
    const bench::Pixels wanted = bench::readWindow();
    bench::HandEffects hand(started.scene, effects);
    // What the engine's frame leaves on must not stand.
    RAVOLT::begin3D(started.scene.camera);
    hand.draw();
    state.counters["pictures_differ"] = bench::difference(wanted, bench::readWindow());
    for (auto _ : state)
        hand.draw();
}

[[maybe_unused]] const bool registered = [] {
    for (const bench::Effects &effects : bench::effects) {
        const std::string job = std::string("1,000 lit nodes: ") + effects.name;
        const auto engine = [&effects](benchmark::State &state) { byEngine(state, effects); };
        const auto hand = [&effects](benchmark::State &state) { byHand(state, effects); };
        benchmark::RegisterBenchmark((job + "/ravolt").c_str(), engine)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((job + "/baseline").c_str(), hand)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace
