#pragma once

// What hand-written OpenGL draws a benchmark's scene from: the shapes in buffers, their textures,
// and where to draw them, ordered by shape. Between `start` and `end` the arrays are on. Meshes of
// a shape share its buffers, or each has its own, as the engine's do.

#include "benchScene.h"

#include <vector>

namespace bench {

enum class Buffers { shared, own };

class HandMeshes {
  public:
    explicit HandMeshes(const Scene &scene, Buffers buffers = Buffers::shared);
    ~HandMeshes();
    HandMeshes(const HandMeshes &) = delete;
    HandMeshes &operator=(const HandMeshes &) = delete;

    static void start();
    static void end();

    // Draws all of it; `prepare` is called with the placement before each mesh.
    template <class Prepare> void draw(Prepare prepare) const {
        const Stored *selected = nullptr;
        for (std::size_t i = 0; i < placements.size(); ++i) {
            const Stored &one = storedOf(i);
            prepare(placements[i]);
            if (&one != selected)
                select(one);
            selected = &one;
            drawOne(i);
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
    Buffers buffers;
    std::vector<Placement> placements;
    std::vector<unsigned int> textures; // by shape
    std::vector<Stored> stored;         // by shape, or by placement

    const Stored &storedOf(std::size_t placement) const {
        return stored[buffers == Buffers::own ? placement : placements[placement].shape];
    }
    void upload(int shape);
    static void select(const Stored &stored);
    void drawOne(std::size_t placement) const;
};

// The window's picture, and the share of channels that differ by more than 8.
using Pixels = std::vector<unsigned char>;
Pixels readWindow();
double difference(const Pixels &a, const Pixels &b);

} // namespace bench
