// Wrapped functions of the system, with simulated results and failures.

#include "tests/foundation/systemFaults.h"

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

// The figures of the system when so much memory is in use. Most of the rest is a cache, which
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

int memoryFile(const std::string &text) {
    const int file = memfd_create("meminfo", 0);
    dprintf(file, "%s", text.c_str());
    lseek(file, 0, SEEK_SET);
    return file;
}

} // namespace

extern "C" {

int __real_clock_gettime(clockid_t clock, timespec *time);
int __real_open(const char *path, int flags, mode_t mode);
int __real_madvise(void *address, std::size_t length, int advice);
int __real_fseek(std::FILE *file, long offset, int origin);
long __real_ftell(std::FILE *file);
int __real_unlink(const char *path);
std::FILE *__real_fdopen(int descriptor, const char *mode);

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
    if (clock == CLOCK_MONOTONIC || !systemFaults.realTime)
        return __real_clock_gettime(clock, time);
    time->tv_sec = *systemFaults.realTime / 1'000'000'000;
    time->tv_nsec = *systemFaults.realTime % 1'000'000'000;
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
        if (systemFaults.memoryFigures)
            return memoryFile(*systemFaults.memoryFigures);
        if (systemFaults.memoryInUse)
            return memoryFile(*systemFaults.memoryInUse);
    }
    return __real_open(path, flags, mode);
}

int __wrap_madvise(void *address, std::size_t length, int advice) {
    if (!systemFaults.adviceRefused)
        return __real_madvise(address, length, advice);
    errno = EINVAL;
    return -1;
}

int __wrap_fseek(std::FILE *file, long offset, int origin) {
    if (systemFaults.failSeek && (*systemFaults.failSeek)-- == 0) {
        systemFaults.failSeek.reset();
        errno = EIO;
        return -1;
    }
    return __real_fseek(file, offset, origin);
}

std::FILE *__wrap_fdopen(int descriptor, const char *mode) {
    if (!systemFaults.failStream)
        return __real_fdopen(descriptor, mode);
    errno = ENOMEM;
    return nullptr;
}

long __wrap_ftell(std::FILE *file) {
    if (!systemFaults.failTell)
        return __real_ftell(file);
    errno = EIO;
    return -1;
}

int __wrap_unlink(const char *path) {
    if (!systemFaults.failUnlink)
        return __real_unlink(path);
    errno = EBUSY;
    return -1;
}

} // extern "C"
