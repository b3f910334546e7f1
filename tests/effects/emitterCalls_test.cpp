// The OpenGL calls of an emitter on both paths and in each profile; the arithmetic of the particles
// against a reference.

#include "tests/effects/emitterAccess.h"

#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"

#include <array>
#include <cmath>
#include <limits>

using namespace ravolt::test;

namespace {

using Vector = std::array<double, 3>;

Vector operator+(const Vector &a, const Vector &b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Vector operator*(const Vector &a, double b) { return {a[0] * b, a[1] * b, a[2] * b}; }

class EmitterCalls : public EmitterTest {
  protected:
    void SetUp() override {
        EmitterTest::SetUp();
        recorder.stopClock();
        RAVOLT::updateTimer(); // the time since the start belongs to no frame
    }

    // The length of the last frame.
    void setFrame(double seconds) {
        RAVOLT::swap();
        recorder.advanceClock(seconds);
        RAVOLT::updateTimer();
        ASSERT_NEAR(RAVOLT::getFPSfactor(), seconds, 1e-4);
    }

    // The only one, after a frame of half a second.
    RVPARTICLE &onlyParticle(float energy = 0) {
        setFrame(0.5);
        emitter->setNumberOfParticles(1);
        RVPARTICLE &p = particleOf(*emitter, 0);
        p.energy = p.startEnergy = energy;
        return p;
    }
};

class EmitterCallsWithProgram : public EmitterCalls {
  protected:
    EmitterCallsWithProgram() { settings.setShaders(true); }
};

TEST_F(EmitterCalls, NullIsLoggedAndDrawsNothing) {
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(emitter->render(nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVEMITTER::render\n");
    EXPECT_FALSE(isInitialized(*emitter));
}

// The calls before and after those of each path.
Calls drawCalls(double source, double destination, const Calls &path) {
    std::vector<Call> calls = {{"glEnable", GL_BLEND},
                               {"glBlendFunc", source, destination},
                               {"glGetFloatv", GL_MODELVIEW_MATRIX},
                               {"glDepthMask", GL_FALSE},
                               {"glEnable", GL_ALPHA_TEST},
                               {"glAlphaFunc", GL_GREATER, 0.2f},
                               {"glDisable", GL_CULL_FACE}};
    calls.insert(calls.end(), path.begin(), path.end());
    calls.insert(calls.end(), {{"glClientActiveTextureARB", GL_TEXTURE0},
                               {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                               {"glDisable", GL_ALPHA_TEST},
                               {"glDepthMask", GL_TRUE},
                               {"glDisable", GL_BLEND},
                               {"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA},
                               {"glEnable", GL_LIGHTING}});
    return Calls(calls);
}

TEST_F(EmitterCalls, ProcessorBuildsTheQuadsAndOneCallDrawsThem) {
    RVLIGHT::lightingOn();
    RVOPENGL::normalArrayOn();
    emitter->setBlendingSrc(GL_ONE);
    emitter->setBlendingDst(GL_ONE);
    emitter->setNumberOfParticles(5);
    element.getMatrix()->setTranslation(1, 2, -6);
    const Calls calls = recordRender();
    EXPECT_EQ(calls[0], Call("glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, -6, 1));
    EXPECT_EQ(calls[1], Call("glDisable", GL_LIGHTING));
    EXPECT_EQ(Calls(std::vector<Call>(calls.begin() + 2, calls.end())),
              drawCalls(GL_ONE, GL_ONE,
                        {{"glEnableClientState", GL_VERTEX_ARRAY},
                         {"glClientActiveTextureARB", GL_TEXTURE0},
                         {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                         {"glEnableClientState", GL_COLOR_ARRAY},
                         {"glDisableClientState", GL_NORMAL_ARRAY}, // it may be shorter
                         {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                         {"glVertexPointer", 4, GL_FLOAT, 0, anyAddress},
                         {"glColorPointer", 4, GL_UNSIGNED_BYTE, 0, anyAddress},
                         {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                         {"glDrawArrays", GL_QUADS, 0, 20},
                         {"glDisableClientState", GL_VERTEX_ARRAY},
                         {"glDisableClientState", GL_COLOR_ARRAY}}));
}

TEST_F(EmitterCallsWithProgram, ProgramBuildsTheQuadsFromCentresSizesAndSpins) {
    ASSERT_TRUE(RVSHADER::useEmitter());
    emitter->setNumberOfParticles(5);
    RVSHADER::disable();
    const Calls calls = recordRender();
    ASSERT_EQ(calls.count("glUseProgramObjectARB"), 1u);
    EXPECT_EQ(calls.without({"glLoadMatrixf"}),
              drawCalls(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA,
                        {calls.named("glUseProgramObjectARB")[0],
                         {"glEnableClientState", GL_VERTEX_ARRAY},
                         {"glClientActiveTextureARB", GL_TEXTURE0},
                         {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                         {"glEnableClientState", GL_COLOR_ARRAY},
                         {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                         {"glVertexPointer", 4, GL_FLOAT, 0, anyAddress},
                         {"glColorPointer", 4, GL_UNSIGNED_BYTE, 0, anyAddress},
                         {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                         {"glEnableClientState", GL_NORMAL_ARRAY},
                         {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                         {"glClientActiveTextureARB", GL_TEXTURE1},
                         {"glActiveTextureARB", GL_TEXTURE1},
                         {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                         {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                         {"glDrawArrays", GL_QUADS, 0, 20},
                         {"glDisableClientState", GL_VERTEX_ARRAY},
                         {"glDisableClientState", GL_COLOR_ARRAY},
                         {"glDisableClientState", GL_NORMAL_ARRAY},
                         {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                         {"glClientActiveTextureARB", GL_TEXTURE0},
                         {"glActiveTextureARB", GL_TEXTURE0}}));
}

TEST_F(EmitterCallsWithProgram, EmittersProgramStaysInUse) {
    RVSHADER::pplOmni->render(nullptr);
    emitter->setNumberOfParticles(1);
    const Calls calls = recordRender().named("glUseProgramObjectARB");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].arguments[0], 0) << "disabled before";
    EXPECT_TRUE(callsOf([] { RVSHADER::emitter->render(nullptr); }).empty());
}

// As after a second start without shaders, which does not clear the flag.
TEST_F(EmitterCallsWithProgram, ProcessorBuildsTheQuadsWhereTheProgramIsInoperative) {
    emitter->setNumberOfParticles(1);
    RVSHADER::emitter->forceDeactivation();
    EXPECT_FALSE(recordRender().contains("glNormalPointer"));
}

TEST_F(EmitterCalls, OnlyTheFullProfileTouchesTheDepthMask) {
    emitter->setNumberOfParticles(1);
    for (const RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS}) {
        RVOPENGL::setProfile(profile);
        const Calls calls = recordRender();
        EXPECT_FALSE(calls.contains("glDepthMask"));
        EXPECT_TRUE(calls.haveInOrder({{"glEnable", GL_ALPHA_TEST},
                                       {"glDrawArrays", GL_QUADS, 0, 4},
                                       {"glDisable", GL_ALPHA_TEST}}));
    }
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
}

TEST_F(EmitterCalls, EndsWithValidCaches) {
    emitter->setNumberOfParticles(1);
    auto *texture = new RVTEXTURE;
    texture->create(2, 2, RV_TEXTURE_RGB);
    emitter->setTexture(texture);
    auto *material = new RVMATERIAL;
    material->render(nullptr);
    const Calls calls = recordRender();
    EXPECT_TRUE(calls.haveInOrder({{"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                                   {"glDrawArrays", GL_QUADS, 0, 4},
                                   {"glDisable", GL_TEXTURE_2D}}));
    EXPECT_FALSE(RVOPENGL::isBlended());
    EXPECT_TRUE(RVLIGHT::getLighting());
    recorder.start();
    texture->render(nullptr);
    material->render(nullptr);
    const Calls next = recorder.stop();
    EXPECT_TRUE(next.contains("glBindTexture"));
    EXPECT_TRUE(next.contains("glMaterialfv")) << "the material is applied again";
}

TEST_F(EmitterCalls, QuadsFaceTheScreenAndTurnWithTheirSpin) {
    setFrame(0.25);
    element.getMatrix()->setRotation(40, 0.6f, 0, 0.8f);
    element.getMatrix()->setTranslation(1, 2, -6);
    emitter->setGravity(Z3MVECTOR3D(0, -2, 0.5));
    emitter->setNumberOfParticles(3);
    for (unsigned int index = 0; index < 3; ++index) {
        RVPARTICLE &p = particleOf(*emitter, index);
        p.position.set(1, 2, index);
        p.velocity.set(0.5, index, -1);
        p.energy = 5;
        p.startEnergy = 10;
        p.size = 2;
        p.spin = static_cast<float>(index) * 45;
        p.spinSpeed = 20;
    }
    recordRender();
    const double f = RAVOLT::getFPSfactor();
    const float *m = element.getMatrix()->e;
    const Vector right = {m[0], m[4], m[8]}, up = {m[1], m[5], m[9]};
    for (unsigned int index = 0; index < 3; ++index) {
        const Vector velocity = Vector{0.5, double(index), -1} + Vector{0, -2, 0.5} * f;
        const Vector position = Vector{1, 2, double(index)} + velocity * f;
        const RVPARTICLE &p = particleOf(*emitter, index);
        const double s = 3; // of the size less the energy
        // About up ^ right, which points into the screen, by the spin before this frame's share.
        const double angle = index * 45 / 57.29577951308232, c = std::cos(angle),
                     k = std::sin(angle);
        const Vector r = (right * c + up * -k) * s, u = (up * c + right * k) * s;
        const double x[] = {-1, 1, 1, -1}, y[] = {-1, -1, 1, 1};
        for (unsigned int corner = 0; corner < 4; ++corner) {
            const Vector expected = position * s + r * x[corner] + u * y[corner];
            const Z3MVECTOR4D actual = corners()[4 * index + corner];
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_NEAR(actual[axis], expected[axis], 1e-4) << index << corner << axis;
                EXPECT_NEAR(p.position[axis], position[axis], 1e-5);
                EXPECT_NEAR(p.velocity[axis], velocity[axis], 1e-5);
            }
            EXPECT_EQ(actual.w, 1);
        }
        EXPECT_NEAR(p.spin, index * 45 + 20 * f, 1e-3);
        EXPECT_NEAR(p.energy, 5 - f / 2, 1e-5);
    }
}

TEST_F(EmitterCallsWithProgram, ProgramGetsTheUnscaledSizeAndTheAdvancedSpin) {
    RVPARTICLE &p = onlyParticle(9);
    p.position.set(1, 2, 3);
    p.velocity.set(2, 0, 0);
    p.size = 4;
    p.spin = 10;
    p.spinSpeed = 6;
    recordRender();
    for (unsigned int vertex = 0; vertex < 4; ++vertex) {
        EXPECT_LT(centresOf(*emitter)[vertex].distance(Z3MVECTOR3D(2, 2, 3)), 1e-3f);
        EXPECT_LT(sizesAndSpins()[vertex].distance(Z3MVECTOR2D(4, 13)), 1e-2f);
    }
    EXPECT_TRUE(corners()[2] == Z3MVECTOR4D(1, 1, 0, 1)) << "the unit quad";
}

TEST_F(EmitterCalls, ColorsRunFromTheStartToTheEnd) {
    emitter->setColorStart(Z3MVECTOR3D(1, 0, 0.5));
    emitter->setColorEnd(Z3MVECTOR3D(0, 1, 0.5));
    RVPARTICLE &p = onlyParticle(0.8f);
    p.energy = 0.6f;
    recordRender();
    for (unsigned int vertex = 0; vertex < 4; ++vertex) {
        const unsigned char *bytes = colorBytes() + 4 * vertex;
        EXPECT_NEAR(bytes[0], 255 * 0.75, 1);
        EXPECT_NEAR(bytes[1], 255 * 0.25, 1);
        EXPECT_EQ(bytes[2], 127) << "truncated";
        EXPECT_EQ(bytes[3], 153) << "the energy, unscaled";
    }
    EXPECT_NEAR(p.color.x, 0.75, 1e-5);
    EXPECT_NEAR(p.color.w, 0.6, 1e-5);
}

TEST_F(EmitterCalls, ColorBytesAreTheLowEightBitsAnd0ForWhatHasNone) {
    RVPARTICLE &p = onlyParticle(10);
    for (const float energy : {255.5f / 255, 256.5f / 255, 2.0f, 2.6f}) {
        p.energy = energy;
        recordRender();
        EXPECT_EQ(colorBytes()[3], static_cast<int>(energy * 255.0) % 256) << energy;
    }
    constexpr float infinity = std::numeric_limits<float>::infinity();
    emitter->setColorStart(Z3MVECTOR3D(-1.0, infinity, 1e30));
    emitter->setColorEnd(Z3MVECTOR3D(-1.0, 0, 1e30));
    p.startEnergy = p.energy = 256.5f / 255;
    recordRender();
    const unsigned char *bytes = colorBytes();
    EXPECT_EQ(std::vector<int>(bytes, bytes + 4), (std::vector<int>{1, 0, 0, 0})) << "-255 first";
}

TEST_F(EmitterCalls, ParticlesWithoutEnergyAreBornAgainAtOnce) {
    emitter->setMaximumEnergy(1);
    emitter->setCenter(Z3MVECTOR3D(1, 2, 3));
    emitter->setColorStart(Z3MVECTOR3D(1, 0.5, 0.25));
    RVPARTICLE &p = onlyParticle();
    const unsigned char *bytes = colorBytes();
    for (int frame = 0; frame < 3; ++frame) {
        p.position.set(9, 9, 9);
        recordRender();
        EXPECT_TRUE(p.position == Z3MVECTOR3D(1, 2, 3));
        EXPECT_EQ(p.energy, 0);
        EXPECT_EQ(std::vector<int>(bytes, bytes + 4), (std::vector<int>{255, 127, 63, 0}))
            << "the ratio counts as 1";
    }
    p.energy = p.startEnergy = RAVOLT::getFPSfactor() * 0.5f;
    recordRender();
    EXPECT_EQ(p.energy, 0) << "born again at exactly 0";
    EXPECT_TRUE(p.position == Z3MVECTOR3D(1, 2, 3));
}

TEST_F(EmitterCalls, ParticlesAdvanceWithEachDraw) {
    const RVPARTICLE &p = onlyParticle(4);
    recordRender();
    recordRender();
    EXPECT_NEAR(p.energy, 3.5, 1e-3);
}

// The number that is drawn is not changed.
TEST_F(EmitterCalls, FirstMissingSlotEndsTheAdvance) {
    setFrame(0.5);
    emitter->setNumberOfParticles(3);
    writeSlot(*emitter, 1, -1);
    RVPARTICLE &last = particleOf(*emitter, 2);
    last.energy = 4;
    EXPECT_TRUE(recordRender().contains(Call("glDrawArrays", GL_QUADS, 0, 12)));
    EXPECT_EQ(last.energy, 4);
}

// Picking draws meshes and custom nodes alone.
TEST_F(EmitterCalls, OneFrameWithoutEffectsDrawsOnceAndPickingNever) {
    emitter->setNumberOfParticles(1);
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, emitter); }).count("glDrawArrays"), 1u);
    EXPECT_FALSE(callsOf([] { RAVOLT::select(10, 10); }).contains("glDrawArrays"));
}

} // namespace
