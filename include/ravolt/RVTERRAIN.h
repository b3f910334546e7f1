#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/RVTERRAIN_HEADERS.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

#include <fstream>

class RVCAMERA;
class RVSKYDOME;
class RVTERRAIN_CHUNK;
class RVTERRAIN_COORDBUFFER;
class RVWATER;
struct RVTERRAIN_INDEXTABLE;

namespace ravolt {
struct TerrainGeometry;
} // namespace ravolt

// A landscape of square chunks with a sky and with water at height 0, from two files: an XML
// configuration, and the geometry that it names. Each chunk is drawn in the level of detail of its
// distance, and stitched to its neighbours. It lies in the node's own space, from the origin
// towards positive X and Z. One call of `render` draws the landscape three times: mirrored into the
// water's reflection, from below the surface into its refraction, and two units higher on the
// screen, then the water. It takes an entry of the render list like other nodes, uses the light
// that is nearest to its origin, casts no shadow and is not picked. Needs the engine's context.
class RV_API RVTERRAIN : public RVNODE {
  public:
    RVTERRAIN();
    // Deletes chunks, lists and coordinates. The sky and the water stay in the registry of nodes.
    ~RVTERRAIN() override;
    RVTERRAIN(const RVTERRAIN &) = delete;
    RVTERRAIN &operator=(const RVTERRAIN &) = delete;

    // Reads a configuration file; once, for a new terrain. Its name and that of the geometry file
    // are used unchanged, relative to the working directory; the path of RVTEXTURE::setPath
    // is prepended to those of textures. False, with lines in the log, for files that are missing
    // or malformed; objects created so far remain until the destructor runs.
    bool load(const char *filename);

    // Draws the terrain; `element` is its RVELEMENT, whose lights are activated, or NULL to draw
    // with the modelview matrix and the lights as they are. Draws nothing, logs one line, once, and
    // returns false without chunks or vertex buffers. Without water's frame buffers the two images
    // are left out, without loadable water the water, without a texture of the sky the sky. The
    // window, or with a forced target that one, is the bound target afterwards: see
    // restoreTargetOn. Buffers are unbound, texturing is off, lighting is on, and GL_CLIP_PLANE0 is
    // off. On purpose the chunks that are seen are chosen again only when the view changes: after a
    // change of the projection alone, as by RVOPENGL::resize, they are those of the former one.
    bool render(void *element) override;

    // The sky, which a successful load has created; NULL before, and after it was deleted.
    RVSKYDOME *getSkydome() const { return sky.get(); }

    // RVWATER::setSpeed and RVSKYDOME::setSpeed; nothing before a successful load.
    void setWaterSpeed(float speed);
    void setSkySpeed(float speed);

    // Additional: whether render draws into the target that is bound when it is called, and leaves
    // framebuffer, RVFBO::getCurrent and viewport as they were; off by default. Off, the window is
    // bound for the screen's pass and afterwards, so that with bloom, tone mapping or depth of
    // field the land, and what is drawn after it, misses the target of the effects.
    static void restoreTargetOn();
    static void restoreTargetOff();
    static bool isRestoringTarget();

    // Additional: the chunks in the order of the file; NULL for other numbers.
    unsigned int getNumberOfChunks() const { return numberOfChunks; }
    const RVTERRAIN_CHUNK *getChunk(unsigned int index) const;

  private:
    class Configured;

    bool loadConfig(const char *filename);
    bool loadGeometry(const char *filename);
    bool createTerrain(const ravolt::TerrainGeometry &geometry);
    void loadIndex(const ravolt::TerrainGeometry &geometry);
    void loadTextureUV(const ravolt::TerrainGeometry &geometry);
    bool loadVertices(const ravolt::TerrainGeometry &geometry);
    void linkNeighbours(const ravolt::TerrainGeometry &geometry);
    void createSky();
    void createWater();

    bool canRender();
    float eyeHeight() const;
    void computeFrustrum();
    void fetchBuffers();
    void drawImages();
    void drawReflection();
    void drawRefraction();
    void drawScreen();
    void drawSky(float scaleY) const;
    bool drawsWater() const { return water && waterLoaded; }
    void drawWater() const;
    void renderTerrain();
    void renderTerrainInv();
    void renderChunks(float inv);
    static void finish(bool culled);

    double clipPlaneBelow[4]; // keeps what is below height 0
    double clipPlaneAbove[4];
    unsigned int reflectionFbo, reflectionRenderbuffer; // OpenGL's names, of the water
    unsigned int refractionFbo, refractionRenderbuffer;
    RVCAMERA *camera; // of the pass
    std::ifstream file;
    RVTERRAIN_HEADER header;
    RVTERRAIN_CHUNK **chunks; // in the order of the file
    RVTERRAIN_INDEXTABLE *indexTable;
    RVTERRAIN_COORDBUFFER *coordBuffer;
    ravolt::WeakPointer<RVSKYDOME> sky;
    ravolt::WeakPointer<RVWATER> water;
    unsigned int numberOfChunks;
    float *lodThresholds;
    bool lodEnabled;
    float cachedModelview[16]; // for which the planes are valid
    Z3MVECTOR4D frustumPlanes[6];
    bool waterLoaded;     // the configuration has loaded the water's textures
    bool failureReported; // render has logged why it draws nothing
};
