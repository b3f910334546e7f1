// Detection at start-up. The capabilities are detected in the order of their table. Each gives log
// lines and a flag, and none of them stops the start. An extension is found when its name is part
// of the driver's list, also inside a longer name. A flag that is set is never cleared again; see
// countTextureUnits for the one exception.

#include "engine/gl/capabilities.h"

#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <type_traits>

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

// The length of the first piece of a list that is longer than a log text. A log in HTML and the
// console write two blanks and two percent signs differently within a text: a piece ends between.
std::size_t pieceLength(std::string_view text) {
    constexpr std::size_t longest = 512;
    std::size_t length = 1;
    while (length < std::min(text.size(), longest)) {
        const char last = text[length - 1], next = text[length];
        if (last == next && (next == ' ' || next == '%'))
            break;
        ++length;
    }
    return length;
}

void logInPieces(std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, pieceLength(text));
        zlfLog("%.*s", static_cast<int>(piece.size()), piece.data());
        text.remove_prefix(piece.size());
    }
}

void logDriver(const char *extensions) {
    zlfLog("      Vendor    : %s\n", driverText(GL_VENDOR));
    zlfLog("      Renderer  : %s\n", driverText(GL_RENDERER));
    zlfLog("      Version   : %s\n", driverText(GL_VERSION));
    zlfLog("      Extensions: ");
    logInPieces(extensions);
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

// One thing that a driver may offer. Where a column is NULL (or `none`), nothing is fetched, logged
// or set.
struct RVOPENGL::Capabilities::Capability {
    const char *needs[2];        // extensions, both of them
    bool (*isWanted)() = always; // else nothing is detected and nothing is logged
    bool (*isUsable)() = always; // called once it is found; logs itself what is wrong
    bool chained = false;        // when missing, the chained ones below are passed over silently
    EntryGroup entries;
    const char *incomplete; // logged when an entry point is NULL
    const char *found;
    const char *missing;
    bool *flag;
    void (*measure)() = nullptr; // after the flag: limits of what was found
};

void RVOPENGL::Capabilities::readAnisotropy() {
    glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &anisotropicLevel);
    zlfLog("      GL_EXT_texture_filter_anisotropic (level %.1f)\n",
           static_cast<double>(anisotropicLevel));
}

// Ends the line that the table's text has begun. With too few units the entry points stay loaded.
void RVOPENGL::Capabilities::countTextureUnits() {
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, &units);
    if (units < requiredUnits) {
        zlfLog("   [!] Only %d texture units (%d required)", units, requiredUnits);
        multitextureFlag = false;
    }
    zlfLog("%d units)\n", units);
}

// False when an extension that it needs is missing.
bool RVOPENGL::Capabilities::detectOne(const Capability &capability, const char *extensions) {
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

void RVOPENGL::Capabilities::detect(MakePool makePool) {
    static const Capability upToFramebuffers[] = {
        {.needs = {"GL_EXT_texture_filter_anisotropic"},
         .entries = none,
         .incomplete = nullptr,
         .found = nullptr, // readAnisotropy logs it with its level
         .missing = "   [!] GL_EXT_texture_filter_anisotropic not supported @ RVOPENGL::init\n",
         .flag = &anisotropicFlag,
         .measure = readAnisotropy},
        {.needs = {"GL_ARB_multitexture"},
         .entries = multitexture,
         .incomplete = nullptr,
         .found = "      GL_ARB_multitexture (",
         .missing = "   [!] GL_ARB_multitexture not supported @ RVOPENGL::init\n",
         .flag = &multitextureFlag,
         .measure = countTextureUnits},
        {.needs = {"GL_ARB_vertex_buffer_object"},
         .entries = vertexBuffers,
         .incomplete = nullptr,
         .found = "      GL_ARB_vertex_buffer_object\n",
         .missing = "   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init\n",
         .flag = &VBOFlag},
        {.needs = {"GL_ARB_fragment_shader", "GL_ARB_vertex_shader"},
         .isWanted = RVSETTINGS::getSDLShaders,
         .entries = shaders,
         .incomplete = "INCOMPLETE EXTENSION\n",
         .found = "      GL_ARB_vertex_shader\n      GL_ARB_fragment_shader\n",
         .missing = "   [!] Shaders not found @ RVOPENGL::init\n",
         .flag = &shadersFlag},
        {.needs = {"GL_ARB_depth_texture", "GL_ARB_shadow"},
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_depth_texture\n      GL_ARB_shadow\n",
         .missing = "   [!] GL_ARB_depth_texture or GL_ARB_shadow not found @ RVOPENGL::init\n",
         .flag = nullptr},
        {.needs = {"GL_ARB_texture_non_power_of_two"},
         .chained = true,
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_texture_non_power_of_two\n",
         .missing = "   [!] GL_ARB_texture_non_power_of_two not found @ RVOPENGL::init\n",
         .flag = nullptr},
        {.needs = {"GL_ARB_texture_float"},
         .chained = true,
         .entries = none,
         .incomplete = nullptr,
         .found = "      GL_ARB_texture_float\n",
         .missing = "   [!] GL_ARB_texture_float not found @ RVOPENGL::init\n",
         .flag = nullptr},
        {.needs = {"GL_EXT_framebuffer_object"},
         .isUsable = isVendorTrusted,
         .chained = true,
         .entries = framebuffers,
         .incomplete = "   [!] FBO incomplete extension!!\n",
         .found = "      GL_EXT_framebuffer_object\n",
         .missing = "   [!] GL_EXT_framebuffer_object not found @ RVOPENGL::init\n",
         .flag = &FBOFlag},
    };
    static const Capability occlusionQuery = {
        .needs = {"GL_ARB_occlusion_query"},
        .entries = occlusionQueries,
        .incomplete = "   [!] Occlusion Query incomplete extension!!\n",
        .found = "      GL_ARB_occlusion_query\n",
        .missing = "   [!] GL_ARB_occlusion_query not found @ RVOPENGL::init\n",
        .flag = &OcclusionQueryFlag};
    const char *extensions = driverText(GL_EXTENSIONS);
    logDriver(extensions);
    bool chainComplete = true;
    for (const Capability &capability : upToFramebuffers) {
        if (!capability.isWanted() || (capability.chained && !chainComplete))
            continue;
        const bool found = detectOne(capability, extensions);
        if (capability.chained)
            chainComplete = found;
    }
    if (useFBO())
        makePool(fbo);
    detectOne(occlusionQuery, extensions);
}
