#include "tests/foundation/systemFaults.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include <sys/sysinfo.h>

namespace ravolt::test {
constinit SystemFaults systemFaults;
}

using ravolt::test::systemFaults;

extern "C" {

void *__real_malloc(std::size_t bytes);
std::size_t __real_fread(void *target, std::size_t size, std::size_t count, std::FILE *file);
int __real_clock_gettime(clockid_t clock, timespec *time);
int __real_sysinfo(struct sysinfo *machine);

void *__wrap_malloc(std::size_t bytes) {
    return systemFaults.failMallocOf == bytes ? nullptr : __real_malloc(bytes);
}

std::size_t __wrap_fread(void *target, std::size_t size, std::size_t count, std::FILE *file) {
    const std::size_t missing = systemFaults.shortRead ? 1 : 0;
    return __real_fread(target, size, std::max(count, missing) - missing, file);
}

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
    const auto &lie = clock == CLOCK_MONOTONIC ? systemFaults.counter : systemFaults.realTime;
    if (!lie)
        return __real_clock_gettime(clock, time);
    time->tv_sec = *lie / 1'000'000'000;
    time->tv_nsec = *lie % 1'000'000'000;
    return 0;
}

int __wrap_sysinfo(struct sysinfo *machine) {
    const int result = __real_sysinfo(machine);
    if (systemFaults.memoryInUse) {
        constexpr std::uint64_t unit = 1024;
        machine->mem_unit = unit;
        machine->freeram = 1000;
        machine->bufferram = 500; // counts as free
        machine->totalram = 1500 + *systemFaults.memoryInUse / unit;
    }
    return result;
}

} // extern "C"
