// Births against a reference that replays the sequence of random numbers.

#include "tests/effects/emitterAccess.h"
#include "tests/support/expectNear.h"

#include <array>
#include <cmath>
#include <cstdlib>

using namespace ravolt::test;

namespace {

struct Born {
    float energy, size, spinSpeed, spin;
    double velocity[3], position[3];
};

// The limits of an emitter, as numbers of the reference.
struct Limits {
    unsigned int energy = 250, size = 90, spin = 45, velocity = 70;
};

unsigned int below(unsigned int limit) { return static_cast<unsigned int>(std::rand()) % limit; }
double ratio() { return std::rand() / static_cast<double>(RAND_MAX); }

Born bornAs(const RVEMITTER &emitter, const Limits &limits) {
    Born born{};
    born.energy = static_cast<float>(below(limits.energy) / 100.0);
    born.size = static_cast<float>(below(limits.size) / 10.0);
    born.spinSpeed = static_cast<float>(below(limits.spin));
    born.spin = emitter.getSpinning();
    const Z3MVECTOR3D center = emitter.getCenter(), up = emitter.getUpVector();
    for (int component = 2; component >= 0; --component) {
        const double first = below(limits.velocity);
        born.velocity[component] = emitter.getEmitterType() == 0
                                       ? below(limits.velocity) / 10.0 - first / 10.0
                                       : first * up[component];
        born.position[component] = center[component];
    }
    if (emitter.getEmitterType() == 1) {
        born.position[2] += (ratio() * 2 - 1) * emitter.getSizeY();
        born.position[0] += (ratio() * 2 - 1) * emitter.getSizeX();
    }
    if (emitter.getEmitterType() == 2) {
        const double radius = emitter.getRadius();
        const double a = (ratio() * 2 - 1) * radius;
        const double chord = std::sqrt(radius * radius - a * a);
        const double b = std::rand() % 2 ? -chord : chord;
        born.position[2] = ratio() * b - center[2];
        born.position[1] = 0;
        born.position[0] = ratio() * a - center[0];
    }
    return born;
}

class EmitterBirth : public EmitterTest {
  protected:
    void SetUp() override {
        EmitterTest::SetUp();
        emitter->setMaximumEnergy(static_cast<int>(limits.energy));
        emitter->setMaximumParticuleSize(static_cast<int>(limits.size));
        emitter->setMaximumSpin(static_cast<int>(limits.spin));
        emitter->setMaximumVelocity(static_cast<int>(limits.velocity));
        emitter->setSpinning(30);
        emitter->setCenter(Z3MVECTOR3D(3, 5, 7));
        emitter->setUpVector(Z3MVECTOR3D(0.5, 2, -1));
        emitter->setSizeX(4);
        emitter->setSizeY(6);
        emitter->setRadius(8);
        emitter->setColorStart(Z3MVECTOR3D(0.25, 0.5, 0.75));
    }

    // Many births, each compared.
    void expectBirths(int type) {
        constexpr int number = 500;
        emitter->setEmitterType(type);
        std::srand(static_cast<unsigned int>(type) + 11);
        emitter->setNumberOfParticles(number);
        std::srand(static_cast<unsigned int>(type) + 11);
        for (unsigned int index = 0; index < number; ++index) {
            const Born born = bornAs(*emitter, limits);
            const RVPARTICLE &p = particleOf(*emitter, index);
            ASSERT_EQ(p.energy, born.energy) << index;
            ASSERT_EQ(p.startEnergy, born.energy);
            ASSERT_EQ(p.size, born.size);
            ASSERT_EQ(p.spinSpeed, born.spinSpeed);
            ASSERT_EQ(p.spin, born.spin);
            ASSERT_TRUE(p.color == Z3MVECTOR4D(0.25, 0.5, 0.75, 1));
            for (int component = 0; component < 3; ++component) {
                ASSERT_NEAR(p.velocity[component], born.velocity[component], 1e-4) << index;
                ASSERT_NEAR(p.position[component], born.position[component], 1e-4) << index;
            }
        }
        EXPECT_NOTHING_LOGGED();
    }

    Limits limits;
};

TEST_F(EmitterBirth, PointsShootInAllDirections) { expectBirths(0); }
TEST_F(EmitterBirth, PlanesShootAlongTheUpVector) { expectBirths(1); }
TEST_F(EmitterBirth, DiscsSubtractTheirCenter) { expectBirths(2); }

TEST_F(EmitterBirth, PlaneCoversItsWholeSize) {
    emitter->setEmitterType(1);
    emitter->setNumberOfParticles(2000);
    float minX = 100, maxX = -100, minZ = 100, maxZ = -100;
    for (unsigned int index = 0; index < 2000; ++index) {
        const Z3MVECTOR3D position = particleOf(*emitter, index).position;
        EXPECT_EQ(position.y, 5.0f);
        minX = std::min(minX, position.x), maxX = std::max(maxX, position.x);
        minZ = std::min(minZ, position.z), maxZ = std::max(maxZ, position.z);
    }
    expectNear(std::array{minX, maxX, minZ, maxZ}, {3 - 4, 3 + 4, 7 - 6, 7 + 6}, 0.1);
}

TEST_F(EmitterBirth, DiscOfNoRadiusIsAPoint) {
    emitter->setEmitterType(2);
    emitter->setRadius(0);
    emitter->setNumberOfParticles(3);
    EXPECT_TRUE(particleOf(*emitter, 2).position == Z3MVECTOR3D(-3, 0, -7));
}

TEST_F(EmitterBirth, UnknownTypeIsLoggedAndChangesNeitherPositionNorVelocity) {
    emitter->setNumberOfParticles(1);
    const RVPARTICLE before = particleOf(*emitter, 0);
    emitter->setNumberOfParticles(0);
    emitter->setEmitterType(3);
    emitter->setNumberOfParticles(1);
    EXPECT_LOGGED_EXACTLY("   [!] Unknown emitter tpye @ RVEMITTER::updateParticle\n");
    const RVPARTICLE &after = particleOf(*emitter, 0);
    EXPECT_TRUE(after.position == before.position);
    EXPECT_TRUE(after.velocity == before.velocity);
}

TEST_F(EmitterBirth, LimitsOfOneGiveZeros) {
    emitter->setMaximumEnergy(0);
    emitter->setMaximumParticuleSize(0);
    emitter->setMaximumSpin(0);
    emitter->setMaximumVelocity(0);
    emitter->setNumberOfParticles(1);
    const RVPARTICLE &p = particleOf(*emitter, 0);
    EXPECT_EQ(p.energy, 0);
    EXPECT_EQ(p.size, 0);
    EXPECT_EQ(p.spinSpeed, 0);
    EXPECT_TRUE(p.velocity == Z3MVECTOR3D());
    EXPECT_NOTHING_LOGGED();
}

} // namespace
