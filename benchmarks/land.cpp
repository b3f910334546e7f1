// Makes the terrain, and draws by hand what the engine's three passes have chosen.

#include "land.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWATER.h"
#include "tools/terrain/configWriter.h"
#include "tools/terrain/geometryWriter.h"
#include "tools/writers/tgaWriter.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench {

namespace {

namespace land = ravolt::tool::terrain;

constexpr unsigned int side = 64; // chunks
constexpr unsigned int chunkSize = land::chunkSizes[0];
constexpr std::size_t verticesOfChunk = std::size_t{chunkSize} * chunkSize;
constexpr std::size_t chunkBytes = verticesOfChunk * RVTERRAIN_CHUNK::vertexBytes;
constexpr std::size_t chunkHeaderBytes = 20;
constexpr float spacing = 0.5f;
constexpr float farPlane = 1500;
constexpr int repeats = 4;

// Hills and lakes, several chunks wide.
float heightAt(unsigned int i, unsigned int j) {
    const float x = static_cast<float>(i) * spacing, z = static_cast<float>(j) * spacing;
    return 12 + 30 * std::sin(x / 60) * std::sin(z / 80) + 6 * std::sin(x / 17 + z / 23);
}

std::string textureName(std::size_t number) {
    return "bench_land" + std::to_string(number) + ".tga";
}

constexpr std::size_t textures = 2 * land::numberOfLayers + 3;

// Colours, then normals that point up, then those of the water and the sky.
void writeTextures() {
    std::vector<unsigned char> up;
    for (int i = 0; i < 64 * 64; ++i)
        up.insert(up.end(), {128, 128, 255});
    for (std::size_t i = 0; i < textures; ++i) {
        const bool colors = i < land::numberOfLayers || i + 1 == textures;
        const std::vector<unsigned char> texels = colors ? makeTexture(static_cast<int>(i)) : up;
        ravolt::writeTga(textureName(i), {64, 64, 3, false, texels.data()});
    }
}

land::WrittenGeometry writeGeometry() {
    const land::GridSize size{chunkSize, side, side};
    land::Heights heights(size.width(), size.depth());
    for (unsigned int j = 0; j < size.depth(); ++j)
        for (unsigned int i = 0; i < size.width(); ++i)
            heights.at(i, j) = heightAt(i, j);
    land::GroundRules rules;
    rules.spacing = spacing;
    land::WrittenGeometry written;
    ravolt::FileTransaction files;
    files.stage(landGeometry, [&](const ravolt::FileTransaction::Append &append) {
        written = land::writeGeometry({heights, size, rules}, append, [](double) {});
        return written.whole;
    });
    if (!files.commit().empty() || !written.whole) {
        std::fprintf(stderr, "%s cannot be written\n", landGeometry);
        std::exit(1);
    }
    return written;
}

template <class Node> Node *findNode(RV_NODE_TYPE type) {
    for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
        if (node->getType() == type)
            return static_cast<Node *>(node);
    return nullptr;
}

void bindArray(unsigned int buffer) { RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer); }

const void *at(std::size_t offset) { return reinterpret_cast<const void *>(offset); }

constexpr double keepBelow[] = {0, -1, 0, 0}, keepAbove[] = {0, 1, 0, 0};

} // namespace

const char *const Land::passNames[passes] = {"reflection", "refraction", "screen"};

void writeLand() {
    if (std::ifstream(landConfig))
        return;
    writeTextures();
    const land::WrittenGeometry geometry = writeGeometry();
    land::TerrainConfig config;
    config.geometry = landGeometry;
    for (std::size_t layer = 0; layer < land::numberOfLayers; ++layer)
        config.layers[layer] = {textureName(layer), textureName(land::numberOfLayers + layer),
                                repeats};
    config.waterNormal = textureName(textures - 3);
    config.waterDudv = textureName(textures - 2);
    config.sky = textureName(textures - 1);
    config.waterRepeat = 64;
    config.lod = land::lodDistances(geometry.centerDistance, 0);
    std::ofstream(landConfig) << land::configText(config);
}

void removeLand() {
    std::remove(landConfig);
    std::remove(landGeometry);
    for (std::size_t i = 0; i < textures; ++i)
        std::remove(textureName(i).c_str());
}

Land::Land() : terrain(nullptr), formerFarPlane(RVOPENGL::getFarPlane()) {
    writeLand();
    stopEngine();
    RVOPENGL::setFarPlane(farPlane);
    startEngine(true, 1); // Mesa's software driver takes very long to filter with more than 1
    scene.root = new RVNODE;
    scene.camera = new RVCAMERA;
    scene.camera->setPosition(1000, 60, 1500);
    scene.camera->setRotation(-8, 20, 0);
    RVLIGHT *light = new RVLIGHT;
    light->setPosition(500, 400, 1200);
    light->setDiffuse(1, 1, 1, 1);
    light->link(scene.root);
    terrain = new RVTERRAIN;
    if (!terrain->load(landConfig)) {
        std::fprintf(stderr, "the terrain cannot be loaded, see ravolt_log.txt\n");
        std::exit(1);
    }
    terrain->link(scene.root);
    sky = terrain->getSkydome();
    water = findNode<RVWATER>(RV_NODE_TYPE_WATER);
    for (unsigned int i = 0; i < terrain->getNumberOfChunks(); ++i)
        chunks.push_back(const_cast<RVTERRAIN_CHUNK *>(terrain->getChunk(i)));
}

Land::~Land() { RVOPENGL::setFarPlane(formerFarPlane); }

void Land::drawByEngine() { bench::drawByEngine(scene); }

// ---- By hand: the chunks, levels and lists that the engine's frame has chosen.

void Land::choose(int pass) const {
    for (RVTERRAIN_CHUNK *chunk : chunks) {
        chunk->computeLevel(scene.camera, true, pass == 0);
        pass == 1 ? chunk->cullSurfaceInverse(scene.camera) : chunk->cullSurface(scene.camera);
    }
}

void Land::chooseAll() const {
    for (int pass = 0; pass < passes; ++pass)
        choose(pass);
}

void Land::record(int pass) {
    choose(pass);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (!chunks[i]->isVisible())
            continue;
        Drawn one{static_cast<unsigned int>(i), chunks[i]->getLevel(), 0};
        for (unsigned int edge = 0; edge < land::numberOfEdges; ++edge) {
            const RVTERRAIN_CHUNK *next = chunks[i]->getNeighbour(edge);
            if (next && next->isVisible() && next->getLevel() > one.level)
                one.coarser |= 1u << edge;
        }
        drawn[pass].push_back(one);
    }
}

void Land::uploadLists() {
    land::IndexList all;
    const auto add = [&all](const land::IndexList &list) -> List {
        const std::size_t offset = all.size() * sizeof list[0];
        all.insert(all.end(), list.begin(), list.end());
        return {offset, static_cast<int>(list.size())};
    };
    for (unsigned int level = 0; level < land::terrainLevels; ++level) {
        bodies.push_back(add(land::bodyList(chunkSize, level)));
        for (unsigned int edge = 0; edge < land::numberOfEdges; ++edge)
            for (const bool coarser : {false, true})
                edges.push_back(
                    add(land::edgeList(chunkSize, level, static_cast<land::Edge>(edge), coarser)));
    }
    RVOPENGL::glGenBuffersARB(1, &indexBuffer);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    RVOPENGL::glBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, all.size() * sizeof all[0], all.data(),
                              GL_STATIC_DRAW_ARB);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

// The chunks end the file, after the texture coordinates.
void Land::uploadChunks() {
    std::ifstream file(landGeometry, std::ios::binary | std::ios::ate);
    const std::size_t first =
        static_cast<std::size_t>(file.tellg()) - chunks.size() * (chunkHeaderBytes + chunkBytes);
    std::vector<char> bytes(chunkBytes);
    const auto upload = [&](unsigned int &buffer, std::size_t offset, std::size_t size) {
        file.seekg(static_cast<std::streamoff>(offset));
        file.read(bytes.data(), static_cast<std::streamsize>(size));
        RVOPENGL::glGenBuffersARB(1, &buffer);
        bindArray(buffer);
        RVOPENGL::glBufferDataARB(GL_ARRAY_BUFFER_ARB, size, bytes.data(), GL_STATIC_DRAW_ARB);
    };
    constexpr std::size_t coordBytes = verticesOfChunk * 2 * sizeof(float);
    upload(coordBuffer, first - coordBytes, coordBytes);
    buffers.resize(chunks.size());
    for (auto &list : drawn)
        for (Drawn &one : list) {
            unsigned int &buffer = buffers[one.buffer];
            if (!buffer)
                upload(buffer,
                       first + one.buffer * (chunkHeaderBytes + chunkBytes) + chunkHeaderBytes,
                       chunkBytes);
            one.buffer = buffer;
        }
    bindArray(0);
}

void Land::startHand() {
    for (int pass = 0; pass < passes; ++pass)
        record(pass);
    uploadLists();
    uploadChunks();
    RAVOLT::begin3D(scene.camera);
}

// All chunks have the same textures and the same program.
void Land::bindProgram(float inv) const {
    RVMATERIAL::reset();
    chunks[0]->getMaterial()->render(nullptr);
    const RVSHADER &program = *RVSHADER::terrainComplex;
    RVOPENGL::glUniform1fARB(static_cast<GLint>(program.getParam(2)), inv);
    for (unsigned int layer = 0; layer < land::numberOfLayers; ++layer)
        RVOPENGL::glUniform1iARB(static_cast<GLint>(program.getParam(3 + layer)), repeats);
}

void Land::drawChunks(int pass, float inv) const {
    constexpr GLenum arrays[] = {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY,
                                 GL_TEXTURE_COORD_ARRAY};
    constexpr auto stride = static_cast<GLsizei>(RVTERRAIN_CHUNK::vertexBytes);
    bindProgram(inv);
    for (const GLenum array : arrays)
        glEnableClientState(array);
    bindArray(coordBuffer);
    glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    const auto draw = [](const List &list) {
        if (list.count)
            glDrawElements(GL_TRIANGLE_STRIP, list.count, GL_UNSIGNED_SHORT, at(list.offset));
    };
    for (const Drawn &one : drawn[pass]) {
        bindArray(one.buffer);
        glVertexPointer(3, GL_FLOAT, stride, nullptr);
        glNormalPointer(GL_FLOAT, stride, at(12));
        glColorPointer(3, GL_FLOAT, stride, at(24));
        draw(bodies[one.level]);
        if (one.level + 1 < land::terrainLevels)
            for (unsigned int edge = 0; edge < land::numberOfEdges; ++edge)
                draw(edges[(one.level * land::numberOfEdges + edge) * 2 +
                           (one.coarser >> edge & 1)]);
    }
    for (const GLenum array : arrays)
        glDisableClientState(array);
    bindArray(0);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

// The engine's own, as the water: one draw each.
void Land::drawSky(float scaleY) const {
    glPushMatrix();
    glScalef(1, scaleY, 1);
    sky->render(nullptr);
    glPopMatrix();
}

void Land::drawByHand() {
    const auto into = [](unsigned int framebuffer, int width, int height) {
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer);
        glViewport(0, 0, width, height);
    };
    const int size = RVSETTINGS::getSDLWaterSize();
    unsigned int reflection, refraction, depth;
    water->getReflectionBuffer(reflection, depth);
    water->getRefractionBuffer(refraction, depth);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadMatrixf(terrain->getCachedMatrix()->e);
    RVLIGHT::lightingOff();
    glEnable(GL_CULL_FACE);
    glEnable(GL_CLIP_PLANE0);
    glClipPlane(GL_CLIP_PLANE0, keepBelow);

    into(reflection, size, size);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glCullFace(GL_FRONT);
    drawSky(-1);
    drawChunks(0, -1);
    glCullFace(GL_BACK);

    into(refraction, size, size);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    drawChunks(1, 1);

    into(0, windowWidth, windowHeight);
    glClipPlane(GL_CLIP_PLANE0, keepAbove);
    drawSky(1);
    glPushMatrix();
    glTranslatef(0, 2, 0);
    drawChunks(2, 1);
    glPopMatrix();
    glDisable(GL_CULL_FACE);
    glDisable(GL_CLIP_PLANE0);
    water->render(nullptr);
    RVSHADER::disable();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    glFinish();
}

namespace {

const AddedJobs added({{"64 by 64 chunks", "land",
                        []() -> std::unique_ptr<Job> { return std::make_unique<Land>(); }}});

} // namespace

} // namespace bench
