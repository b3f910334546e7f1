// Drawing: the engine's pass, sort and draw beside the same picture from plain OpenGL with the
// fewest calls. Both end with glFinish, without the swap of the window.

#include "benchScene.h"
#include "handMeshes.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"

#include <benchmark/benchmark.h>

namespace {

// All eight lights stay set; an object is lit by switching its four nearest on.
void startLights() {
    glEnable(GL_LIGHTING);
    glLoadIdentity();
    for (int i = 0; i < bench::numberOfLights; ++i)
        bench::setLight(i);
    for (int i = 0; i < 8; ++i)
        glDisable(GL_LIGHT0 + i);
}

void switchLights(int from, int to) {
    for (int i = 0; from != to && i < bench::numberOfLights; ++i) {
        const int bit = 1 << i;
        if ((from ^ to) & bit)
            (to & bit) ? glEnable(GL_LIGHT0 + i) : glDisable(GL_LIGHT0 + i);
    }
}

void drawLit(const bench::HandMeshes &meshes) {
    startLights();
    int lights = 0;
    meshes.draw([&](const bench::Placement &placement) {
        switchLights(lights, placement.lights);
        lights = placement.lights;
    });
    switchLights(lights, 0);
    glDisable(GL_LIGHTING);
}

void drawByHand(const bench::HandMeshes &meshes, bool lit) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    bench::HandMeshes::start();
    lit ? drawLit(meshes) : meshes.draw();
    bench::HandMeshes::end();
    glFinish();
}

void byEngine(benchmark::State &state, bench::Scene (*make)()) {
    bench::startEngine(false);
    bench::Scene scene = make();
    bench::drawByEngine(scene); // textures go up
    for (auto _ : state)
        bench::drawByEngine(scene);
    state.SetItemsProcessed(state.iterations() * RVELEMENT::getNumberOfPassedElements());
    bench::destroy(scene);
}

void byHand(benchmark::State &state, bench::Scene (*make)(), bool lit) {
    bench::startEngine(false);
    bench::Scene scene = make();
    bench::drawByEngine(scene);
    bench::drawByEngine(scene);
    const bench::Pixels wanted = bench::readWindow();
    {
        const bench::HandMeshes hand(scene);
        // The engine's last colours and lights may remain, the state of its textures must not.
        RAVOLT::begin3D(scene.camera);
        drawByHand(hand, lit);
        state.counters["pictures_differ"] = bench::difference(wanted, bench::readWindow());
        for (auto _ : state)
            drawByHand(hand, lit);
    }
    bench::destroy(scene);
}

void treeByEngine(benchmark::State &state) { byEngine(state, bench::makeTreeScene); }
void treeByHand(benchmark::State &state) { byHand(state, bench::makeTreeScene, false); }
void litByEngine(benchmark::State &state) { byEngine(state, bench::makeLitScene); }
void litByHand(benchmark::State &state) { byHand(state, bench::makeLitScene, true); }

BENCHMARK(treeByEngine)->Name("2,000 nodes of 16 shapes/ravolt")->Unit(benchmark::kMillisecond);
BENCHMARK(treeByHand)->Name("2,000 nodes of 16 shapes/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(litByEngine)->Name("1,000 lit nodes, 8 lights/ravolt")->Unit(benchmark::kMillisecond);
BENCHMARK(litByHand)->Name("1,000 lit nodes, 8 lights/baseline")->Unit(benchmark::kMillisecond);

} // namespace
