// The OpenGL side of a scene: programs, state, textures and the target.

#include "tests/resources/shaders/programScene.h"

#include "ravolt/RVOPENGL.h"
#include "resources/shaderTexts.h"

#include <SDL.h>

namespace ravolt::test {
namespace {

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
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, targetSize, targetSize, 0, GL_RGBA, GL_FLOAT,
                     nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        RVOPENGL::glGenFramebuffersEXT(1, &framebuffer);
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer);
        RVOPENGL::glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                                            GL_TEXTURE_2D, texture, 0);
        EXPECT_EQ(RVOPENGL::glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT),
                  static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE_EXT));
        glViewport(0, 0, targetSize, targetSize);
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
        std::vector<float> values(std::size_t{targetSize} * targetSize * 4);
        glReadPixels(0, 0, targetSize, targetSize, GL_RGBA, GL_FLOAT, values.data());
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

std::vector<float> drawScene(const Program &program, const ProgramScene &scene) {
    const Target target;
    const Textures textures(scene);
    setState(scene);
    setUniforms(program, scene);
    Arrays(scene).draw(program);
    return Target::read();
}

} // namespace ravolt::test
