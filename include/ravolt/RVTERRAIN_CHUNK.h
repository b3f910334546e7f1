#pragma once

#include "ravolt/RVTERRAIN_HEADERS.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVCAMERA;
class RVMATERIAL;
class RVTERRAIN_COORDBUFFER;
class RVTERRAIN_INDEXBUFFER;
class RVTEXTURE;
struct RVTERRAIN_INDEXTABLE;

// A square of a terrain: a block of vertices in a vertex buffer of its own, drawn by the lists that
// all chunks share. Terrains make and own their chunks; applications read them by
// RVTERRAIN::getChunk. Needs the engine's context.
class RV_API RVTERRAIN_CHUNK {
  public:
    static constexpr unsigned int neighbourCount = 4;    // one a side
    static constexpr unsigned int layers = 4;            // of textures
    static constexpr unsigned int vertexBytes = 36;      // position, weights of the layers, tangent
    static constexpr unsigned int frustumPlaneCount = 6; // of the view
    static constexpr unsigned int bufferCount = 1 + neighbourCount; // the body and the edges

    // Uploads `vertices`, chunkSize times chunkSize of them, and computes the bounds from the
    // headers. The table and the coordinates are shared, and not owned.
    RVTERRAIN_CHUNK(const RVTERRAIN_HEADER &terrain, const RVTERRAIN_CHUNK_HEADER &chunk,
                    const void *vertices, RVTERRAIN_INDEXTABLE *table,
                    RVTERRAIN_COORDBUFFER *coords);
    ~RVTERRAIN_CHUNK();
    RVTERRAIN_CHUNK(const RVTERRAIN_CHUNK &) = delete;
    RVTERRAIN_CHUNK &operator=(const RVTERRAIN_CHUNK &) = delete;

    // One of the four neighbours; NULL for none.
    void setNeighbour(unsigned int side, RVTERRAIN_CHUNK *neighbour);
    const RVTERRAIN_CHUNK *getNeighbour(unsigned int side) const {
        return side < neighbourCount ? neighbours[side] : nullptr;
    }

    // Squared distances, ascending, one fewer than the levels of the table; shared, and not owned.
    void setLodThresholds(float *thresholds) { lodThresholds = thresholds; }

    // The planes of the view in the terrain's own space: left, right, bottom, top, near, far.
    // Pointers are stored.
    void setFrustumPlanes(Z3MVECTOR4D *planes);

    // Four layers, each with a texture of colour and height, one of normal and gloss, and the
    // number of its tiles along the chunk: the textures of these names that are already loaded, or
    // else the TGA files, with the path of RVTEXTURE::setPath prepended. Makes a new material,
    // which stays in its registry. The flag is not used: the program is RVSHADER::terrainComplex
    // with RVSHADER::useTerrain, else none. False, with a line in the log, for a file that
    // RVTEXTURE::load refuses; the material stays as it was then.
    bool loadTexture(const char *diffuse1, const char *normal1, int repeat1, const char *diffuse2,
                     const char *normal2, int repeat2, const char *diffuse3, const char *normal3,
                     int repeat3, const char *diffuse4, const char *normal4, int repeat4,
                     bool complex);

    // Whether the chunk is in the view, and its level for the distance from its centre to the
    // camera. `inverted` for the chunk mirrored at height 0. Without `lodEnabled`, without
    // thresholds and out of view the level is 0. Levels beyond the sixth are never chosen.
    void computeLevel(RVCAMERA *camera, bool lodEnabled, bool inverted);

    // Whether a part of the chunk's box may be in the view: false when all of its corners are
    // outside of one plane.
    bool isInFrustum(bool inverted) const;

    // Hide a chunk that lies on the other side of the water's surface: for the reflection and the
    // screen, and for the refraction.
    void cullSurface(RVCAMERA *camera);
    void cullSurfaceInverse(RVCAMERA *camera);

    // Draws the chunk, when it is visible, with the level and the neighbours' levels that were
    // computed last. `inv` is 1, or -1 for the mirrored chunk. Without a material it is drawn white
    // by the fixed functions.
    void render(float inv);

    // Additional: what the last pass has computed, and where the chunk is.
    bool isVisible() const { return visible; }
    unsigned int getLevel() const { return level; }
    Z3MVECTOR3D getCenter() const { return center; }
    Z3MVECTOR3D getMinimum() const { return {minX, header.minHeight, minZ}; }
    Z3MVECTOR3D getMaximum() const { return {maxX, header.maxHeight, maxZ}; }
    RVMATERIAL *getMaterial() const { return material.get(); }

  private:
    void shade(float inv);
    void shadeDepth();
    void shadePlain();
    void bindArrays() const;
    void chooseBuffers();
    void chooseEdges(unsigned int first, bool coarserForTwo, bool coarserForOne);
    bool isCoarser(unsigned int side) const;

    RVTERRAIN_CHUNK_HEADER header;
    RVTERRAIN_HEADER terrainHeader;
    RVTERRAIN_CHUNK *neighbours[neighbourCount];
    const RVTERRAIN_INDEXBUFFER *currentBuffers[bufferCount]; // chosen in the last drawing
    ravolt::WeakPointer<RVMATERIAL> material;
    ravolt::WeakPointer<RVTEXTURE> diffuse[layers];
    ravolt::WeakPointer<RVTEXTURE> normal[layers];
    int repeat[layers];
    unsigned char level;       // 0 is the finest
    unsigned int vertexBuffer; // OpenGL's name; 0 for none
    RVTERRAIN_INDEXTABLE *indexTable;
    RVTERRAIN_COORDBUFFER *coordBuffer;
    Z3MVECTOR3D center;
    bool visible;
    bool submerged; // below the water's surface as a whole
    bool emerged;   // above it as a whole
    float minX, minZ, maxX, maxZ;
    float *lodThresholds;
    Z3MVECTOR4D *frustumPlanes[frustumPlaneCount];
};
