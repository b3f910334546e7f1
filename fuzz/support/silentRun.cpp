// Starts the engine for many inputs, deletes what an input has made, and checks what is left.

#include "fuzz/support/silentRun.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/testing/callRecorder.h"
#include "ravolt/testing/silentEngine.h"
#include "ravolt/zlf.h"
#include "testing/recorderState.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

namespace ravolt::fuzz {
namespace {

// Deletes the folder at the end of the process, but not after a crash.
class OwnFolder {
  public:
    OwnFolder() {
        const char *temporary = std::getenv("TMPDIR");
        std::string pattern = std::string(temporary ? temporary : "/tmp") + "/fuzz-XXXXXX";
        if (!mkdtemp(pattern.data()))
            reportFinding("no folder for temporary files");
        path = pattern + '/';
    }
    ~OwnFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    OwnFolder(const OwnFolder &) = delete;
    OwnFolder &operator=(const OwnFolder &) = delete;

    std::string path;
};

void writeBytes(const std::string &path, const void *bytes, std::size_t size) {
    std::ofstream file(path, std::ios::binary);
    file.write(static_cast<const char *>(bytes), static_cast<std::streamsize>(size));
    if (!file.flush())
        reportFinding("cannot write " + path);
}

// A texture of 2 by 2 pixels of 32 bits, and a kerning file.
void writeCompanions(const std::string &path) {
    std::vector<unsigned char> texture = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2, 0, 32, 8};
    texture.resize(texture.size() + 16, 0x80);
    writeBytes(path + "t.tga", texture.data(), texture.size());
    constexpr std::string_view kerning = "RAVOLT_kerning_a=3\n";
    writeBytes(path + "k.txt", kerning.data(), kerning.size());
}

void redirectLog() {
    zlfSetConsoleEcho(false);
    zlfCloseLog();
    if (!zlfOpenLog("/dev/null"))
        reportFinding("the log cannot be redirected");
}

std::string makeCompanions(const std::string &path) {
    writeCompanions(path);
    redirectLog();
    return path;
}

// The started engine, and the objects that it has made itself.
struct Started {
    std::unique_ptr<test::SilentEngine> engine;
    bool shaders = false;
    unsigned int inputs = 0;
    std::array<unsigned int, 8> counts{};
    const RVTEXTURE *lastTexture = nullptr;
    const RVSHADER *lastProgram = nullptr;
};
Started started;
constexpr unsigned int inputsOfStart = 500;

std::array<unsigned int, 8> countObjects() {
    return {RVNODE::getNumberOfNodes(),         RVTEXTURE::getNumberOfTextures(),
            RVMATERIAL::getNumberOfMaterials(), RVFONT::getNumberOfFonts(),
            RVFBO::getNumberOfFbos(),           RVANIM::getNumberOfAnims(),
            RVVIDEO::getNumberOfVideos(),       RVSHADER::getNumberOfShaders()};
}

template <class T> const T *lastOf() {
    const T *last = nullptr;
    for (const T *object = T::getFirst(); object; object = object->getNext())
        last = object;
    return last;
}

// Deletes the objects that were made after `last`.
template <class T> void deleteAfter(const T *last) {
    T *object = last ? last->getNext() : T::getFirst();
    while (object) {
        T *const next = object->getNext();
        delete object;
        object = next;
    }
}

bool hasEmitter() {
    for (const RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
        if (node->getType() == RV_NODE_TYPE_EMITTER)
            return true;
    return false;
}

void stop() {
    if (!started.engine)
        return;
    started.engine.reset();
    for (const unsigned int count : countObjects())
        if (count)
            reportFinding("an object is left");
    const unsigned int id = zlfNewId();
    if (id != 1)
        reportFinding("an identifier is left");
    releaseId(id);
}

// The next input gets another start.
void discard() { started.inputs = inputsOfStart; }

void start(RVSETTINGS &settings) {
    started = {};
    started.engine = std::make_unique<test::SilentEngine>(settings);
    started.shaders = settings.getShaders();
    started.counts = countObjects();
    started.lastTexture = lastOf<RVTEXTURE>();
    started.lastProgram = lastOf<RVSHADER>();
}

void prepare() {
    folder();
    std::srand(1);
    RAVOLT::setFrameDuration(0.04f);
}

void switchEffectsOff() {
    for (void (*off)() :
         {RAVOLT::shadowingOff, RAVOLT::bloomingOff, RAVOLT::DOFOff, RAVOLT::wireframeOff,
          RAVOLT::confineFilesOff, RVMESH::hideNormals, RVLIGHT::markersOff})
        off();
    RAVOLT::setSkybox(nullptr);
}

// The particles of a deleted emitter stay in use, and there is no list of render targets: both need
// another start.
void deleteObjects() {
    const bool exhausts = hasEmitter();
    RVFONT::cleanUp();
    RVNODE::cleanUp();
    deleteAfter(started.lastProgram);
    RVMATERIAL::cleanUp();
    RVANIM::cleanUp();
    RVVIDEO::cleanUp();
    ++started.inputs;
    if (exhausts || countObjects()[4] != started.counts[4])
        discard();
    if (started.inputs >= inputsOfStart)
        return stop();
    deleteAfter(started.lastTexture);
    if (countObjects() != started.counts)
        reportFinding("an object is left");
}

} // namespace

void reportFinding(const std::string &text) {
    std::fprintf(stderr, "Finding: %s\n", text.c_str());
    std::abort();
}

const std::string &folder() {
    static const OwnFolder own;
    static const std::string path = makeCompanions(own.path);
    return path;
}

std::string writeFile(const std::string &name, Bytes bytes) {
    const std::string path = folder() + name;
    writeBytes(path, bytes.data(), bytes.size());
    return path;
}

RVSETTINGS smallSettings(bool shaders) {
    RVSETTINGS settings;
    settings.setWindowX(64);
    settings.setWindowY(48);
    settings.setFBOSizeX(32);
    settings.setFBOSizeY(16);
    settings.setShadowMapSize(16);
    settings.setWaterSize(16);
    settings.setShaders(shaders);
    settings.setRVEPath(folder().c_str());
    settings.setRVAPath(folder().c_str());
    settings.setTexturePath(folder().c_str());
    settings.setFontPath(folder().c_str());
    settings.setShaderPath(folder().c_str());
    return settings;
}

SilentRun::SilentRun(bool shaders, const char *hiddenExtension) {
    prepare();
    const bool usable = started.shaders == shaders && started.inputs < inputsOfStart;
    if (started.engine && usable && !hiddenExtension)
        return;
    stop();
    RVSETTINGS settings = smallSettings(shaders);
    if (hiddenExtension)
        test::CallRecorder::instance().hideExtension(hiddenExtension);
    start(settings);
    if (hiddenExtension)
        discard();
}

SilentRun::SilentRun(RVSETTINGS &settings) {
    prepare();
    stop();
    start(settings);
    discard();
}

SilentRun::~SilentRun() {
    const std::vector<std::string> &faults = test::recorderState().driver.faults();
    if (!faults.empty())
        reportFinding(faults.front());
    switchEffectsOff();
    if (isActive())
        deleteObjects();
    else
        stop();
}

bool SilentRun::isActive() { return started.engine && started.engine->isActive(); }

void drawFrames(RVNODE *root, unsigned int number) {
    auto *const camera = new RVCAMERA;
    camera->setPosition(0, 1, 5);
    for (unsigned int frame = 0; frame < number; ++frame) {
        RAVOLT::clear(true, true, true);
        RAVOLT::begin3D(camera);
        if (root)
            root->pass();
        RAVOLT::end3D(true);
        RAVOLT::begin2D();
        RAVOLT::end2D();
        RAVOLT::swap();
    }
}

} // namespace ravolt::fuzz
