#include "tests/foundation/systemFaults.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ravolt::test {
constinit SystemFaults systemFaults;
}

using ravolt::test::systemFaults;

namespace {

// What the system says of its memory when so much is in use. Most of the rest is a cache, which
// counts as available although it is not free.
int memoryFile(std::uint64_t inUse) {
    constexpr unsigned long long free = 1'000, available = 9'000'000, cached = 8'500'000; // kB
    const int file = memfd_create("meminfo", 0);
    dprintf(file,
            "MemTotal:       %llu kB\nMemFree:        %8llu kB\nMemAvailable:   %8llu kB\n"
            "Buffers:            500 kB\nCached:         %8llu kB\n",
            available + inUse / 1024, free, available, cached);
    lseek(file, 0, SEEK_SET);
    return file;
}

} // namespace

extern "C" {

void *__real_malloc(std::size_t bytes);
std::size_t __real_fread(void *target, std::size_t size, std::size_t count, std::FILE *file);
int __real_clock_gettime(clockid_t clock, timespec *time);
int __real_open(const char *path, int flags, mode_t mode);

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

int __wrap_open(const char *path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (std::strcmp(path, "/proc/meminfo") == 0) {
        if (systemFaults.memoryUnknown) {
            errno = ENOENT;
            return -1;
        }
        if (systemFaults.memoryInUse)
            return memoryFile(*systemFaults.memoryInUse);
    }
    return __real_open(path, flags, mode);
}

} // extern "C"
