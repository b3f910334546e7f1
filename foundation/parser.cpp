// The data of an open parser are `size` bytes, at least one, followed by a zero. A zero byte in the
// file ends its text. Lines are examined in place: only a line that contains the key is copied, and
// all copies are cut at 256 bytes.

#include "foundation/platform.h"
#include "foundation/text.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

using ravolt::textSize;

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool endsLine(char c) { return c == '\r' || c == '\n'; }

// Iterates over the lines of a parser from an offset of its own.
class LineCursor {
  public:
    LineCursor(const zlfPARSER &source, int start) : parser(source), position(start) {}

    // False at the end of the file; `line` is then unchanged.
    bool next(std::string_view &line) {
        if (!parser.data || position < 0 || position >= parser.size)
            return false;
        const char *begin = parser.data + position;
        const char *end = moreLineFeeds ? std::strchr(begin, '\n') : nullptr;
        moreLineFeeds = end != nullptr;
        if (end)
            return take(line, begin, end, end);
        // On purpose: without a line feed left, the last character before a carriage return is
        // lost.
        if ((end = std::strchr(begin, '\r')))
            return take(line, begin, std::max(begin, end - 1), end);
        // The line ends at the byte after the zero.
        return take(line, begin, begin + std::strlen(begin), parser.data + parser.size + 1);
    }

    int offset() const { return position; }

  private:
    bool take(std::string_view &line, const char *begin, const char *end, const char *endMark) {
        line = std::string_view(begin, static_cast<std::size_t>(end - begin)).substr(0, maxLength);
        position = static_cast<int>(endMark - parser.data) + 1;
        return true;
    }

    static constexpr std::size_t maxLength = textSize - 1;

    const zlfPARSER &parser;
    int position;
    bool moreLineFeeds = true; // once there is none, no later line has one
};

// The text after `key` if `text` starts with it, blanks and tabs not counted; otherwise a view
// without data.
std::string_view textAfterKey(std::string_view text, std::string_view key) {
    for (const char wanted : key) {
        while (!text.empty() && isBlank(text.front()))
            text.remove_prefix(1);
        if (text.empty() || text.front() != wanted)
            return {};
        text.remove_prefix(1);
    }
    return text;
}

// The same for a key anywhere in the line.
std::string_view findKey(std::string_view line, std::string_view key) {
    if (key.empty())
        return line;
    for (std::size_t at = 0; (at = line.find(key.front(), at)) != line.npos; ++at)
        if (const std::string_view rest = textAfterKey(line.substr(at), key); rest.data())
            return rest;
    return {};
}

// Copies `text`, of at most 255 characters, without its blanks and tabs and without the first
// `skip` of its other characters.
void copyToken(char *target, std::string_view text, int skip = 0) {
    for (const char c : text)
        if (!isBlank(c) && --skip < 0)
            *target++ = c;
    *target = '\0';
}

// The value in the first line that contains the key: everything after the key and the one character
// that follows it, without blanks and tabs. False when no line has the key.
bool findValue(const zlfPARSER *parser, const char *key, char (&value)[textSize]) {
    if (!parser || !key)
        return false;
    const std::string_view wanted(key);
    LineCursor cursor(*parser, 0);
    for (std::string_view line; cursor.next(line);)
        if (const std::string_view rest = findKey(line, wanted); rest.data()) {
            copyToken(value, rest, 1);
            return true;
        }
    return false;
}

// Reads the whole of an open file into the parser.
bool readAll(zlfPARSER *parser, std::FILE *file, const char *filename) {
    const long length = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
    if (length <= 0) {
        zlfLog("zlfOpenParser: file '%s' is empty\n", filename);
        return false;
    }
    if (length > INT_MAX - 2) { // offsets are 32-bit numbers
        zlfLog("zlfOpenParser: file '%s' is corrupted\n", filename);
        return false;
    }
    const std::size_t size = static_cast<std::size_t>(length);
    parser->size = static_cast<int>(length);
    parser->data = static_cast<char *>(zlfMalloc(size + 1));
    if (!parser->data) {
        parser->size = 0;
        zlfLog("zlfOpenParser: out of memory (%u bytes needed)\n",
               static_cast<unsigned int>(size + 1));
        return false;
    }
    if (std::fseek(file, 0, SEEK_SET) != 0 || std::fread(parser->data, 1, size, file) != size) {
        // On purpose: this release is not counted, and `data` is left dangling. The size of 0 marks
        // the parser as not open.
        std::free(parser->data);
        parser->size = 0;
        zlfLog("zlfOpenParser: file '%s' is corrupted\n", filename);
        return false;
    }
    parser->data[size] = '\0';
    parser->position = 0;
    return true;
}

} // namespace

bool zlfOpenParser(zlfPARSER *parser, const char *filename) {
    if (!parser || !filename) {
        zlfLog("zlfOpenParser: invalid params\n");
        return false;
    }
    const ravolt::File file = ravolt::platform::openForReading(filename);
    if (!file) {
        zlfLog("zlfOpenParser: unable to open file %s\n", filename);
        return false;
    }
    return readAll(parser, file.get(), filename);
}

bool zlfCloseParser(zlfPARSER *parser) {
    if (!parser) {
        zlfLog("zlfCloseParser: invalid params\n");
        return false;
    }
    if (!parser->data || parser->size == 0) {
        zlfLog("zlfCloseParser: parser already free\n");
        return false;
    }
    zlfFree(parser->data);
    *parser = zlfPARSER();
    return true;
}

bool zlfRemoveComments(zlfPARSER *parser, char marker) {
    if (!parser || !parser->data)
        return false;
    bool found = false;
    char *const end = parser->data + parser->size;
    for (char *c = parser->data; (c = std::find(c, end, marker)) != end; found = true) {
        char *const lineEnd = std::find_if(c + 1, end, endsLine);
        std::fill(c, lineEnd, ' ');
        c = lineEnd;
    }
    return found;
}

bool zlfReadLine(zlfPARSER *parser, char *line) {
    if (!parser || !line)
        return false;
    LineCursor cursor(*parser, parser->position);
    std::string_view text;
    if (!cursor.next(text))
        return false;
    std::memcpy(line, text.data(), text.size());
    line[text.size()] = '\0';
    parser->position = cursor.offset();
    return true;
}

bool zlfReadToken(zlfPARSER *parser, char *line) {
    char text[textSize];
    if (!line || !zlfReadLine(parser, text))
        return false;
    copyToken(line, text);
    return true;
}

bool zlfGetInt(zlfPARSER *parser, const char *key, int *value) {
    char text[textSize];
    if (!value || !findValue(parser, key, text))
        return false;
    *value = static_cast<int>(std::strtol(text, nullptr, 10));
    return true;
}

bool zlfGetFloat(zlfPARSER *parser, const char *key, float *value) {
    char text[textSize];
    if (!value || !findValue(parser, key, text))
        return false;
    *value = static_cast<float>(std::atof(text));
    return true;
}

bool zlfGetString(zlfPARSER *parser, const char *key, char *value) {
    char text[textSize];
    if (!value || !findValue(parser, key, text))
        return false;
    ravolt::copyText(value, textSize, text);
    const char *first = std::strchr(text, '"');
    char *last = std::strrchr(text, '"');
    if (first == last)
        return false;
    *last = '\0';
    ravolt::copyText(value, textSize, first + 1);
    return true;
}
