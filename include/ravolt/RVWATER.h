#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/api.h"
#include "ravolt/owned.h"
#include "ravolt/weakPointer.h"

class RVMATERIAL;
class RVSHADER;
class RVTEXTURE;

// A flat rectangle of water in the node's XZ plane, from the node's origin towards positive X and
// Z, with two images of its own: what is drawn into its two frame buffers is seen as reflection and
// refraction. RVSHADER::water mixes the two with a moving normal map; where the program is missing
// the fixed functions draw. The water fills no image itself: bind the frame buffers of the two
// getters, draw the mirrored scene into one and the scene below the surface into the other, and
// bind the target of before. The water owns its frame buffers and its surface, and neither its
// textures nor its material, which stay in their registries. It takes an entry of the render list
// like other nodes, casts no shadow and is not picked. Needs the engine's context.
class RV_API RVWATER : public RVNODE {
  public:
    // 1024 by 1024 units of the scene, with speed 0.005.
    RVWATER();
    ~RVWATER() override;

    // A copy has the values of every field and draws with the original's frame buffers and surface,
    // which it does not own: it must not be used after the original was deleted. Assignment
    // likewise; the water's own objects are no longer used, and are released at its end.
    RVWATER(const RVWATER &other);
    RVWATER &operator=(const RVWATER &other);

    // The extents along Z and X, in units of the scene. On purpose Z comes first.
    void init(float newSizeZ, float newSizeX);

    // Normal map and distortion map, each the texture of this file name that is already loaded, or
    // else the TGA file, with the path of RVTEXTURE::setPath prepended; `newRepeat` is how often
    // they are tiled over the water. Makes a new material and, with frame buffer objects, two new
    // images of RVSETTINGS::getSDLWaterSize() pixels each way with their frame buffers; those of an
    // earlier call are deleted, while its textures and its material stay in their registries. The
    // window is the bound target afterwards. False, with a line in the log, for NULL and for files
    // that RVTEXTURE::load refuses; an earlier material stays in use then.
    bool loadTextures(const char *bumpFile, const char *dudvFile, int newRepeat);

    // Factor on the clock of the waves, which advances by RAVOLT::getFPSfactor() in each render; 0
    // stops the waves.
    void setSpeed(float newSpeed);

    // OpenGL's names of a frame buffer and of its depth buffer; 0 without frame buffer objects or
    // before loadTextures.
    void getReflectionBuffer(unsigned int &fbo, unsigned int &renderBuffer) const;
    void getRefractionBuffer(unsigned int &fbo, unsigned int &renderBuffer) const;

    // Draws the water; `element` is its RVELEMENT, whose lights are activated, or NULL to draw with
    // the modelview matrix and the lights as they are. With RAVOLT::shadowingOn by
    // RVSHADER::waterS, from the shadow map of the frame, or lit everywhere when no light casts
    // shadows. The current colour stays as it was. Without a successful loadTextures it draws
    // nothing, logs one line, once, and returns false.
    bool render(void *element) override;

  private:
    // What the destructor releases; none for a copy.
    struct Storage {
        unsigned int reflectionFbo, refractionFbo;
        unsigned int reflectionRenderBuffer, refractionRenderBuffer;
        unsigned int surfaceList;
        unsigned int litMap;
    };

    static bool isImage(const RVTEXTURE *texture); // of any water
    void createTexture();
    void createSurface();
    void copyFields(const RVWATER &other);
    void releaseFrameBuffers();
    void restoreImages();
    void applyParameters(const RVSHADER &program, bool shadowed);
    void bindShadowMap();

    float speed;
    float time; // the clock: the sum of the frames' factors
    unsigned int reflectionFbo;
    unsigned int refractionFbo;
    unsigned int reflectionRenderBuffer;
    unsigned int refractionRenderBuffer;
    unsigned int surfaceList;
    ravolt::WeakPointer<RVMATERIAL> material;
    ravolt::WeakPointer<RVTEXTURE> reflectionTexture;
    ravolt::WeakPointer<RVTEXTURE> refractionTexture;
    ravolt::WeakPointer<RVTEXTURE> bumpTexture;
    ravolt::WeakPointer<RVTEXTURE> dudvTexture;
    int repeat;
    float sizeZ;
    float sizeX;
    ravolt::Owned<Storage> owned;
    unsigned int attachedReflection; // the number of deleted uploads when the images were attached
    unsigned int attachedRefraction;
    bool failureReported; // render has logged why it draws nothing
    ravolt::WeakPointers<RVWATER> weakPointers;

    friend struct ravolt::Registry<RVWATER>;
};
