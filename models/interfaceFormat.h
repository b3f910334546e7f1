#pragma once

// The elements of interface files, which the engine's loader and the tool share; docs/formats.md
// describes the file.

#include <string_view>

namespace ravolt::interface {

inline constexpr char root[] = "root";

// Elements that make a widget, and the one that makes a font.
inline constexpr std::string_view widgets[] = {"window", "button",  "text",   "label",
                                               "box",    "vslider", "hslider"};
inline constexpr std::string_view font = "font";

// A property has an effect only with all its attributes.
struct Property {
    std::string_view tag;
    const char *attributes[4]; // NULL after the last one
};
inline constexpr Property properties[] = {
    {"name", {"value"}},           {"title", {"value"}}, {"position", {"x", "y"}},
    {"size", {"width", "height"}}, {"usefont", {"ref"}}, {"texture", {"value"}},
    {"kerning", {"value"}},        {"write", {"value"}}, {"color", {"r", "g", "b", "a"}},
    {"kind", {"value"}},
};

} // namespace ravolt::interface
