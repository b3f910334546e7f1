// The mirror against its table, and against what OpenGL holds after the same calls.

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/shadowMatrixStack.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"

#include <GL/gl.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

using Numbers = std::array<float, 16>;

const Numbers identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
const Numbers sample{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1};
const Numbers other{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 8, 9, 10, 1};

constexpr int pushes = 32; // that pass

Numbers mirrored(GLenum name) {
    Numbers numbers;
    numbers.fill(-77);
    glWrapperGetFloatv(name, numbers.data());
    return numbers;
}

Numbers driverHas(GLenum name) {
    Numbers numbers{};
    glGetFloatv(name, numbers.data());
    return numbers;
}

// First `a`, then `b`, as the mirror reads a product.
Numbers product(const Numbers &a, const Numbers &b) {
    Numbers result{};
    for (std::size_t column = 0; column < 4; ++column)
        for (std::size_t row = 0; row < 4; ++row)
            for (std::size_t k = 0; k < 4; ++k)
                result[column * 4 + row] += a[column * 4 + k] * b[k * 4 + row];
    return result;
}

// Both stacks start a test empty and as identity, in the mirror and in OpenGL.
class MatrixMirror : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        emptyBoth();
        markLog();
    }

    void TearDown() override {
        emptyBoth();
        EngineTest::TearDown();
    }

    void expectAgreement() {
        expectNear(mirrored(GL_MODELVIEW_MATRIX), driverHas(GL_MODELVIEW_MATRIX));
        expectNear(mirrored(GL_PROJECTION_MATRIX), driverHas(GL_PROJECTION_MATRIX));
    }

  private:
    static void emptyBoth() {
        for (GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
            glWrapperMatrixMode(mode);
            int depth = 1;
            glGetIntegerv(mode == GL_PROJECTION ? GL_PROJECTION_STACK_DEPTH
                                                : GL_MODELVIEW_STACK_DEPTH,
                          &depth);
            for (; depth > 1; --depth)
                glWrapperPopMatrix();
            glWrapperLoadIdentity();
        }
    }
};

TEST(MatrixMirrorAlone, StartsAsIdentityAndNeedsNoContextToBeRead) {
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), identity);
}

TEST_F(MatrixMirror, ModeChoosesTheStackAndReachesOpenGL) {
    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_PROJECTION); }),
              (Calls{{"glMatrixMode", GL_PROJECTION}}));
    glWrapperLoadMatrixf(sample.data());
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), sample);
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_MODELVIEW); }),
              (Calls{{"glMatrixMode", GL_MODELVIEW}}));
    glWrapperLoadMatrixf(other.data());
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), other);
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), sample);
    expectAgreement();
}

TEST_F(MatrixMirror, AnyOtherModeDoesNotChangeTheMirror) {
    glWrapperMatrixMode(GL_PROJECTION);
    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_TEXTURE); }),
              (Calls{{"glMatrixMode", GL_TEXTURE}}));
    glWrapperLoadMatrixf(sample.data()); // to OpenGL's texture matrix
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), sample);
    EXPECT_EQ(driverHas(GL_PROJECTION_MATRIX), identity);
    glLoadIdentity();
}

TEST_F(MatrixMirror, LoadIdentityAndLoadMatrix) {
    EXPECT_EQ(callsOf([] { glWrapperLoadMatrixf(sample.data()); }).names(),
              std::vector<std::string>{"glLoadMatrixf"});
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), sample);
    expectAgreement();
    EXPECT_EQ(callsOf(glWrapperLoadIdentity), (Calls{{"glLoadIdentity"}}));
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    expectAgreement();
}

TEST_F(MatrixMirror, MultiplyingPutsTheNewMatrixFirst) {
    glWrapperLoadMatrixf(sample.data());
    EXPECT_EQ(callsOf([] { glWrapperMultMatrixf(other.data()); }).names(),
              std::vector<std::string>{"glMultMatrixf"});
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), product(other, sample));
    expectAgreement();
}

TEST_F(MatrixMirror, RotationTurnsAboutAUnitAxis) {
    glWrapperLoadMatrixf(sample.data());
    EXPECT_EQ(callsOf([] { glWrapperRotatef(30, 0, 0.6f, 0.8f); }),
              (Calls{{"glRotatef", 30, 0, 0.6f, 0.8f}}));
    Z3MMATRIX rotation;
    rotation.setRotation(30, 0, 0.6f, 0.8f);
    Numbers turned;
    std::copy_n(rotation.e, 16, turned.begin());
    expectNear(mirrored(GL_MODELVIEW_MATRIX), product(turned, sample));
    expectAgreement();
}

TEST_F(MatrixMirror, TranslationMoves) {
    glWrapperLoadMatrixf(sample.data());
    EXPECT_EQ(callsOf([] { glWrapperTranslatef(1, 2, 3); }), (Calls{{"glTranslatef", 1, 2, 3}}));
    const Numbers moved{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 7, 12, 19, 1};
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), moved);
    expectAgreement();
}

TEST_F(MatrixMirror, PushCopiesTheTopAndPopRestoresTheOldOne) {
    glWrapperLoadMatrixf(sample.data());
    EXPECT_EQ(callsOf(glWrapperPushMatrix), (Calls{{"glPushMatrix"}}));
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), sample);
    glWrapperTranslatef(1, 2, 3);
    expectAgreement();
    EXPECT_EQ(callsOf(glWrapperPopMatrix), (Calls{{"glPopMatrix"}}));
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), sample);
    expectAgreement();
}

TEST_F(MatrixMirror, EachModeHasAStackOfItsOwn) {
    glWrapperLoadMatrixf(sample.data());
    glWrapperPushMatrix();
    glWrapperMatrixMode(GL_PROJECTION);
    glWrapperPopMatrix(); // nothing was pushed here
    EXPECT_LOGGED_EXACTLY("   [!] Stack underflow in glWrapper\n");
    glWrapperMatrixMode(GL_MODELVIEW);
    glWrapperPopMatrix();
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), sample);
}

TEST_F(MatrixMirror, APopFromAnEmptyStackIsLoggedAndDoesNothingElse) {
    glWrapperLoadMatrixf(sample.data());
    EXPECT_TRUE(callsOf(glWrapperPopMatrix).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Stack underflow in glWrapper\n");
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), sample);
}

// The driver's own stack has 32 slots: it refuses the last push that passes here, and what would
// undo that push.
TEST_F(MatrixMirror, The33rdPushIsLoggedAndDoesNothingElse) {
    for (int push = 1; push <= pushes; ++push) {
        EXPECT_EQ(callsOf(glWrapperPushMatrix), (Calls{{"glPushMatrix"}})) << push;
        glWrapperTranslatef(1, 0, 0);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_STACK_OVERFLOW));
    EXPECT_NOTHING_LOGGED();
    const Numbers full = mirrored(GL_MODELVIEW_MATRIX);
    EXPECT_EQ(full[12], pushes);
    EXPECT_TRUE(callsOf(glWrapperPushMatrix).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Stack overflow in glWrapper\n");
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), full);
    expectAgreement();

    for (int left = pushes - 1; left >= 0; --left) {
        glWrapperPopMatrix();
        EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX)[12], static_cast<float>(left));
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_STACK_UNDERFLOW));
}

TEST_F(MatrixMirror, OrthoAgreesWithOpenGL) {
    glWrapperMatrixMode(GL_PROJECTION);
    EXPECT_EQ(callsOf([] { glWrapperOrtho(-2, 6, 1, 5, -3, 7); }),
              (Calls{{"glOrtho", -2, 6, 1, 5, -3, 7}}));
    const Numbers wanted{0.25f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, -0.2f, 0, -0.5f, -1.5f, -0.4f, 1};
    expectNear(mirrored(GL_PROJECTION_MATRIX), wanted);
    expectAgreement();
    glWrapperOrtho(0, 4, 0, 4, -1, 1);
    expectAgreement();
}

TEST_F(MatrixMirror, TheMirroredFrustumIsNotOpenGLs) {
    glWrapperMatrixMode(GL_PROJECTION);
    EXPECT_EQ(callsOf([] { glWrapperFrustum(-2, 6, 1, 5, 2, 10); }),
              (Calls{{"glFrustum", -2, 6, 1, 5, 2, 10}}));
    Numbers wanted = identity;
    wanted[0] = 0.25f;  // OpenGL: 0.5, with the near plane
    wanted[5] = 0.5f;   // OpenGL: 1
    wanted[2] = 0.5f;   // OpenGL has it in 8
    wanted[6] = 1.5f;   // OpenGL has it in 9
    wanted[10] = -1.5f; // the same
    wanted[11] = -5;    // OpenGL has it in 14
    wanted[14] = -1;    // OpenGL has it in 11
    wanted[15] = 0;     // the same
    expectNear(mirrored(GL_PROJECTION_MATRIX), wanted);
    const Numbers driver = driverHas(GL_PROJECTION_MATRIX);
    EXPECT_EQ(driver[0], 0.5f);
    EXPECT_EQ(driver[8], 0.5f);
    EXPECT_EQ(driver[14], -5);
}

TEST_F(MatrixMirror, TheFrustumIsMultipliedInFront) {
    glWrapperMatrixMode(GL_PROJECTION);
    glWrapperLoadMatrixf(sample.data());
    glWrapperFrustum(-2, 6, 1, 5, 2, 10);
    Numbers alone = identity;
    alone[0] = 0.25f;
    alone[5] = 0.5f;
    alone[2] = 0.5f;
    alone[6] = 1.5f;
    alone[10] = -1.5f;
    alone[11] = -5;
    alone[14] = -1;
    alone[15] = 0;
    expectNear(mirrored(GL_PROJECTION_MATRIX), product(alone, sample));
}

TEST_F(MatrixMirror, ReadingAsksTheMirrorAloneAndKnowsTwoNames) {
    EXPECT_TRUE(callsOf([] { mirrored(GL_MODELVIEW_MATRIX); }).empty());
    Numbers untouched;
    untouched.fill(-77);
    EXPECT_EQ(mirrored(GL_TEXTURE_MATRIX), untouched);
    EXPECT_EQ(mirrored(GL_MODELVIEW), untouched);
}

TEST_F(MatrixMirror, WhatGoesToOpenGLDirectlyIsNotSeen) {
    glTranslatef(1, 2, 3);
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    glLoadIdentity();
}

} // namespace
} // namespace ravolt::test
