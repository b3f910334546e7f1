// Drawing: the engine's pass, sort and draw beside the same picture from plain OpenGL with the
// fewest calls. Both end with glFinish and leave the window's swap out.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <vector>

namespace {

using Pixels = std::vector<unsigned char>;

Pixels readWindow() {
    Pixels pixels(bench::windowWidth * bench::windowHeight * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, bench::windowWidth, bench::windowHeight, GL_RGB, GL_UNSIGNED_BYTE,
                 pixels.data());
    return pixels;
}

// Share of channels that differ by more than 8.
double difference(const Pixels &a, const Pixels &b) {
    std::size_t different = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        different += std::abs(a[i] - b[i]) > 8;
    return static_cast<double>(different) / a.size();
}

void drawByEngine(const bench::Scene &scene) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(scene.camera);
    scene.root->pass(true);
    RAVOLT::end3D(true);
    glFinish();
}

// The sixteen shapes in buffers and their textures, and where to draw them, ordered by shape.
class HandDrawn {
  public:
    explicit HandDrawn(const bench::Scene &scene) : placements(bench::placements(scene)) {
        std::stable_sort(placements.begin(), placements.end(), [](const auto &a, const auto &b) {
            return std::tie(a.shape, a.lights) < std::tie(b.shape, b.lights);
        });
        for (int i = 0; i < bench::numberOfShapes; ++i)
            upload(i);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    }

    ~HandDrawn() {
        for (Stored &stored : shapes) {
            RVOPENGL::glDeleteBuffersARB(3, stored.buffers);
            RVOPENGL::glDeleteBuffersARB(1, &stored.elements);
            glDeleteTextures(1, &stored.texture);
        }
    }

    void draw(bool lit) const {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_TEXTURE_2D);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glEnableClientState(GL_NORMAL_ARRAY);
        if (lit)
            startLights();
        int shape = -1, lights = 0;
        for (const bench::Placement &placement : placements) {
            const Stored &stored = shapes[placement.shape];
            if (placement.shape != shape)
                select(stored);
            shape = placement.shape;
            if (lit)
                switchLights(lights, placement.lights);
            lights = placement.lights;
            glLoadMatrixf(placement.matrix);
            glDrawElements(GL_TRIANGLES, stored.count, GL_UNSIGNED_SHORT, nullptr);
        }
        if (lit) {
            switchLights(lights, 0);
            glDisable(GL_LIGHTING);
        }
        glDisable(GL_TEXTURE_2D);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        glDisableClientState(GL_NORMAL_ARRAY);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
        glFinish();
    }

  private:
    struct Stored {
        GLuint buffers[3], elements, texture;
        GLsizei count;
    };
    std::array<Stored, bench::numberOfShapes> shapes{};
    std::vector<bench::Placement> placements;

    // All eight lights stay set; an object is lit by switching its four nearest on.
    static void startLights() {
        glEnable(GL_LIGHTING);
        glLoadIdentity();
        for (int i = 0; i < bench::numberOfLights; ++i)
            bench::setLight(i);
        for (int i = 0; i < 8; ++i)
            glDisable(GL_LIGHT0 + i);
    }

    static void switchLights(int from, int to) {
        for (int i = 0; from != to && i < bench::numberOfLights; ++i) {
            const int bit = 1 << i;
            if ((from ^ to) & bit)
                (to & bit) ? glEnable(GL_LIGHT0 + i) : glDisable(GL_LIGHT0 + i);
        }
    }

    static void fill(GLuint buffer, const std::vector<float> &values) {
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
        RVOPENGL::glBufferDataARB(GL_ARRAY_BUFFER_ARB, values.size() * sizeof(float), values.data(),
                                  GL_STATIC_DRAW_ARB);
    }

    void upload(int number) {
        const bench::Shape shape = bench::makeShape(number);
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

        const std::vector<unsigned char> texels = bench::makeTexture(number);
        glGenTextures(1, &stored.texture);
        glBindTexture(GL_TEXTURE_2D, stored.texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT,
                        RVOPENGL::getAnisotropicLevel());
        glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
    }

    static void select(const Stored &stored) {
        glBindTexture(GL_TEXTURE_2D, stored.texture);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[0]);
        glVertexPointer(3, GL_FLOAT, 0, nullptr);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[1]);
        glNormalPointer(GL_FLOAT, 0, nullptr);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, stored.buffers[2]);
        glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, stored.elements);
    }
};

void byEngine(benchmark::State &state, bench::Scene (*make)()) {
    bench::Scene scene = make();
    drawByEngine(scene); // textures go up
    for (auto _ : state)
        drawByEngine(scene);
    state.SetItemsProcessed(state.iterations() * RVELEMENT::getNumberOfPassedElements());
    bench::destroy(scene);
}

void byHand(benchmark::State &state, bench::Scene (*make)(), bool lit) {
    bench::Scene scene = make();
    drawByEngine(scene);
    drawByEngine(scene);
    const Pixels wanted = readWindow();
    const HandDrawn hand(scene);
    // The engine's last colours and lights stand; the frame's state of textures must not.
    RAVOLT::begin3D(scene.camera);
    hand.draw(lit);
    state.counters["pictures_differ"] = difference(wanted, readWindow());
    for (auto _ : state)
        hand.draw(lit);
    bench::destroy(scene);
}

void treeByEngine(benchmark::State &state) { byEngine(state, bench::makeTreeScene); }
void treeByHand(benchmark::State &state) { byHand(state, bench::makeTreeScene, false); }
void litByEngine(benchmark::State &state) { byEngine(state, bench::makeLitScene); }
void litByHand(benchmark::State &state) { byHand(state, bench::makeLitScene, true); }

BENCHMARK(treeByEngine)->Name("2,000 nodes of 16 shapes/ravolt")->Unit(benchmark::kMillisecond);
BENCHMARK(treeByHand)->Name("2,000 nodes of 16 shapes/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(litByEngine)->Name("1,000 lit nodes, 8 lights/ravolt")->Unit(benchmark::kMillisecond);
BENCHMARK(litByHand)->Name("1,000 lit nodes, 8 lights/baseline")->Unit(benchmark::kMillisecond);

} // namespace
