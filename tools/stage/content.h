#pragma once

// What a file is, by its content and not by its name.

#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

enum class Content { model, scene, terrain, emitter, interface };

// A scene file by its first bytes; XML files by their elements: an emitter, the root of an
// interface, or a terrain's configuration, whose root may have any name. Everything else is a
// model. Throws Failure when the file cannot be read.
Content contentOf(const std::filesystem::path &file);

// "a terrain", for messages.
const char *nameOf(Content content);

// The start of an XML text, as elements in their order. Unlike a parser it does not complain:
// readers of the file do.
struct XmlElement {
    std::size_t depth = 0; // 0 for those of the document
    std::string name, text;
};
std::vector<XmlElement> elementsOf(const std::string &xml);

} // namespace ravolt::tool
