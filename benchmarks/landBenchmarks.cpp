// The terrain's passes one by one, and its load beside reading the file.

#include "land.h"

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/zlf.h"
#include "tools/process/scopedSilentLog.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

namespace {

[[maybe_unused]] const int removing = std::atexit(bench::removeLand);

// Stops the time between the changes of the framebuffer. The work of a pass is finished there,
// so that a frame takes longer than it does otherwise.
class PassClock {
  public:
    static constexpr int spans = bench::Land::passes + 1; // the first one is before the passes

    PassClock() {
        original = RVOPENGL::glBindFramebufferEXT;
        RVOPENGL::glBindFramebufferEXT = bind;
    }
    ~PassClock() { RVOPENGL::glBindFramebufferEXT = original; }
    PassClock(const PassClock &) = delete;
    PassClock &operator=(const PassClock &) = delete;

    static void startFrame() {
        span = 0;
        last = Clock::now();
    }
    static void stop() {
        glFinish();
        const Clock::time_point now = Clock::now();
        milliseconds[span] += std::chrono::duration<double, std::milli>(now - last).count();
        last = now;
    }
    static double taken(int number) { return milliseconds[number]; }
    static void reset() { std::fill(std::begin(milliseconds), std::end(milliseconds), 0.0); }

  private:
    using Clock = std::chrono::steady_clock;
    static inline PFNGLBINDFRAMEBUFFEREXTPROC original;
    static inline int span;
    static inline Clock::time_point last;
    static inline double milliseconds[spans];

    static void APIENTRY bind(GLenum target, GLuint framebuffer) {
        stop();
        span = std::min(span + 1, spans - 1);
        original(target, framebuffer);
    }
};

void passes(benchmark::State &state, bool hand) {
    const ravolt::tool::ScopedSilentLog silence;
    bench::Land land;
    bench::prepareHand(land); // so that the numbers of chunks are known
    {
        const PassClock clock;
        PassClock::reset();
        for (auto _ : state) {
            PassClock::startFrame();
            hand ? land.drawByHand() : land.drawByEngine();
            PassClock::stop();
        }
    }
    for (int pass = 0; pass < bench::Land::passes; ++pass) {
        const std::string name = bench::Land::passNames[pass];
        state.counters[name + "_ms"] = PassClock::taken(pass + 1) / state.iterations();
        state.counters[name + "_chunks"] = static_cast<double>(land.drawnIn(pass));
    }
}

void passesByEngine(benchmark::State &state) { passes(state, false); }
void passesByHand(benchmark::State &state) { passes(state, true); }
BENCHMARK(passesByEngine)
    ->Name("64 by 64 chunks, pass by pass/ravolt")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(passesByHand)
    ->Name("64 by 64 chunks, pass by pass/baseline")
    ->Unit(benchmark::kMillisecond);

void choices(benchmark::State &state) {
    const ravolt::tool::ScopedSilentLog silence;
    bench::Land land;
    land.drawByEngine(); // computes the planes
    for (auto _ : state)
        land.chooseAll();
}
BENCHMARK(choices)
    ->Name("64 by 64 chunks, three tests and levels/ravolt")
    ->Unit(benchmark::kMillisecond);

void loadByEngine(benchmark::State &state) {
    const ravolt::tool::ScopedSilentLog silence;
    bench::writeLand();
    bench::stopEngine();
    bench::startEngine(true, 1);
    for (auto _ : state) {
        auto *terrain = new RVTERRAIN;
        if (!terrain->load(bench::landConfig))
            state.SkipWithError("not loaded");
        state.PauseTiming();
        RVNODE::cleanUp();
        RVMATERIAL::cleanUp();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * zlfGetFileSize(bench::landGeometry));
    bench::stopEngine();
}
BENCHMARK(loadByEngine)->Name("load of 64 by 64 chunks/ravolt")->Unit(benchmark::kMillisecond);

void readByHand(benchmark::State &state) {
    bench::writeLand();
    const auto size = static_cast<std::size_t>(zlfGetFileSize(bench::landGeometry));
    for (auto _ : state) {
        const std::unique_ptr<char[]> block(new char[size]);
        std::FILE *file = std::fopen(bench::landGeometry, "rb");
        if (std::fread(block.get(), 1, size, file) != size)
            state.SkipWithError("short read");
        std::fclose(file);
        benchmark::DoNotOptimize(block.get());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}
BENCHMARK(readByHand)->Name("load of 64 by 64 chunks/baseline")->Unit(benchmark::kMillisecond);

} // namespace
