#pragma once

// The private side of RVEMITTER, for tests: the pool, the arrays and the slots; and the fixture of
// its call tests.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/engineFixture.h"

#include <vector>

namespace ravolt::test {

#define RV_OPEN_EMITTER(name, type)                                                                \
    struct Emitter_##name {                                                                        \
        using Type = type;                                                                         \
        friend Type reach(Emitter_##name);                                                         \
    };                                                                                             \
    template struct Opened<Emitter_##name, &RVEMITTER::name>;

using ParticlePool = RVPARTICLE **;
using ParticleCount = int *;
using Corners = Z3MVECTOR4D (*)[RV_EMITTER_VERTICES];
using Pairs = Z3MVECTOR2D (*)[RV_EMITTER_VERTICES];
using ColorBytes = unsigned char (*)[4 * RV_EMITTER_VERTICES];
using NumberField = unsigned int RVEMITTER::*;
using FlagField = bool RVEMITTER::*;
using IndexField = int (RVEMITTER::*)[RV_EMITTER_PARTICLES];
using PositionsField = Z3MVECTOR3D (RVEMITTER::*)[RV_EMITTER_VERTICES];
RV_OPEN_EMITTER(particle, ParticlePool)
RV_OPEN_EMITTER(numberbOfParticlesUsed, ParticleCount)
RV_OPEN_EMITTER(vertexArray, Corners)
RV_OPEN_EMITTER(uvArray, Pairs)
RV_OPEN_EMITTER(uvSecondaryArray, Pairs)
RV_OPEN_EMITTER(colorArray, ColorBytes)
RV_OPEN_EMITTER(numberOfParticles, NumberField)
RV_OPEN_EMITTER(initialized, FlagField)
RV_OPEN_EMITTER(particleIndex, IndexField)
RV_OPEN_EMITTER(positions, PositionsField)
#undef RV_OPEN_EMITTER

inline RVPARTICLE *pool() { return *reach(Emitter_particle()); }
inline int particlesCounted() { return *reach(Emitter_numberbOfParticlesUsed()); }
inline const Z3MVECTOR4D *corners() { return *reach(Emitter_vertexArray()); }
inline const Z3MVECTOR2D *textureCorners() { return *reach(Emitter_uvArray()); }
inline const Z3MVECTOR2D *sizesAndSpins() { return *reach(Emitter_uvSecondaryArray()); }
inline const unsigned char *colorBytes() { return *reach(Emitter_colorArray()); }
inline const int *slotsOf(const RVEMITTER &emitter) {
    return emitter.*reach(Emitter_particleIndex());
}
inline const Z3MVECTOR3D *centresOf(const RVEMITTER &emitter) {
    return emitter.*reach(Emitter_positions());
}
inline bool isInitialized(const RVEMITTER &emitter) {
    return emitter.*reach(Emitter_initialized());
}
// As by other means than the setter.
inline void writeNumber(RVEMITTER &emitter, unsigned int number) {
    emitter.*reach(Emitter_numberOfParticles()) = number;
}
inline void writeSlot(RVEMITTER &emitter, unsigned int index, int slot) {
    (emitter.*reach(Emitter_particleIndex()))[index] = slot;
}

inline RVPARTICLE &particleOf(const RVEMITTER &emitter, unsigned int index) {
    return pool()[slotsOf(emitter)[index]];
}

inline unsigned int slotsInUse() {
    unsigned int number = 0;
    for (unsigned int slot = 0; slot < RV_PARTICLES; ++slot)
        number += pool()[slot].used;
    return number;
}

// Type, limits of energy, velocity, size and spin, blending, angle, spinning, sizes and radius.
using Numbers = std::vector<double>;
template <class... Values> Numbers numbers(Values... values) {
    return {static_cast<double>(values)...};
}
inline Numbers numbersOf(const RVEMITTER &emitter) {
    return numbers(emitter.getEmitterType(), emitter.getMaximumEnergy(),
                   emitter.getMaximumVelocity(), emitter.getMaximumParticuleSize(),
                   emitter.getMaximumSpin(), emitter.getBlendingSrc(), emitter.getBlendingDst(),
                   emitter.getMaximumAngle(), emitter.getSpinning(), emitter.getSizeX(),
                   emitter.getSizeY(), emitter.getRadius());
}

class EmitterTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        emitter = new RVEMITTER;
    }

    Calls recordRender() {
        return callsOf([this] { EXPECT_TRUE(emitter->render(&element)); });
    }

    RVEMITTER *emitter = nullptr;
    RVELEMENT element;
};

} // namespace ravolt::test
