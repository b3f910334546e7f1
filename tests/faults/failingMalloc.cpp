// To be preloaded (LD_PRELOAD): of the allocations from main on, that of number RAVOLT_FAIL_MALLOC
// and RAVOLT_FAIL_TIMES - 1 after it fail, in all libraries, or in those alone whose file names
// begin as RAVOLT_FAIL_IN says ("ravolt:libravolt"). With RAVOLT_COUNT_MALLOC their number is
// written to that file when the process ends.

#include "tests/faults/allocatingModule.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

extern "C" {
void *__libc_malloc(std::size_t bytes);
void *__libc_calloc(std::size_t number, std::size_t bytes);
void *__libc_realloc(void *block, std::size_t bytes);
}

namespace {

std::atomic<bool> inMain{false};
bool ofTestedModules = false;
std::atomic<long> count{0};
long first = 0, times = 0;
int (*realMain)(int, char **, char **);

long numberOf(const char *variable) {
    const char *text = std::getenv(variable);
    return text ? std::atol(text) : 0;
}

bool fails() {
    if (!inMain || (ofTestedModules && !ravolt::test::calledByTestedModule()))
        return false;
    const long number = ++count;
    const bool failing = first > 0 && number >= first && number - first < times;
    if (failing)
        errno = ENOMEM;
    return failing;
}

int countedMain(int argc, char **argv, char **environment) {
    first = numberOf("RAVOLT_FAIL_MALLOC");
    times = numberOf("RAVOLT_FAIL_TIMES");
    if (const char *modules = std::getenv("RAVOLT_FAIL_IN")) {
        ravolt::test::setTestedModules(modules);
        ofTestedModules = true;
    }
    inMain = true;
    const int result = realMain(argc, argv, environment);
    inMain = false;
    if (const char *file = std::getenv("RAVOLT_COUNT_MALLOC"))
        if (std::FILE *stream = std::fopen(file, "w")) {
            std::fprintf(stream, "%ld\n", count.load());
            std::fclose(stream);
        }
    return result;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

void *malloc(std::size_t bytes) { return fails() ? nullptr : __libc_malloc(bytes); }

void *calloc(std::size_t number, std::size_t bytes) {
    return fails() ? nullptr : __libc_calloc(number, bytes);
}

void *realloc(void *block, std::size_t bytes) {
    return bytes && fails() ? nullptr : __libc_realloc(block, bytes);
}

int __libc_start_main(int (*program)(int, char **, char **), int argc, char **argv, void (*init)(),
                      void (*fini)(), void (*loaderFini)(), void *stackEnd) {
    realMain = program;
    auto *const start =
        reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(countedMain, argc, argv, init, fini, loaderFini, stackEnd);
}

} // extern "C"
