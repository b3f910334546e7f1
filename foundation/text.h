#pragma once

// Bounded text: every name and path in the engine is an array of 256 bytes, and every copy or
// formatting into one goes through here. What is too long is cut, and the result is terminated.

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace ravolt {

constexpr std::size_t textSize = 256;

// Copies `source` into `target` of `size` bytes; NULL counts as an empty text.
void copyText(char *target, std::size_t size, const char *source);

// printf into `target` of `size` bytes.
[[gnu::format(printf, 3, 4)]] void formatText(char *target, std::size_t size, const char *format,
                                              ...);

// vprintf into `target` of `size` bytes. Returns the length of the whole text, of which `size` or
// more is cut; or a negative number, with an empty target, for characters that cannot be encoded.
[[gnu::format(printf, 3, 0)]] int formatArguments(char *target, std::size_t size,
                                                  const char *format, std::va_list arguments);

// What printf would write for a stored text used as a format without arguments: `%%` gives one
// percent sign, and any other conversion, which would need an argument, is copied unchanged. The
// result is never longer than `stored`, which may be the target itself.
void applyFormat(char *target, const char *stored);

// The same two for an array.
template <std::size_t N> void copyText(char (&target)[N], const char *source) {
    copyText(target, N, source);
}

template <std::size_t N, class... Arguments>
void formatText(char (&target)[N], const char *format, Arguments... arguments) {
    formatText(target, N, format, arguments...);
}

// The path of a folder followed by the name of a file. A path that is too long for the system is
// cut but remains too long for it, so that it never names another file.
class FilePath {
  public:
    FilePath(const char *folder, const char *name) {
        formatText(text, PATH_MAX + 1, "%s%s", folder, name);
    }

    const char *get() const { return text; }

  private:
    char text[PATH_MAX + 1]; // the system accepts PATH_MAX bytes, the terminator included
};

// Whether `name` appended to a path stays below that path: it is not absolute and has no component
// "..". (Symbolic links are not considered.) A name in a file may come from any system, so slashes
// and backslashes are separators, and a name with a drive letter is absolute.
bool staysBelowPath(std::string_view name);

} // namespace ravolt
