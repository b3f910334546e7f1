// Chunks of a terrain: their bounds, their textures, the choice of their level, and their drawing.
//
// Invariant: `level` is below the levels of the table.

#include "ravolt/RVTERRAIN_CHUNK.h"

#include "effects/textureFiles.h"
#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>

namespace {

// The choice of a level compares with this many thresholds at most, so that the sixth level is the
// last that is chosen.
constexpr unsigned int maxComparisons = 5;

// Slots of the material, which are also units and samplers. The second is the shadow map's.
constexpr unsigned int diffuseSlots[] = {0, 2, 3, 4}, normalSlots[] = {5, 6, 7, 8};

// Parameters of RVSHADER::terrainComplex.
constexpr unsigned int invParameter = 2, firstRepeatParameter = 3;

// Offsets in a vertex of the file.
constexpr std::size_t weightsOffset = 12, tangentOffset = 24;

// Chunks within this distance of the surface are drawn on both sides of it.
constexpr float surfaceMargin = 1.0f;

Z3MVECTOR3D positionOf(const RVCAMERA *camera) {
    return camera ? camera->getPosition() : RVCAMERA::getCameraPosition();
}

bool isOutside(const Z3MVECTOR4D &plane, const Z3MVECTOR3D &minimum, const Z3MVECTOR3D &maximum) {
    for (const float x : {minimum.x, maximum.x})
        for (const float y : {minimum.y, maximum.y})
            for (const float z : {minimum.z, maximum.z})
                if (!(plane.x * x + plane.y * y + plane.z * z + plane.w <= 0.0f))
                    return false;
    return true;
}

const void *bufferOffset(std::size_t offset) { return reinterpret_cast<const void *>(offset); }

} // namespace

RVTERRAIN_CHUNK::RVTERRAIN_CHUNK(const RVTERRAIN_HEADER &terrain,
                                 const RVTERRAIN_CHUNK_HEADER &chunk, const void *vertices,
                                 RVTERRAIN_INDEXTABLE *table, RVTERRAIN_COORDBUFFER *coords)
    : header(chunk), terrainHeader(terrain), neighbours{}, currentBuffers{}, repeat{}, level(0),
      vertexBuffer(0), indexTable(table), coordBuffer(coords), visible(true),
      submerged(chunk.maxHeight < 0.0f), emerged(chunk.minHeight > 0.0f),
      lodThresholds(nullptr), frustumPlanes{} {
    const std::int64_t cells = terrain.chunkSize - 1;
    minX = static_cast<float>(chunk.gridX * cells) * terrain.vertexScale;
    minZ = static_cast<float>(chunk.gridY * cells) * terrain.vertexScale;
    maxX = static_cast<float>(chunk.gridX * cells + cells) * terrain.vertexScale;
    maxZ = static_cast<float>(chunk.gridY * cells + cells) * terrain.vertexScale;
    center = Z3MVECTOR3D((minX + maxX) / 2.0f, (chunk.minHeight + chunk.maxHeight) / 2.0f,
                         (minZ + maxZ) / 2.0f);
    vertexBuffer =
        ravolt::createBuffer(GL_ARRAY_BUFFER_ARB, vertices,
                             std::size_t{terrain.chunkSize} * terrain.chunkSize * vertexBytes);
}

RVTERRAIN_CHUNK::~RVTERRAIN_CHUNK() { ravolt::deleteBuffer(vertexBuffer); }

void RVTERRAIN_CHUNK::setNeighbour(unsigned int side, RVTERRAIN_CHUNK *neighbour) {
    if (side < neighbourCount)
        neighbours[side] = neighbour;
}

void RVTERRAIN_CHUNK::setFrustumPlanes(Z3MVECTOR4D *planes) {
    for (unsigned int plane = 0; plane < frustumPlaneCount; ++plane)
        frustumPlanes[plane] = planes + plane;
}

bool RVTERRAIN_CHUNK::loadTexture(const char *diffuse1, const char *normal1, int repeat1,
                                  const char *diffuse2, const char *normal2, int repeat2,
                                  const char *diffuse3, const char *normal3, int repeat3,
                                  const char *diffuse4, const char *normal4, int repeat4, bool) {
    const char *const diffuseFiles[layers] = {diffuse1, diffuse2, diffuse3, diffuse4};
    const char *const normalFiles[layers] = {normal1, normal2, normal3, normal4};
    const int repeats[layers] = {repeat1, repeat2, repeat3, repeat4};
    std::copy(std::begin(repeats), std::end(repeats), repeat);

    bool loaded = true;
    for (unsigned int layer = 0; layer < layers; ++layer)
        diffuse[layer].set(ravolt::findOrLoadTexture(diffuseFiles[layer], true, loaded));
    for (unsigned int layer = 0; layer < layers; ++layer)
        normal[layer].set(ravolt::findOrLoadTexture(normalFiles[layer], true, loaded));
    if (!loaded) {
        zlfLog("   [!] Invalid params @ RVTERRAIN_CHUNK::loadTexture\n");
        return false;
    }
    RVMATERIAL *const made = new (std::nothrow) RVMATERIAL;
    if (!made) {
        zlfLog("   [!] Out of memory @ RVTERRAIN_CHUNK::loadTexture\n");
        return false;
    }
    material.set(made);
    for (unsigned int layer = 0; layer < layers; ++layer) {
        made->setTexture(diffuseSlots[layer], diffuse[layer].get());
        made->setTexture(normalSlots[layer], normal[layer].get());
    }
    if (RVSHADER::useTerrain())
        made->setShader(RVSHADER::terrainComplex);
    return true;
}

void RVTERRAIN_CHUNK::computeLevel(RVCAMERA *camera, bool lodEnabled, bool inverted) {
    visible = isInFrustum(inverted);
    level = 0;
    if (!visible || !lodEnabled || !lodThresholds)
        return;
    const Z3MVECTOR3D way = positionOf(camera) - center;
    const float distance2 = way.x * way.x + way.y * way.y + way.z * way.z;
    const unsigned int thresholds = std::min(indexTable->levels - 1u, maxComparisons);
    while (level < thresholds && !(distance2 < lodThresholds[level]))
        ++level;
}

bool RVTERRAIN_CHUNK::isInFrustum(bool inverted) const {
    Z3MVECTOR3D minimum = getMinimum(), maximum = getMaximum();
    if (inverted) {
        minimum.y = -minimum.y;
        maximum.y = -maximum.y;
    }
    return std::none_of(
        std::begin(frustumPlanes), std::end(frustumPlanes),
        [&](const Z3MVECTOR4D *plane) { return plane && isOutside(*plane, minimum, maximum); });
}

void RVTERRAIN_CHUNK::cullSurface(RVCAMERA *camera) {
    const float y = positionOf(camera).y;
    if ((y > surfaceMargin && submerged) || (y < -surfaceMargin && emerged))
        visible = false;
}

void RVTERRAIN_CHUNK::cullSurfaceInverse(RVCAMERA *camera) {
    const float y = positionOf(camera).y;
    if ((y < surfaceMargin && submerged) || (y > -surfaceMargin && emerged))
        visible = false;
}

void RVTERRAIN_CHUNK::render(float inv) {
    if (!visible || !vertexBuffer || !ravolt::canBindBuffers())
        return;
    const bool depth = RVOPENGL::getProfile() == RV_OPENGL_PROFILE_ZPASS;
    const bool lit = RVLIGHT::getLighting();
    if (depth)
        shadeDepth();
    else
        shade(inv);
    chooseBuffers();
    bindArrays();
    for (const RVTERRAIN_INDEXBUFFER *list : currentBuffers)
        if (list)
            list->draw();
    if (depth)
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    if (lit)
        RVLIGHT::lightingOn();
}

void RVTERRAIN_CHUNK::shadeDepth() {
    RVMATERIAL::reset(); // the program is another one than that of the material applied last
    if (RVSHADER::usePassthrough() && RVSHADER::passthroughZPass) {
        RVSHADER::passthroughZPass->render(nullptr);
        RVSHADER::bindNearAndFarPlane(RVOPENGL::getNearPlane(), RVOPENGL::getFarPlane());
    } else {
        RVSHADER::disable();
    }
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
}

void RVTERRAIN_CHUNK::shade(float inv) {
    if (!material) {
        shadePlain();
        return;
    }
    material->render(nullptr);
    RVOPENGL::colorArrayOn();
    const RVSHADER *program = material->getShader();
    if (!program || !program->isOperative() || program != RVSHADER::terrainComplex) {
        // Only the first unit has texture coordinates.
        for (unsigned int unit = 1; unit <= normalSlots[layers - 1]; ++unit)
            RVTEXTURE::texturingOff(unit);
        return;
    }
    using ravolt::callIfPresent;
    callIfPresent<RVOPENGL::glUniform1fARB>(static_cast<GLint>(program->getParam(invParameter)),
                                            inv);
    for (unsigned int layer = 0; layer < layers; ++layer)
        callIfPresent<RVOPENGL::glUniform1iARB>(
            static_cast<GLint>(program->getParam(firstRepeatParameter + layer)), repeat[layer]);
}

// White, and without the state of an earlier chunk's material.
void RVTERRAIN_CHUNK::shadePlain() {
    RVMATERIAL::reset();
    RVSHADER::disable();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVLIGHT::lightingOff();
    RVOPENGL::colorArrayOff();
    glColor4f(1, 1, 1, 1);
}

void RVTERRAIN_CHUNK::bindArrays() const {
    constexpr auto stride = static_cast<GLsizei>(vertexBytes);
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, vertexBuffer);
    glVertexPointer(3, GL_FLOAT, stride, nullptr);
    glNormalPointer(GL_FLOAT, stride, bufferOffset(weightsOffset));
    glColorPointer(3, GL_FLOAT, stride, bufferOffset(tangentOffset));
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, coordBuffer->getBuffer());
    glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
}

bool RVTERRAIN_CHUNK::isCoarser(unsigned int side) const {
    const RVTERRAIN_CHUNK *neighbour = neighbours[side];
    return neighbour && neighbour->level > level && neighbour->visible;
}

// The body of the coarsest level includes its rim.
void RVTERRAIN_CHUNK::chooseBuffers() {
    std::fill(std::begin(currentBuffers), std::end(currentBuffers), nullptr);
    currentBuffers[0] = indexTable->body[level];
    if (level + 1 >= indexTable->levels)
        return;
    chooseEdges(0, isCoarser(2), isCoarser(3));
    chooseEdges(2, isCoarser(1), isCoarser(0));
}

// Two opposite edges. The variant, the same for both, is by the coarser ones among the two edges
// between them.
void RVTERRAIN_CHUNK::chooseEdges(unsigned int first, bool coarserForTwo, bool coarserForOne) {
    const std::size_t variant = (coarserForOne ? 1u : 0u) + (coarserForTwo ? 2u : 0u);
    const std::size_t entry = std::size_t{level} * RVTERRAIN_INDEXTABLE::corners + variant;
    for (unsigned int edge = first; edge < first + 2; ++edge)
        currentBuffers[1 + edge] =
            (isCoarser(edge) ? indexTable->edgeCoarse : indexTable->edgeSame)[edge][entry];
}
