#pragma once

// Bounded text: every name and path in the engine is an array of 256 bytes, and every copy or
// formatting into one goes through here. What is too long is cut, and the result is terminated.

#include <climits>
#include <cstdarg>
#include <cstddef>

namespace ravolt {

constexpr std::size_t textSize = 256;

// Copies `source` into `target` of `size` bytes; NULL counts as an empty text.
void copyText(char *target, std::size_t size, const char *source);

// printf into `target` of `size` bytes.
[[gnu::format(printf, 3, 4)]] void formatText(char *target, std::size_t size, const char *format,
                                              ...);

// What printf would write for a stored text used as a format without arguments: `%%` gives one
// percent sign, and any other conversion, which would need an argument, stands as it is.
// Needs no more room than the stored text, and so may be `stored` itself.
void applyFormat(char *target, const char *stored);

// The same two for an array.
template <std::size_t N> void copyText(char (&target)[N], const char *source) {
    copyText(target, N, source);
}

// The name of a file behind the path of its folder. What is too long for the system is cut, and
// stays too long for it: no other file passes for the one that is meant.
class FilePath {
  public:
    FilePath(const char *folder, const char *name) {
        formatText(text, PATH_MAX + 1, "%s%s", folder, name);
    }

    const char *get() const { return text; }

  private:
    char text[PATH_MAX + 1]; // the system counts the end of the text, and takes PATH_MAX at most
};

template <std::size_t N, class... Arguments>
void formatText(char (&target)[N], const char *format, Arguments... arguments) {
    formatText(target, N, format, arguments...);
}

} // namespace ravolt
