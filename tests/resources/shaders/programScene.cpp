#include "tests/resources/shaders/programScene.h"

#include "ravolt/RVOPENGL.h"
#include "resources/shaderTexts.h"

#include <SDL.h>

#include <optional>
#include <random>

namespace ravolt::test {
namespace {

constexpr int size = 32; // of the target, in pixels
constexpr double backgroundValue = -3;

PFNGLGETINFOLOGARBPROC getInfoLog() {
    return reinterpret_cast<PFNGLGETINFOLOGARBPROC>(SDL_GL_GetProcAddress("glGetInfoLogARB"));
}

std::string infoLog(unsigned int object) {
    char text[4096] = "";
    getInfoLog()(object, sizeof text, nullptr, text);
    return text;
}

bool succeeded(unsigned int object, GLenum which) {
    GLint value = 0;
    RVOPENGL::glGetObjectParameterivARB(object, which, &value);
    return value != 0;
}

std::array<float, 4> toFloats(Vec v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z),
            static_cast<float>(v.w)};
}

void loadMatrix(GLenum mode, const Matrix &matrix) {
    glMatrixMode(mode);
    glLoadMatrixd(&matrix[0].x);
}

// A floating-point target, bound as long as it lives.
class Target {
  public:
    Target() {
        glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &before);
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, size, size, 0, GL_RGBA, GL_FLOAT, nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        RVOPENGL::glGenFramebuffersEXT(1, &framebuffer);
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer);
        RVOPENGL::glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                                            GL_TEXTURE_2D, texture, 0);
        EXPECT_EQ(RVOPENGL::glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT),
                  static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE_EXT));
        glViewport(0, 0, size, size);
        const auto value = static_cast<float>(backgroundValue);
        glClearColor(value, value, value, value);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    ~Target() {
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, static_cast<GLuint>(before));
        RVOPENGL::glDeleteFramebuffersEXT(1, &framebuffer);
        glDeleteTextures(1, &texture);
    }
    Target(const Target &) = delete;
    Target &operator=(const Target &) = delete;

    static std::vector<float> read() {
        std::vector<float> values(std::size_t{size} * size * 4);
        glReadPixels(0, 0, size, size, GL_RGBA, GL_FLOAT, values.data());
        return values;
    }

  private:
    GLint before = 0;
    GLuint texture = 0;
    GLuint framebuffer = 0;
};

// The scene's textures, bound as long as it lives.
class Textures {
  public:
    explicit Textures(const ProgramScene &scene) {
        for (const auto &[unit, image] : scene.images) {
            bindNew(unit);
            std::vector<float> texels;
            for (const Vec &texel : image.texels)
                for (const float value : toFloats(texel))
                    texels.push_back(value);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, image.width, image.height, 0, GL_RGBA,
                         GL_FLOAT, texels.data());
        }
        if (!scene.shadowMap.depths.empty())
            bindShadowMap(scene.shadowMap);
    }
    ~Textures() {
        for (const auto &[unit, name] : names) {
            activate(unit);
            glBindTexture(GL_TEXTURE_2D, 0);
            glDeleteTextures(1, &name);
        }
        activate(0);
    }
    Textures(const Textures &) = delete;
    Textures &operator=(const Textures &) = delete;

  private:
    static void activate(int unit) {
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0_ARB + static_cast<GLenum>(unit));
    }

    void bindNew(int unit) {
        activate(unit);
        glGenTextures(1, &names[unit]);
        glBindTexture(GL_TEXTURE_2D, names[unit]);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }

    void bindShadowMap(const DepthImage &map) {
        bindNew(1);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE_ARB, GL_COMPARE_R_TO_TEXTURE_ARB);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC_ARB, GL_LEQUAL);
        const std::vector<float> depths(map.depths.begin(), map.depths.end());
        glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, map.width, map.height, 0,
                     GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    }

    std::map<int, GLuint> names;
};

void setLight(const Light &light) {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity(); // positions and directions are given in eye space
    glLightfv(GL_LIGHT0, GL_AMBIENT, toFloats(light.ambient).data());
    glLightfv(GL_LIGHT0, GL_DIFFUSE, toFloats(light.diffuse).data());
    glLightfv(GL_LIGHT0, GL_SPECULAR, toFloats(light.specular).data());
    glLightfv(GL_LIGHT0, GL_POSITION, toFloats(light.position).data());
    glLightfv(GL_LIGHT0, GL_SPOT_DIRECTION, toFloats(light.spotDirection).data());
    glLightf(GL_LIGHT0, GL_SPOT_CUTOFF, static_cast<float>(light.cutoff));
    glLightf(GL_LIGHT0, GL_SPOT_EXPONENT, static_cast<float>(light.exponent));
    glLightf(GL_LIGHT0, GL_CONSTANT_ATTENUATION, static_cast<float>(light.constant));
    glLightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, static_cast<float>(light.linear));
    glLightf(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, static_cast<float>(light.quadratic));
}

void setMaterial(const Material &material) {
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, toFloats(material.emission).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, toFloats(material.ambient).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, toFloats(material.diffuse).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, toFloats(material.specular).data());
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(material.shininess));
}

void setClipPlane(Vec plane) {
    const double equation[] = {plane.x, plane.y, plane.z, plane.w};
    const bool isThere = dot(plane, plane) > 0;
    (isThere ? glEnable : glDisable)(GL_CLIP_PLANE0);
    if (isThere)
        glClipPlane(GL_CLIP_PLANE0, equation); // the modelview matrix is the identity
}

void setState(const ProgramScene &scene) {
    for (const GLenum off : {GL_BLEND, GL_DEPTH_TEST, GL_CULL_FACE, GL_SCISSOR_TEST, GL_ALPHA_TEST})
        glDisable(off);
    setLight(scene.light);
    setClipPlane(scene.clipPlane);
    setMaterial(scene.material);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, toFloats(scene.lightModelAmbient).data());
    RVOPENGL::glActiveTextureARB(GL_TEXTURE1_ARB);
    loadMatrix(GL_TEXTURE, scene.textureMatrix1);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0_ARB);
    loadMatrix(GL_PROJECTION, scene.projection);
    loadMatrix(GL_MODELVIEW, scene.modelview);
}

int locationOf(const Program &program, const std::string &name) {
    const int location = program.uniform(name);
    EXPECT_NE(location, -1) << "the program has no " << name;
    return location;
}

void setUniforms(const Program &program, const ProgramScene &scene) {
    for (const auto &[name, value] : scene.floats)
        RVOPENGL::glUniform1fARB(locationOf(program, name), static_cast<float>(value));
    for (const auto &[name, value] : scene.integers)
        RVOPENGL::glUniform1iARB(locationOf(program, name), value);
    for (const auto &[unit, image] : scene.images)
        RVOPENGL::glUniform1iARB(locationOf(program, "textureSampler" + std::to_string(unit)),
                                 unit);
    if (!scene.shadowMap.depths.empty())
        RVOPENGL::glUniform1iARB(locationOf(program, "textureSampler1"), 1);
    if (scene.boneQuat.empty())
        return;
    std::vector<float> quat, trans;
    for (const Vec &q : scene.boneQuat)
        for (const float value : toFloats(q))
            quat.push_back(value);
    for (const Vec &t : scene.boneTrans)
        for (int i = 0; i < 3; ++i)
            trans.push_back(toFloats(t)[static_cast<std::size_t>(i)]);
    const auto bones = static_cast<GLsizei>(scene.boneQuat.size());
    RVOPENGL::glUniform4fvARB(locationOf(program, "boneQuat"), bones, quat.data());
    RVOPENGL::glUniform3fvARB(locationOf(program, "boneTrans"), bones, trans.data());
}

// One attribute of the three corners after the other, each as four floats.
class Arrays {
  public:
    explicit Arrays(const ProgramScene &scene) {
        for (const Vertex &corner : scene.corners) {
            put(positions, corner.position);
            put(normals, corner.normal);
            put(colors, corner.color);
            put(texCoords[0], corner.texCoord[0]);
            put(texCoords[1], corner.texCoord[1]);
            put(indices, corner.boneIndex);
            put(weights, corner.boneWeight);
        }
    }

    void draw(const Program &program) const {
        constexpr GLsizei stride = 4 * sizeof(float);
        glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(4, GL_FLOAT, stride, positions.data());
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, stride, normals.data());
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_FLOAT, stride, colors.data());
        for (GLenum unit = 0; unit < 2; ++unit) {
            RVOPENGL::glClientActiveTextureARB(GL_TEXTURE0_ARB + unit);
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
            glTexCoordPointer(4, GL_FLOAT, stride, texCoords[unit].data());
        }
        enable(program.attribute("boneIndex"), indices);
        enable(program.attribute("boneWeight"), weights);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        glPopClientAttrib();
    }

  private:
    static void put(std::vector<float> &values, Vec v) {
        for (const float value : toFloats(v))
            values.push_back(value);
    }

    static void enable(int location, const std::vector<float> &values) {
        if (location < 0)
            return;
        const auto place = static_cast<GLuint>(location);
        RVOPENGL::glEnableVertexAttribArrayARB(place);
        RVOPENGL::glVertexAttribPointerARB(place, 4, GL_FLOAT, GL_FALSE, 0, values.data());
    }

    std::vector<float> positions, normals, colors, texCoords[2], indices, weights;
};

std::vector<float> draw(const Program &program, const ProgramScene &scene) {
    const Target target;
    const Textures textures(scene);
    setState(scene);
    setUniforms(program, scene);
    Arrays(scene).draw(program);
    return Target::read();
}

// The parts of the corners in a pixel, with perspective; negative ones beside the triangle.
Vec partsAt(const VertexResult (&corners)[3], int column, int row) {
    const double x = (column + 0.5) / size * 2 - 1;
    const double y = (row + 0.5) / size * 2 - 1;
    Vec a, b;
    a = {corners[0].position.x - x * corners[0].position.w,
         corners[1].position.x - x * corners[1].position.w,
         corners[2].position.x - x * corners[2].position.w, 0};
    b = {corners[0].position.y - y * corners[0].position.w,
         corners[1].position.y - y * corners[1].position.w,
         corners[2].position.y - y * corners[2].position.w, 0};
    const Vec parts = cross(a, b); // orthogonal to both
    return parts * (1 / (parts.x + parts.y + parts.z));
}

// Nothing where a corner or an edge is so near that the pixel may be on either side.
std::optional<bool> isInside(Vec parts) {
    constexpr double edge = 0.01;
    const double least = std::min({parts.x, parts.y, parts.z});
    if (std::abs(least) < edge)
        return std::nullopt;
    return least > 0;
}

Varyings interpolate(const VertexResult (&corners)[3], Vec parts) {
    Varyings varyings;
    for (const auto &[name, value] : corners[0].varyings)
        varyings[name] = value * parts.x + corners[1].varyings.at(name) * parts.y +
                         corners[2].varyings.at(name) * parts.z;
    return varyings;
}

bool isClipped(const ProgramScene &scene, const Varyings &varyings, Notes &notes) {
    if (dot(scene.clipPlane, scene.clipPlane) == 0)
        return false;
    const Vec place = varyings.at("clipVertex");
    const double side = dot(scene.clipPlane, place) + scene.clipPlane.w * place.w;
    if (std::abs(side) < 0.05) // the edge falls between pixels
        notes.unsure = true;
    return !notes.above(side, 0, "beside the plane");
}

double difference(Vec expected, const float *found) {
    const double wanted[] = {expected.x, expected.y, expected.z, expected.w};
    double largest = 0;
    for (int i = 0; i < 4; ++i) {
        const double off = std::abs(wanted[i] - found[i]) / std::max(1.0, std::abs(wanted[i]));
        largest = std::isnan(off) ? 1e9 : std::max(largest, off);
    }
    return largest;
}

GLhandleARB compile(GLenum kind, const char *text) {
    const GLhandleARB shader = RVOPENGL::glCreateShaderObjectARB(kind);
    RVOPENGL::glShaderSourceARB(shader, 1, &text, nullptr);
    RVOPENGL::glCompileShaderARB(shader);
    return shader;
}

} // namespace

std::string compileMessages(unsigned int kind, const std::string &text) {
    const GLhandleARB shader = compile(kind, text.c_str());
    const std::string messages = infoLog(shader);
    RVOPENGL::glDeleteObjectARB(shader);
    return messages;
}

Program::Program(const char *vertexLabel, const char *pixelLabel) {
    program = RVOPENGL::glCreateProgramObjectARB();
    for (const auto &[kind, label] : {std::pair{GL_VERTEX_SHADER_ARB, vertexLabel},
                                      std::pair{GL_FRAGMENT_SHADER_ARB, pixelLabel}}) {
        const char *text = shaderText(label);
        if (!text) {
            messages += std::string("no text for ") + label + "\n";
            continue;
        }
        const GLhandleARB shader = compile(static_cast<GLenum>(kind), text);
        messages += infoLog(shader);
        if (!succeeded(shader, GL_OBJECT_COMPILE_STATUS_ARB))
            messages += std::string(label) + " does not compile\n";
        RVOPENGL::glAttachObjectARB(program, shader);
        RVOPENGL::glDeleteObjectARB(shader); // goes with the program
    }
    RVOPENGL::glLinkProgramARB(program);
    linked = succeeded(program, GL_OBJECT_LINK_STATUS_ARB);
    messages += infoLog(program);
    if (linked)
        RVOPENGL::glUseProgramObjectARB(program);
}

Program::~Program() {
    RVOPENGL::glUseProgramObjectARB(0);
    RVOPENGL::glDeleteObjectARB(program);
}

int Program::uniform(const std::string &name) const {
    return RVOPENGL::glGetUniformLocationARB(program, name.c_str());
}

int Program::attribute(const std::string &name) const {
    return RVOPENGL::glGetAttribLocationARB(program, name.c_str());
}

Image Image::random(int width, int height, unsigned int seed, double low, double high) {
    Image image{width, height, {}};
    std::mt19937 engine(seed);
    const auto next = [&] { return low + (high - low) * (engine() % 1025) / 1024.0; };
    for (int i = 0; i < width * height; ++i) {
        Vec texel;
        for (double *part : {&texel.x, &texel.y, &texel.z, &texel.w})
            *part = next();
        image.texels.push_back(texel);
    }
    return image;
}

bool Notes::above(double a, double b, const char *name) {
    if (std::abs(a - b) < 1e-4)
        unsure = true;
    visited.insert((a > b ? "" : "not ") + std::string(name));
    return a > b;
}

namespace {

// The texel that a coordinate falls on, repeated.
std::size_t texelAt(Notes &notes, double coordinate, int texels) {
    const double place = coordinate * texels;
    if (std::abs(place - std::round(place)) < 1e-3)
        notes.unsure = true;
    const int index = static_cast<int>(std::floor(place)) % texels;
    return static_cast<std::size_t>(index < 0 ? index + texels : index);
}

} // namespace

Vec ProgramScene::sample(Notes &notes, int unit, double s, double t) const {
    const Image &image = images.at(unit);
    const std::size_t row = texelAt(notes, t, image.height);
    return image
        .texels[row * static_cast<std::size_t>(image.width) + texelAt(notes, s, image.width)];
}

double ProgramScene::compare(Notes &notes, Vec coord) const {
    const std::size_t row = texelAt(notes, coord.y / coord.w, shadowMap.height);
    const double depth = shadowMap.depths[row * static_cast<std::size_t>(shadowMap.width) +
                                          texelAt(notes, coord.x / coord.w, shadowMap.width)];
    const double wanted = std::clamp(coord.z / coord.w, 0.0, 1.0);
    return notes.above(wanted, depth, "in shadow") ? 0 : 1;
}

Matrix ProgramScene::skinning(const Vertex &vertex) const {
    const double indices[] = {vertex.boneIndex.x, vertex.boneIndex.y, vertex.boneIndex.z,
                              vertex.boneIndex.w};
    const double weights[] = {vertex.boneWeight.x, vertex.boneWeight.y, vertex.boneWeight.z,
                              vertex.boneWeight.w};
    Matrix sum{};
    for (int i = 0; i < 4; ++i) {
        const auto bone = static_cast<std::size_t>(indices[i]);
        sum = sum + boneMatrix(boneQuat[bone], boneTrans[bone]) * weights[i];
    }
    return sum;
}

void ProgramTest::place(ProgramScene &scene) {
    constexpr double nearPlane = 1, farPlane = 20;
    scene.projection = identity;
    scene.projection[2] = {0, 0, -(farPlane + nearPlane) / (farPlane - nearPlane), -1};
    scene.projection[3] = {0, 0, -2 * farPlane * nearPlane / (farPlane - nearPlane), 0};
    const Matrix back = affineInverse(scene.modelview);
    const Vec eyes[] = {{-4, -4, -4, 1}, {6, -6, -6, 1}, {-2.5, 5, -5, 1}};
    for (int i = 0; i < 3; ++i) {
        Vertex &corner = scene.corners[i];
        corner.position = back * eyes[i];
        if (!scene.boneQuat.empty())
            corner.position = affineInverse(scene.skinning(corner)) * corner.position;
    }
}

Comparison ProgramTest::compare(const char *vertexLabel, const char *pixelLabel,
                                const ProgramScene &scene, const VertexReference &vertexReference,
                                const PixelReference &pixelReference, double tolerance) {
    Comparison comparison;
    const Program program(vertexLabel, pixelLabel);
    EXPECT_EQ(program.messages, "");
    if (!program.linked) {
        ADD_FAILURE() << "the program does not link";
        return comparison;
    }
    const std::vector<float> picture = draw(program, scene);

    const VertexResult corners[] = {vertexReference(scene, scene.corners[0]),
                                    vertexReference(scene, scene.corners[1]),
                                    vertexReference(scene, scene.corners[2])};
    int shown = 0;
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const Vec parts = partsAt(corners, column, row);
            const std::optional<bool> inside = isInside(parts);
            Notes notes;
            Vec expected{backgroundValue, backgroundValue, backgroundValue, backgroundValue};
            if (inside && *inside) {
                const Varyings varyings = interpolate(corners, parts);
                if (!isClipped(scene, varyings, notes))
                    expected = pixelReference(scene, varyings, notes);
            }
            if (!inside || notes.unsure)
                continue;
            ++(*inside ? comparison.compared : comparison.background);
            comparison.visited.merge(notes.visited);
            const float *found = &picture[static_cast<std::size_t>(row * size + column) * 4];
            const double off = difference(expected, found);
            comparison.largest = std::max(comparison.largest, off);
            if (off > tolerance && ++shown <= 3)
                ADD_FAILURE() << vertexLabel << " at " << column << ", " << row << ": expected "
                              << expected.x << ", " << expected.y << ", " << expected.z << ", "
                              << expected.w << ", found " << found[0] << ", " << found[1] << ", "
                              << found[2] << ", " << found[3];
        }
    }
    return comparison;
}

} // namespace ravolt::test
