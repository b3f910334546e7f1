// The Linux part of the platform layer: files, memory figures and clocks by POSIX and /proc.

#include "foundation/platform.h"

#include "ravolt/zlf.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ravolt::platform {

namespace {

constexpr std::int64_t nanoseconds = 1'000'000'000; // in a second

timespec now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

// Owns a file descriptor.
class Descriptor {
  public:
    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() {
        if (isOpen())
            close(number);
    }

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }

    // Converts to a stream, which then owns the descriptor; NULL when memory runs out.
    File toStream(const char *mode) {
        File stream(fdopen(number, mode));
        if (stream)
            number = -1;
        return stream;
    }

  private:
    int number;
};

// Opening must not wait for the other end of a FIFO, nor make a terminal the controlling one.
constexpr int neverWait = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// The number after `key` in the text of /proc/meminfo, in kilobytes; 0 when the key is missing.
std::uint64_t memoryFigure(const char *text, const char *key) {
    const char *found = std::strstr(text, key);
    return found ? std::strtoull(found + std::strlen(key), nullptr, 10) : 0;
}

} // namespace

// The file is opened each time: a descriptor kept open would have to outlive an application that
// closes all descriptors, and might then be another file's.
std::uint32_t physicalMemoryInUse() {
    char text[256] = ""; // both figures are in the first lines
    const Descriptor file(open("/proc/meminfo", O_RDONLY | O_CLOEXEC));
    if (!file.isOpen() || read(file.get(), text, sizeof text - 1) <= 0)
        return 0;
    const std::uint64_t total = memoryFigure(text, "MemTotal:");
    const std::uint64_t available = memoryFigure(text, "MemAvailable:");
    if (available == 0 || available > total)
        return 0;
    // On purpose: the figure stops where it can still be logged as a signed number of bytes.
    constexpr std::uint64_t largest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min((total - available) * 1024, largest));
}

// Discarded pages read as zeros. A huge page would take memory for all that surrounds the bytes
// that are written.
void clear(void *block, std::size_t bytes) {
    unsigned char *const begin = static_cast<unsigned char *>(block), *const end = begin + bytes;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(begin) % page) % page;
    const std::size_t whole = before < bytes ? (bytes - before) / page * page : 0;
    unsigned char *const first = begin + std::min(before, bytes), *const last = first + whole;
    if (whole)
        madvise(first, whole, MADV_NOHUGEPAGE); // a system without them refuses
    if (whole && madvise(first, whole, MADV_DONTNEED) != 0)
        std::memset(first, 0, whole);
    std::memset(begin, 0, static_cast<std::size_t>(first - begin));
    std::memset(last, 0, static_cast<std::size_t>(end - last));
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
    Descriptor file(filename ? open(filename, O_RDONLY | neverWait) : -1);
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    File stream = file.toStream("rb");
    if (!stream)
        zlfLog("   [!] Out of memory for file %s\n", filename);
    return stream;
}

namespace {

// Whether the file can be written from its start; a regular file is truncated. Writes to a
// character device may wait.
bool makeWritable(const Descriptor &file, const struct stat &status) {
    if (S_ISCHR(status.st_mode))
        return fcntl(file.get(), F_SETFL, 0) == 0;
    return S_ISREG(status.st_mode) && ftruncate(file.get(), 0) == 0;
}

} // namespace

File replaceFile(const char *filename) {
    constexpr int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | neverWait;
    constexpr mode_t permissions = 0666; // less the process's umask
    struct stat status {};
    Descriptor file(open(filename, flags, permissions));
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        return nullptr;
    if (!S_ISREG(status.st_mode) || status.st_nlink <= 1)
        return makeWritable(file, status) ? file.toStream("w") : nullptr;
    // A file with several hard links is not truncated: this name gets a new file.
    if (unlink(filename) != 0)
        return nullptr;
    Descriptor fresh(open(filename, flags | O_EXCL, permissions));
    return fresh.isOpen() ? fresh.toStream("w") : nullptr;
}

} // namespace ravolt::platform
