// The engine's render targets: what each one is, as a table. All the targets are made first, then
// their textures, in the order of the rows. One that OpenGL refuses is reported by RVFBO::isOk and
// not deleted.
//
// Invariant: while the pool has placeholders, no code outside of this folder has got one of the
// targets or OpenGL's name of one of their textures.

#include "resources/renderTargets.h"

#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "resources/framebuffers.h"
#include "resources/textureInternals.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace {

enum Size { scene, shadowMap, luminance };
enum Format : unsigned int {
    bytes = RV_TEXTURE_RGBA,
    depth = RV_TEXTURE_DEPTH,
    halfFloats = RV_TEXTURE_HALF_FLOAT
};
enum Filter { plain, mipmapped };

struct Row {
    int index;
    Size size;
    int divisor;
    Format format;
    Filter filter = plain;
    bool hasDepthBuffer = false;
};

constexpr Row rows[] = {
    {2, shadowMap, 1, depth},
    {0, scene, 1, halfFloats, plain, true},   // the scene
    {1, scene, 1, halfFloats, plain, true},   // depth pass, result of the blurs
    {3, luminance, 1, halfFloats, mipmapped}, // measure of the luminance
    {4, scene, 1, halfFloats},                // bright pass
    {5, scene, 1, halfFloats},                // copy of the scene, where it is drawn onto itself
    {6, scene, 2, bytes},                     // levels of the blur, each with its scratch
    {7, scene, 2, bytes},
    {8, scene, 4, bytes},
    {9, scene, 4, bytes},
    {10, scene, 8, bytes},
    {11, scene, 8, bytes},
    {12, scene, 16, bytes},
    {13, scene, 16, bytes},
};
static_assert(sizeof rows / sizeof *rows == ravolt::renderTargets);

constexpr int luminanceSize = 256;

struct Pixels {
    int width, height;
};

Pixels sizeOf(const Row &row) {
    switch (row.size) {
    case shadowMap:
        return {RVSETTINGS::getSDLShadowMapSize(), RVSETTINGS::getSDLShadowMapSize()};
    case luminance:
        return {luminanceSize, luminanceSize};
    case scene:
        break;
    }
    return {RVSETTINGS::getSDLFBOSizeX() / row.divisor, RVSETTINGS::getSDLFBOSizeY() / row.divisor};
}

struct State {
    RVFBO **pool = nullptr;    // RVOPENGL's, once it was made
    bool placeholders = false; // of the rows below at least
    bool isPlaceholder[ravolt::renderTargets] = {};
    unsigned int lowestId = ~0u, highestId = 0; // of their textures
};
State state;

// Of any other size OpenGL refuses the image, and isOk reports the target.
bool isValid(Pixels pixels) {
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    return pixels.width > 0 && pixels.height > 0 && pixels.width <= largest &&
           pixels.height <= largest;
}

// With a reference the collector does not delete the texture.
bool attachTexture(RVFBO &target, const Row &row) {
    const Pixels pixels = sizeOf(row);
    const bool placeholder = isValid(pixels);
    const auto width = static_cast<unsigned int>(pixels.width);
    const auto height = static_cast<unsigned int>(pixels.height);
    RVTEXTURE *texture = new (std::nothrow) RVTEXTURE;
    if (!texture)
        return false;
    texture->incReferences();
    state.lowestId = std::min(state.lowestId, texture->getId());
    state.highestId = std::max(state.highestId, texture->getId());
    texture->setFilter(true, row.filter == mipmapped, true);
    if (placeholder)
        ravolt::TextureInternals::createPlaceholder(*texture, width, height, row.format);
    else
        texture->create(width, height, row.format);
    target.bindTexture(row.format == depth ? RV_FBO_DEPTH : RV_FBO_COLOR, texture);
    if (row.hasDepthBuffer && placeholder)
        ravolt::RenderTargets::bindDepthPlaceholder(target);
    else if (row.hasDepthBuffer)
        target.bindRenderBuffer(RV_FBO_DEPTH_BUFFER, pixels.width, pixels.height);
    state.isPlaceholder[row.index] = placeholder;
    target.isOk();
    RVFBO::unbind();
    return true;
}

void deleteTargets(RVFBO *(&pool)[ravolt::renderTargets]) {
    for (RVFBO *&target : pool) {
        RVTEXTURE *const texture = target ? target->getTexture() : nullptr;
        delete std::exchange(target, nullptr);
        delete texture;
    }
}

// The application may have deleted the target or its texture, or unloaded the texture, which comes
// back with its sizes.
void allocateImages(const RVFBO &target) {
    if (!target.getTexture())
        return;
    ravolt::TextureInternals::allocateImage(*target.getTexture());
    ravolt::RenderTargets::allocateDepthBuffer(target);
    ravolt::RenderTargets::report(target);
}

} // namespace

bool ravolt::makeRenderTargets(RVFBO *(&pool)[renderTargets]) {
    state = {};
    detectWindowFramebuffer();
    for (RVFBO *&target : pool)
        target = new (std::nothrow) RVFBO;
    const bool made = std::find(std::begin(pool), std::end(pool), nullptr) == std::end(pool) &&
                      std::all_of(std::begin(rows), std::end(rows), [&pool](const Row &row) {
                          return attachTexture(*pool[row.index], row);
                      });
    if (!made)
        deleteTargets(pool);
    state.pool = pool;
    state.placeholders = made;
    return made;
}

void ravolt::allocateRenderTargets() {
    if (!std::exchange(state.placeholders, false))
        return;
    for (int index = 0; index < renderTargets; ++index)
        if (state.pool[index] && state.isPlaceholder[index])
            allocateImages(*state.pool[index]);
}

void ravolt::RenderTargets::allocateIfTarget(const RVTEXTURE &texture) {
    if (!state.placeholders)
        return;
    const unsigned int id = texture.getId(); // of other textures it is mostly outside of the range
    if (id >= state.lowestId && id <= state.highestId &&
        std::any_of(state.pool, state.pool + renderTargets, [&texture](const RVFBO *target) {
            return target && target->getTexture() == &texture;
        }))
        allocateRenderTargets();
}

RVFBO *RVOPENGL::getFbo(int index) {
    ravolt::allocateRenderTargets();
    return index >= 0 && index < ravolt::renderTargets ? fbo[index] : nullptr;
}
