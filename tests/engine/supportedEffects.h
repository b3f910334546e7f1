#pragma once

// Drivers that lack something, and which of the effects remain on each.

#include "ravolt/RVSETTINGS.h"
#include "tests/support/recorder.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace ravolt::test {

struct Supported {
    bool bloom = false, shadows = false, depthOfField = false;
};

constexpr Supported all{true, true, true}, nothing{};

inline std::vector<std::string> wordsOf(const char *text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

// --- without an extension, with few units, without shaders

struct Driver {
    const char *name;
    const char *extension; // that is hidden; NULL for none
    Supported left;
    const char *vendor = "Somebody";
    int units = 16;
    bool shadersWanted = true;

    void pretend(Recorder &recorder, RVSETTINGS &settings) const {
        if (extension)
            recorder.hideExtension(extension);
        recorder.setVendor(vendor);
        recorder.setTextureUnits(units);
        settings.setShaders(shadersWanted);
    }
};

inline void PrintTo(const Driver &driver, std::ostream *out) { *out << driver.name; }

constexpr Driver drivers[] = {
    {"Nothing", nullptr, all},
    {"Anisotropy", "GL_EXT_texture_filter_anisotropic", all},
    {"Multitexturing", "GL_ARB_multitexture", nothing},
    {"VertexBuffers", "GL_ARB_vertex_buffer_object", all},
    {"VertexShaders", "GL_ARB_vertex_shader", nothing},
    {"FragmentShaders", "GL_ARB_fragment_shader", nothing},
    {"DepthTextures", "GL_ARB_depth_texture", all},
    {"ShadowComparison", "GL_ARB_shadow", all},
    {"TexturesOfAnySize", "GL_ARB_texture_non_power_of_two", nothing},
    {"FloatTextures", "GL_ARB_texture_float", nothing},
    {"Framebuffers", "GL_EXT_framebuffer_object", nothing},
    {"OcclusionQueries", "GL_ARB_occlusion_query", all},
    {"AllExtensions", "GL_", nothing},
    {"TrustedVendor", nullptr, nothing, "ATI Technologies Inc."},
    {"SixteenUnits", nullptr, nothing, "Somebody", 8},
    {"RequestedShaders", nullptr, nothing, "Somebody", 16, false},
};

// --- without a function of an extension

constexpr const char *functions[] = {
#define RV_GL_ENTRY_POINT(group, name) #name,
#include "engine/gl/glEntryPoints.inc"
};

// Without these there are no render targets, although the flag is set.
inline bool isOfFramebuffers(const std::string &name) {
    return name.find("EXT") != std::string::npos;
}

// Without one of these there is no program.
const std::vector<std::string> functionsOfPrograms = wordsOf(
    "glCreateShaderObjectARB glShaderSourceARB glCompileShaderARB glGetObjectParameterivARB "
    "glCreateProgramObjectARB glAttachObjectARB glLinkProgramARB glUseProgramObjectARB "
    "glGetUniformLocationARB glUniform1iARB glUniform1fARB");

inline bool isOfPrograms(const std::string &name) {
    return std::count(functionsOfPrograms.begin(), functionsOfPrograms.end(), name) != 0;
}

// --- without a program

// The programs in the order of their creation.
const std::vector<std::string> programs = wordsOf(
    "pplDirect pplOmni pplSpot pplDirectA pplOmniA pplSpotA pplDirectT pplOmniT pplSpotT "
    "pplDirectTA pplOmniTA pplSpotTA pplSpotS pplSpotSA pplSpotTS pplSpotTSA passthrough "
    "passthroughA passthroughZPass passthroughZPassA bloomBright bloomToneMapping bloomCombine "
    "bloomForceAlpha bloomV bloomH gaussian emitter dofCombine dof skydome water waterS "
    "terrainComplex terrainSimple");

constexpr Supported shadowsAlone{false, true, false};

// The effects without a program.
inline Supported leftWithout(const std::string &program) {
    if (program.find("pplSpotS") == 0 || program.find("pplSpotTS") == 0)
        return {true, false, true};
    if (program.find("dof") == 0)
        return {true, true, false};
    const bool optional = program == "bloomToneMapping" || program == "bloomForceAlpha";
    return program.find("bloom") == 0 && !optional ? shadowsAlone : all;
}

} // namespace ravolt::test
