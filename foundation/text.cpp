// Text that never exceeds its buffer, and what names in files may be.

#include "foundation/text.h"

#include <cstdio>
#include <cstring>

namespace ravolt {

void copyText(char *target, std::size_t size, const char *source) {
    const std::size_t length = source ? strnlen(source, size - 1) : 0;
    std::memmove(target, source ? source : "", length); // the source may be the target itself
    target[length] = '\0';
}

void formatText(char *target, std::size_t size, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    formatArguments(target, size, format, arguments);
    va_end(arguments);
}

int formatArguments(char *target, std::size_t size, const char *format, std::va_list arguments) {
    // The callers have begun the list; the analyzer loses that where it follows the call.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = std::vsnprintf(target, size, format, arguments);
    if (length < 0)
        target[0] = '\0';
    return length;
}

void applyFormat(char *target, const char *stored) {
    for (; *stored; ++stored) {
        *target++ = *stored;
        if (stored[0] == '%' && stored[1] == '%')
            ++stored;
    }
    *target = '\0';
}

bool staysBelowPath(std::string_view name) {
    constexpr std::string_view separators = "/\\";
    const bool hasDrive = name.size() > 1 && name[1] == ':';
    if (hasDrive || (!name.empty() && separators.find(name[0]) != separators.npos))
        return false;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of(separators), name.size());
        if (name.substr(0, end) == "..")
            return false;
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return true;
}

} // namespace ravolt
