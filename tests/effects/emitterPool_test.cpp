// The pool of the particles: who takes which slots, the count, and what is logged.

#include "tests/effects/emitterAccess.h"
#include "tests/support/engineFixture.h"

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVTEXTURE.h"

#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

using namespace ravolt::test;

namespace {

constexpr char poolIsFull[] = "   [!] Not enough free particles @ RVEMITTER::initialize()";
constexpr char noEnergy[] = "   [!] Maximum energy for particles too low @ RVEMITTER::initialize()";

class EmitterPool : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        emitter = new RVEMITTER;
    }

    static RVEMITTER *emitterOf(int number) {
        auto *other = new RVEMITTER;
        other->setNumberOfParticles(number);
        return other;
    }

    RVEMITTER *emitter = nullptr;
};

TEST_F(EmitterPool, NewEmitterHasItsDefaults) {
    EXPECT_EQ(emitter->getType(), RV_NODE_TYPE_EMITTER);
    EXPECT_EQ(emitter->getName(), "[emitter " + std::to_string(emitter->getId()) + "]");
    EXPECT_EQ(emitter->getEmitterType(), 0);
    EXPECT_FALSE(isInitialized(*emitter));
    EXPECT_EQ(emitter->getNumberOfParticles(), 0u);
    for (unsigned int index = 0; index < RV_EMITTER_PARTICLES; ++index)
        ASSERT_EQ(slotsOf(*emitter)[index], -1);
    EXPECT_EQ(emitter->getMaximumEnergy(), 100u);
    EXPECT_EQ(emitter->getMaximumVelocity(), 100u);
    EXPECT_EQ(emitter->getMaximumParticuleSize(), 100u);
    EXPECT_EQ(emitter->getMaximumSpin(), 1u);
    EXPECT_EQ(emitter->getMaximumAngle(), 0.0f);
    EXPECT_EQ(emitter->getSpinning(), 0.0f);
    EXPECT_TRUE(emitter->getCenter() == Z3MVECTOR3D());
    EXPECT_TRUE(emitter->getGravity() == Z3MVECTOR3D());
    EXPECT_EQ(emitter->getSizeX(), 10.0f);
    EXPECT_EQ(emitter->getSizeY(), 10.0f);
    EXPECT_EQ(emitter->getRadius(), 10.0f);
    EXPECT_TRUE(emitter->getUpVector() == Z3MVECTOR3D(0, 1, 0));
    EXPECT_EQ(emitter->getTexture(), nullptr);
    EXPECT_EQ(emitter->getBlendingSrc(), unsigned(GL_SRC_ALPHA));
    EXPECT_EQ(emitter->getBlendingDst(), unsigned(GL_ONE_MINUS_SRC_ALPHA));
    for (unsigned int vertex = 0; vertex < RV_EMITTER_VERTICES; ++vertex)
        ASSERT_TRUE(centresOf(*emitter)[vertex] == Z3MVECTOR3D());
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

TEST_F(EmitterPool, AccessorsReturnWhatWasSet) {
    emitter->setEmitterType(7);
    emitter->setMaximumAngle(1.5f);
    emitter->setSpinning(2.5f);
    emitter->setGravity(Z3MVECTOR3D(1, 2, 3));
    emitter->setCenter(Z3MVECTOR3D(4, 5, 6));
    emitter->setUpVector(Z3MVECTOR3D(7, 8, 9));
    emitter->setSizeX(3.5f);
    emitter->setSizeY(4.5f);
    emitter->setRadius(5.5f);
    emitter->setColorStart(Z3MVECTOR3D(0.1, 0.2, 0.3));
    emitter->setColorEnd(Z3MVECTOR3D(0.4, 0.5, 0.6));
    emitter->setBlendingSrc(GL_ONE);
    emitter->setBlendingDst(GL_ZERO);
    EXPECT_EQ(emitter->getEmitterType(), 7);
    EXPECT_EQ(emitter->getMaximumAngle(), 1.5f);
    EXPECT_EQ(emitter->getSpinning(), 2.5f);
    EXPECT_TRUE(emitter->getGravity() == Z3MVECTOR3D(1, 2, 3));
    EXPECT_TRUE(emitter->getCenter() == Z3MVECTOR3D(4, 5, 6));
    EXPECT_TRUE(emitter->getUpVector() == Z3MVECTOR3D(7, 8, 9));
    EXPECT_EQ(emitter->getSizeX(), 3.5f);
    EXPECT_EQ(emitter->getSizeY(), 4.5f);
    EXPECT_EQ(emitter->getRadius(), 5.5f);
    EXPECT_TRUE(emitter->getColorStart() == Z3MVECTOR3D(0.1, 0.2, 0.3));
    EXPECT_TRUE(emitter->getColorEnd() == Z3MVECTOR3D(0.4, 0.5, 0.6));
    EXPECT_EQ(emitter->getBlendingSrc(), unsigned(GL_ONE));
    EXPECT_EQ(emitter->getBlendingDst(), unsigned(GL_ZERO));
}

TEST_F(EmitterPool, LimitedSettersStoreOneForAnythingBelowTwo) {
    for (const int value : {-5, 0, 1, 2, 77}) {
        const unsigned int stored = value < 2 ? 1 : static_cast<unsigned int>(value);
        emitter->setMaximumEnergy(value);
        emitter->setMaximumVelocity(value);
        emitter->setMaximumParticuleSize(value);
        emitter->setMaximumSpin(value);
        EXPECT_EQ(emitter->getMaximumEnergy(), stored);
        EXPECT_EQ(emitter->getMaximumVelocity(), stored);
        EXPECT_EQ(emitter->getMaximumParticuleSize(), stored);
        EXPECT_EQ(emitter->getMaximumSpin(), stored);
    }
}

TEST_F(EmitterPool, TextureIsNotCountedAndEmptyOnceItIsDeleted) {
    auto *texture = new RVTEXTURE;
    emitter->setTexture(texture);
    EXPECT_EQ(emitter->getTexture(), texture);
    EXPECT_EQ(texture->getReferences(), 0);
    delete texture;
    EXPECT_EQ(emitter->getTexture(), nullptr);
}

// The arrays as the program needs them.
TEST_F(EmitterPool, StartFillsTheArraysWithUnitQuads) {
    const float u[] = {0, 1, 1, 0}, v[] = {0, 0, 1, 1};
    for (unsigned int vertex = 0; vertex < RV_EMITTER_VERTICES; ++vertex) {
        const float x = u[vertex % 4], y = v[vertex % 4];
        ASSERT_TRUE(textureCorners()[vertex] == Z3MVECTOR2D(x, y)) << vertex;
        ASSERT_TRUE(corners()[vertex] == Z3MVECTOR4D(2 * x - 1, 2 * y - 1, 0, 1)) << vertex;
    }
}

TEST_F(EmitterPool, SecondStartOfTheClassKeepsThePool) {
    emitter->setNumberOfParticles(3);
    const RVPARTICLE *before = pool();
    EXPECT_TRUE(RVEMITTER::init());
    EXPECT_EQ(pool(), before);
    EXPECT_EQ(slotsInUse(), 3u);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, ClassDoesNotStartWithoutMemoryForThePool) {
    RVEMITTER::free();
    recorder.failAllocation(RV_PARTICLES * sizeof(RVPARTICLE), 0, 1);
    EXPECT_FALSE(RVEMITTER::init());
    EXPECT_EQ(pool(), nullptr);
    recorder.allocationsWork();
    EXPECT_TRUE(RVEMITTER::init());
    EXPECT_NE(pool(), nullptr);
}

TEST_F(EmitterPool, StopDeletesThePoolAndItsCount) {
    emitter->setNumberOfParticles(3);
    RAVOLT::free();
    EXPECT_EQ(pool(), nullptr);
    EXPECT_TRUE(RVEMITTER::free());
    EXPECT_EQ(particlesCounted(), 0);
    EXPECT_TRUE(RAVOLT::init(&settings));
    EXPECT_EQ(slotsInUse(), 0u);
}

TEST_F(EmitterPool, NewParticlesTakeTheFirstFreeSlots) {
    emitter->setNumberOfParticles(3);
    RVEMITTER *other = emitterOf(2);
    emitter->setNumberOfParticles(1);
    other->setNumberOfParticles(5);
    EXPECT_EQ(slotsOf(*emitter)[0], 0);
    const int expected[] = {3, 4, 1, 2, 5, -1};
    for (unsigned int index = 0; index < 6; ++index)
        EXPECT_EQ(slotsOf(*other)[index], expected[index]) << index;
    EXPECT_EQ(slotsOf(*emitter)[1], 1) << "entries of released slots stay";
    EXPECT_EQ(particlesCounted(), 6);
    EXPECT_EQ(slotsInUse(), 6u);
    EXPECT_TRUE(isInitialized(*emitter));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, AnEmitterHasAtMost4096) {
    emitter->setNumberOfParticles(5000);
    EXPECT_EQ(emitter->getNumberOfParticles(), 4096u);
    EXPECT_EQ(slotsInUse(), 4096u);
}

TEST_F(EmitterPool, NegativeNumbersAreZero) {
    emitter->setNumberOfParticles(4);
    emitter->setNumberOfParticles(-3);
    EXPECT_EQ(emitter->getNumberOfParticles(), 0u);
    EXPECT_EQ(particlesCounted(), 0);
    EXPECT_EQ(slotsInUse(), 0u);
}

TEST_F(EmitterPool, BeyondThePoolAnEmitterGetsTheExcess) {
    emitterOf(4000);
    emitterOf(2000);
    emitter->setNumberOfParticles(3000);
    EXPECT_EQ(emitter->getNumberOfParticles(), 808u);
    EXPECT_EQ(particlesCounted(), 6808);
    EXPECT_EQ(slotsInUse(), 6808u);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, TheExcessMayTakeParticlesAway) {
    emitterOf(4096);
    emitter->setNumberOfParticles(4000);
    emitterOf(96);
    emitter->setNumberOfParticles(4010); // 10 too many
    EXPECT_EQ(emitter->getNumberOfParticles(), 10u);
    EXPECT_EQ(slotsInUse(), 4096u + 96u + 10u);
}

// Slots of deleted emitters stay in use and count, so that the excess passes the limit.
TEST_F(EmitterPool, DeletedEmittersKeepTheirSlotsAndTheExcessStaysInTheArrays) {
    for (int time = 0; time < 2; ++time)
        delete emitterOf(4096);
    EXPECT_EQ(slotsInUse(), 8192u);
    EXPECT_EQ(particlesCounted(), 8192);
    EXPECT_NOTHING_LOGGED();

    emitter->setNumberOfParticles(4096);
    EXPECT_EQ(emitter->getNumberOfParticles(), 4096u);
    EXPECT_LOGGED_TIMES(1, poolIsFull);
    EXPECT_EQ(slotsOf(*emitter)[0], -1);
    emitterOf(4096);
    EXPECT_LOGGED_TIMES(2, poolIsFull);
    EXPECT_EQ(particlesCounted(), 4 * 4096);
    RVELEMENT element;
    EXPECT_TRUE(emitter->render(&element)) << "it goes on with the entries that it has";
}

TEST_F(EmitterPool, ReleasedParticlesOfADeletedEmitterAreFree) {
    RVEMITTER *other = emitterOf(4096);
    other->setNumberOfParticles(0);
    delete other;
    EXPECT_EQ(slotsInUse(), 0u);
    EXPECT_EQ(particlesCounted(), 0);
}

TEST_F(EmitterPool, FullPoolGivesWhatItHas) {
    writeNumber(*emitterOf(4096), 4096);
    RVEMITTER *second = emitterOf(4090);
    (void)second;
    writeNumber(*emitter, 8);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_LOGGED_EXACTLY(std::string(poolIsFull) + "\n");
    EXPECT_EQ(slotsOf(*emitter)[5], 8191);
    EXPECT_EQ(slotsOf(*emitter)[6], -1);
    EXPECT_EQ(emitter->getNumberOfParticles(), 8u);
}

TEST_F(EmitterPool, InitializeTakesSlotsForANumberSetOtherwise) {
    writeNumber(*emitter, 3);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_TRUE(isInitialized(*emitter));
    EXPECT_EQ(slotsOf(*emitter)[2], 2);
    EXPECT_EQ(slotsOf(*emitter)[3], -1);
    EXPECT_EQ(slotsInUse(), 3u);
    EXPECT_EQ(particlesCounted(), 0) << "it counts nothing";
    EXPECT_GT(particleOf(*emitter, 2).color.w, 0.0f) << "born";
    EXPECT_NOTHING_LOGGED();
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
    RVELEMENT element;
    recorder.start();
    EXPECT_TRUE(emitter->render(&element));
    EXPECT_TRUE(recorder.stop().contains(Call("glDrawArrays", GL_QUADS, 0, 0)));
    EXPECT_EQ(slotsInUse(), 1u);
    EXPECT_EQ(slotsOf(*emitter)[0], 0);
    emitter->render(&element);
    EXPECT_EQ(slotsInUse(), 1u) << "once";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterPool, WithoutAPoolThereAreNoParticles) {
    RVEMITTER::free();
    emitter->setNumberOfParticles(3);
    EXPECT_LOGGED_EXACTLY(std::string(poolIsFull) + "\n");
    writeSlot(*emitter, 0, 7); // as after a start and a stop
    RVELEMENT element;
    EXPECT_TRUE(emitter->render(&element));
    EXPECT_TRUE(emitter->initialize());
    emitter->setNumberOfParticles(0);
    EXPECT_TRUE(RVEMITTER::init());
}

TEST_F(EmitterPool, CopiesShareTheirParticlesAndGiveNothingBack) {
    auto *texture = new RVTEXTURE;
    emitter->setTexture(texture);
    emitter->setNumberOfParticles(2);
    {
        const auto copy = std::make_unique<RVEMITTER>(*emitter);
        EXPECT_EQ(copy->getNumberOfParticles(), 2u);
        EXPECT_EQ(copy->getTexture(), texture);
        EXPECT_EQ(slotsOf(*copy)[1], 1);
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 1u);
    }
    RVEMITTER *other = new RVEMITTER;
    *other = *emitter;
    EXPECT_EQ(slotsOf(*other)[1], 1);
    EXPECT_EQ(other->getTexture(), texture);
    EXPECT_EQ(slotsInUse(), 2u);
    delete texture;
    EXPECT_EQ(other->getTexture(), nullptr);
}

TEST_F(EmitterPool, MaximumEnergyOfZeroIsLogged) {
    std::FILE *file = std::fopen("zero.xml", "w");
    std::fputs("<emitter><maxEnergy value=\"0\"/></emitter>", file);
    std::fclose(file);
    ASSERT_TRUE(emitter->load("zero.xml"));
    EXPECT_EQ(emitter->getMaximumEnergy(), 0u);
    EXPECT_NOTHING_LOGGED();
    emitter->setNumberOfParticles(1);
    EXPECT_LOGGED_TIMES(1, noEnergy);
    EXPECT_TRUE(emitter->initialize());
    EXPECT_LOGGED_TIMES(2, noEnergy);
}

// Where the first of the own fields stands, a mesh has its radius.
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
        Recorder &calls = Recorder::instance();
        calls.start();
        RAVOLT::end3D(true);
        return calls.stop().named("glLoadMatrixf")[0].arguments[14];
    };
    EXPECT_EQ(firstDrawn(), -10);
    second->setEmitterType(0x40000000); // 2.0f
    EXPECT_EQ(firstDrawn(), -9);
}

} // namespace
