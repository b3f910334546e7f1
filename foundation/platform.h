#pragma once

// What the foundation needs of the operating system.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace ravolt {

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

namespace platform {

// Physical memory in use on the whole machine, in bytes, without the caches that the system would
// release for a program; 0 when the system does not report it. Limited to the largest signed 32-bit
// number.
std::uint32_t physicalMemoryInUse();

// Sets `bytes` bytes to zero. Whole pages among them take no memory until they are written.
void clear(void *block, std::size_t bytes);

struct LocalTime {
    unsigned int day, month, year, hour, minute, second, millisecond;
};
LocalTime localTime();

// The low 32 bits of the time in units of 100 nanoseconds since the year 1601.
std::uint32_t systemTime();

// A monotonic counter of high resolution, and its ticks per second.
std::int64_t counter();
std::int64_t counterFrequency();

// Opens a regular file for reading, in binary; NULL when that fails or the name is NULL. Anything
// else, such as a folder, a FIFO or a device, is refused without waiting.
File openForReading(const char *filename);

// Opens a regular file for writing, created or truncated; NULL when that fails. A symbolic link is
// not followed, a FIFO not waited for, and a file with several hard links keeps its contents under
// the other names. A character device may be written to.
File replaceFile(const char *filename);

} // namespace platform

} // namespace ravolt
