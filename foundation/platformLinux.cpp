#include "foundation/platform.h"

#include <algorithm>
#include <ctime>
#include <limits>

#include <sys/stat.h>
#include <sys/sysinfo.h>

namespace ravolt::platform {

namespace {

constexpr std::int64_t nanoseconds = 1'000'000'000; // in a second

timespec now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

} // namespace

std::uint32_t physicalMemoryInUse() {
    struct sysinfo machine {};
    if (sysinfo(&machine) != 0)
        return 0;
    const std::uint64_t used =
        static_cast<std::uint64_t>(machine.totalram - machine.freeram - machine.bufferram) *
        machine.mem_unit;
    // On purpose: the figure stops where it can still be logged as a signed number of bytes.
    constexpr std::uint64_t largest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min(used, largest));
}

LocalTime localTime() {
    const timespec time = now(CLOCK_REALTIME);
    std::tm parts{};
    localtime_r(&time.tv_sec, &parts);
    const auto number = [](long value) { return static_cast<unsigned int>(value); };
    return {number(parts.tm_mday),           number(parts.tm_mon + 1), number(parts.tm_year + 1900),
            number(parts.tm_hour),           number(parts.tm_min),     number(parts.tm_sec),
            number(time.tv_nsec / 1'000'000)};
}

std::uint32_t systemTime() {
    constexpr std::uint64_t secondsFrom1601To1970 = 11'644'473'600;
    const timespec time = now(CLOCK_REALTIME);
    const std::uint64_t seconds = secondsFrom1601To1970 + static_cast<std::uint64_t>(time.tv_sec);
    return static_cast<std::uint32_t>(seconds * 10'000'000 +
                                      static_cast<std::uint64_t>(time.tv_nsec) / 100);
}

std::int64_t counter() {
    const timespec time = now(CLOCK_MONOTONIC);
    return time.tv_sec * nanoseconds + time.tv_nsec;
}

std::int64_t counterFrequency() { return nanoseconds; }

File openForReading(const char *filename) {
    File file(filename ? std::fopen(filename, "rb") : nullptr);
    struct stat status {};
    if (file && fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode))
        return nullptr;
    return file;
}

} // namespace ravolt::platform
