// Wrapped functions of the file system, with simulated failures.

#include "tests/tools/fileFaults.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <sys/mman.h>
#include <sys/types.h>

namespace ravolt::test {

FileFaults::Kind FileFaults::planned = Kind::failure;
SimulatedFailure FileFaults::failure;

FileFaults::FileFaults(Kind kind, unsigned int number) {
    renames() = 0;
    planned = kind;
    failure = {number - 1, 1};
}

int &FileFaults::renames() {
    static int *const shared = static_cast<int *>(
        mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    return *shared;
}

bool FileFaults::occurs() {
    if (!failure.occurs())
        return false;
    if (planned == Kind::kill)
        raise(SIGKILL);
    errno = ENOSPC;
    return true;
}

} // namespace ravolt::test

using ravolt::test::FileFaults;

extern "C" {

ssize_t __real_write(int file, const void *bytes, std::size_t size);
int __real_fsync(int file);
int __real_rename(const char *from, const char *to);
int __real_link(const char *from, const char *to);

ssize_t __wrap_write(int file, const void *bytes, std::size_t size) {
    return FileFaults::occurs() ? -1 : __real_write(file, bytes, size);
}

int __wrap_fsync(int file) { return FileFaults::occurs() ? -1 : __real_fsync(file); }

int __wrap_rename(const char *from, const char *to) {
    if (FileFaults::occurs())
        return -1;
    const int result = __real_rename(from, to);
    FileFaults::renames() += result == 0;
    return result;
}

int __wrap_link(const char *from, const char *to) {
    return FileFaults::occurs() ? -1 : __real_link(from, to);
}
}
