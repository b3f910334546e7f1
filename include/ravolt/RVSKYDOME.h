#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/RVSKYDOME_VERTEX.h"
#include "ravolt/api.h"
#include "ravolt/owned.h"
#include "ravolt/weakPointer.h"

class RVMATERIAL;
class RVTEXTURE;

// A textured half sphere around the camera of the pass, sunk by a third of its radius so that its
// rim lies below the horizon. Its size is nine tenths of the distance of the far plane
// (RVOPENGL::setFarPlane) when it is made; the vertex buffers are filled once, in the constructor,
// so make it while the engine runs. The sky owns its buffers, and neither its texture nor its
// material, which stay in their registries. It is drawn unlit, takes an entry of the render list
// like other nodes, casts no shadow and is not picked. It writes depths: draw it where nothing lies
// farther away than it.
class RV_API RVSKYDOME : public RVNODE {
  public:
    RVSKYDOME();
    ~RVSKYDOME() override;

    // A copy has the values of every field and draws from the original's buffers, which it does not
    // own: it must not be drawn after the original was deleted. Assignment likewise; the sky's own
    // buffers are no longer used, and are released at its end.
    RVSKYDOME(const RVSKYDOME &other);
    RVSKYDOME &operator=(const RVSKYDOME &other);

    // Stores the radius, in units of the scene, and the steps of latitude and longitude in degrees.
    // On purpose without a visible effect: the geometry is made in the constructor alone.
    void init(float newRadius, float latitudeStep, float longitudeStep);

    // The texture of this file name: the one that is already loaded, or else the TGA file, with the
    // path of RVTEXTURE::setPath prepended; repeated and with mipmaps. U runs once around the
    // horizon, V is 0 at the rim and 1 at the zenith. The first call makes the material; with
    // RVSHADER::useSkydome it is drawn by RVSHADER::skydome, which brightens it by a fifth of the
    // ambient light of the scene, else by the fixed functions. False, with a line in the log, for
    // NULL and for a file that RVTEXTURE::load refuses; the texture that is drawn stays as it was
    // then.
    bool loadTexture(const char *filename);

    // Stored; nothing reads it. To turn the sky, turn the node.
    void setSpeed(float newSpeed);

    // Draws the sky; `element` is its RVELEMENT, or NULL to draw with the modelview matrix as it
    // is. The Y component of the node's rotation, in degrees, turns the dome about its own axis, on
    // purpose in addition to the rotation that an element's matrix holds. Lighting is on
    // afterwards, the current colour is white and the client arrays are off. Without a texture or
    // without vertex buffers it draws nothing, logs one line, once, and returns false.
    bool render(void *element) override;

  private:
    // What the destructor releases; none for a copy.
    struct Buffers {
        unsigned int vertex;
        unsigned int index;
    };

    void createDome();
    void copyFields(const RVSKYDOME &other);
    bool canRender();
    void drawStrip() const;

    float speed;
    float time; // read by nothing
    float radius;
    float dtheta;              // step of latitude in degrees, 0 at the zenith and 90 at the rim
    float dphi;                // step of longitude in degrees
    unsigned int vertexBuffer; // OpenGL's names; 0 for none
    unsigned int indexBuffer;
    unsigned short numberOfIndices;
    ravolt::WeakPointer<RVTEXTURE> texture;
    ravolt::WeakPointer<RVMATERIAL> material;
    ravolt::Owned<Buffers> owned;
    bool failureReported; // render has logged why it draws nothing
    ravolt::WeakPointers<RVSKYDOME> weakPointers;

    friend struct ravolt::Registry<RVSKYDOME>;
};
