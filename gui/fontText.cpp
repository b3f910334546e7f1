// Texts: their tags, drawing, measuring and breaking into lines.

#include "ravolt/RVFONT.h"

#include "foundation/text.h"
#include "gui/fontCharacters.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace {

constexpr std::size_t textBufferSize = 4096;
constexpr std::size_t tagLength = 6;
constexpr std::size_t verticesPerGlyph = 6;

enum class Tag { none, truncated, color, moveX, moveY };

// The tag whose letter is `c`.
Tag tagOf(char c) {
    switch (c) {
    case 'c':
    case 'C':
        return Tag::color;
    case 'x':
    case 'X':
        return Tag::moveX;
    case 'y':
    case 'Y':
        return Tag::moveY;
    default:
        return Tag::none;
    }
}

// The tag that `text` starts with. A mark at the end of a text is a truncated one.
Tag tagAt(const char *text) {
    if (text[0] != '^')
        return Tag::none;
    if (text[1] == '\0')
        return Tag::truncated;
    const Tag tag = tagOf(text[1]);
    return tag != Tag::none && strnlen(text, tagLength) < tagLength ? Tag::truncated : tag;
}

// The number of a complete tag.
int offsetOf(const char *tag) {
    const char digits[] = {tag[2], tag[3], tag[4], tag[5], '\0'};
    return std::atoi(digits);
}

// On purpose: the byte of a digit above 8 wraps around.
unsigned char colorByte(char digit) {
    return static_cast<unsigned char>(static_cast<int>((digit - '0') * 31.89));
}

// Wraps around.
int sumOf(int a, int b) {
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

// Requires a complete tag with a known letter.
void readColor(const char *tag, unsigned char (&block)[24]) {
    for (std::size_t i = 0; i < std::size(block); ++i)
        block[i] = colorByte(tag[2 + i % 4]);
}

} // namespace

bool RVFONT::putString(int x, int y, const char *format, ...) {
    if (!format) {
        zlfLog("   [!] Invalid params @ RVFONT::putString\n");
        return false;
    }
    if (!texture)
        return false;
    char text[textBufferSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = ravolt::formatArguments(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) { // characters that cannot be encoded
        zlfLog("   [!] Invalid params @ RVFONT::putString\n");
        return false;
    }
    if (length >= static_cast<int>(sizeof text))
        zlfLog("   [!] Text of %d bytes is cut @ RVFONT::putString\n", length);
    return putText(x, y, text);
}

// On purpose: glyphs of an earlier truncated text count as the first ones, and their number is used
// as a number of indices.
bool RVFONT::putText(int x, int y, const char *text) {
    if (!text || !texture || !hasCache())
        return false;
    bindAtlas();
    std::fill(std::begin(fontCachedBlockColor), std::end(fontCachedBlockColor),
              static_cast<unsigned char>(0xff));
    fontCacheFlushed = false;
    const unsigned int start = fontCachedCurrent;
    if (!storeText(x, y, text))
        return false;
    if (fontCachedCurrent <= start && !fontCacheFlushed)
        return true;
    // If the cache was flushed meanwhile, it may have fewer glyphs than before.
    const unsigned int first = fontCachedCurrent >= start ? start : 0;
    setPointers(0);
    glDrawElements(GL_TRIANGLES,
                   static_cast<GLsizei>((fontCachedCurrent - first) * verticesPerGlyph),
                   GL_UNSIGNED_SHORT, fontCachedIndex + first);
    fontCachedCurrent = 0;
    return true;
}

// False for a truncated tag.
bool RVFONT::storeText(int x, int y, const char *text) {
    const int firstX = x;
    while (*text) {
        if (*text == '\n') {
            x = firstX;
            y = sumOf(y, static_cast<int>(charSizeY));
            ++text;
            continue;
        }
        switch (tagAt(text)) {
        case Tag::none:
            text = addGlyphs(x, y, text);
            continue;
        case Tag::truncated:
            return false;
        case Tag::color:
            readColor(text, fontCachedBlockColor);
            break;
        case Tag::moveX:
            x = sumOf(x, offsetOf(text));
            break;
        case Tag::moveY:
            y = sumOf(y, offsetOf(text));
            break;
        }
        text += tagLength;
    }
    return true;
}

unsigned int RVFONT::stringLength(const char *text) const {
    if (!text) {
        zlfLog("   [!] Invalid params @ RVFONT::stringLength\n");
        return 0;
    }
    unsigned int width = 0;
    while (*text) {
        const Tag tag = tagAt(text);
        if (tag == Tag::truncated)
            return width;
        if (tag == Tag::none) {
            width += advanceOf(*text++);
            continue;
        }
        if (tag == Tag::moveX)
            width += static_cast<unsigned int>(offsetOf(text));
        text += tagLength;
    }
    return width;
}

int RVFONT::format(const char *source, char *destination, unsigned int maxWidth,
                   unsigned int) const {
    return formatInto(source, destination, std::numeric_limits<std::size_t>::max(), maxWidth);
}

namespace {

// The state of breaking a text into lines.
struct LineBreaker {
    char *destination;
    std::size_t room; // for characters before the terminating zero
    std::size_t length = 0;
    unsigned int x = 0; // of the pen, which tags may move to the left of the line
    int y = 0;
    char *breakAt = nullptr; // a blank or a line break
    unsigned int xAtBreak = 0;

    bool append(const char *text, std::size_t count) {
        if (count > room - length)
            return false;
        std::copy(text, text + count, destination + length);
        length += count;
        return true;
    }

    // On purpose: a break within a word may be the next one's candidate, with the old xAtBreak.
    bool breakLine(int lineHeight) {
        if (breakAt) {
            *breakAt = '\n';
            breakAt = nullptr;
            x -= xAtBreak;
        } else {
            breakAt = destination + length;
            if (!append("\n", 1))
                return false;
            x = 0;
        }
        y = sumOf(y, lineHeight);
        return true;
    }
};

// Copies the tags at `source`, of which `left` characters are left. On purpose: a tag at the very
// end of the text is none.
bool copyTags(const char *&source, std::size_t &left, LineBreaker &line) {
    while (*source == '^' && left > tagLength) {
        const Tag tag = tagOf(source[1]);
        if (tag == Tag::none)
            return true;
        if (!line.append(source, tagLength))
            return false;
        if (tag == Tag::moveX)
            line.x += static_cast<unsigned int>(offsetOf(source));
        else if (tag == Tag::moveY)
            line.y = sumOf(line.y, offsetOf(source));
        source += tagLength;
        left -= tagLength;
    }
    return true;
}

} // namespace

// On purpose: after a line break of the text itself the pen is one cell to the right.
int RVFONT::formatInto(const char *source, char *destination, std::size_t size,
                       unsigned int maxWidth) const {
    if (!source || !destination || size == 0) {
        zlfLog("   [!] Invalid params @ RVFONT::format\n");
        return 0;
    }
    LineBreaker line{destination, size - 1};
    const int lineHeight = static_cast<int>(charSizeY);
    std::size_t left = std::strlen(source);
    bool complete = true;
    for (; *source; ++source, --left) {
        complete = copyTags(source, left, line);
        if (!complete)
            break;
        const unsigned int advance = advanceOf(*source);
        if (ravolt::isCharacter(*source) && advance + line.x > maxWidth) {
            complete = line.breakLine(lineHeight);
        } else if (*source == '\n') {
            line.x = 0;
            line.y = sumOf(line.y, lineHeight);
        }
        char *const written = destination + line.length;
        if (!complete || !line.append(source, 1)) {
            complete = false;
            break;
        }
        if (*source == ' ' || *source == '\n') {
            line.breakAt = written;
            line.xAtBreak = line.x;
        }
        line.x += advance;
    }
    destination[line.length] = '\0';
    if (!complete)
        zlfLog("   [!] Text is cut at %d bytes @ RVFONT::format\n", static_cast<int>(line.length));
    return line.y;
}
