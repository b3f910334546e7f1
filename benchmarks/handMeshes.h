#pragma once

// What hand-written OpenGL draws a benchmark's scene from: the shapes in buffers, their textures,
// and where to draw them, ordered by shape. Between `start` and `end` the arrays are on.

#include "benchScene.h"

#include <array>
#include <vector>

namespace bench {

class HandMeshes {
  public:
    explicit HandMeshes(const Scene &scene);
    ~HandMeshes();
    HandMeshes(const HandMeshes &) = delete;
    HandMeshes &operator=(const HandMeshes &) = delete;

    static void start();
    static void end();

    // Draws all of it; `prepare` is called with the placement before each mesh.
    template <class Prepare> void draw(Prepare prepare) const {
        int shape = -1;
        for (const Placement &placement : placements) {
            if (placement.shape != shape)
                select(shapes[placement.shape]);
            shape = placement.shape;
            prepare(placement);
            drawOne(placement);
        }
    }
    void draw() const {
        draw([](const Placement &) {});
    }

    // Without normals, texture coordinates and textures.
    void drawPositions() const;

  private:
    struct Stored {
        unsigned int buffers[3], elements, texture;
        int count;
    };
    std::array<Stored, numberOfShapes + 1> shapes{};
    std::vector<Placement> placements;

    void upload(int number);
    static void select(const Stored &stored);
    void drawOne(const Placement &placement) const;
};

// The window's picture, and the share of channels that differ by more than 8.
using Pixels = std::vector<unsigned char>;
Pixels readWindow();
double difference(const Pixels &a, const Pixels &b);

} // namespace bench
