// Draws the meshes of a benchmark's scene by direct OpenGL calls.

#include "handMeshes.h"

#include "ravolt/RVOPENGL.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace bench {

namespace {

void fill(GLuint buffer, const std::vector<float> &values) {
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
    RVOPENGL::glBufferDataARB(GL_ARRAY_BUFFER_ARB, values.size() * sizeof(float), values.data(),
                              GL_STATIC_DRAW_ARB);
}

GLuint uploadTexture(int number) {
    const std::vector<unsigned char> texels = makeTexture(number);
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, RVOPENGL::getAnisotropicLevel());
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
    return texture;
}

void unbindBuffers() {
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

} // namespace

HandMeshes::HandMeshes(const Scene &scene, Buffers wantedBuffers)
    : buffers(wantedBuffers), placements(bench::placements(scene)) {
    std::stable_sort(placements.begin(), placements.end(), [](const auto &a, const auto &b) {
        return std::tie(a.shape, a.lights) < std::tie(b.shape, b.lights);
    });
    for (int shape = 0; shape <= numberOfShapes; ++shape)
        textures.push_back(uploadTexture(shape));
    if (buffers == Buffers::own)
        for (const Placement &placement : placements)
            upload(placement.shape);
    else
        for (int shape = 0; shape <= numberOfShapes; ++shape)
            upload(shape);
    unbindBuffers();
}

HandMeshes::~HandMeshes() {
    for (Stored &one : stored) {
        RVOPENGL::glDeleteBuffersARB(3, one.buffers);
        RVOPENGL::glDeleteBuffersARB(1, &one.elements);
    }
    glDeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
}

void HandMeshes::start() {
    glEnable(GL_TEXTURE_2D);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
}

void HandMeshes::end() {
    glDisable(GL_TEXTURE_2D);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    unbindBuffers();
}

void HandMeshes::upload(int number) {
    const Shape shape = makeShape(number);
    Stored one{};
    RVOPENGL::glGenBuffersARB(3, one.buffers);
    RVOPENGL::glGenBuffersARB(1, &one.elements);
    fill(one.buffers[0], shape.positions);
    fill(one.buffers[1], shape.normals);
    fill(one.buffers[2], shape.uvs);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, one.elements);
    RVOPENGL::glBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, shape.indices.size() * 2,
                              shape.indices.data(), GL_STATIC_DRAW_ARB);
    one.texture = textures[number];
    one.count = static_cast<GLsizei>(shape.indices.size());
    stored.push_back(one);
}

void HandMeshes::select(const Stored &stored) {
    glBindTexture(GL_TEXTURE_2D, stored.texture);
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[0]);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[1]);
    glNormalPointer(GL_FLOAT, 0, nullptr);
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[2]);
    glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, stored.elements);
}

void HandMeshes::drawOne(std::size_t placement) const {
    glLoadMatrixf(placements[placement].matrix);
    glDrawElements(GL_TRIANGLES, storedOf(placement).count, GL_UNSIGNED_SHORT, nullptr);
}

void HandMeshes::drawPositions() const {
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    const Stored *selected = nullptr;
    for (std::size_t i = 0; i < placements.size(); ++i) {
        const Stored &one = storedOf(i);
        if (&one != selected) {
            RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, one.buffers[0]);
            glVertexPointer(3, GL_FLOAT, 0, nullptr);
            RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, one.elements);
        }
        selected = &one;
        drawOne(i);
    }
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
}

Pixels readWindow() {
    Pixels pixels(windowWidth * windowHeight * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, windowWidth, windowHeight, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

double difference(const Pixels &a, const Pixels &b) {
    std::size_t different = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        different += std::abs(a[i] - b[i]) > 8;
    return static_cast<double>(different) / a.size();
}

} // namespace bench
