// Programs: their registry, compiling and linking, and the current one. OpenGL's functions for
// programs may be called only here and in shaderParameters.cpp, which sets their values; the
// engine's own programs are listed in builtinPrograms.cpp.
//
// Invariants: while currentShader is not NULL it points to an existing program, `enabled` is set,
// and OpenGL uses its programObject, unless OpenGL has refused it. Calls of a missing entry point
// are skipped: the stage then does not compile, or the value is not set.

#include "ravolt/RVSHADER.h"

#include "engine/gl/entryPoint.h"
#include "engine/gl/stateCache.h"
#include "foundation/bytes.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"
#include "resources/programPointers.h"
#include "resources/programUsers.h"

#include <cstring>

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

// Without one of these no program would be right: a stage counts as not compiled then, so that what
// needs it is left out, instead of drawn wrongly.
bool canBeProgrammed() {
    return RVOPENGL::glShaderSourceARB && RVOPENGL::glCompileShaderARB &&
           RVOPENGL::glGetObjectParameterivARB && RVOPENGL::glCreateProgramObjectARB &&
           RVOPENGL::glAttachObjectARB && RVOPENGL::glLinkProgramARB &&
           RVOPENGL::glUseProgramObjectARB && RVOPENGL::glGetUniformLocationARB &&
           RVOPENGL::glUniform1iARB && RVOPENGL::glUniform1fARB;
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
                ravolt::callIfPresent<RVOPENGL::glDetachObjectARB>(programObject, object);
            if (object)
                ravolt::callIfPresent<RVOPENGL::glDeleteObjectARB>(object);
        }
        if (programObject)
            ravolt::callIfPresent<RVOPENGL::glDeleteObjectARB>(programObject);
    }
    // Values must not go to a program that is gone, nor a new one at this address pass for in use.
    if (currentShader == this)
        currentShader = nullptr;
    ravolt::onProgramDestroyed(this);
    ravolt::detachFromMaterials(this);
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
    findParameters();
    return true;
}

// The link's status is not read: a program that does not link has no parameters.
void RVSHADER::link(bool vertex, bool pixel) {
    if (programObject)
        ravolt::callIfPresent<RVOPENGL::glDeleteObjectARB>(programObject);
    if (currentShader == this)
        currentShader = nullptr; // what OpenGL has in use is the old one
    programObject = ravolt::callIfPresent<RVOPENGL::glCreateProgramObjectARB>();
    if (vertex)
        ravolt::callIfPresent<RVOPENGL::glAttachObjectARB>(programObject, vertexObject);
    if (pixel)
        ravolt::callIfPresent<RVOPENGL::glAttachObjectARB>(programObject, pixelObject);
    ravolt::callIfPresent<RVOPENGL::glLinkProgramARB>(programObject);
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
        // On purpose: this tests the function and not the flag.
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

    const ravolt::FilePath path(shaderPath, stageName);
    if (!zlfFileExists(path.get())) {
        zlfLog(stage.notFound, path.get());
        return false;
    }
    ravolt::FileBytes file;
    if (file.read(path.get()) != ravolt::FileBytes::Result::ok) {
        zlfLog(stage.notRead, path.get());
        return false;
    }
    // An empty file has no text: NULL is passed to OpenGL.
    const char *text = file.size() ? reinterpret_cast<const char *>(file.data()) : nullptr;
    return compile(stage, stageName, text);
}

bool RVSHADER::compile(const Stage &stage, const char *stageName, const char *source) {
    unsigned int &object = this->*stage.object;
    if (object) {
        if (programObject || stage.detachesAlways)
            ravolt::callIfPresent<RVOPENGL::glDetachObjectARB>(programObject, object);
        ravolt::callIfPresent<RVOPENGL::glDeleteObjectARB>(object);
    }
    object = ravolt::callIfPresent<RVOPENGL::glCreateShaderObjectARB>(stage.type);
    if (!object) {
        zlfLog("%s", stage.notCreated);
        return false;
    }
    GLint status = 0;
    ravolt::callIfPresent<RVOPENGL::glShaderSourceARB>(object, GLsizei{1}, &source,
                                                       static_cast<const GLint *>(nullptr));
    ravolt::callIfPresent<RVOPENGL::glCompileShaderARB>(object);
    ravolt::callIfPresent<RVOPENGL::glGetObjectParameterivARB>(
        object, GLenum{GL_OBJECT_COMPILE_STATUS_ARB}, &status);
    if (!status || !canBeProgrammed()) {
        zlfLog(stage.notCompiled, stageName);
        return false;
    }
    zlfLog(stage.compiled, stageName);
    this->*stage.operative = true;
    ravolt::copyText(this->*stage.filename, stageName);
    return true;
}

bool RVSHADER::render(void *) {
    if (!RVOPENGL::useShaders())
        return false;
    if (ravolt::cacheHit(currentShader == this))
        return true;
    enable();
    ravolt::callIfPresent<RVOPENGL::glUseProgramObjectARB>(programObject);
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
    ravolt::callIfPresent<RVOPENGL::glUseProgramObjectARB>(0u);
    currentShader = nullptr;
    enabled = false;
    return true;
}

void RVSHADER::reset() {
    currentShader = nullptr;
    disable();
}

bool RVSHADER::isActive() { return active; }

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
