// XML is scanned for elements, not parsed: the engine does that, with its own messages.

#include "tools/stage/content.h"

#include "tools/common/failure.h"
#include "tools/common/fileStart.h"

#include <algorithm>
#include <string_view>
#include <system_error>

namespace ravolt::tool {

namespace {

constexpr std::size_t markedBytes = 64; // that say what a file is, unless it is XML

// Cuts the text after the next `end`; at its own end where there is none.
void skipThrough(std::string_view &text, std::string_view end) {
    const std::size_t at = text.find(end);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + end.size());
}

// The inside of a tag, up to a ">" that is not in quotes.
std::string_view takeTag(std::string_view &text) {
    char quote = 0;
    std::size_t end = 0;
    for (; end < text.size() && (quote || text[end] != '>'); ++end)
        if (quote ? text[end] == quote : text[end] == '"' || text[end] == '\'')
            quote = quote ? '\0' : text[end];
    const std::string_view tag = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return tag;
}

std::string trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::string decoded(std::string text) {
    for (const auto &[entity, character] : {std::pair<std::string_view, const char *>{"&lt;", "<"},
                                            {"&gt;", ">"},
                                            {"&quot;", "\""},
                                            {"&apos;", "'"},
                                            {"&amp;", "&"}})
        for (std::size_t at = 0; (at = text.find(entity, at)) != std::string::npos; ++at)
            text.replace(at, entity.size(), character);
    return text;
}

bool has(const std::vector<XmlElement> &elements, std::size_t depth, std::string_view name) {
    return std::any_of(elements.begin(), elements.end(), [&](const XmlElement &element) {
        return element.depth == depth && element.name == name;
    });
}

Content contentOfXml(const std::string &text) {
    const std::vector<XmlElement> elements = elementsOf(text);
    if (has(elements, 0, "emitter"))
        return Content::emitter;
    if (has(elements, 0, "root"))
        return Content::interface;
    if (has(elements, 1, "GEOMETRY") || has(elements, 1, "TERRAIN"))
        return Content::terrain;
    return Content::model;
}

} // namespace

std::vector<XmlElement> elementsOf(const std::string &xml) {
    std::vector<XmlElement> elements;
    std::size_t depth = 0;
    std::string_view rest = xml;
    while (rest.find('<') != std::string_view::npos) {
        skipThrough(rest, "<");
        if (rest.starts_with("!--")) {
            skipThrough(rest, "-->");
            continue;
        }
        const std::string_view tag = takeTag(rest);
        if (tag.empty() || tag[0] == '!' || tag[0] == '?')
            continue;
        if (tag[0] == '/') {
            depth -= depth > 0;
            continue;
        }
        const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
        elements.push_back(
            {depth, std::string(name), decoded(trimmed(rest.substr(0, rest.find('<'))))});
        depth += !tag.ends_with('/');
    }
    return elements;
}

// More than the first bytes only of what may be XML.
Content contentOf(const std::filesystem::path &file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw Failure(file.string(), "is a folder, not a scene or a model");
    const std::string start = startOf(file, markedBytes);
    if (start.starts_with("RVE file v"))
        return Content::scene;
    const bool mayBeXml = start.find('<') != std::string::npos ||
                          start.find_first_not_of(blanks) == std::string::npos;
    if (!mayBeXml)
        return Content::model;
    const std::string text = startOf(file);
    return isXml(text) ? contentOfXml(text) : Content::model;
}

const char *nameOf(Content content) {
    switch (content) {
    case Content::scene:
        return "a scene";
    case Content::terrain:
        return "a terrain";
    case Content::emitter:
        return "an emitter";
    case Content::interface:
        return "an interface";
    default:
        return "a model";
    }
}

} // namespace ravolt::tool
