#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVTEXTURE;
namespace ravolt {
struct EmitterElement;
}

// Particles of all emitters together, and of one emitter.
constexpr unsigned int RV_PARTICLES = 8192;
constexpr unsigned int RV_EMITTER_PARTICLES = 4096;
constexpr unsigned int RV_EMITTER_VERTICES = 4 * RV_EMITTER_PARTICLES;

// One particle of the pool. Energies count in units of which 0.5 pass in a second.
class RVPARTICLE {
  public:
    RVPARTICLE() : spinSpeed(0), spin(0), size(0), startEnergy(0), energy(0), used(false) {}

    Z3MVECTOR3D position;  // in the emitter's own frame, in units of the particle's size
    Z3MVECTOR3D reserved1; // read by nothing
    Z3MVECTOR3D velocity;  // a second
    Z3MVECTOR3D reserved2; // read by nothing
    Z3MVECTOR4D color;     // of the last frame; the fourth component is the energy
    float spinSpeed;       // degrees a second
    float spin;            // degrees
    float size;            // the edge of its quad, in units of the scene
    float startEnergy;     // at birth
    float energy;          // above 0, except for a particle that was born with 0
    bool used;             // belongs to an emitter
};

// A cloud of textured, blended quads that face the camera. A particle that runs out of energy is
// born again at once, so the number of particles is constant. All emitters take their particles
// from one pool. Particles advance only when they are drawn, by RAVOLT::getFPSfactor seconds each
// time: with the effects of the frame, which draw the list several times, faster. The `emitter`
// program draws where RVSHADER::useEmitter, and the processor builds the quads elsewhere; the sizes
// differ: only there does a particle grow as it loses energy. Births use the standard library's
// rand, which the engine does not seed. What has an alpha of 0.2 or less is not drawn, and the rest
// casts shadows. A node like any other: created with `new`, owned by the
// registry, sorted with the transparent ones. Drawing needs the live OpenGL context, and the pool
// lives from RAVOLT::init to RAVOLT::free.
class RV_API RVEMITTER : public RVNODE {
  public:
    // No particles, random colours and the values named below.
    RVEMITTER();

    // The slots of the pool stay in use, and count, until RAVOLT::free: call
    // setNumberOfParticles(0) before. The texture stays, too.
    ~RVEMITTER() override;

    // A copy has the values of every field, the slots included: both draw, and advance, the same
    // particles.
    RVEMITTER(const RVEMITTER &other);
    RVEMITTER &operator=(const RVEMITTER &other);

    // Creates and deletes the pool of particles and the arrays, for RAVOLT::init and RAVOLT::free.
    // init does not replace an existing pool, and is false without memory. free is always true.
    static bool init();
    static bool free();

    // Reads an emitter file (docs/formats.md); no prefix is put before `filename`, but the
    // texture's file is found as RVTEXTURE::load finds it. First the particles are released, and
    // the texture, whoever set it, is deleted and replaced by a new one. That one belongs to the
    // emitter, which counts no reference on it: it is deleted by the next load, or by the
    // collector. A texture without a file logs its failure in each frame. False, with a line in the
    // log, for NULL, a file that cannot be read or holds no emitter, and without memory.
    bool load(const char *filename);

    // Takes slots of the pool for getNumberOfParticles particles and starts them. `render` and
    // setNumberOfParticles call it or do the same; another call takes further slots and releases
    // none. On purpose: 0 particles take a slot, too. Always true; a full pool and a maximum energy
    // of 0 are logged.
    bool initialize();

    // Draws, and advances, the particles; `element` is the emitter's RVELEMENT. Afterwards
    // GL_CULL_FACE is off without RVOPENGL::cullingOff, so that its cached switch may be wrong;
    // blending is off and lighting is on. False, with a line in the log, for NULL.
    bool render(void *element) override;

    // At most 4096, and a negative number is 0. On purpose: where more than 8192 would be in use,
    // the emitter gets as many as there are too many, and what is missing in the pool is drawn as
    // particles of the emitter before. New particles start at once, with the values
    // of that moment; a full pool and a maximum energy of 0 are logged.
    void setNumberOfParticles(int number);
    unsigned int getNumberOfParticles() const { return numberOfParticles; }

    // 0 (initially): from a point, in all directions. 1: from a plane along the world's X and Z,
    // along the up vector. 2: from a disc, along the up vector. Another one is logged at each
    // birth, and the particle stays where it is. The emitter is sorted by depth as a node whose
    // radius is the float of these bits.
    void setEmitterType(int value) { emitterType = value; }
    int getEmitterType() const { return emitterType; }

    // NULL for none, initially. No reference is counted: where nothing else counts one, the
    // collector may delete the texture, and the emitter then has none.
    void setTexture(RVTEXTURE *value);
    RVTEXTURE *getTexture() const { return texture.get(); }

    // Limits of random numbers, which stay below them. Below 2, the setters store 1, and the
    // numbers are 0; a file's 0 counts as 1. Energy (100) in hundredths, velocity (100) in tenths
    // for points and in whole units otherwise, size (100) in tenths, spin (1) in degrees a second.
    // The energy is the alpha, too: a byte, which wraps around above 1.
    void setMaximumEnergy(int value) { maxEnergy = atLeastOne(value); }
    unsigned int getMaximumEnergy() const { return maxEnergy; }
    void setMaximumVelocity(int value) { maxVelocity = atLeastOne(value); }
    unsigned int getMaximumVelocity() const { return maxVelocity; }
    void setMaximumParticuleSize(int value) { maxParticleSize = atLeastOne(value); }
    unsigned int getMaximumParticuleSize() const { return maxParticleSize; }
    void setMaximumSpin(int value) { maxSpin = atLeastOne(value); }
    unsigned int getMaximumSpin() const { return maxSpin; }

    // Stored for the application; nothing in the engine reads it. 0 initially.
    void setMaximumAngle(float value) { maxAngle = value; }
    float getMaximumAngle() const { return maxAngle; }

    // The angle in degrees at which every particle starts; 0 initially.
    void setSpinning(float degrees) { spinning = degrees; }
    float getSpinning() const { return spinning; }

    // Added to the velocity, a second; (0, 0, 0) initially.
    void setGravity(const Z3MVECTOR3D &value) { gravity = value; }
    Z3MVECTOR3D getGravity() const { return gravity; }

    // Where particles are born, in the emitter's own frame; (0, 0, 0) initially. On purpose: a disc
    // subtracts it, and ignores its y.
    void setCenter(const Z3MVECTOR3D &value) { center = value; }
    Z3MVECTOR3D getCenter() const { return center; }

    // Direction, and scale, of the velocity for planes and discs; (0, 1, 0) initially.
    void setUpVector(const Z3MVECTOR3D &value) { upVector = value; }
    Z3MVECTOR3D getUpVector() const { return upVector; }

    // Half sizes of the plane, along X and Z, and the radius of the disc; 10 initially.
    void setSizeX(float value) { sizeX = value; }
    float getSizeX() const { return sizeX; }
    void setSizeY(float value) { sizeY = value; }
    float getSizeY() const { return sizeY; }
    void setRadius(float value) { radius = value; }
    float getRadius() const { return radius; }

    // Red, green and blue from 0 to 1 at birth and at the end of the energy; random initially.
    void setColorStart(const Z3MVECTOR3D &value);
    Z3MVECTOR3D getColorStart() const { return colorStart; }
    void setColorEnd(const Z3MVECTOR3D &value);
    Z3MVECTOR3D getColorEnd() const { return colorEnd; }

    // Factors of glBlendFunc; GL_SRC_ALPHA and GL_ONE_MINUS_SRC_ALPHA initially.
    void setBlendingSrc(unsigned int factor) { blendingSrc = factor; }
    unsigned int getBlendingSrc() const { return blendingSrc; }
    void setBlendingDst(unsigned int factor) { blendingDst = factor; }
    unsigned int getBlendingDst() const { return blendingDst; }

  private:
    struct Facing;

    // The texture, counted as no reference; NULL once it is deleted.
    class TextureLink {
      public:
        TextureLink() {}
        TextureLink(const TextureLink &other) { set(other.get()); }
        TextureLink &operator=(const TextureLink &other) {
            set(other.get());
            return *this;
        }
        void set(RVTEXTURE *texture);
        RVTEXTURE *get() const { return target.get(); }

      private:
        ravolt::WeakPointer<RVTEXTURE> target;
    };

    static unsigned int atLeastOne(int value) {
        return value < 2 ? 1u : static_cast<unsigned int>(value);
    }

    unsigned int takeSlots(unsigned int first, unsigned int wanted);
    void takeParticles(unsigned int first, unsigned int number);
    void releaseParticles(unsigned int first, unsigned int end);
    bool updateParticle(RVPARTICLE *p);
    void shoot(RVPARTICLE &p) const;
    void placeOnPlane(RVPARTICLE &p) const;
    void placeOnDisc(RVPARTICLE &p) const;
    void apply(const ravolt::EmitterElement &element);
    void advanceAll(const Facing &facing, bool hardware);
    void drawArrays(bool hardware) const;
    void storeHardware(unsigned int quad, const RVPARTICLE &p);

    int emitterType;
    bool initialized;
    unsigned int numberOfParticles;
    int particleIndex[RV_EMITTER_PARTICLES]; // slots of the pool, -1 for none
    unsigned int maxEnergy;
    unsigned int maxVelocity;
    unsigned int maxParticleSize;
    unsigned int maxSpin;
    float spinning;
    Z3MVECTOR3D center;
    Z3MVECTOR3D gravity;
    float maxAngle;
    float sizeX, sizeY;
    float radius;
    Z3MVECTOR3D upVector;
    Z3MVECTOR3D colorDelta; // from the start to the end
    Z3MVECTOR3D colorStart;
    Z3MVECTOR3D colorEnd;
    TextureLink texture;
    unsigned int blendingSrc;
    unsigned int blendingDst;
    Z3MVECTOR3D positions[RV_EMITTER_VERTICES]; // with the program: each particle's, four times

    static RVPARTICLE *particle; // the pool; NULL while the engine is not started
    static int numberbOfParticlesUsed;
    static Z3MVECTOR4D vertexArray[RV_EMITTER_VERTICES];
    static Z3MVECTOR2D uvArray[RV_EMITTER_VERTICES];
    static Z3MVECTOR2D uvSecondaryArray[RV_EMITTER_VERTICES]; // size and spin
    static unsigned char colorArray[4 * RV_EMITTER_VERTICES];
};
