// Runs the benchmarks and prints, after Google Benchmark's own table, the ratio of each
// "JOB/ravolt" to its "JOB/baseline".

#include "benchScene.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run> &runs) override {
        benchmark::ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            const bool only = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            if (median || only)
                add(run);
        }
    }

    void printRatios() const {
        std::printf("\n%-44s %10s %10s\n", "job", "time", "thread");
        for (const auto &[job, pair] : times) {
            if (pair.engine.real > 0 && pair.baseline.real > 0)
                std::printf("%-44s %9.2fx %9.2fx\n", job.c_str(),
                            pair.engine.real / pair.baseline.real,
                            pair.engine.thread / pair.baseline.thread);
        }
    }

  private:
    struct Time {
        double real = 0, thread = 0;
    };
    struct Pair {
        Time engine, baseline;
    };
    std::map<std::string, Pair> times;

    void add(const Run &run) {
        const std::string &name = run.run_name.function_name;
        const std::size_t slash = name.rfind('/');
        if (slash == std::string::npos)
            return;
        Pair &pair = times[name.substr(0, slash)];
        (name.substr(slash + 1) == "ravolt" ? pair.engine : pair.baseline) = {
            run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
    }
};

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    if (!bench::startEngine())
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    bench::stopEngine();
    return 0;
}
