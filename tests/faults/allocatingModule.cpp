// The address ranges of the loaded objects are in a fixed table, and the unwinder allocates
// nothing: all this runs inside of malloc.

#include "tests/faults/allocatingModule.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <link.h>
#include <unistd.h>
#include <unwind.h>

namespace ravolt::test {
namespace {

enum class Kind { tested, runtime, other };

struct Range {
    std::uintptr_t begin, end;
    Kind kind;
};

Range ranges[256];
std::size_t numberOfRanges = 0;
const char *testedNames = "";
thread_local bool unwinding = false;

const char *fileNameOf(const char *path) {
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

bool beginsWith(const char *text, const char *start, std::size_t length) {
    return length > 0 && std::strncmp(text, start, length) == 0;
}

bool isTested(const char *file) {
    for (const char *name = testedNames; *name;) {
        const std::size_t length = std::strcspn(name, ":");
        if (beginsWith(file, name, length))
            return true;
        name += length + (name[length] == ':');
    }
    return false;
}

Kind kindOf(const char *file, bool isThisModule) {
    constexpr const char *runtime[] = {"libc.so", "libm.so", "libstdc++.so", "libgcc_s.so",
                                       "ld-linux"};
    if (isThisModule)
        return Kind::runtime;
    for (const char *name : runtime)
        if (beginsWith(file, name, std::strlen(name)))
            return Kind::runtime;
    return isTested(file) ? Kind::tested : Kind::other;
}

// The program itself has no name there.
int addObject(dl_phdr_info *object, std::size_t, void *first) {
    char program[512] = "";
    const char *path = object->dlpi_name;
    bool &isFirst = *static_cast<bool *>(first);
    if (isFirst && readlink("/proc/self/exe", program, sizeof program - 1) > 0)
        path = program;
    isFirst = false;
    const auto own = reinterpret_cast<std::uintptr_t>(&addObject);
    for (int i = 0; i < object->dlpi_phnum && numberOfRanges < std::size(ranges); ++i) {
        const ElfW(Phdr) &segment = object->dlpi_phdr[i];
        const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
        const std::uintptr_t end = begin + segment.p_memsz;
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X))
            ranges[numberOfRanges++] = {begin, end,
                                        kindOf(fileNameOf(path), own >= begin && own < end)};
    }
    return 0;
}

Kind kindAt(std::uintptr_t address) {
    for (std::size_t i = 0; i < numberOfRanges; ++i)
        if (address >= ranges[i].begin && address < ranges[i].end)
            return ranges[i].kind;
    return Kind::other;
}

// Ends at the first function that is none of the runtime's.
_Unwind_Reason_Code visit(_Unwind_Context *context, void *found) {
    Kind &kind = *static_cast<Kind *>(found);
    kind = kindAt(_Unwind_GetIP(context) - 1);
    return kind == Kind::runtime ? _URC_NO_REASON : _URC_END_OF_STACK;
}

} // namespace

void setTestedModules(const char *names) {
    testedNames = names;
    bool first = true;
    dl_iterate_phdr(addObject, &first);
}

bool calledByTestedModule() {
    if (unwinding)
        return false;
    unwinding = true;
    Kind kind = Kind::other;
    _Unwind_Backtrace(visit, &kind);
    unwinding = false;
    return kind == Kind::tested;
}

} // namespace ravolt::test
