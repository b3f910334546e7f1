// Start and stop of the whole engine. A start that fails stops what it has started, in reverse
// order, and shuts SDL down. `init` and `free` write `active` last.

#include "gui/interaction.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/zlf.h"
#include "resources/renderTargets.h"
#include "resources/textureInternals.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr unsigned int minVideoMemory = 16 << 20; // bytes, where none is reported

// The count of used memory has 32 bits and may exceed the budget, and log lines print it as a
// signed number. Both are right with a budget below 2 GB.
constexpr int maxBudget = 2047; // megabytes

unsigned int reportedVideoMemory() {
    const SDL_VideoInfo *info = SDL_GetVideoInfo();
    return info ? info->video_mem << 10 : 0;
}

const RVSHADER *lastProgram() {
    const RVSHADER *last = nullptr;
    for (const RVSHADER *program = RVSHADER::getFirst(); program; program = program->getNext())
        last = program;
    return last;
}

// Deletes the programs that were made after `last`; all of them for NULL.
void deleteProgramsAfter(const RVSHADER *last) {
    RVSHADER *program = last ? last->getNext() : RVSHADER::getFirst();
    while (program) {
        RVSHADER *const next = program->getNext();
        delete program;
        program = next;
    }
}

} // namespace

struct RAVOLT::Lifecycle {
    static bool startClasses(RVSETTINGS &settings);
    static void allocateForEffects();
    static bool stopOpenGL();
    static void detectVideoMemory(int budget);
};

bool RAVOLT::init(RVSETTINGS *settings) {
    if (active) {
        zlfLog("   [!] RAVOLT already active\n");
        return false;
    }
    if (SDL_Init(SDL_INIT_VIDEO) == -1) {
        zlfLog("   [!] Unable to init SDL_INIT_VIDEO (%s) @ RAVOLT::init\n", SDL_GetError());
        return false;
    }
    zlfLog("   SDL initialized\n");
    zlfLog("   Initialize Ravolt\n\n");

    RVSETTINGS defaults;
    if (!settings) {
        zlfLog("   [!] Standard configuration used\n");
        settings = &defaults;
    }
    if (!Lifecycle::startClasses(*settings)) {
        SDL_Quit();
        return false;
    }
    timer = zlfNewTimer(1.0f);
    Lifecycle::detectVideoMemory(settings->getVideoMemory());
    zlfLog("   Initialization complete\n\n");
    active = true;
    return true;
}

// Starts the classes in their order. When one fails, those before it are stopped in reverse order,
// and the targets and programs made so far are deleted without log lines.
bool RAVOLT::Lifecycle::startClasses(RVSETTINGS &settings) {
    struct Row {
        bool (*start)(RVSETTINGS &settings);
        const char *failure;
        bool (*stop)();
    };
    static constexpr Row rows[] = {
        {[](RVSETTINGS &requested) { return requested.init(); },
         "   [!] Unable to init settings @ RAVOLT::init\n", [] { return RVSETTINGS::free(); }},
        {[](RVSETTINGS &) { return RVOPENGL::init() && (allocateForEffects(), true); },
         "   [!] Unable to init OpenGL @ RAVOLT::init\n", stopOpenGL},
        {[](RVSETTINGS &) {
             RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
             return RVSHADER::init();
         },
         "   [!] Unable to init shaders @ RAVOLT::init\n", [] { return RVSHADER::free(); }},
        {[](RVSETTINGS &requested) {
             return RVELEMENT::init(static_cast<unsigned int>(requested.getRenderingElements()));
         },
         "   [!] Rendering elements failed to initialize @ RAVOLT::init\n",
         [] { return RVELEMENT::free(); }},
        {[](RVSETTINGS &) { return RVFONT::init() || (RVFONT::free(), false); },
         "   [!] Unable to initialize font class @ RAVOLT::init\n", [] { return RVFONT::free(); }},
        {[](RVSETTINGS &) { return RVMESH::init(); },
         "   [!] Unable to initialize mesh class @ RAVOLT::init\n", [] { return RVMESH::free(); }},
        {[](RVSETTINGS &) { return RVEMITTER::init(); },
         "   [!] Unable to initialize emitter class @ RAVOLT::init\n",
         [] { return RVEMITTER::free(); }},
    };
    const RVSHADER *const lastBefore = lastProgram();
    for (const Row *row = rows; row != std::end(rows); ++row) {
        if (row->start(settings))
            continue;
        zlfLog("%s", row->failure);
        deleteProgramsAfter(lastBefore);
        while (row != rows)
            (--row)->stop();
        return false;
    }
    return true;
}

// The switches are as the last run left them.
void RAVOLT::Lifecycle::allocateForEffects() {
    if (RVSETTINGS::getSDLForceFBO() || blooming || DOF || shadowing)
        ravolt::allocateRenderTargets();
}

// Deletes the render targets, without log lines, while their context exists: in the next context
// their OpenGL names would be those of other objects.
bool RAVOLT::Lifecycle::stopOpenGL() {
    for (RVFBO *&target : RVOPENGL::fbo) {
        RVTEXTURE *const texture = target ? target->getTexture() : nullptr;
        delete std::exchange(target, nullptr);
        if (!texture)
            continue;
        ravolt::TextureInternals::release(*texture);
        delete texture;
    }
    return RVOPENGL::free();
}

void RAVOLT::Lifecycle::detectVideoMemory(int budget) {
    const bool given = budget > 0;
    videoMemoryTotal = given ? static_cast<unsigned int>(std::min(budget, maxBudget)) << 20
                             : reportedVideoMemory();
    if (!videoMemoryTotal) {
        zlfLog("   [!] No VRam detected: software mode supposed (16 MB allocated by default)\n");
        videoMemoryTotal = minVideoMemory;
    }
    char driver[64] = "";
    SDL_VideoDriverName(driver, sizeof driver);
    zlfLog("   Driver name: %s\n", driver);
    const unsigned int kilobytes = videoMemoryTotal >> 10;
    if (given)
        zlfLog("   VRam budget: %d KB\n", kilobytes);
    else
        zlfLog("   VRam detected: %d KB\n", kilobytes);
}

bool RAVOLT::free() {
    if (!active)
        return false;
    zlfLog("   Ravolt is shutting down...\n");
    zlfFreeTimer(timer);

    RVFONT::cleanUp();
    RVNODE::cleanUp();
    RVFBO::cleanUp();
    RVSHADER::cleanUp();
    RVMATERIAL::cleanUp();
    RVTEXTURE::cleanUp();
    RVANIM::cleanUp();
    RVVIDEO::cleanUp();

    ravolt::resetInteraction();
    RVEMITTER::free();
    RVFONT::free();
    RVMESH::free();
    RVELEMENT::free();
    RVSHADER::free();
    RVOPENGL::free();
    RVSETTINGS::free();

    SDL_Quit();
    zlfLog("   SDL released\n");
    zlfLog("   Shutdown complete\n\n");
    active = false;
    return true;
}
