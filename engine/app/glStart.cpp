// Start and stop of the OpenGL layer. The ladder below is looked through from top to bottom; each
// rung ends as log lines and a flag, and none of them stops the start. An extension is found when
// its name stands anywhere in the driver's list. A flag that a former start has set stays set.

#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/renderTargets.h"

#include <SDL/SDL.h>

#include <cstring>
#include <iterator>

namespace {

enum EntryGroup { none, multitexture, vertexBuffers, shaders, framebuffers, occlusionQueries };

struct EntryPoint {
    EntryGroup group;
    const char *name;
    bool (*fetch)(const char *name); // false when the driver has none
};

template <auto &pointer> bool fetch(const char *name) {
    pointer =
        reinterpret_cast<std::remove_reference_t<decltype(pointer)>>(SDL_GL_GetProcAddress(name));
    return pointer != nullptr;
}

constexpr EntryPoint entryPoints[] = {
#define RV_GL_ENTRY_POINT(group, name) {group, #name, fetch<RVOPENGL::name>},
#include "engine/gl/glEntryPoints.inc"
};

// False when one of them is missing; the others are fetched all the same.
bool fetchGroup(EntryGroup group) {
    bool complete = true;
    for (const EntryPoint &entry : entryPoints)
        if (entry.group == group && !entry.fetch(entry.name))
            complete = false;
    return complete;
}

const char *driverText(GLenum name) {
    const GLubyte *text = glGetString(name);
    return text ? reinterpret_cast<const char *>(text) : "";
}

// One by one: the list is longer than a log text may be.
void logLetters(const char *text) {
    for (; *text; ++text)
        zlfLog("%c", *text);
}

void logDriver(const char *extensions) {
    zlfLog("      Vendor    : %s\n", driverText(GL_VENDOR));
    zlfLog("      Renderer  : %s\n", driverText(GL_RENDERER));
    zlfLog("      Version   : %s\n", driverText(GL_VERSION));
    zlfLog("      Extensions: ");
    logLetters(extensions);
    zlfLog("\n\n");
}

bool always() { return true; }

// The framebuffer functions of this vendor's drivers do not work.
bool isVendorTrusted() {
    if (!std::strstr(driverText(GL_VENDOR), "ATI"))
        return true;
    zlfLog("      GL_EXT_framebuffer_object found but disabled because driver-side bugged (buy an "
           "NVidia card, your ATI OpenGL driver is just a piece of crap)\n");
    return false;
}

} // namespace

namespace ravolt {

struct GlStart {
    // One thing that a driver may offer. NULL (or `none`) in a column is a hole: nothing is
    // fetched, said or set there.
    struct Capability {
        const char *needs[2];        // extensions, both of them
        bool (*isWanted)() = always; // else the rung is passed over in silence
        bool (*isUsable)() = always; // asked once found; says itself what is wrong
        EntryGroup entries;
        const char *incomplete; // an entry point came back NULL
        const char *found;
        const char *missing;
        bool *flag;
        void (*measure)() = nullptr; // after the flag: limits of what was found
        bool chained = false; // when missing, the chained rungs below are passed over in silence
    };

    static void readAnisotropy();
    static void countTextureUnits();
    static bool detect(const Capability &capability, const char *extensions);
    static void detectCapabilities(const char *extensions);
    static void makePool();
    static void repeatSwitches();
};

void GlStart::readAnisotropy() {
    glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &RVOPENGL::anisotropicLevel);
    zlfLog("      GL_EXT_texture_filter_anisotropic (level %.1f)\n",
           static_cast<double>(RVOPENGL::anisotropicLevel));
}

// Closes the line that the rung has opened. With too few units the entry points stay loaded.
void GlStart::countTextureUnits() {
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, &units);
    constexpr GLint required = RV_TEXTURE_UNITS;
    if (units < required) {
        zlfLog("   [!] Only %d texture units (%d required)", units, required);
        RVOPENGL::multitextureFlag = false;
    }
    zlfLog("%d units)\n", units);
}

void GlStart::makePool() { makeRenderTargets(RVOPENGL::fbo); }

// False when something that the rung needs is missing.
bool GlStart::detect(const Capability &capability, const char *extensions) {
    for (const char *needed : capability.needs) {
        if (!needed || std::strstr(extensions, needed))
            continue;
        zlfLog("%s", capability.missing);
        return false;
    }
    if (!capability.isUsable())
        return true;
    if (!fetchGroup(capability.entries) && capability.incomplete)
        zlfLog("%s", capability.incomplete);
    if (capability.found)
        zlfLog("%s", capability.found);
    if (capability.flag)
        *capability.flag = true;
    if (capability.measure)
        capability.measure();
    return true;
}

void GlStart::detectCapabilities(const char *extensions) {
    static const Capability capabilities[] = {
        {.needs = {"GL_EXT_texture_filter_anisotropic"},
         .entries = none,
         .incomplete = nullptr,
         .found = nullptr, // said with its level
         .missing = "   [!] GL_EXT_texture_filter_anisotropic not supported @ RVOPENGL::init\n",
         .flag = &RVOPENGL::anisotropicFlag,
         .measure = readAnisotropy},
        {.needs = {"GL_ARB_multitexture"},
         .entries = multitexture,
         .incomplete = nullptr,
         .found = "      GL_ARB_multitexture (",
         .missing = "   [!] GL_ARB_multitexture not supported @ RVOPENGL::init\n",
         .flag = &RVOPENGL::multitextureFlag,
         .measure = countTextureUnits},
        {.needs = {"GL_ARB_vertex_buffer_object"},
         .entries = vertexBuffers,
         .incomplete = nullptr,
         .found = "      GL_ARB_vertex_buffer_object\n",
         .missing = "   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init\n",
         .flag = &RVOPENGL::VBOFlag},
        {.needs = {"GL_ARB_fragment_shader", "GL_ARB_vertex_shader"},
         .isWanted = RVSETTINGS::getSDLShaders,
         .entries = shaders,
         .incomplete = "INCOMPLETE EXTENSION\n",
         .found = "      GL_ARB_vertex_shader\n      GL_ARB_fragment_shader\n",
         .missing = "   [!] Shaders not found @ RVOPENGL::init\n",
         .flag = &RVOPENGL::shadersFlag},
        {.needs = {"GL_ARB_depth_texture", "GL_ARB_shadow"},
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_depth_texture\n      GL_ARB_shadow\n",
         .missing = "   [!] GL_ARB_depth_texture or GL_ARB_shadow not found @ RVOPENGL::init\n",
         .flag = nullptr},
        {.needs = {"GL_ARB_texture_non_power_of_two"},
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_texture_non_power_of_two\n",
         .missing = "   [!] GL_ARB_texture_non_power_of_two not found @ RVOPENGL::init\n",
         .flag = nullptr,
         .chained = true},
        {.needs = {"GL_ARB_texture_float"},
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_texture_float\n",
         .missing = "   [!] GL_ARB_texture_float not found @ RVOPENGL::init\n",
         .flag = nullptr,
         .chained = true},
        {.needs = {"GL_EXT_framebuffer_object"},
         .isUsable = isVendorTrusted,
         .entries = framebuffers,
         .incomplete = "   [!] FBO incomplete extension!!\n",
         .found = "      GL_EXT_framebuffer_object\n",
         .missing = "   [!] GL_EXT_framebuffer_object not found @ RVOPENGL::init\n",
         .flag = &RVOPENGL::FBOFlag,
         .chained = true},
        // The pool stands between the rungs, with nothing to be found or said.
        {.needs = {},
         .isUsable = RVOPENGL::useFBO,
         .entries = none,
         .incomplete = nullptr,
         .found = nullptr,
         .missing = nullptr,
         .flag = nullptr,
         .measure = makePool},
        {.needs = {"GL_ARB_occlusion_query"},
         .entries = occlusionQueries,
         .incomplete = "   [!] Occlusion Query incomplete extension!!\n",
         .found = "      GL_ARB_occlusion_query\n",
         .missing = "   [!] GL_ARB_occlusion_query not found @ RVOPENGL::init\n",
         .flag = &RVOPENGL::OcclusionQueryFlag},
    };
    bool chainHolds = true;
    for (const Capability &capability : capabilities) {
        if (!capability.isWanted() || (capability.chained && !chainHolds))
            continue;
        const bool found = detect(capability, extensions);
        if (capability.chained)
            chainHolds = found;
    }
}

// A new context has every switch off, while the flags are as a former run left them: those that
// are on go on anew, but for the texture units, which go off.
void GlStart::repeatSwitches() {
    static constexpr struct {
        bool *flag;
        void (*on)();
    } switches[] = {
        {&RVOPENGL::culling, RVOPENGL::cullingOn},
        {&RVOPENGL::blending, RVOPENGL::blendingOn},
        {&RVOPENGL::scissor, RVOPENGL::scissorOn},
        {&RVOPENGL::twoSide, RVOPENGL::twoSideOn},
        {&RVOPENGL::vertexArrayStatus, RVOPENGL::vertexArrayOn},
        {&RVOPENGL::indexArrayStatus, RVOPENGL::indexArrayOn},
        {&RVOPENGL::normalArrayStatus, RVOPENGL::normalArrayOn},
        {&RVOPENGL::colorArrayStatus, RVOPENGL::colorArrayOn},
        {&RVOPENGL::textureArrayStatus, RVOPENGL::textureArrayOn},
    };
    for (const auto &each : switches) {
        if (!*each.flag)
            continue;
        *each.flag = false;
        each.on();
    }
    if (RVLIGHT::getLighting()) {
        RVLIGHT::lightingOff();
        RVLIGHT::lightingOn();
    }
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS); // their textures are gone
}

} // namespace ravolt

bool RVOPENGL::init() {
    if (active) {
        zlfLog("   [!] OpenGL already active @ RVOPENGL::init\n");
        return false;
    }
    zlfLog("   Init OpenGL...\n");
    const char *extensions = driverText(GL_EXTENSIONS);
    logDriver(extensions);
    ravolt::GlStart::detectCapabilities(extensions);
    if (useFBO() && !fbo[0]) {
        zlfLog("   [!] Out of memory @ RVOPENGL::init\n");
        return false;
    }
    ravolt::GlStart::repeatSwitches();
    reset();
    zlfLog("   OpenGL initialized\n");
    active = true;
    return true;
}

// On purpose: flags, entry points and switches keep their values.
bool RVOPENGL::free() {
    if (!active)
        return false;
    zlfLog("   Release OpenGL...\n");
    zlfLog("   OpenGL released\n");
    active = false;
    return true;
}

bool RVOPENGL::reset() {
    setBackgroundColor(backgroundColor);
    setGlobalAmbientLight(globalAmbientLight);
    glClearDepth(1);
    glClearStencil(0);
    glDepthFunc(GL_LESS);
    glEnable(GL_DEPTH_TEST);
    glShadeModel(GL_SMOOTH);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glDisable(GL_DITHER);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glAlphaFunc(GL_GREATER, 0.5f);
    cullingOn();
    for (GLenum light = GL_LIGHT0; light <= GL_LIGHT3; ++light) {
        glLightf(light, GL_SPOT_EXPONENT, 0);
        glLightf(light, GL_SPOT_CUTOFF, 180);
        glLightf(light, GL_CONSTANT_ATTENUATION, 1);
        glLightf(light, GL_LINEAR_ATTENUATION, 0);
        glLightf(light, GL_QUADRATIC_ATTENUATION, 0);
    }
    return true;
}
