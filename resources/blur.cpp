// The two operations on whole images: the blur pyramid for bloom and depth of field, and the
// measurement of the scene's luminance. Afterwards the window is the current target, the projection
// is restored and the modelview matrix is the identity; depth test, blending, lighting and colour
// mask are the caller's.

#include "engine/gl/screenQuad.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "resources/framebuffers.h"

#include <algorithm>
#include <array>
#include <climits>

namespace {

constexpr int levels = 4;
constexpr int sceneTarget = 0, luminanceTarget = 3;

bool isDrawable(const RVFBO *target) { return target && target->getTexture(); }

// One direction: `source` through `program` onto the whole of `target`. The size that the program
// steps by is that of the target, as the bilinear filter has the larger source scaled down.
void blurOnce(const RVFBO &source, RVSHADER &program, RVFBO &target) {
    target.render(nullptr);
    program.render(nullptr);
    RVSHADER::bindSizes(target.getSizeX(), target.getSizeY());
    source.getTexture()->render(nullptr);
    ravolt::drawQuad(target.getSizeX(), target.getSizeY());
}

// On purpose: the program named for the horizontal samples along y, and is the first.
void blurLevel(const RVFBO &source, RVFBO &result, RVFBO &scratch) {
    {
        const ravolt::PixelProjection pixels(result.getSizeX(), result.getSizeY());
        blurOnce(source, *RVSHADER::bloomH, scratch);
        blurOnce(scratch, *RVSHADER::bloomV, result);
    }
    glLoadIdentity();
}

// The levels on units 0 to 3. A unit may still have its level from a blur with another program, and
// then the texture would not point this program's sampler at it.
void renderLevels(const std::array<RVFBO *, 2 * levels> &pool) {
    for (unsigned int unit = 0; unit < levels; ++unit) {
        pool[2 * unit]->getTexture()->render(&unit);
        RVSHADER::bindTexture(unit);
    }
}

float luminanceOf(const float (&color)[3]) {
    return 0.3f * color[0] + 0.59f * color[1] + 0.11f * color[2];
}

// Draws the texture of `target` into the first pixel of `target`, from its smallest level alone:
// that the level drawn into could be read at the same time is ruled out.
void averageInto(const RVFBO &target) {
    target.getTexture()->render(nullptr);
    RVOPENGL::glGenerateMipmapEXT(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 1);
    ravolt::drawQuad(1, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
}

} // namespace

bool RVFBO::blur(RVFBO *target, RVSHADER *combine, int first) {
    std::array<RVFBO *, 2 * levels> pool;
    for (int index = 0; index < 2 * levels; ++index)
        pool[static_cast<std::size_t>(index)] =
            first <= INT_MAX - index ? RVOPENGL::getFbo(first + index) : nullptr;
    if (!ravolt::framebuffersWork() || !target || !combine || !isDrawable(this) ||
        !RVSHADER::bloomH || !RVSHADER::bloomV ||
        !std::all_of(pool.begin(), pool.end(), isDrawable))
        return false;

    const RVFBO *source = this;
    for (std::size_t level = 0; level < levels; ++level) {
        blurLevel(*source, *pool[2 * level], *pool[2 * level + 1]);
        source = pool[2 * level];
    }
    target->render(nullptr);
    {
        const ravolt::PixelProjection pixels(target->sizeX, target->sizeY);
        combine->render(nullptr);
        renderLevels(pool);
        ravolt::drawQuad(target->sizeX, target->sizeY);
        for (unsigned int unit = 1; unit < levels; ++unit)
            RVTEXTURE::texturingOff(unit);
        unbind();
    }
    glLoadIdentity();
    return true;
}

// The mean is read from the smallest mipmap level, which the hardware computes.
bool RVFBO::computeLuminance(float *result) {
    RVFBO *const scene = RVOPENGL::getFbo(sceneTarget);
    RVFBO *const measure = RVOPENGL::getFbo(luminanceTarget);
    if (!ravolt::framebuffersWork() || !isDrawable(scene) || !isDrawable(measure))
        return false;
    float color[3] = {};
    measure->render(nullptr);
    {
        const ravolt::PixelProjection pixels(measure->sizeX, measure->sizeY);
        RVSHADER::disable();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        scene->texture->render(nullptr);
        glColor4f(1, 1, 1, 1);
        ravolt::drawQuad(measure->sizeX, measure->sizeY);
        averageInto(*measure);
        glReadBuffer(GL_COLOR_ATTACHMENT0_EXT);
        glReadPixels(0, measure->sizeY - 1, 1, 1, GL_RGB, GL_FLOAT, color);
        if (result)
            *result = luminanceOf(color);
        unbind();
    }
    glLoadIdentity();
    return true;
}
