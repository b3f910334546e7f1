// The OpenGL side of a scene: programs, state, textures and the target.

#include "tests/resources/shaders/programScene.h"

#include "ravolt/RVOPENGL.h"
#include "resources/shaderTexts.h"
#include "tests/support/glObjects.h"

namespace ravolt::test {
namespace {

std::string infoLog(unsigned int object) {
    char text[4096] = "";
    entryPoint<PFNGLGETINFOLOGARBPROC>("glGetInfoLogARB")(object, sizeof text, nullptr, text);
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
            std::vector<std::array<float, 4>> texels;
            for (const Vec &texel : image.texels)
                texels.push_back(toFloats(texel));
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
    for (const auto &[name, value] : {std::pair{GL_AMBIENT, light.ambient},
                                      {GL_DIFFUSE, light.diffuse},
                                      {GL_SPECULAR, light.specular},
                                      {GL_POSITION, light.position},
                                      {GL_SPOT_DIRECTION, light.spotDirection}})
        glLightfv(GL_LIGHT0, static_cast<GLenum>(name), toFloats(value).data());
    for (const auto &[name, value] : {std::pair{GL_SPOT_CUTOFF, light.cutoff},
                                      {GL_SPOT_EXPONENT, light.exponent},
                                      {GL_CONSTANT_ATTENUATION, light.constant},
                                      {GL_LINEAR_ATTENUATION, light.linear},
                                      {GL_QUADRATIC_ATTENUATION, light.quadratic}})
        glLightf(GL_LIGHT0, static_cast<GLenum>(name), static_cast<float>(value));
}

void setMaterial(const Material &material) {
    for (const auto &[name, value] : {std::pair{GL_EMISSION, material.emission},
                                      {GL_AMBIENT, material.ambient},
                                      {GL_DIFFUSE, material.diffuse},
                                      {GL_SPECULAR, material.specular}})
        glMaterialfv(GL_FRONT_AND_BACK, static_cast<GLenum>(name), toFloats(value).data());
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(material.shininess));
}

void setClipPlane(Vec plane) {
    const double equation[] = {plane.x, plane.y, plane.z, plane.w};
    const bool enabled = dot(plane, plane) > 0;
    (enabled ? glEnable : glDisable)(GL_CLIP_PLANE0);
    if (enabled)
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
    const auto bones = static_cast<GLsizei>(scene.boneQuat.size());
    if (bones == 0)
        return;
    std::vector<float> quat, trans;
    for (std::size_t bone = 0; bone < scene.boneQuat.size(); ++bone) {
        const auto q = toFloats(scene.boneQuat[bone]), t = toFloats(scene.boneTrans[bone]);
        quat.insert(quat.end(), q.begin(), q.end());
        trans.insert(trans.end(), t.begin(), t.end() - 1);
    }
    RVOPENGL::glUniform4fvARB(locationOf(program, "boneQuat"), bones, quat.data());
    RVOPENGL::glUniform3fvARB(locationOf(program, "boneTrans"), bones, trans.data());
}

void drawTriangle(const Program &program, const Vertex (&corners)[3]) {
    const auto texCoord = entryPoint<PFNGLMULTITEXCOORD4DVARBPROC>("glMultiTexCoord4dvARB");
    const auto attribute = entryPoint<PFNGLVERTEXATTRIB4DVARBPROC>("glVertexAttrib4dvARB");
    const int index = program.attribute("boneIndex"), weight = program.attribute("boneWeight");
    glBegin(GL_TRIANGLES);
    for (const Vertex &corner : corners) {
        glNormal3dv(&corner.normal.x);
        glColor4dv(&corner.color.x);
        for (GLenum unit = 0; unit < 2; ++unit)
            texCoord(GL_TEXTURE0_ARB + unit, &corner.texCoord[unit].x);
        if (index >= 0)
            attribute(static_cast<GLuint>(index), &corner.boneIndex.x);
        if (weight >= 0)
            attribute(static_cast<GLuint>(weight), &corner.boneWeight.x);
        glVertex4dv(&corner.position.x);
    }
    glEnd();
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
        RVOPENGL::glDeleteObjectARB(shader); // deleted with the program
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
    drawTriangle(program, scene.corners);
    return Target::read();
}

} // namespace ravolt::test
