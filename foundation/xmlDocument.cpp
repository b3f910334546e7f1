// The text is tokenized before TinyXML parses it, with the same rules, so that the depth found here
// is the one that TinyXML reaches. A wrong end tag, which is ambiguous, is rejected. Declarations
// are replaced by blanks, since TinyXML may find another end of them; so positions in the text are
// those in the file.

#include "foundation/xmlDocument.h"

#include "foundation/bytes.h"
#include "ravolt/zlf.h"

#include <tinyxml.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

namespace ravolt {

namespace {

bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// The bytes of a name as TinyXML knows them.
bool startsName(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 127 || byte == '_' || (byte >= 'a' && byte <= 'z') ||
           (byte >= 'A' && byte <= 'Z');
}
bool continuesName(char c) {
    return startsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == ':';
}

bool sameLetters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

// Whether a text has elements within the limits and nothing that TinyXML may read otherwise.
class XmlCheck {
  public:
    explicit XmlCheck(std::string_view text) : rest(text) {}

    bool passes() {
        while (findMarkup())
            if (!passMarkup())
                return false;
        return open.empty();
    }

    // Where a text that does not pass stops to make sense.
    const char *position() const { return rest.data(); }

    // "<?xml ...?>", and whatever else starts like it.
    const std::vector<std::string_view> &declarations() const { return declared; }

  private:
    bool findMarkup() {
        const std::size_t start = rest.find('<');
        rest.remove_prefix(std::min(start, rest.size()));
        return !rest.empty();
    }

    bool passMarkup() {
        if (skip("<!--"))
            return skipThrough("-->");
        if (skip("<![CDATA["))
            return skipThrough("]]>");
        if (sameLetters(rest.substr(0, 5), "<?xml"))
            return passDeclaration();
        if (!open.empty() && skip("</"))
            return passEndTag();
        rest.remove_prefix(1);
        if (!rest.empty() && startsName(rest.front()))
            return passStartTag();
        if (!skipThrough(">")) // as TinyXML, which takes the end of the text for the missing ">"
            rest.remove_prefix(rest.size());
        return true;
    }

    bool passDeclaration() {
        const std::string_view start = rest;
        char quote = 0;
        for (; !rest.empty(); rest.remove_prefix(1)) {
            const char c = rest.front();
            if (quote == 0 && c == '>') {
                rest.remove_prefix(1);
                declared.push_back(start.substr(0, start.size() - rest.size()));
                return true;
            }
            if (quote == 0 && (c == '"' || c == '\''))
                quote = c;
            else if (c == quote)
                quote = 0;
        }
        rest = start;
        return false;
    }

    bool passEndTag() {
        const std::string_view tag = rest;
        if (takeName() != open.back()) {
            rest = tag;
            return false;
        }
        open.pop_back();
        skipBlanks();
        return skip(">");
    }

    bool passStartTag() {
        open.push_back(takeName());
        if (open.size() > maxXmlDepth)
            return false;
        for (std::size_t attributes = 0; attributes <= maxXmlAttributes; ++attributes) {
            skipBlanks();
            if (skip(">"))
                return true;
            if (skip("/>")) {
                open.pop_back();
                return true;
            }
            if (!passAttribute())
                return false;
        }
        return false;
    }

    bool passAttribute() {
        if (takeName().empty())
            return false;
        skipBlanks();
        if (!skip("="))
            return false;
        skipBlanks();
        if (skip("\""))
            return skipThrough("\"");
        if (skip("'"))
            return skipThrough("'");
        while (!rest.empty() && !isBlank(rest.front()) && rest.front() != '/' &&
               rest.front() != '>') {
            if (rest.front() == '"' || rest.front() == '\'')
                return false;
            rest.remove_prefix(1);
        }
        return true;
    }

    // Empty where no name starts.
    std::string_view takeName() {
        std::size_t length = 0;
        if (!rest.empty() && startsName(rest.front()))
            while (length < rest.size() && continuesName(rest[length]))
                ++length;
        const std::string_view name = rest.substr(0, length);
        rest.remove_prefix(length);
        return name;
    }

    bool skip(std::string_view expected) {
        if (!rest.starts_with(expected))
            return false;
        rest.remove_prefix(expected.size());
        return true;
    }

    bool skipThrough(std::string_view end) {
        const std::size_t start = rest.find(end);
        if (start == std::string_view::npos)
            return false;
        rest.remove_prefix(start + end.size());
        return true;
    }

    void skipBlanks() {
        while (!rest.empty() && isBlank(rest.front()))
            rest.remove_prefix(1);
    }

    std::string_view rest;
    std::vector<std::string_view> open; // names of the elements around `rest`
    std::vector<std::string_view> declared;
};

// TinyXML copies as many bytes as the first byte of a UTF-8 character announces, whatever they are.
bool isWellFormedUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        std::size_t more = lead < 0xc2   ? 0
                           : lead < 0xe0 ? 1
                           : lead < 0xf0 ? 2
                           : lead < 0xf5 ? 3
                                         : 0;
        for (; more > 0; --more, ++i)
            if (i == text.size() || (static_cast<unsigned char>(text[i]) & 0xc0) != 0x80)
                return false;
    }
    return true;
}

// UTF-8 when the first declaration names it or names nothing.
bool declaresUtf8(const std::vector<std::string_view> &declarations) {
    if (declarations.empty())
        return false;
    const std::string_view declaration = declarations.front();
    const std::size_t key = declaration.find("encoding");
    if (key == std::string_view::npos)
        return true;
    const std::size_t start = declaration.find_first_of("\"'", key);
    if (start == std::string_view::npos)
        return true;
    const std::string_view value = declaration.substr(start + 1);
    return sameLetters(value.substr(0, 5), "UTF-8") || sameLetters(value.substr(0, 4), "UTF8");
}

// The line and the column of a position in a text.
void locate(std::string_view text, const char *position, XmlProblem &problem) {
    const std::string_view before =
        text.substr(0, static_cast<std::size_t>(position - text.data()));
    problem.line = 1 + static_cast<int>(std::count(before.begin(), before.end(), '\n'));
    const std::size_t lineFeed = before.rfind('\n');
    problem.column =
        static_cast<int>(before.size() - (lineFeed == std::string_view::npos ? 0 : lineFeed + 1)) +
        1;
}

// TinyXML does not say where an empty document ends: that is after what was hidden from it.
void describe(std::string_view text, const std::vector<std::string_view> &hidden,
              const TiXmlDocument &document, XmlProblem &problem) {
    locate(text, hidden.empty() ? text.data() : hidden.back().data() + hidden.back().size(),
           problem);
    problem.text = document.ErrorDesc();
    if (document.ErrorRow() < 1)
        return;
    problem.line = document.ErrorRow();
    problem.column = document.ErrorCol();
}

// The text with blanks for its parts, except for ends of lines.
std::string withBlanks(std::string_view text, const std::vector<std::string_view> &parts) {
    std::string result(text);
    for (const std::string_view part : parts) {
        const auto start = result.begin() + (part.data() - text.data());
        std::replace_if(
            start, start + static_cast<std::ptrdiff_t>(part.size()),
            [](char c) { return c != '\n' && c != '\r'; }, ' ');
    }
    return result;
}

bool parse(std::string_view text, TiXmlDocument &document, XmlProblem &problem) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    const bool marked = text.starts_with(byteOrderMark);
    text = text.substr(0, text.find('\0')); // where TinyXML stops
    XmlCheck check(text);
    if (!check.passes()) {
        locate(text, check.position(), problem);
        problem.text = "malformed, or more than 256 levels or attributes";
        return false;
    }

    std::vector<std::string_view> hidden = check.declarations();
    const bool utf8 = (marked || declaresUtf8(hidden)) && isWellFormedUtf8(text);
    if (marked)
        hidden.insert(hidden.begin(), text.substr(0, byteOrderMark.size()));
    document.Parse(withBlanks(text, hidden).c_str(), nullptr,
                   utf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY);
    if (document.Error())
        describe(text, hidden, document, problem);
    return !document.Error();
}

} // namespace

bool loadXml(const char *path, TiXmlDocument &document, XmlProblem *problem) try {
    XmlProblem ignored;
    XmlProblem &found = problem ? *problem : ignored;
    FileBytes file;
    const int size = zlfGetFileSize(path);
    if (size < 0 || static_cast<std::size_t>(size) > maxXmlSize ||
        file.read(path) != FileBytes::Result::ok || file.size() > maxXmlSize) {
        found.text = "it cannot be read, or is larger than 4 MiB";
        return false;
    }
    return parse({reinterpret_cast<const char *>(file.data()), file.size()}, document, found);
} catch (const std::bad_alloc &) {
    return false;
}

int xmlInteger(const char *text) {
    return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

} // namespace ravolt
