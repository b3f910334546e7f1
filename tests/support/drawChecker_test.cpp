// The draws of the simulated driver: what is outside the buffers is a fault.

#include "testing/recorderState.h"
#include "tests/support/recorder.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>

#include <array>

using namespace ravolt::test;

namespace {

template <class Function> Function entryPoint(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

// A buffer of four vertices of three floats, and one of six indices up to `highest`.
struct DrawChecks : SilentTest {
    void SetUp() override {
        SilentTest::SetUp();
        const auto bind = entryPoint<PFNGLBINDBUFFERARBPROC>("glBindBufferARB");
        const auto store = entryPoint<PFNGLBUFFERDATAARBPROC>("glBufferDataARB");
        bind(GL_ARRAY_BUFFER_ARB, 1);
        store(GL_ARRAY_BUFFER_ARB, 4 * 12, nullptr, GL_STATIC_DRAW_ARB);
        glVertexPointer(3, GL_FLOAT, 0, nullptr);
        glEnableClientState(GL_VERTEX_ARRAY);
        bind(GL_ELEMENT_ARRAY_BUFFER_ARB, 2);
        store(GL_ELEMENT_ARRAY_BUFFER_ARB, sizeof indices, indices.data(), GL_STATIC_DRAW_ARB);
    }

    std::array<GLushort, 6> indices{0, 1, 2, 3, 2, 1};

    static std::string fault() {
        const auto &faults = recorderState().driver.faults();
        return faults.empty() ? "" : faults.front();
    }
};

TEST_F(DrawChecks, DrawsInsideTheBuffersAreNoFaults) {
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glDrawElements(GL_TRIANGLES, 0, GL_UNSIGNED_SHORT, nullptr);
    EXPECT_EQ(fault(), "");
}

TEST_F(DrawChecks, MoreIndicesThanTheBufferHasAreAFault) {
    glDrawElements(GL_TRIANGLES, 7, GL_UNSIGNED_SHORT, nullptr);
    EXPECT_EQ(fault(), "glDrawElements: 7 indices are more than a buffer of 12 bytes has");
}

TEST_F(DrawChecks, AnIndexPastTheVerticesIsAFault) {
    indices[4] = 4;
    entryPoint<PFNGLBUFFERDATAARBPROC>("glBufferDataARB")(
        GL_ELEMENT_ARRAY_BUFFER_ARB, sizeof indices, indices.data(), GL_STATIC_DRAW_ARB);
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
    EXPECT_EQ(fault(), "glDrawElements: vertex 4 is outside a buffer of 48 bytes");
}

TEST_F(DrawChecks, VerticesPastTheBufferAreAFault) {
    glDrawArrays(GL_TRIANGLE_STRIP, 1, 4);
    EXPECT_EQ(fault(), "glDrawArrays: vertex 4 is outside a buffer of 48 bytes");
}

TEST_F(DrawChecks, EveryEnabledArrayIsChecked) {
    glColorPointer(4, GL_FLOAT, 0, nullptr); // of the same buffer, which has three such colours
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "");
    glEnableClientState(GL_COLOR_ARRAY);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "glDrawArrays: vertex 3 is outside a buffer of 48 bytes");
}

TEST_F(DrawChecks, CoordinatesOfEachTextureUnitAreChecked) {
    entryPoint<PFNGLCLIENTACTIVETEXTUREARBPROC>("glClientActiveTextureARB")(GL_TEXTURE1);
    glTexCoordPointer(2, GL_FLOAT, 16, nullptr);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    entryPoint<PFNGLCLIENTACTIVETEXTUREARBPROC>("glClientActiveTextureARB")(GL_TEXTURE0);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "glDrawArrays: vertex 3 is outside a buffer of 48 bytes");
}

TEST_F(DrawChecks, ADeletedBufferHasNoVertices) {
    const GLuint name = 1;
    entryPoint<PFNGLDELETEBUFFERSARBPROC>("glDeleteBuffersARB")(1, &name);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "glDrawArrays: vertex 3 is outside a buffer of 0 bytes");
}

TEST_F(DrawChecks, AnEnabledArrayWithoutMemoryIsAFault) {
    entryPoint<PFNGLBINDBUFFERARBPROC>("glBindBufferARB")(GL_ARRAY_BUFFER_ARB, 0);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "glDrawArrays: an enabled array has no memory");
}

TEST_F(DrawChecks, ColourIndicesAreNotRead) {
    glEnableClientState(GL_INDEX_ARRAY);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    EXPECT_EQ(fault(), "");
}

} // namespace
