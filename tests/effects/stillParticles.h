#pragma once

// Particles without velocity, for pictures of emitters.

#include "ravolt/RVTEXTURE.h"
#include "tests/effects/emitterAccess.h"
#include "tools/writers/tgaWriter.h"

#include <string>
#include <vector>

namespace ravolt::test {

struct Still {
    Z3MVECTOR3D position;
    float size = 1, energy = 0.8f, spin = 0;
};

// The size that is drawn is `size` on both paths.
inline void place(RVEMITTER &emitter, const std::vector<Still> &particles, bool hardware) {
    emitter.setNumberOfParticles(static_cast<int>(particles.size()));
    for (unsigned int index = 0; index < particles.size(); ++index) {
        const Still &still = particles[index];
        RVPARTICLE &p = particleOf(emitter, index);
        p.position = still.position / still.size; // which the size scales
        p.velocity.reset();
        p.size = hardware ? still.size : still.size + still.energy;
        p.energy = p.startEnergy = still.energy;
        p.spin = still.spin;
        p.spinSpeed = 0;
    }
}

// A square texture, unfiltered, of red, green and blue values.
inline RVTEXTURE *squareTexture(const std::string &file, unsigned int side,
                                const std::vector<unsigned char> &pixels) {
    EXPECT_TRUE(writeTga(file, {.width = side, .height = side, .pixels = pixels.data()}));
    auto *texture = new RVTEXTURE;
    texture->setFilter(false, false, false);
    EXPECT_TRUE(texture->load(file.c_str()));
    return texture;
}

} // namespace ravolt::test
