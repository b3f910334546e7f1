// The pool of the particles: the slots that emitters take, their count and messages; accessors.

#include "tests/effects/emitterAccess.h"
#include "tests/support/files.h"

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVTEXTURE.h"

#include <functional>
#include <memory>
#include <vector>

using namespace ravolt::test;

namespace {

constexpr char poolIsFull[] = "   [!] Not enough free particles @ RVEMITTER::initialize()\n";
constexpr char noEnergy[] =
    "   [!] Maximum energy for particles too low @ RVEMITTER::initialize()\n";

class EmitterPool : public EmitterTest {
  protected:
    static RVEMITTER *emitterOf(int number) {
        auto *other = new RVEMITTER;
        other->setNumberOfParticles(number);
        return other;
    }

    // Slots in use and the class's count of particles.
    static void expectUse(unsigned int slots, int counted) {
        EXPECT_EQ(slotsInUse(), slots);
        EXPECT_EQ(particlesCounted(), counted);
    }
};

// --- Accessors

TEST_F(EmitterPool, NewEmitterHasItsDefaults) {
    EXPECT_EQ(emitter->getType(), RV_NODE_TYPE_EMITTER);
    EXPECT_EQ(emitter->getName(), "[emitter " + std::to_string(emitter->getId()) + "]");
    EXPECT_FALSE(isInitialized(*emitter));
    for (unsigned int index = 0; index < RV_EMITTER_PARTICLES; ++index)
        ASSERT_EQ(slotsOf(*emitter)[index], -1);
    for (unsigned int vertex = 0; vertex < RV_EMITTER_VERTICES; ++vertex)
        ASSERT_TRUE(centresOf(*emitter)[vertex] == Z3MVECTOR3D());
    EXPECT_EQ(emitter->getNumberOfParticles(), 0u);
    EXPECT_EQ(emitter->getTexture(), nullptr);
    EXPECT_EQ(numbersOf(*emitter),
              numbers(0, 100, 100, 100, 1, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, 0, 0, 10, 10, 10));
    EXPECT_TRUE(emitter->getCenter() == Z3MVECTOR3D());
    EXPECT_TRUE(emitter->getGravity() == Z3MVECTOR3D());
    EXPECT_TRUE(emitter->getUpVector() == Z3MVECTOR3D(0, 1, 0));
}

TEST_F(EmitterPool, NewEmittersHaveRandomColorsInHundredths) {
    std::srand(5);
    const RVEMITTER *one = new RVEMITTER, *other = new RVEMITTER;
    std::srand(5);
    for (const RVEMITTER *each : {one, other})
        for (const Z3MVECTOR3D &color : {each->getColorStart(), each->getColorEnd()})
            for (int component = 2; component >= 0; --component)
                EXPECT_EQ(color[component], static_cast<float>(std::rand() % 100 / 100.0));
    EXPECT_FALSE(one->getColorStart() == other->getColorStart());
}

TEST_F(EmitterPool, AccessorsReturnTheSetValues) {
    emitter->setEmitterType(7);
    emitter->setMaximumAngle(1.5f);
    emitter->setSpinning(2.5f);
    emitter->setSizeX(3.5f);
    emitter->setSizeY(4.5f);
    emitter->setRadius(5.5f);
    emitter->setBlendingSrc(GL_ONE);
    emitter->setBlendingDst(GL_ZERO);
    for (const int limit : {-5, 0, 1, 2, 77}) { // at least 1
        emitter->setMaximumEnergy(limit);
        emitter->setMaximumVelocity(limit);
        emitter->setMaximumParticuleSize(limit);
        emitter->setMaximumSpin(limit);
        const int stored = limit < 2 ? 1 : limit;
        EXPECT_EQ(numbersOf(*emitter), numbers(7, stored, stored, stored, stored, GL_ONE, GL_ZERO,
                                               1.5, 2.5, 3.5, 4.5, 5.5));
    }
    const struct {
        void (RVEMITTER::*set)(const Z3MVECTOR3D &);
        Z3MVECTOR3D (RVEMITTER::*get)() const;
    } vectors[] = {{&RVEMITTER::setGravity, &RVEMITTER::getGravity},
                   {&RVEMITTER::setCenter, &RVEMITTER::getCenter},
                   {&RVEMITTER::setUpVector, &RVEMITTER::getUpVector},
                   {&RVEMITTER::setColorStart, &RVEMITTER::getColorStart},
                   {&RVEMITTER::setColorEnd, &RVEMITTER::getColorEnd}};
    float number = 1;
    for (const auto &each : vectors) {
        const Z3MVECTOR3D value(number++, 2, 3);
        std::invoke(each.set, emitter, value);
    }
    number = 1;
    for (const auto &each : vectors) {
        const Z3MVECTOR3D value = std::invoke(each.get, emitter);
        EXPECT_TRUE(value == Z3MVECTOR3D(number++, 2, 3));
    }
}

TEST_F(EmitterPool, TextureIsNotReferencedAndEmptyOnceItIsDeleted) {
    auto *texture = new RVTEXTURE;
    emitter->setTexture(texture);
    EXPECT_EQ(emitter->getTexture(), texture);
    EXPECT_EQ(texture->getReferences(), 0);
    delete texture;
    EXPECT_EQ(emitter->getTexture(), nullptr);
}

// --- Start and stop of the class

// The arrays as the program needs them.
TEST_F(EmitterPool, StartFillsTheArraysWithUnitQuads) {
    const float u[] = {0, 1, 1, 0}, v[] = {0, 0, 1, 1};
    for (unsigned int vertex = 0; vertex < RV_EMITTER_VERTICES; ++vertex) {
        const float x = u[vertex % 4], y = v[vertex % 4];
        ASSERT_TRUE(textureCorners()[vertex] == Z3MVECTOR2D(x, y)) << vertex;
        ASSERT_TRUE(corners()[vertex] == Z3MVECTOR4D(2 * x - 1, 2 * y - 1, 0, 1)) << vertex;
    }
}

TEST_F(EmitterPool, PoolIsMadeOnceAndDeletedWithItsCount) {
    emitter->setNumberOfParticles(3);
    const RVPARTICLE *before = pool();
    EXPECT_TRUE(RVEMITTER::init());
    EXPECT_EQ(pool(), before);
    EXPECT_EQ(slotsInUse(), 3u);
    EXPECT_NOTHING_LOGGED();
    RAVOLT::free();
    EXPECT_EQ(pool(), nullptr);
    EXPECT_TRUE(RVEMITTER::free());
    EXPECT_EQ(particlesCounted(), 0);
    recorder.failAllocation(RV_PARTICLES * sizeof(RVPARTICLE), 0, 1);
    EXPECT_FALSE(RVEMITTER::init()); // without memory
    EXPECT_EQ(pool(), nullptr);
    recorder.allocationsWork();
    EXPECT_TRUE(RAVOLT::init(&settings));
    EXPECT_NE(pool(), nullptr);
    EXPECT_EQ(slotsInUse(), 0u);
}

// --- Slots

TEST_F(EmitterPool, NewParticlesTakeTheFirstFreeSlots) {
    emitter->setNumberOfParticles(3);
    RVEMITTER *other = emitterOf(2);
    emitter->setNumberOfParticles(1);
    other->setNumberOfParticles(5);
    const int *slots = slotsOf(*other);
    EXPECT_EQ(std::vector<int>(slots, slots + 6), (std::vector<int>{3, 4, 1, 2, 5, -1}));
    EXPECT_EQ(slotsOf(*emitter)[0], 0);
    EXPECT_EQ(slotsOf(*emitter)[1], 1) << "entries of released slots stay";
    expectUse(6, 6);
    EXPECT_TRUE(isInitialized(*emitter));
    EXPECT_NOTHING_LOGGED();
}

// The entries after the particles may name slots of other emitters.
TEST_F(EmitterPool, ReleasedParticlesAreThoseOfTheEmitter) {
    emitter->setNumberOfParticles(3);
    emitter->setNumberOfParticles(2);
    emitterOf(1); // takes the slot of the third entry
    emitter->setNumberOfParticles(1);
    expectUse(2, 2);
    EXPECT_TRUE(pool()[2].used);
}

TEST_F(EmitterPool, NumbersAreLimitedToThoseOfAnEmitterAndOfThePool) {
    const struct {
        const char *what;
        std::vector<int> others; // numbers of other emitters
        int set;
        unsigned int number;
    } cases[] = {{"of an emitter", {}, 5000, 4096},
                 {"negative", {}, -3, 0},
                 {"beyond the pool it is the excess", {4000, 2000}, 3000, 808}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(restart());
        markLog();
        int others = 0;
        for (const int number : c.others)
            others += static_cast<int>(emitterOf(number)->getNumberOfParticles());
        emitter = emitterOf(c.set < 0 ? 4 : 0);
        emitter->setNumberOfParticles(c.set);
        EXPECT_EQ(emitter->getNumberOfParticles(), c.number);
        const int all = others + static_cast<int>(c.number);
        expectUse(static_cast<unsigned int>(all), all);
        EXPECT_NOTHING_LOGGED();
    }
}

TEST_F(EmitterPool, ExcessMayReleaseParticles) {
    emitterOf(4096);
    emitter->setNumberOfParticles(4000);
    emitterOf(96);
    emitter->setNumberOfParticles(4010); // 10 too many
    EXPECT_EQ(emitter->getNumberOfParticles(), 10u);
    EXPECT_EQ(slotsInUse(), 4096u + 96u + 10u);
}

// Slots of deleted emitters stay in use and count, so that the excess passes the limit.
TEST_F(EmitterPool, SlotsOfDeletedEmittersStayInUseUnlessTheyAreReleasedBefore) {
    RVEMITTER *other = emitterOf(4096);
    other->setNumberOfParticles(0);
    delete other;
    expectUse(0, 0);
    for (int time = 0; time < 2; ++time)
        delete emitterOf(4096);
    expectUse(8192, 8192);
    EXPECT_NOTHING_LOGGED();

    emitter->setNumberOfParticles(4096);
    EXPECT_EQ(emitter->getNumberOfParticles(), 4096u);
    EXPECT_LOGGED_EXACTLY(poolIsFull);
    EXPECT_EQ(slotsOf(*emitter)[0], -1);
    emitterOf(4096);
    EXPECT_LOGGED_EXACTLY(poolIsFull);
    EXPECT_EQ(particlesCounted(), 4 * 4096);
    EXPECT_TRUE(emitter->render(&element)) << "with the entries that it has";
}

TEST_F(EmitterPool, InitializeTakesTheFreeSlotsForANumberSetOtherwise) {
    writeNumber(*emitter, 3);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_TRUE(isInitialized(*emitter));
    EXPECT_EQ(slotsOf(*emitter)[2], 2);
    EXPECT_EQ(slotsOf(*emitter)[3], -1);
    expectUse(3, 0); // it counts nothing
    EXPECT_GT(particleOf(*emitter, 2).color.w, 0.0f) << "born";
    EXPECT_NOTHING_LOGGED();

    emitterOf(4096);
    emitterOf(4087);
    RVEMITTER *last = new RVEMITTER; // for 6 free slots
    writeNumber(*last, 8);
    EXPECT_TRUE(last->initialize());
    EXPECT_LOGGED_EXACTLY(poolIsFull);
    EXPECT_EQ(slotsOf(*last)[5], 8191);
    EXPECT_EQ(slotsOf(*last)[6], -1);
    EXPECT_EQ(last->getNumberOfParticles(), 8u);
}

TEST_F(EmitterPool, InitializeRescalesTooManyParticles) {
    writeNumber(*emitter, 5000);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_LOGGED_EXACTLY("   [!] Too many particles per emitter (rescaled to 4096) @ "
                          "RVEMITTER::initialize()\n");
    EXPECT_EQ(emitter->getNumberOfParticles(), 4096u);
    EXPECT_EQ(slotsInUse(), 4096u);
}

TEST_F(EmitterPool, EmptyEmitterTakesASlotAtItsFirstRenderAndDrawsNothing) {
    EXPECT_TRUE(recordRender().contains(Call("glDrawArrays", GL_QUADS, 0, 0)));
    EXPECT_EQ(slotsInUse(), 1u);
    EXPECT_EQ(slotsOf(*emitter)[0], 0);
    recordRender();
    EXPECT_EQ(slotsInUse(), 1u) << "once";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, WithoutAPoolThereAreNoParticles) {
    RVEMITTER::free();
    emitter->setNumberOfParticles(3);
    EXPECT_LOGGED_EXACTLY(poolIsFull);
    writeSlot(*emitter, 0, 7); // as after a start and a stop
    recordRender();
    EXPECT_TRUE(emitter->initialize());
    emitter->setNumberOfParticles(0);
    EXPECT_TRUE(RVEMITTER::init());
}

TEST_F(EmitterPool, CopiesShareTheirParticlesAndReleaseNothing) {
    auto *texture = new RVTEXTURE;
    emitter->setTexture(texture);
    emitter->setNumberOfParticles(2);
    RVEMITTER *assigned = new RVEMITTER;
    *assigned = *emitter;
    {
        const auto copy = std::make_unique<RVEMITTER>(*emitter);
        for (RVEMITTER *each : {assigned, copy.get()}) {
            EXPECT_EQ(each->getNumberOfParticles(), 2u);
            EXPECT_EQ(each->getTexture(), texture);
            EXPECT_EQ(slotsOf(*each)[1], 1);
        }
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 2u); // without the copy
    }
    EXPECT_EQ(slotsInUse(), 2u);
    delete texture;
    EXPECT_EQ(assigned->getTexture(), nullptr);
}

// Both subtract what one has added.
TEST_F(EmitterPool, CountIsNegativeAfterACopyHasReleasedTheSameParticles) {
    emitter->setNumberOfParticles(5);
    RVEMITTER copy(*emitter);
    emitter->setNumberOfParticles(0);
    copy.setNumberOfParticles(0);
    expectUse(0, -5);
    emitter->setNumberOfParticles(3);
    expectUse(3, -2);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, MaximumEnergyOfZeroIsLogged) {
    writeFile("zero.xml", "<emitter><maxEnergy value=\"0\"/></emitter>");
    ASSERT_TRUE(emitter->load("zero.xml"));
    EXPECT_EQ(emitter->getMaximumEnergy(), 0u);
    EXPECT_NOTHING_LOGGED();
    emitter->setNumberOfParticles(1);
    EXPECT_LOGGED_EXACTLY(noEnergy);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_LOGGED_EXACTLY(noEnergy);
}

// The emitter's first own field has the offset of a mesh's radius.
TEST_F(EmitterPool, EmitterTypeIsSortedAsTheBitsOfARadius) {
    auto *root = new RVNODE;
    auto *second = new RVEMITTER;
    for (RVEMITTER *each : {emitter, second})
        each->link(root);
    emitter->setPosition(0, 0, -10);
    second->setPosition(0, 0, -9);
    const auto firstDrawn = [root] {
        RAVOLT::begin3D(nullptr);
        root->pass();
        RVELEMENT::sort3D();
        const Calls calls = callsOf([] { RAVOLT::end3D(true); });
        return calls.named("glLoadMatrixf")[0].arguments[14];
    };
    EXPECT_EQ(firstDrawn(), -10);
    second->setEmitterType(0x40000000); // 2.0f
    EXPECT_EQ(firstDrawn(), -9);
}

} // namespace
