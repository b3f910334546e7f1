// A depth texture of one texel at the greatest depth, for shadowed programs without a shadow
// map.

#include "effects/litShadowMap.h"

#include "engine/gl/bindings.h"
#include "ravolt/RVOPENGL.h"
#include "resources/textureInternals.h"

namespace ravolt {
namespace {

constexpr unsigned int mapUnit = 1;

} // namespace

// One texel at the greatest depth. Not an RVTEXTURE, so that it does not count as one of the
// application's.
unsigned int createLitShadowMap() {
    GLuint map = 0;
    glGenTextures(1, &map);
    bindShadowMapUnit(map);
    selectUnit(mapUnit);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    const GLfloat farthest = 1.0f;
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, 1, 1, 0, GL_DEPTH_COMPONENT, GL_FLOAT,
                 &farthest);
    selectUnit(0);
    return map;
}

void deleteLitShadowMap(unsigned int map) {
    if (map)
        glDeleteTextures(1, &map);
}

// The unit remains disabled: programs read it nevertheless, and drawing without a program must not.
void bindShadowMapUnit(unsigned int map) {
    selectUnit(mapUnit);
    glBindTexture(GL_TEXTURE_2D, map);
    selectUnit(0);
    TextureInternals::invalidateUnit(mapUnit);
}

} // namespace ravolt
