// Runs the benchmarks and prints, after Google Benchmark's own table, the ratio of each
// "JOB/ravolt" to its "JOB/baseline", and that of each "GROUP: JOB" to its "GROUP: plain".

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
        std::printf("\n%-44s %10s %10s\n", "engine to baseline", "time", "thread");
        for (const auto &[job, pair] : times)
            printRatio(job, pair.engine, pair.baseline);
        std::printf("\n%-44s %10s %10s\n", "engine to plain frame", "time", "thread");
        for (const auto &[job, pair] : times) {
            const auto plain = times.find(job.substr(0, job.rfind(':')) + ": plain");
            if (plain != times.end())
                printRatio(job, pair.engine, plain->second.engine);
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

    static void printRatio(const std::string &job, const Time &one, const Time &other) {
        if (one.real > 0 && other.real > 0)
            std::printf("%-44s %9.2fx %9.2fx\n", job.c_str(), one.real / other.real,
                        one.thread / other.thread);
    }

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
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    bench::stopEngine();
    return 0;
}
