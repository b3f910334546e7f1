#pragma once

// What the foundation asks of the operating system.

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

// Bytes of physical memory of the whole machine that no program could have, which does not count
// what the system merely caches; 0 when the system does not say. More than a signed 32-bit number
// holds counts as the largest such number.
std::uint32_t physicalMemoryInUse();

// Makes `bytes` bytes zero. Whole pages among them take no memory until they are written.
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
// else, as a folder, a FIFO or a device, is no file, and opening one does not wait.
File openForReading(const char *filename);

// Opens a regular file for writing, made anew or emptied; NULL when that fails. A symbolic link is
// not followed, a FIFO not waited for, and a file with other names keeps its contents under those.
// A character device may be written to.
File replaceFile(const char *filename);

} // namespace platform

} // namespace ravolt
