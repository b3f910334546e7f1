// Runs the benchmarks and prints, after Google Benchmark's own table, the ratio of each
// "JOB/ravolt" to its "JOB/baseline" and "JOB/one by one", and to that of the plain frame where the
// job is one of the frames "GROUP: JOB".

#include "benchScene.h"
#include "jobs.h"

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
        printHead("engine to baseline");
        for (const auto &[job, kinds] : times)
            printRatio(job, kinds, "ravolt", kinds, "baseline");
        printHead("engine to baseline, one by one");
        for (const auto &[job, kinds] : times)
            printRatio(job, kinds, "ravolt", kinds, "one by one");
        printHead("engine to plain frame");
        for (const auto &[job, kinds] : times) {
            const auto plain = times.find(job.substr(0, job.rfind(':')) + ": plain");
            if (plain != times.end())
                printRatio(job, kinds, "ravolt", plain->second, "ravolt");
        }
    }

  private:
    struct Time {
        double real = 0, thread = 0;
    };
    using Kinds = std::map<std::string, Time>;
    std::map<std::string, Kinds> times; // by job

    static void printHead(const char *title) {
        std::printf("\n%-44s %10s %10s\n", title, "time", "thread");
    }

    static void printRatio(const std::string &job, const Kinds &upper, const char *upperKind,
                           const Kinds &lower, const char *lowerKind) {
        const auto one = upper.find(upperKind), other = lower.find(lowerKind);
        if (one != upper.end() && other != lower.end() && other->second.real > 0)
            std::printf("%-44s %9.2fx %9.2fx\n", job.c_str(), one->second.real / other->second.real,
                        one->second.thread / other->second.thread);
    }

    void add(const Run &run) {
        const std::string &name = run.run_name.function_name;
        const std::size_t slash = name.rfind('/');
        if (slash != std::string::npos)
            times[name.substr(0, slash)][name.substr(slash + 1)] = {run.GetAdjustedRealTime(),
                                                                    run.GetAdjustedCPUTime()};
    }
};

} // namespace

int main(int argc, char **argv) {
    bench::registerJobs();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    bench::stopEngine();
    return 0;
}
