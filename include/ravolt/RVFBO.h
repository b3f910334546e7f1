#pragma once

#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVSHADER;
class RVTEXTURE;

namespace ravolt {
struct RenderTargets;
}

// Additional: names for the attachments of bindTexture and bindRenderBuffer.
constexpr int RV_FBO_COLOR = 0;        // a texture as colour
constexpr int RV_FBO_DEPTH = 1;        // a texture as depth, of a target without colour
constexpr int RV_FBO_DEPTH_BUFFER = 2; // a depth buffer of the target's own

// A render target: a frame buffer object of OpenGL with one colour or depth texture, an optional
// depth render buffer, and the size they share; also the two operations on whole images that the
// effects are made of. RVOPENGL::getFbo returns the fourteen targets of the engine;
// applications can create others. All targets are in a registry, which owns them: create them with
// `new`; RAVOLT::free or cleanUp deletes those that the application has not deleted. The texture
// is owned by the registry of textures, and the target does not count as its user: call its
// incReferences, or the collector deletes it (the engine does so for its own targets). A target
// whose texture is deleted has none. Needs the engine's context; without RVOPENGL::useFBO() targets
// do nothing.
class RV_API RVFBO {
  public:
    // Registers the target under a fresh identifier and the name "[fbo ID]"; nothing is attached.
    RVFBO();
    // Deletes its OpenGL objects except the texture, releases the identifier and removes the target
    // from the registry. Call unbind first when it is the current one.
    ~RVFBO();
    RVFBO(const RVFBO &) = delete;
    RVFBO &operator=(const RVFBO &) = delete;

    // Attaches a texture that is in video memory: RV_FBO_COLOR, or RV_FBO_DEPTH for a target
    // without colour. The target has its size and is current afterwards; the viewport is set
    // with the next change of target. False without frame buffer objects; false, with a line in the
    // log, for NULL and for any other attachment.
    bool bindTexture(int attachment, RVTEXTURE *texture);

    // Attaches a depth buffer of its own, of 24 bits and the given size in pixels, in place of a
    // former one: RV_FBO_DEPTH_BUFFER. The target has this size and is current afterwards. False
    // without frame buffer objects; false, with a line in the log, for any other attachment, where
    // the former buffer is deleted all the same.
    bool bindRenderBuffer(int attachment, int sizeX, int sizeY);

    // Whether OpenGL can draw into it; if not, OpenGL's status is logged. The target is current
    // afterwards.
    bool isOk();

    // Makes the target current, and its whole area the viewport, unless it is current already;
    // uploads its texture again, empty, when the application has unloaded it. `data` is ignored.
    // Always true.
    bool render(void *data);

    // Makes the window current. The viewport does not change.
    static void unbind();

    // Blurs this target's texture in four levels, each half the size of the one before, and draws
    // `combine` of the four over `target`. The levels are eight targets of the pool from
    // `firstFbo` on: the first, third, fifth and seventh receive them. Depth test and blending must
    // be off. The window is current afterwards; units 1 to 3 are off. False, with nothing drawn,
    // where something is NULL or the pool does not hold the levels.
    bool blur(RVFBO *target, RVSHADER *combine, int firstFbo);

    // Mean luminance (0.3 red + 0.59 green + 0.11 blue) of the scene, which is target 0 of the pool
    // whatever this target is. With NULL for `result` it draws and reads, and stores nothing. The
    // window is current afterwards. False, with nothing drawn, when there is no pool.
    bool computeLuminance(float *result);

    // Deletes all targets, the pool's too. False when there are none.
    static bool cleanUp();

    // The number of targets that exist, the pool's too.
    static unsigned int getNumberOfFbos();
    // The target that is drawn into; NULL for the window. The pointer does not change when the
    // current target is deleted.
    static RVFBO *getCurrent();

    // Counts up from 1 with each target; not OpenGL's name.
    unsigned int getId() const;
    unsigned int getGLId() const; // OpenGL's name; 0 without frame buffer objects
    char *getName();
    RVTEXTURE *getTexture() const; // NULL before, and when it was deleted
    int getSizeX() const;          // in pixels; 0 before
    int getSizeY() const;

  private:
    void attach();
    void reattachTexture();

    unsigned int id;
    char name[256];
    RVFBO *previous, *next;
    ravolt::WeakPointer<RVTEXTURE> texture;
    int sizeX, sizeY;
    unsigned int glId;
    unsigned int renderBuffer;  // OpenGL's name; 0 for none
    unsigned int attachment;    // where the texture is
    unsigned int attachedGlId;  // the texture's name in OpenGL when it was attached
    unsigned long seenReleases; // releases of uploads at the last check

    static RVFBO *firstFbo, *lastFbo;
    static RVFBO *currentFbo; // NULL for the window
    static int viewport[4];   // On purpose: used by nothing. No target keeps a viewport.

    friend struct ravolt::RenderTargets;
    friend struct ravolt::Registry<RVFBO>;
};
