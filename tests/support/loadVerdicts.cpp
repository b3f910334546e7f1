// Every file that a test of the program loads is inspected as well, and both must have the same
// verdict: the engine loads it, or both refuse it. The linker wraps the loaders (--wrap), so that
// this holds for all files of all tests, the damaged ones included. A load with a simulated failure
// (of the heap, or while there are UncomparedLoads), and one of a terrain that has a geometry
// already, is not compared.

#include "tests/support/loadVerdicts.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "testing/recorderState.h"
#include "tests/support/heap.h"
#include "tools/common/failure.h"
#include "tools/inspect/files.h"
#include "tools/inspect/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace ravolt::test;
using namespace ravolt::tool::inspect;

namespace {

std::string errorOf(const std::string &path, FileKind kind) {
    try {
        const Inspection inspection = inspectFile(path, {kind, {RVTEXTURE::getPath()}});
        if (const Finding *error = inspection.firstError())
            return textOf(path, *error);
    } catch (const ravolt::tool::Failure &failure) {
        return failure.what();
    }
    return {};
}

// Calls a loader and compares its result.
template <class Load>
auto compared(const char *prefix, const char *name, FileKind kind, Load load) {
    const bool comparable = heap.failFrom == 0 && !UncomparedLoads::exist();
    const auto loaded = load();
    if (comparable) {
        const ScopedUnrecorded unrecorded;
        const std::string path = std::string(prefix) + name;
        const std::string error = errorOf(path, kind);
        EXPECT_EQ(static_cast<bool>(loaded), error.empty())
            << "the engine " << (loaded ? "loads" : "refuses") << " the " << nameOf(kind) << ' '
            << path << ", and its inspection: " << (error.empty() ? "good" : error);
    }
    return loaded;
}

} // namespace

extern "C" {

RVNODE *__real__ZN6RAVOLT4loadEPKc(const char *name);
RVNODE *__wrap__ZN6RAVOLT4loadEPKc(const char *name) {
    const auto load = [=] { return __real__ZN6RAVOLT4loadEPKc(name); };
    if (!name || std::strstr(RAVOLT::getRVEPath(), ".xml") || std::strstr(name, ".xml") ||
        std::strstr(name, ".XML"))
        return load();
    return compared(RAVOLT::getRVEPath(), name, FileKind::scene, load);
}

RVNODE *__real__ZN6RAVOLT7loadXMLEPKc(const char *name);
RVNODE *__wrap__ZN6RAVOLT7loadXMLEPKc(const char *name) {
    const auto load = [=] { return __real__ZN6RAVOLT7loadXMLEPKc(name); };
    return name ? compared("", name, FileKind::interface, load) : load();
}

bool __real__ZN6RVANIM4loadEPKc(RVANIM *clip, const char *name);
bool __wrap__ZN6RVANIM4loadEPKc(RVANIM *clip, const char *name) {
    const auto load = [=] { return __real__ZN6RVANIM4loadEPKc(clip, name); };
    return name ? compared(RVANIM::getRVAPath(), name, FileKind::clip, load) : load();
}

bool __real__ZN9RVTEXTURE4loadEPKc(RVTEXTURE *texture, const char *name);
bool __wrap__ZN9RVTEXTURE4loadEPKc(RVTEXTURE *texture, const char *name) {
    const auto load = [=] { return __real__ZN9RVTEXTURE4loadEPKc(texture, name); };
    if (!name || std::strcmp(name, "[dynamic]") == 0)
        return load();
    return compared(RVTEXTURE::getPath(), name, FileKind::texture, load);
}

bool __real__ZN6RVFONT11loadKerningEPKc(RVFONT *font, const char *name);
bool __wrap__ZN6RVFONT11loadKerningEPKc(RVFONT *font, const char *name) {
    const auto load = [=] { return __real__ZN6RVFONT11loadKerningEPKc(font, name); };
    return name ? compared(RVFONT::getPath(), name, FileKind::kerning, load) : load();
}

bool __real__ZN10RVSETTINGS4loadEPKc(RVSETTINGS *settings, const char *name);
bool __wrap__ZN10RVSETTINGS4loadEPKc(RVSETTINGS *settings, const char *name) {
    const auto load = [=] { return __real__ZN10RVSETTINGS4loadEPKc(settings, name); };
    return name ? compared("", name, FileKind::settings, load) : load();
}

bool __real__ZN9RVEMITTER4loadEPKc(RVEMITTER *emitter, const char *name);
bool __wrap__ZN9RVEMITTER4loadEPKc(RVEMITTER *emitter, const char *name) {
    const auto load = [=] { return __real__ZN9RVEMITTER4loadEPKc(emitter, name); };
    return name ? compared("", name, FileKind::emitter, load) : load();
}

bool __real__ZN7RVVIDEO4loadEPKc(RVVIDEO *video, const char *name);
bool __wrap__ZN7RVVIDEO4loadEPKc(RVVIDEO *video, const char *name) {
    const auto load = [=] { return __real__ZN7RVVIDEO4loadEPKc(video, name); };
    return name ? compared(RVVIDEO::getMPGPath(), name, FileKind::video, load) : load();
}

bool __real__ZN9RVTERRAIN4loadEPKc(RVTERRAIN *terrain, const char *name);
bool __wrap__ZN9RVTERRAIN4loadEPKc(RVTERRAIN *terrain, const char *name) {
    const auto load = [=] { return __real__ZN9RVTERRAIN4loadEPKc(terrain, name); };
    return name && terrain->getNumberOfChunks() == 0 ? compared("", name, FileKind::terrain, load)
                                                     : load();
}
}
