// Meshes as they look.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>
#include <cstring>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Pixel black{0, 0, 0, 255}, red{255, 0, 0, 255};

// Before a black background and five units in front of the eye.
class MeshDrawingTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    }

    void TearDown() override {
        RVMESH::hideNormals();
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        EngineTest::TearDown();
    }

    static RveNode inFront(RveNode mesh) {
        mesh.position[2] -= 5;
        return mesh;
    }

    static Pixel centre() { return pixelAt(width / 2, height / 2); }
};

TEST_F(MeshDrawingTest, UnlitMeshHasTheCurrentColorAndDoesNotChangeIt) {
    RVNODE *root = loadScene({inFront(squareMesh("square"))});
    glColor4f(1, 0, 0, 1);
    drawFrame(nullptr, root);
    EXPECT_PIXEL(centre(), red, 1);
    EXPECT_PIXEL(pixelAt(2, 2), black, 1);
    GLfloat color[4];
    glGetFloatv(GL_CURRENT_COLOR, color);
    EXPECT_EQ(color[0], 1.0f);
    EXPECT_EQ(color[1], 0.0f);

    meshNamed("square")->setDisplayStatus(false);
    drawFrame(nullptr, root);
    EXPECT_PIXEL(centre(), black, 1) << "hidden";
    meshNamed("square")->setDisplayStatus(true);
    meshNamed("square")->setRotation(0, 180, 0);
    drawFrame(nullptr, root);
    EXPECT_PIXEL(centre(), black, 1) << "from behind";
}

TEST_F(MeshDrawingTest, BuffersAndOwnMemoryGiveTheSamePicture) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    RveNode tilted = inFront(squareMesh("tilted"));
    tilted.rotation = {20, 30, 40};
    Picture pictures[2];
    for (Picture &picture : pictures) {
        RVNODE *root = loadScene({tilted});
        glColor4f(1, 0, 0, 1);
        const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
        EXPECT_EQ(calls.contains(Call("glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0)),
                  &picture == &pictures[0]);
        picture = readFrame();
        EXPECT_GT(picture.pixelsUnlike(black), 100u);
        recorder.nullEntryPoint("glGenBuffersARB"); // the second time there are no buffers
        ASSERT_TRUE(restart());
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    }
    EXPECT_EQ(differenceOf(pictures[0], pictures[1]).maximum, 0);
}

// The contents of a buffer in the driver.
std::vector<float> floatsOfBuffer(unsigned int buffer, std::size_t count) {
    const auto readBuffer = reinterpret_cast<PFNGLGETBUFFERSUBDATAARBPROC>(
        SDL_GL_GetProcAddress("glGetBufferSubDataARB"));
    std::vector<float> floats(count);
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
    readBuffer(GL_ARRAY_BUFFER_ARB, 0, static_cast<GLsizeiptrARB>(count * sizeof(float)),
               floats.data());
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    return floats;
}

TEST_F(MeshDrawingTest, BuffersOfTheSkinContainBoneNumbersAndWeightsAsFloats) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    RveNode square = squareMesh("square");
    const std::vector<float> weights = {0.25f, 0.75f, 1, 0, 0.5f, 0.5f, 0.125f, 0.875f};
    square.mesh.skin = {2, {0, 1, 2, 0, 1, 2, 0, 2}, weights, {"a", "b", "c"}};
    const Calls made = callsOf([&] { loadScene({square}); }).named("glGenBuffersARB");
    ASSERT_EQ(made.size(), 4u);
    const auto name = [&](std::size_t i) {
        return static_cast<unsigned int>(made[i].arguments.back());
    };
    EXPECT_EQ(floatsOfBuffer(name(2), 8), (std::vector<float>{0, 1, 2, 0, 1, 2, 0, 2}));
    EXPECT_EQ(floatsOfBuffer(name(3), 8), weights);
}

// Faces in a shared buffer count from the first vertex of all meshes; a mesh without coordinates
// has room for them.
TEST_F(MeshDrawingTest, SharedBuffersContainTheArraysOfEachMesh) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    RveNode bare = squareMesh("bare");
    bare.mesh.uvs.clear();
    const RveNode square = squareMesh("square");
    const Calls made = callsOf([&] {
                           loadScene(RveScene{{}, rootOver({bare, square})});
                       }).named("glGenBuffersARB");
    ASSERT_EQ(made.size(), 2u);
    const auto name = [&](std::size_t i) {
        return static_cast<unsigned int>(made[i].arguments.back());
    };
    const std::vector<float> floats = floatsOfBuffer(name(0), 64);
    for (std::size_t vertex = 0; vertex < 8; ++vertex)
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(floats[3 * vertex + axis], square.mesh.vertices[vertex % 4][axis]);
            EXPECT_EQ(floats[24 + 3 * vertex + axis], square.mesh.normals[vertex % 4][axis]);
        }
    for (std::size_t vertex = 0; vertex < 8; ++vertex)
        for (std::size_t axis = 0; axis < 2; ++axis)
            EXPECT_EQ(floats[48 + 2 * vertex + axis],
                      vertex < 4 ? 0 : square.mesh.uvs[vertex % 4][axis]);
    std::vector<float> words = floatsOfBuffer(name(1), 6);
    unsigned short indices[12];
    std::memcpy(indices, words.data(), sizeof indices);
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_EQ(indices[i], square.mesh.faces[i / 3 % 2][i % 3] + (i < 6 ? 0 : 4)) << i;
}

// Two squares of one mesh, the near one first; it looks at the eye, the far one away from it.
RveNode shell(const std::string &material) {
    RveNode near = squareMesh("shell", material);
    const RveMesh far = near.mesh;
    RveMesh &mesh = near.mesh;
    for (RveVector &vertex : mesh.vertices)
        vertex[2] = 0.5f;
    for (RveVector vertex : far.vertices)
        mesh.vertices.push_back({vertex[0], vertex[1], -0.5f});
    mesh.normals.insert(mesh.normals.end(), 4, {0, 0, -1});
    mesh.uvs.insert(mesh.uvs.end(), far.uvs.begin(), far.uvs.end());
    mesh.faces.push_back({4, 6, 5});
    mesh.faces.push_back({4, 7, 6});
    return near;
}

TEST_F(MeshDrawingTest, InnerFacesOfATransparentMeshShineThroughTheOuterOnes) {
    RveMaterial glass = materialNamed("glass", 0.5f);
    glass.ambient = glass.diffuse = glass.specular = {0, 0, 0, 1};
    glass.selfIllumination = {1, 0, 0, 1};
    RveNode lamp = nodeNamed("lamp");
    lamp.kind = RveKind::light;
    lamp.position = {0, 50, 0}; // out of the picture
    RVNODE *root = loadScene(RveScene{{glass}, rootOver({lamp, inFront(shell("glass"))})});
    drawFrame(nullptr, root);
    EXPECT_PIXEL(centre(), (Pixel{191, 0, 0, 255}), 2); // half of red over half of red
    EXPECT_TRUE(RVOPENGL::isCulled());

    RVMATERIAL::findByName("glass")->setTransparency(1.0f);
    drawFrame(nullptr, root);
    EXPECT_PIXEL(centre(), red, 2);
}

TEST_F(MeshDrawingTest, NormalsAreVisible) {
    RveNode square = inFront(squareMesh("square"));
    square.rotation = {0, 90, 0}; // edge on: its normals point to the right
    RVNODE *root = loadScene({square});
    RVMESH::showNormals();
    drawFrame(nullptr, root);
    const Picture picture = readFrame();
    std::size_t green = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            green += picture.at(x, y).green > 20 && picture.at(x, y).red == 0;
    EXPECT_GT(green, 40u);
}

} // namespace
