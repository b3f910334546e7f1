// The mirror against its table, and against the matrices of OpenGL after the same calls.

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/shadowMatrixStack.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"
#include "tests/support/glState.h"

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
        expectNear(mirrored(GL_MODELVIEW_MATRIX), matrixOf(GL_MODELVIEW_MATRIX));
        expectNear(mirrored(GL_PROJECTION_MATRIX), matrixOf(GL_PROJECTION_MATRIX));
    }

  private:
    static void emptyBoth() {
        for (GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
            glWrapperMatrixMode(mode);
            for (int depth = integerOf(mode == GL_PROJECTION ? GL_PROJECTION_STACK_DEPTH
                                                             : GL_MODELVIEW_STACK_DEPTH);
                 depth > 1; --depth)
                glWrapperPopMatrix();
            glWrapperLoadIdentity();
        }
    }
};

TEST(MatrixMirrorAlone, StartsAsIdentityAndNeedsNoContextToBeRead) {
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), identity);
}

TEST_F(MatrixMirror, ModeChoosesTheStackAndAnyOtherModeDoesNotChangeIt) {
    glWrapperMatrixMode(GL_PROJECTION);
    glWrapperLoadMatrixf(sample.data());
    glWrapperPushMatrix();
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), sample);
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_MODELVIEW); }),
              (Calls{{"glMatrixMode", GL_MODELVIEW}}));
    glWrapperLoadMatrixf(other.data());
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), other);
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), sample);
    expectAgreement();
    glWrapperPopMatrix(); // nothing was pushed here
    EXPECT_LOGGED_EXACTLY("   [!] Stack underflow in glWrapper\n");

    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_PROJECTION); }),
              (Calls{{"glMatrixMode", GL_PROJECTION}}));
    glWrapperPopMatrix();
    EXPECT_EQ(callsOf([] { glWrapperMatrixMode(GL_TEXTURE); }),
              (Calls{{"glMatrixMode", GL_TEXTURE}}));
    glWrapperLoadMatrixf(other.data()); // to OpenGL's texture matrix
    EXPECT_EQ(mirrored(GL_PROJECTION_MATRIX), other);
    EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), sample);
    glLoadIdentity();
}

// The new matrix is the first factor.
TEST_F(MatrixMirror, EachFunctionCallsItsOwnOnceAndAgreesWithOpenGL) {
    Z3MMATRIX rotation;
    rotation.setRotation(30, 0, 0.6f, 0.8f);
    Numbers turned;
    std::copy_n(rotation.e, 16, turned.begin());
    const auto call = [](const char *name, const Numbers &numbers) {
        return Call(name, std::vector<double>(numbers.begin(), numbers.end()));
    };
    const struct {
        Call call;
        void (*function)();
        Numbers wanted; // from the sample
    } rows[] = {
        {call("glLoadMatrixf", other), [] { glWrapperLoadMatrixf(other.data()); }, other},
        {{"glLoadIdentity"}, glWrapperLoadIdentity, identity},
        {call("glMultMatrixf", other), [] { glWrapperMultMatrixf(other.data()); },
         product(other, sample)},
        {{"glRotatef", 30, 0, 0.6f, 0.8f},
         [] { glWrapperRotatef(30, 0, 0.6f, 0.8f); },
         product(turned, sample)},
        {{"glTranslatef", 1, 2, 3},
         [] { glWrapperTranslatef(1, 2, 3); },
         {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 7, 12, 19, 1}},
        {{"glOrtho", -2, 6, 1, 5, -3, 7},
         [] { glWrapperOrtho(-2, 6, 1, 5, -3, 7); },
         product({0.25f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, -0.2f, 0, -0.5f, -1.5f, -0.4f, 1}, sample)},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.call.name);
        glWrapperLoadMatrixf(sample.data());
        EXPECT_EQ(callsOf(row.function), Calls{row.call});
        expectNear(mirrored(GL_MODELVIEW_MATRIX), row.wanted);
        expectAgreement();
    }
    EXPECT_NOTHING_LOGGED();
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
    EXPECT_TRUE(callsOf(glWrapperPopMatrix).empty()) << "from an empty stack";
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

TEST_F(MatrixMirror, TheMirroredFrustumIsNotOpenGLs) {
    // OpenGL has 0.5 and 1, with the near plane, in 0 and 5, the others but -1.5 transposed.
    const Numbers alone{0.25f, 0, 0.5f, 0, 0, 0.5f, 1.5f, 0, 0, 0, -1.5f, -5, 0, 0, -1, 0};
    glWrapperMatrixMode(GL_PROJECTION);
    EXPECT_EQ(callsOf([] { glWrapperFrustum(-2, 6, 1, 5, 2, 10); }),
              (Calls{{"glFrustum", -2, 6, 1, 5, 2, 10}}));
    expectNear(mirrored(GL_PROJECTION_MATRIX), alone);
    const Numbers driver = matrixOf(GL_PROJECTION_MATRIX);
    EXPECT_EQ(driver[0], 0.5f);
    EXPECT_EQ(driver[8], 0.5f);
    EXPECT_EQ(driver[14], -5);
    glWrapperLoadMatrixf(sample.data());
    glWrapperFrustum(-2, 6, 1, 5, 2, 10);
    expectNear(mirrored(GL_PROJECTION_MATRIX), product(alone, sample));
}

TEST_F(MatrixMirror, ReadingCallsNothingKnowsTwoNamesAndSeesNoDirectCalls) {
    glTranslatef(1, 2, 3);
    EXPECT_TRUE(callsOf([] { EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity); }).empty());
    glLoadIdentity();
    Numbers untouched;
    untouched.fill(-77);
    EXPECT_EQ(mirrored(GL_TEXTURE_MATRIX), untouched);
    EXPECT_EQ(mirrored(GL_MODELVIEW), untouched);
}

TEST_F(MatrixMirror, NullIsRefused) {
    EXPECT_TRUE(callsOf([] {
                    glWrapperLoadMatrixf(nullptr);
                    glWrapperMultMatrixf(nullptr);
                    glWrapperGetFloatv(GL_MODELVIEW_MATRIX, nullptr);
                }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ glWrapperLoadMatrixf\n"
                          "   [!] Invalid params @ glWrapperMultMatrixf\n"
                          "   [!] Invalid params @ glWrapperGetFloatv\n");
    EXPECT_EQ(mirrored(GL_MODELVIEW_MATRIX), identity);
}

} // namespace
} // namespace ravolt::test
