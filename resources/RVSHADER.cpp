#include "ravolt/RVSHADER.h"

#include "engine/stateCache.h"
#include "foundation/bytes.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

// Programs: the registry, their making, and the one in use. Only here may OpenGL's functions for
// programs be called; what the engine's own programs are is in builtinPrograms.cpp.
//
// Invariants: while currentShader is not NULL it names a living program, `enabled` is set, and
// OpenGL has its programObject in use, as far as OpenGL took it. An entry point that the driver has
// left out is passed over: the stage then does not compile, or the value does not arrive.

using ShaderRegistry = ravolt::Registry<RVSHADER>;

RVSHADER *RVSHADER::firstShader = nullptr;
RVSHADER *RVSHADER::lastShader = nullptr;
RVSHADER *RVSHADER::currentShader = nullptr;
char RVSHADER::shaderPath[256] = "";
bool RVSHADER::active = false;
bool RVSHADER::enabled = false;
bool RVSHADER::bonesBound = false;
bool RVSHADER::pplFlag = false;
bool RVSHADER::bloomFlag = false;
bool RVSHADER::shadowsFlag = false;
bool RVSHADER::skinningFlag = false;
bool RVSHADER::passthroughFlag = false;
bool RVSHADER::emitterFlag = false;
bool RVSHADER::dofFlag = false;
bool RVSHADER::skydomeFlag = false;
bool RVSHADER::waterFlag = false;
bool RVSHADER::terrainFlag = false;

// What sets the two stages of a program apart.
struct RVSHADER::Stage {
    GLenum type;
    unsigned int RVSHADER::*object;
    bool RVSHADER::*operative;
    char (RVSHADER::*filename)[256];
    bool (*isSupported)();
    bool detachesAlways; // the old object, also from no program
    const char *invalidParams;
    const char *notFound;
    const char *notRead;
    const char *notCreated;
    const char *notCompiled;
    const char *compiled;
};

namespace {

constexpr char noName[] = "[none]";
constexpr unsigned int mostBones = 100; // the size of the programs' arrays

// The parameters by slot. Slots are shared by all programs, and some programs have a slot of theirs
// bound to another name after load.
constexpr struct {
    const char *name;
    bool attribute;
} parameterNames[] = {
    {"textureSampler0", false},
    {"textureSampler1", false},
    {"width", false},
    {"height", false},
    {"boneQuat", false},
    {"boneTrans", false},
    {"boneIndex", true},
    {"boneWeight", true},
    {"textureSampler2", false},
    {"textureSampler3", false},
    {"maxLuminance", false},
    {"exposure", false},
    {"focus", false},
    {"range", false},
    {"near", false},
    {"far", false},
    {"textureSampler4", false},
    {"textureSampler5", false},
    {"textureSampler6", false},
    {"textureSampler7", false},
    {"textureSampler8", false},
    {"textureSampler9", false},
    {"textureSampler10", false},
    {"textureSampler11", false},
    {"textureSampler12", false},
    {"textureSampler13", false},
    {"textureSampler14", false},
    {"textureSampler15", false},
};
static_assert(std::size(parameterNames) == RVSHADER::parameters);

enum Slot : unsigned int {
    slotWidth = 2,
    slotHeight = 3,
    slotBoneQuat = 4,
    slotBoneTrans = 5,
    slotBoneIndex = 6,
    slotBoneWeight = 7,
    slotMaxLuminance = 10,
    slotExposure = 11,
    slotFocus = 12,
    slotRange = 13,
    slotNear = 14,
    slotFar = 15
};

// The sampler's slot by unit.
constexpr unsigned int samplerSlot[RV_TEXTURE_UNITS] = {0,  1,  8,  9,  16, 17, 18, 19,
                                                        20, 21, 22, 23, 24, 25, 26, 27};

constexpr unsigned int notHeld = ~0u; // OpenGL's -1

// Calls an extension function, unless the driver has left it out; its result is 0 then.
template <auto &function, class... Arguments> auto call(Arguments... arguments) {
    using Result = decltype(function(arguments...));
    return function ? function(arguments...) : Result();
}

GLint location(const RVSHADER &program, unsigned int slot) {
    return static_cast<GLint>(program.getParam(slot));
}

void setFloat(const RVSHADER &program, unsigned int slot, float value) {
    call<RVOPENGL::glUniform1fARB>(location(program, slot), value);
}

// An array that is on is read at every vertex: without a buffer behind it, from nowhere.
void bindAttribute(GLuint attribute, unsigned int buffer) {
    if (!buffer || !RVOPENGL::glBindBufferARB || !RVOPENGL::glVertexAttribPointerARB)
        return;
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
    call<RVOPENGL::glEnableVertexAttribArrayARB>(attribute);
    RVOPENGL::glVertexAttribPointerARB(attribute, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
}

} // namespace

RVSHADER::RVSHADER()
    : id(zlfNewId()), vsOperative(false), psOperative(false), vertexObject(0), pixelObject(0),
      programObject(0), param() {
    ravolt::formatText(name, "[shader %d]", id);
    ravolt::copyText(vsFilename, noName);
    ravolt::copyText(psFilename, noName);
    ShaderRegistry::append(firstShader, lastShader, this);
}

RVSHADER::~RVSHADER() {
    releaseId(id);
    if (RVOPENGL::useShaders()) {
        for (const unsigned int object : {vertexObject, pixelObject}) {
            if (object && programObject)
                call<RVOPENGL::glDetachObjectARB>(programObject, object);
            if (object)
                call<RVOPENGL::glDeleteObjectARB>(object);
        }
        if (programObject)
            call<RVOPENGL::glDeleteObjectARB>(programObject);
    }
    // Values must not go to a program that is gone, nor a new one at this address pass for in use.
    if (currentShader == this)
        currentShader = nullptr;
    forgetBuiltin(this);
    ShaderRegistry::unlink(firstShader, lastShader, this);
}

bool RVSHADER::load(const char *vertexFile, const char *pixelFile, bool alreadyCompiled) {
    if (!alreadyCompiled) {
        if (vertexFile && !loadVertexShader(vertexFile, nullptr))
            return false;
        if (pixelFile && !loadPixelShader(pixelFile, nullptr))
            return false;
    }
    if (vertexFile || pixelFile || alreadyCompiled)
        link(vertexFile || alreadyCompiled, pixelFile || alreadyCompiled);
    for (unsigned int slot = 0; slot < parameters; ++slot)
        bindParam(slot, parameterNames[slot].name, parameterNames[slot].attribute);
    wireSamplers();
    return true;
}

// The link's status is not read: a program that does not link holds no parameters.
void RVSHADER::link(bool vertex, bool pixel) {
    if (programObject)
        call<RVOPENGL::glDeleteObjectARB>(programObject);
    if (currentShader == this)
        currentShader = nullptr; // what OpenGL has in use is the old one
    programObject = call<RVOPENGL::glCreateProgramObjectARB>();
    if (vertex)
        call<RVOPENGL::glAttachObjectARB>(programObject, vertexObject);
    if (pixel)
        call<RVOPENGL::glAttachObjectARB>(programObject, pixelObject);
    call<RVOPENGL::glLinkProgramARB>(programObject);
}

// A texture that is bound to a unit already is not bound again for a program that comes later, so
// each sampler points at its unit from the start. It also keeps samplers of two kinds off one unit,
// with which no program runs.
void RVSHADER::wireSamplers() const {
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        if (param[samplerSlot[unit]] != notHeld && currentShader == this)
            bindTexture(unit);
}

bool RVSHADER::loadVertexShader(const char *stageName, const char *source) {
    static constexpr Stage stage = {
        .type = GL_VERTEX_SHADER_ARB,
        .object = &RVSHADER::vertexObject,
        .operative = &RVSHADER::vsOperative,
        .filename = &RVSHADER::vsFilename,
        .isSupported = RVOPENGL::useShaders,
        .detachesAlways = false,
        .invalidParams = "   [!] Invalid params @ RVSHADER::loadVertexShader\n",
        .notFound = "   [!] File not found %s @ RVSHADER::loadVertexShader\n",
        .notRead = "   [!] Unable to read from file %s @ RVSHADER::loadVertexShader\n",
        .notCreated = "   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n",
        .notCompiled = "   [!] Vertex shader %s not compiled @ RVSHADER::loadVertexShader\n",
        .compiled = "   Vertex shader: %s, compiled\n",
    };
    return readAndCompile(stage, stageName, source);
}

bool RVSHADER::loadPixelShader(const char *stageName, const char *source) {
    static constexpr Stage stage = {
        .type = GL_FRAGMENT_SHADER_ARB,
        .object = &RVSHADER::pixelObject,
        .operative = &RVSHADER::psOperative,
        .filename = &RVSHADER::psFilename,
        // On purpose: the function is asked for and not the flag.
        .isSupported = [] { return RVOPENGL::glCompileShaderARB != nullptr; },
        .detachesAlways = true, // On purpose: also from program 0.
        // On purpose: two of the lines name another method.
        .invalidParams = "   [!] Invalid params @ RVSHADER::loadPixelxShader\n",
        .notFound = "   [!] File not found %s @ RVSHADER::loadPixelShader\n",
        .notRead = "   [!] Unable to read from file %s @ RVSHADER::loadPixelShader\n",
        .notCreated = "   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n",
        .notCompiled = "   [!] Pixel shader %s not compiled @ RVSHADER::loadPixelShader\n",
        .compiled = "   Pixel shader : %s, compiled\n",
    };
    return readAndCompile(stage, stageName, source);
}

bool RVSHADER::readAndCompile(const Stage &stage, const char *stageName, const char *source) {
    if (!stage.isSupported())
        return false;
    if (!stageName) {
        zlfLog("%s", stage.invalidParams);
        return false;
    }
    this->*stage.operative = false;
    if (source)
        return compile(stage, stageName, source);

    const std::string path = std::string(shaderPath) + stageName;
    if (!zlfFileExists(path.c_str())) {
        zlfLog(stage.notFound, path.c_str());
        return false;
    }
    ravolt::FileBytes file;
    if (file.read(path.c_str()) != ravolt::FileBytes::Result::ok) {
        zlfLog(stage.notRead, path.c_str());
        return false;
    }
    // An empty file has no text at all, and OpenGL is told so.
    const char *text = file.size() ? reinterpret_cast<const char *>(file.data()) : nullptr;
    return compile(stage, stageName, text);
}

bool RVSHADER::compile(const Stage &stage, const char *stageName, const char *source) {
    unsigned int &object = this->*stage.object;
    if (object) {
        if (programObject || stage.detachesAlways)
            call<RVOPENGL::glDetachObjectARB>(programObject, object);
        call<RVOPENGL::glDeleteObjectARB>(object);
    }
    object = call<RVOPENGL::glCreateShaderObjectARB>(stage.type);
    if (!object) {
        zlfLog("%s", stage.notCreated);
        return false;
    }
    GLint status = 0;
    call<RVOPENGL::glShaderSourceARB>(object, GLsizei{1}, &source,
                                      static_cast<const GLint *>(nullptr));
    call<RVOPENGL::glCompileShaderARB>(object);
    call<RVOPENGL::glGetObjectParameterivARB>(object, GLenum{GL_OBJECT_COMPILE_STATUS_ARB},
                                              &status);
    if (!status) {
        zlfLog(stage.notCompiled, stageName);
        return false;
    }
    zlfLog(stage.compiled, stageName);
    this->*stage.operative = true;
    ravolt::copyText(this->*stage.filename, stageName);
    return true;
}

bool RVSHADER::bindParam(unsigned int slot, const char *paramName, bool attribute) {
    if (slot >= parameters || !paramName) {
        zlfLog("   [!] Invalid params @ RVSHADER::bindParam\n");
        return false;
    }
    if (currentShader != this)
        render(nullptr);
    const auto find =
        attribute ? RVOPENGL::glGetAttribLocationARB : RVOPENGL::glGetUniformLocationARB;
    param[slot] = find ? static_cast<unsigned int>(find(programObject, paramName)) : notHeld;
    return true;
}

// On purpose: the size of the table is no error value.
unsigned int RVSHADER::getParam(unsigned int slot) const {
    return slot < parameters ? param[slot] : parameters;
}

bool RVSHADER::render(void *) {
    if (!RVOPENGL::useShaders())
        return false;
    if (ravolt::cacheHit(currentShader == this))
        return true;
    enable();
    call<RVOPENGL::glUseProgramObjectARB>(programObject);
    currentShader = this;
    return true;
}

bool RVSHADER::isOperative() const { return vsOperative && psOperative; }
void RVSHADER::forceDeactivation() { vsOperative = psOperative = false; }

bool RVSHADER::enable() {
    if (!RVOPENGL::useShaders())
        return false;
    enabled = true;
    return true;
}

bool RVSHADER::disable() {
    if (!RVOPENGL::useShaders())
        return false;
    if (ravolt::cacheHit(!enabled))
        return true;
    call<RVOPENGL::glUseProgramObjectARB>(0u);
    currentShader = nullptr;
    enabled = false;
    return true;
}

void RVSHADER::reset() {
    currentShader = nullptr;
    disable();
}

bool RVSHADER::isActive() { return active; }

bool RVSHADER::bindTexture(unsigned int unit) {
    if (!currentShader || !enabled)
        return false;
    if (unit < RV_TEXTURE_UNITS)
        call<RVOPENGL::glUniform1iARB>(location(*currentShader, samplerSlot[unit]),
                                       static_cast<GLint>(unit));
    return true;
}

bool RVSHADER::bindBones(unsigned int count, const float *quat, const float *trans,
                         unsigned int indexBuffer, unsigned int weightBuffer) {
    if (!currentShader || !enabled)
        return false;
    const RVSHADER &program = *currentShader;
    const GLsizei bones = static_cast<GLsizei>(std::min(count, mostBones));
    call<RVOPENGL::glUniform4fvARB>(location(program, slotBoneQuat), bones, quat);
    call<RVOPENGL::glUniform3fvARB>(location(program, slotBoneTrans), bones, trans);
    bindAttribute(program.param[slotBoneIndex], indexBuffer);
    bindAttribute(program.param[slotBoneWeight], weightBuffer);
    bonesBound = true;
    return true;
}

bool RVSHADER::unbindBones() {
    if (!currentShader || !enabled || !bonesBound)
        return false;
    call<RVOPENGL::glDisableVertexAttribArrayARB>(currentShader->param[slotBoneIndex]);
    call<RVOPENGL::glDisableVertexAttribArrayARB>(currentShader->param[slotBoneWeight]);
    bonesBound = false;
    return true;
}

bool RVSHADER::bindSizes(int x, int y) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotWidth, static_cast<float>(x));
    setFloat(*currentShader, slotHeight, static_cast<float>(y));
    return true;
}

bool RVSHADER::bindLuminanceAndExposure(float luminance, float exposure) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotMaxLuminance, luminance);
    setFloat(*currentShader, slotExposure, exposure);
    return true;
}

bool RVSHADER::bindFocusAndRange(float focus, float range) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotFocus, focus);
    setFloat(*currentShader, slotRange, range);
    return true;
}

bool RVSHADER::bindNearAndFarPlane(float nearPlane, float farPlane) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotNear, nearPlane);
    setFloat(*currentShader, slotFar, farPlane);
    return true;
}

void RVSHADER::setName(const char *newName) {
    if (newName && std::strlen(newName) < sizeof(name))
        std::memmove(name, newName, std::strlen(newName) + 1);
}

char *RVSHADER::getName() { return name; }
unsigned int RVSHADER::getId() const { return id; }
char *RVSHADER::getVSFilename() { return vsFilename; }
char *RVSHADER::getPSFilename() { return psFilename; }

char *RVSHADER::getPath() { return shaderPath; }
void RVSHADER::setPath(const char *path) { ravolt::copyText(shaderPath, path); }

bool RVSHADER::useSkinning() { return skinningFlag; }
bool RVSHADER::usePPL() { return pplFlag; }
bool RVSHADER::useBloom() { return bloomFlag; }
bool RVSHADER::useShadows() { return shadowsFlag; }
bool RVSHADER::usePassthrough() { return passthroughFlag; }
bool RVSHADER::useEmitter() { return emitterFlag; }
bool RVSHADER::useDOF() { return dofFlag; }
bool RVSHADER::useSkydome() { return skydomeFlag; }
bool RVSHADER::useWater() { return waterFlag; }
bool RVSHADER::useTerrain() { return terrainFlag; }

bool RVSHADER::cleanUp() {
    if (!firstShader)
        return false;
    const unsigned int number = ShaderRegistry::cleanUp(firstShader);
    zlfLog("   %d shader(s) released\n", number);
    return true;
}

unsigned int RVSHADER::getNumberOfShaders() { return ShaderRegistry::count(firstShader); }

RVSHADER *RVSHADER::findById(unsigned int id) { return ShaderRegistry::findById(firstShader, id); }

RVSHADER *RVSHADER::findByName(const char *name) {
    return ShaderRegistry::findByText(firstShader, &RVSHADER::name, name);
}

RVSHADER *RVSHADER::getFirst() { return firstShader; }
RVSHADER *RVSHADER::getNext() const { return next; }
RVSHADER *RVSHADER::getPrevious() const { return previous; }
