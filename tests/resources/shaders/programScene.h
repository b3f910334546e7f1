#pragma once

// The inputs of both a program and its reference: the fixed-function state that reaches a
// program, its uniforms and textures, and one triangle. The triangle is drawn into a floating-point
// target and compared pixel by pixel with a reference that has the program's two stages as
// functions in double precision.

#include "tests/resources/shaders/vectors.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

// A program made of the texts of two labels, current as long as it lives.
class Program {
  public:
    Program(const char *vertexLabel, const char *pixelLabel);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    std::string messages; // of the driver, for both stages and the linking
    bool linked = false;

    int uniform(const std::string &name) const; // -1 without it
    int attribute(const std::string &name) const;

  private:
    unsigned int program = 0;
};

// The messages of the driver for a text; `kind` is one of OpenGL's two.
std::string compileMessages(unsigned int kind, const std::string &text);

// A texture of floats, repeated, with no filter.
struct Image {
    int width = 0, height = 0;
    std::vector<Vec> texels;

    // Texels from `low` to `high`, the same ones for the same seed.
    static Image random(int width, int height, unsigned int seed, double low, double high);
};

// A depth texture with comparison: 1 where the third coordinate is not above the depth.
struct DepthImage {
    int width = 0, height = 0;
    std::vector<double> depths;
};

struct Light {
    Vec ambient, diffuse, specular;
    Vec position{0, 0, 0, 1}; // in eye space
    Vec spotDirection{0, 0, -1, 0};
    double cutoff = 180; // degrees
    double exponent = 0;
    double constant = 1, linear = 0, quadratic = 0;
};

struct Material {
    Vec ambient, diffuse, specular, emission;
    double shininess = 0;
};

struct Vertex {
    Vec position{0, 0, 0, 1};
    Vec normal{0, 0, 1, 0};
    Vec color{1, 1, 1, 1};
    Vec texCoord[2];
    Vec boneIndex, boneWeight;
};

using Varyings = std::map<std::string, Vec>;

struct VertexResult {
    Vec position; // in clip space
    Varyings varyings;
};

// What the pixel stage of a reference records while it computes a pixel.
struct Trace {
    bool unsure = false; // so near to a step that single precision may fall on its other side
    std::set<std::string> visited;

    // Whether a > b.
    bool above(double a, double b, const char *name);
};

class ProgramScene {
  public:
    Matrix modelview = identity, projection = identity, textureMatrix1 = identity;
    Light light;
    Material material;
    Vec lightModelAmbient;
    std::map<int, Image> images; // by unit, each for the sampler of that number
    DepthImage shadowMap;        // on unit 1, where there is one
    std::map<std::string, double> floats;
    std::map<std::string, int> integers;
    std::vector<Vec> boneQuat, boneTrans;
    Vec clipPlane; // in eye space, for a varying clipVertex of the reference; none if all are 0
    Vertex corners[3];

    // Texels of many depths over the whole triangle, nearer and farther, so mixed that a pixel is
    // lit by none to all of its four lookups.
    void addShadowMap();

    // Lookups of the reference.
    Vec sample(Trace &trace, int unit, double s, double t) const;
    double lightReaching(Trace &trace, Vec coord) const; // the mean of four in the shadow map
    double number(const std::string &name) const { return floats.at(name); }

    Matrix skinning(const Vertex &vertex) const; // the sum over the four bones

  private:
    double compare(Trace &trace, Vec coord) const; // shadow2DProj
};

// Draws the corners as a triangle. Red to alpha of the target's pixels, bottom row first; the
// background has its value in all four.
inline constexpr int targetSize = 32; // in pixels, both ways
inline constexpr double backgroundValue = -3;
std::vector<float> drawScene(const Program &program, const ProgramScene &scene);

using VertexReference = std::function<VertexResult(const ProgramScene &, const Vertex &)>;
using PixelReference = std::function<Vec(const ProgramScene &, const Varyings &, Trace &)>;

struct Comparison {
    int compared = 0;              // pixels of the triangle
    int background = 0;            // pixels beside it
    std::set<std::string> visited; // branches that the compared pixels took
};

class ProgramTest : public EngineTest {
  protected:
    ProgramTest() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allOf({programExtensions, targetExtensions}));
    }

    // The whole comparison, of more than 200 pixels inside the triangle and outside. A pixel
    // may differ by singlePrecision, times its value above 1.
    static Comparison compare(const std::string &vertexLabel, const std::string &pixelLabel,
                              const ProgramScene &scene, const VertexReference &vertexReference,
                              const PixelReference &pixelReference);

    // The same, cut by a plane of the user's.
    static Comparison compareCut(const std::string &vertexLabel, const std::string &pixelLabel,
                                 ProgramScene scene, const VertexReference &vertexReference,
                                 const PixelReference &pixelReference);

    // Sets the corners to these screen positions (-1 to 1) and distances from the eye, for the
    // scene's modelview matrix, and a perspective that fits.
    static void place(ProgramScene &scene);
};

// What single precision may differ from the references by: 24 bits in each of some dozens of steps,
// and pow as an exponential of a logarithm. Seen on Mesa's software driver: 1e-6.
inline constexpr double singlePrecision = 2e-5;

} // namespace ravolt::test
