#include "jobs.h"

#include "benchScene.h"

namespace bench {

Job::~Job() { stopEngine(); }

std::vector<JobKind> &jobKinds() {
    static std::vector<JobKind> kinds;
    return kinds;
}

void prepareHand(Job &job) {
    for (int frame = 0; frame < jobWarmUp; ++frame)
        job.drawByEngine();
    job.startHand();
    for (int frame = 0; frame < jobWarmUp; ++frame)
        job.drawByHand();
}

} // namespace bench
