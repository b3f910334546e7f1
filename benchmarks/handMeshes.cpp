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

void unbindBuffers() {
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

} // namespace

HandMeshes::HandMeshes(const Scene &scene) : placements(bench::placements(scene)) {
    std::stable_sort(placements.begin(), placements.end(), [](const auto &a, const auto &b) {
        return std::tie(a.shape, a.lights) < std::tie(b.shape, b.lights);
    });
    for (int i = 0; i <= numberOfShapes; ++i)
        upload(i);
    unbindBuffers();
}

HandMeshes::~HandMeshes() {
    for (Stored &stored : shapes) {
        RVOPENGL::glDeleteBuffersARB(3, stored.buffers);
        RVOPENGL::glDeleteBuffersARB(1, &stored.elements);
        glDeleteTextures(1, &stored.texture);
    }
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
    Stored &stored = shapes[number];
    RVOPENGL::glGenBuffersARB(3, stored.buffers);
    RVOPENGL::glGenBuffersARB(1, &stored.elements);
    fill(stored.buffers[0], shape.positions);
    fill(stored.buffers[1], shape.normals);
    fill(stored.buffers[2], shape.uvs);
    RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, stored.elements);
    RVOPENGL::glBufferDataARB(GL_ELEMENT_ARRAY_BUFFER_ARB, shape.indices.size() * 2,
                              shape.indices.data(), GL_STATIC_DRAW_ARB);
    stored.count = static_cast<GLsizei>(shape.indices.size());

    const std::vector<unsigned char> texels = makeTexture(number);
    glGenTextures(1, &stored.texture);
    glBindTexture(GL_TEXTURE_2D, stored.texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, RVOPENGL::getAnisotropicLevel());
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
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

void HandMeshes::drawOne(const Placement &placement) const {
    glLoadMatrixf(placement.matrix);
    glDrawElements(GL_TRIANGLES, shapes[placement.shape].count, GL_UNSIGNED_SHORT, nullptr);
}

void HandMeshes::drawPositions() const {
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    int shape = -1;
    for (const Placement &placement : placements) {
        if (placement.shape != shape) {
            const Stored &stored = shapes[placement.shape];
            RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[0]);
            glVertexPointer(3, GL_FLOAT, 0, nullptr);
            RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, stored.elements);
        }
        shape = placement.shape;
        drawOne(placement);
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
