#pragma once

// What the foundation asks of the operating system.

#include <cstdint>
#include <cstdio>
#include <memory>

namespace ravolt {

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

namespace platform {

// Bytes of physical memory in use on the whole machine. More than a signed 32-bit number holds
// counts as the largest such number.
std::uint32_t physicalMemoryInUse();

struct LocalTime {
    unsigned int day, month, year, hour, minute, second, millisecond;
};
LocalTime localTime();

// The low 32 bits of the time in units of 100 nanoseconds since the year 1601.
std::uint32_t systemTime();

// A monotonic counter of high resolution, and its ticks per second.
std::int64_t counter();
std::int64_t counterFrequency();

// Opens a file for reading, in binary; NULL when that fails or the name is NULL. A folder is no
// file.
File openForReading(const char *filename);

} // namespace platform

} // namespace ravolt
