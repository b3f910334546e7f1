// Which array arguments are recorded element by element, by the name of the function.

#include "testing/callWriter.h"

#include <GL/gl.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace ravolt::test {
namespace {

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::size_t elementsOfParameter(unsigned int parameter) {
    for (const unsigned int four :
         {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_POSITION, GL_EMISSION, GL_AMBIENT_AND_DIFFUSE,
          GL_LIGHT_MODEL_AMBIENT, GL_TEXTURE_ENV_COLOR, GL_TEXTURE_BORDER_COLOR, GL_OBJECT_PLANE,
          GL_EYE_PLANE, GL_FOG_COLOR})
        if (parameter == four)
            return 4;
    return parameter == GL_SPOT_DIRECTION || parameter == GL_COLOR_INDEXES ? 3 : 1;
}

// The digit in a name such as glColor4fv; 0 without one.
std::size_t digitBeforeVector(std::string_view name) {
    for (std::string_view vendor : {"ARB", "EXT"})
        if (name.size() > 3 && name.substr(name.size() - 3) == vendor)
            name.remove_suffix(3);
    if (name.empty() || name.back() != 'v')
        return 0;
    name.remove_suffix(1);
    while (!name.empty() && std::string_view("bsifdu").find(name.back()) != std::string_view::npos)
        name.remove_suffix(1);
    return !name.empty() && std::isdigit(static_cast<unsigned char>(name.back()))
               ? static_cast<std::size_t>(name.back() - '0')
               : 0;
}

std::size_t asCount(double number) { return number > 0 ? static_cast<std::size_t>(number) : 0; }

} // namespace

std::optional<std::size_t> elementsRead(const std::string &name,
                                        const std::vector<double> &before) {
    if (startsWith(name, "glLoadMatrix") || startsWith(name, "glMultMatrix"))
        return 16;
    if (startsWith(name, "glClipPlane"))
        return 4;
    if (startsWith(name, "glRect"))
        return 2;
    if (startsWith(name, "glUniformMatrix"))
        return before.size() < 2 ? 0 : 16 * asCount(before[1]);
    if (startsWith(name, "glUniform"))
        return before.size() < 2 ? 0 : digitBeforeVector(name) * asCount(before[1]);
    if (startsWith(name, "glDelete") || name == "glPrioritizeTextures" ||
        name == "glAreTexturesResident")
        return before.empty() ? 0 : asCount(before[0]);
    for (const char *family :
         {"glLight", "glMaterial", "glTexEnv", "glTexGen", "glTexParameter", "glFog"})
        if (startsWith(name, family))
            return before.empty() ? 0
                                  : elementsOfParameter(static_cast<unsigned int>(before.back()));
    if (startsWith(name, "glIndex") || startsWith(name, "glEdgeFlag")) {
        if (name.back() == 'v')
            return 1;
        return std::nullopt;
    }
    if (const std::size_t digit = digitBeforeVector(name))
        return digit;
    return std::nullopt;
}

} // namespace ravolt::test
