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

} // namespace ravolt
