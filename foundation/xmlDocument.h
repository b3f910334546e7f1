#pragma once

// XML files for the readers of the engine, which walk TinyXML's tree.

#include <cstddef>
#include <string>

class TiXmlDocument;

namespace ravolt {

// TinyXML parses and destroys elements by recursion, and compares each attribute with all before it
// in its element; so what it gets is limited.
constexpr std::size_t maxXmlSize = 4 << 20; // bytes
constexpr std::size_t maxXmlDepth = 256;    // levels of elements
constexpr std::size_t maxXmlAttributes = 256;

// Where and why a text is no XML that is read; a line of 0 for a file that cannot be read.
struct XmlProblem {
    int line = 0, column = 0; // from 1
    std::string text;
};

// Reads a file into an empty document. False, with nothing logged, for a file that cannot be read,
// is malformed or exceeds the limits; each reader reports that in its own words.
bool loadXml(const char *path, TiXmlDocument &document, XmlProblem *problem = nullptr);

// As atoi, but a number beyond the range is the nearest one.
int xmlInteger(const char *text);

} // namespace ravolt
