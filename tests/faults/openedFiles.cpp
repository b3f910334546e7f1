// To be preloaded (LD_PRELOAD): appends a line to the file that RAVOLT_OPENED names for every file
// that the process opens or changes: "r PATH" for reading, "w PATH" for anything else.

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

template <class Function> Function *real(Function *, const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}
#define REAL(name) real(&name, #name)

// By calls of the system alone, so that nothing here is recorded.
void record(char kind, const char *path) {
    const char *list = getenv("RAVOLT_OPENED");
    if (!list || !path)
        return;
    char line[8300], folder[4096] = "";
    if (path[0] != '/' && !getcwd(folder, sizeof folder))
        return;
    const int length =
        snprintf(line, sizeof line, "%c %s%s%s\n", kind, folder, path[0] == '/' ? "" : "/", path);
    const long file = syscall(SYS_openat, AT_FDCWD, list, O_WRONLY | O_APPEND | O_CREAT, 0600);
    if (file >= 0) {
        syscall(SYS_write, file, line, std::min(static_cast<std::size_t>(length), sizeof line - 1));
        syscall(SYS_close, file);
    }
}

char kindOf(int flags) {
    return (flags & O_ACCMODE) == O_RDONLY && !(flags & (O_CREAT | O_TRUNC)) ? 'r' : 'w';
}

mode_t modeOf(int flags, va_list arguments) {
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

#define OPEN(name)                                                                                 \
    int name(const char *path, int flags, ...) {                                                   \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        record(kindOf(flags), path);                                                               \
        return REAL(name)(path, flags, mode);                                                      \
    }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                                                               \
    int name(int folder, const char *path, int flags, ...) {                                       \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        record(kindOf(flags), path);                                                               \
        return REAL(name)(folder, path, flags, mode);                                              \
    }
OPENAT(openat)
OPENAT(openat64)

#define FOPEN(name)                                                                                \
    FILE *name(const char *path, const char *mode) {                                               \
        record(mode[0] == 'r' && !strchr(mode, '+') ? 'r' : 'w', path);                            \
        return REAL(name)(path, mode);                                                             \
    }
FOPEN(fopen)
FOPEN(fopen64)

#define CHANGE_TWO(name)                                                                           \
    int name(const char *from, const char *to) noexcept {                                          \
        record('w', from);                                                                         \
        record('w', to);                                                                           \
        return REAL(name)(from, to);                                                               \
    }
CHANGE_TWO(rename)
CHANGE_TWO(link)

int symlink(const char *target, const char *path) noexcept {
    record('w', path);
    return REAL(symlink)(target, path);
}

#define CHANGE(name)                                                                               \
    int name(const char *path) noexcept {                                                          \
        record('w', path);                                                                         \
        return REAL(name)(path);                                                                   \
    }
CHANGE(unlink)
CHANGE(remove)
CHANGE(rmdir)

int mkdir(const char *path, mode_t mode) noexcept {
    record('w', path);
    return REAL(mkdir)(path, mode);
}

int truncate(const char *path, off_t length) noexcept {
    record('w', path);
    return REAL(truncate)(path, length);
}

} // extern "C"
