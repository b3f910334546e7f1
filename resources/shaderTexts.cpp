// Every text is put together while the library is compiled: the version, the definitions of the
// variant, the shared pieces and the source of the stage. Equal texts are one.

#include "resources/shaderTexts.h"

#include "resources/shaderSources.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace ravolt {
namespace {

template <std::size_t... sizes> constexpr auto join(const char (&...parts)[sizes]) {
    std::array<char, (0 + ... + (sizes - 1)) + 1> joined{};
    std::size_t end = 0;
    const auto append = [&](const char *part, std::size_t length) {
        for (std::size_t i = 0; i < length; ++i)
            joined[end++] = part[i];
    };
    (append(parts, sizes - 1), ...);
    return joined;
}

constexpr char version[] = "#version 110\n";
// From here on, the lines are counted anew.
constexpr char lines[] = "#line 0\n";

// The definitions that make the variants.
constexpr char direct[] = "#define DIRECT\n";
constexpr char omni[] = "#define OMNI\n";
constexpr char spot[] = "#define SPOT\n";
constexpr char textured[] = "#define TEXTURED\n";
constexpr char shadowed[] = "#define SHADOWED\n";
constexpr char skinned[] = "#define SKINNED\n";
constexpr char skinnedLight[] = "#define SKINNED_LIGHT\n";
constexpr char colored[] = "#define COLORED\n";
constexpr char clipped[] = "#define CLIPPED\n";
constexpr char averaged[] = "#define AVERAGED\n";
constexpr char alongX[] = "#define ALONG_X\n";

template <const auto &...parts> struct Joined {
    static constexpr auto text = join(version, parts...);
};

// Definitions and shared pieces first, the source of the stage last.
template <const auto &source, const auto &...before>
constexpr const char *stage = Joined<before..., lines, source>::text.data();

using namespace glsl;

struct Row {
    const char *label;
    const char *text;
};

constexpr Row rows[] = {
    {"pplVSdirect.glsl", stage<pplVS, direct>},
    {"pplPSdirect.glsl", stage<pplPS, direct>},
    {"pplVSomni.glsl", stage<pplVS, omni>},
    {"pplPSomni.glsl", stage<pplPS, omni>},
    {"pplVSspot.glsl", stage<pplVS, spot>},
    {"pplPSspot.glsl", stage<pplPS, spot>},

    {"pplVSdirectA.glsl", stage<pplVS, direct, skinned, skinning>},
    {"pplPSdirectA.glsl", stage<pplPS, direct>},
    {"pplVSomniA.glsl", stage<pplVS, omni, skinned, skinning>},
    {"pplPSomniA.glsl", stage<pplPS, omni>},
    {"pplVSspotA.glsl", stage<pplVS, spot, skinned, skinning>},
    {"pplPSspotA.glsl", stage<pplPS, spot>},

    {"pplVSdirectT.glsl", stage<pplVS, direct, textured>},
    {"pplPSdirectT.glsl", stage<pplPS, direct, textured>},
    {"pplVSomniT.glsl", stage<pplVS, omni, textured>},
    {"pplPSomniT.glsl", stage<pplPS, omni, textured>},
    {"pplVSspotT.glsl", stage<pplVS, spot, textured>},
    {"pplPSspotT.glsl", stage<pplPS, spot, textured>},

    // On purpose: of the skinned programs without shadows, the textured spot light alone lights the
    // skinned vertex.
    {"pplVSdirectTA.glsl", stage<pplVS, direct, textured, skinned, skinning>},
    {"pplPSdirectTA.glsl", stage<pplPS, direct, textured>},
    {"pplVSomniTA.glsl", stage<pplVS, omni, textured, skinned, skinning>},
    {"pplPSomniTA.glsl", stage<pplPS, omni, textured>},
    {"pplVSspotTA.glsl", stage<pplVS, spot, textured, skinned, skinnedLight, skinning>},
    {"pplPSspotTA.glsl", stage<pplPS, spot, textured>},

    {"pplVSspotS.glsl", stage<pplVS, spot, shadowed>},
    {"pplPSspotS.glsl", stage<pplPS, spot, shadowed, shadowMap>},
    {"pplVSspotSA.glsl", stage<pplVS, spot, shadowed, skinned, skinnedLight, skinning>},
    {"pplPSspotSA.glsl", stage<pplPS, spot, shadowed, shadowMap>},
    {"pplVSspotTS.glsl", stage<pplVS, spot, textured, shadowed>},
    {"pplPSspotTS.glsl", stage<pplPS, spot, textured, shadowed, shadowMap>},
    {"pplVSspotTSA.glsl", stage<pplVS, spot, textured, shadowed, skinned, skinnedLight, skinning>},
    {"pplPSspotTSA.glsl", stage<pplPS, spot, textured, shadowed, shadowMap>},

    {"passthroughVS.glsl", stage<passthroughVS>},
    {"passthroughPS.glsl", stage<passthroughPS>},
    {"passthroughVSA.glsl", stage<passthroughVS, skinned, skinning>},
    {"passthroughPSA.glsl", stage<passthroughPS>},
    {"passthroughZPassVS.glsl", stage<zPassVS>},
    {"passthroughZPassPS.glsl", stage<zPassPS>},
    {"passthroughZPassVSA.glsl", stage<zPassVS, skinned, skinning>},
    {"passthroughZPassPSA.glsl", stage<zPassPS>},

    {"bloomBrightVST.glsl", stage<screenVS>},
    {"bloomBrightPST.glsl", stage<bloomBrightPS>},
    {"bloomToneMappingVST.glsl", stage<screenVS>},
    {"bloomToneMappingPST.glsl", stage<bloomToneMappingPS>},
    {"bloomCombineVST.glsl", stage<screenVS>},
    {"bloomCombinePST.glsl", stage<combinePS>},
    {"bloomForceAlphaVST.glsl", stage<screenVS, colored>},
    {"bloomForceAlphaPST.glsl", stage<bloomForceAlphaPS>},
    // On purpose: the names are the reverse of the directions.
    {"bloomVertVST.glsl", stage<screenVS>},
    {"bloomVertPST.glsl", stage<blurPS, alongX>},
    {"bloomHorVST.glsl", stage<screenVS>},
    {"bloomHorPST.glsl", stage<blurPS>},
    {"gaussianVS.glsl", stage<screenVS>},
    {"gaussianPS.glsl", stage<gaussianPS>},

    {"emitterShaderVS.glsl", stage<emitterVS>},
    {"emitterShaderPS.glsl", stage<emitterPS>},
    {"dofCombineVST.glsl", stage<screenVS>},
    {"dofCombinePST.glsl", stage<combinePS, averaged>},
    {"dofVS.glsl", stage<screenVS>},
    {"dofPS.glsl", stage<dofPS>},
    {"skydomeVS.glsl", stage<screenVS, clipped>},
    {"skydomeFS.glsl", stage<skydomePS>},

    {"waterVS.glsl", stage<waterVS>},
    {"waterPS.glsl", stage<waterPS>},
    {"waterSVS.glsl", stage<waterVS, shadowed>},
    {"waterSPS.glsl", stage<waterPS, shadowed, shadowMap>},
    {"terrainComplexVS.glsl", stage<terrainComplexVS>},
    {"terrainComplexPS.glsl", stage<terrainComplexPS>},
    {"terrainSimpleVS.glsl", stage<terrainSimpleVS>},
    {"terrainSimplePS.glsl", stage<terrainSimplePS>},
};

} // namespace

const char *shaderText(const char *label) {
    if (!label)
        return nullptr;
    for (const Row &row : rows)
        if (std::strcmp(row.label, label) == 0)
            return row.text;
    return nullptr;
}

} // namespace ravolt
