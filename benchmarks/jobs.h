#pragma once

// Frames that the engine draws, each beside hand-written OpenGL with the fewest calls that makes
// the same picture. A job starts the engine for itself and stops it at its end.

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

class Job {
  public:
    Job() = default;
    virtual ~Job(); // stops the engine
    Job(const Job &) = delete;
    Job &operator=(const Job &) = delete;

    // A frame, finished. Both advance what moves by the same time.
    virtual void drawByEngine() = 0;
    virtual void drawByHand() = 0;

    // Makes OpenGL's state that of the frames by hand; once, after the last frame by the engine.
    virtual void startHand() = 0;
};

struct JobKind {
    const char *name; // of the benchmark
    const char *key;  // on a command line; with "ByHand" appended for the frame by hand
    std::unique_ptr<Job> (*make)();
};

// All kinds, in no particular order. A file adds its own by a global of this class.
std::vector<JobKind> &jobKinds();
struct AddedJobs {
    explicit AddedJobs(const std::vector<JobKind> &kinds) {
        jobKinds().insert(jobKinds().end(), kinds.begin(), kinds.end());
    }
};

// The first frames load textures and let the driver compile.
constexpr int jobWarmUp = 3;

// Registers the frames of all kinds with Google Benchmark, NAME/ravolt and NAME/baseline.
void registerJobs();

// Draws the first frames, after which the job draws by hand alone.
void prepareHand(Job &job);

} // namespace bench
