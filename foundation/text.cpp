#include "foundation/text.h"

#include <cstdio>
#include <cstring>

namespace ravolt {

void copyText(char *target, std::size_t size, const char *source) {
    const std::size_t length = source ? strnlen(source, size - 1) : 0;
    std::memcpy(target, source ? source : "", length);
    target[length] = '\0';
}

void formatText(char *target, std::size_t size, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(target, size, format, arguments);
    va_end(arguments);
}

std::string applyFormat(const char *stored) {
    std::string result;
    for (; *stored; ++stored) {
        result += *stored;
        if (stored[0] == '%' && stored[1] == '%')
            ++stored;
    }
    return result;
}

} // namespace ravolt
