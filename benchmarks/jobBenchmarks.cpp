// Registers the frames of all jobs, by the engine and by hand.

#include "handMeshes.h"
#include "jobs.h"

#include "tools/process/scopedSilentLog.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

void byEngine(benchmark::State &state, const bench::JobKind &kind) {
    const ravolt::tool::ScopedSilentLog silence;
    const auto job = kind.make();
    for (int frame = 0; frame < bench::jobWarmUp; ++frame)
        job->drawByEngine();
    for (auto _ : state)
        job->drawByEngine();
}

void byHand(benchmark::State &state, const bench::JobKind &kind) {
    const ravolt::tool::ScopedSilentLog silence;
    const auto job = kind.make();
    for (int frame = 0; frame < bench::jobWarmUp; ++frame)
        job->drawByEngine();
    const bench::Pixels wanted = bench::readWindow();
    job->startHand();
    for (int frame = 0; frame < bench::jobWarmUp; ++frame)
        job->drawByHand();
    state.counters["pictures_differ"] = bench::difference(wanted, bench::readWindow());
    for (auto _ : state)
        job->drawByHand();
}

} // namespace

namespace bench {

void registerJobs() {
    for (const JobKind &kind : jobKinds()) {
        const std::string name = kind.name;
        benchmark::RegisterBenchmark((name + "/ravolt").c_str(), byEngine, kind)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "/baseline").c_str(), byHand, kind)
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace bench
