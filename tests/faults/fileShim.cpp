// The functions of the C library in front of the real ones. What a descriptor or a stream is open
// for is stored by its number.

#include "tests/faults/fileShim.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <map>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace ravolt::test {

FileShim &fileShim() {
    static auto *const shim = new FileShim;
    return *shim;
}

namespace {

// Of open descriptors.
std::map<int, std::string> &paths() {
    static auto *const all = new std::map<int, std::string>;
    return *all;
}

template <class Function> Function *real(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool isFaulty(const std::string &path) {
    const std::string &name = fileShim().name;
    return fileShim().fault != FileFault::none && path.size() >= name.size() &&
           path.compare(path.size() - name.size(), name.size(), name) == 0;
}

// Whether the n-th opening of a file fails.
bool refuses(const char *path) {
    if (fileShim().recording && path)
        fileShim().opened.insert(path);
    if (!path || fileShim().fault != FileFault::notOpened || !isFaulty(path) ||
        ++fileShim().calls != fileShim().number)
        return false;
    errno = fileShim().error;
    return true;
}

int opened(int file, const char *path) {
    if (file >= 0)
        paths()[file] = path ? path : "";
    return file;
}

// The bytes of `size` that this read returns; -1 for an error.
long allowedBytes(int file, std::size_t size) {
    const auto found = paths().find(file);
    const bool faulty =
        fileShim().fault == FileFault::readError || fileShim().fault == FileFault::shortRead;
    if (!faulty || found == paths().end() || !isFaulty(found->second) ||
        ++fileShim().calls < fileShim().number)
        return static_cast<long>(size);
    if (fileShim().fault == FileFault::shortRead)
        return static_cast<long>(size / 2);
    errno = EIO;
    return -1;
}

} // namespace
} // namespace ravolt::test

using namespace ravolt::test;

// Visible to the libraries, which call these, too.
#pragma GCC visibility push(default)

extern "C" {

int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static auto *const function = real<int(const char *, int, ...)>("open");
    return refuses(path) ? -1 : opened(function(path, flags, mode), path);
}

int open64(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return open(path, flags, mode);
}

FILE *fopen(const char *path, const char *mode) {
    static auto *const function = real<FILE *(const char *, const char *)>("fopen");
    FILE *const file = refuses(path) ? nullptr : function(path, mode);
    if (file)
        opened(fileno(file), path);
    return file;
}

FILE *fopen64(const char *path, const char *mode) { return fopen(path, mode); }

ssize_t read(int file, void *target, size_t size) {
    static auto *const function = real<ssize_t(int, void *, size_t)>("read");
    const long allowed = allowedBytes(file, size);
    return allowed < 0 ? -1 : function(file, target, static_cast<size_t>(allowed));
}

size_t fread(void *target, size_t size, size_t count, FILE *file) {
    static auto *const function = real<size_t(void *, size_t, size_t, FILE *)>("fread");
    const long allowed = file ? allowedBytes(fileno(file), size * count) : 0;
    return allowed <= 0 || size == 0
               ? 0
               : function(target, size, static_cast<size_t>(allowed) / size, file);
}
}
