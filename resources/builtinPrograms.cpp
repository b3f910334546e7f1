// The engine's own programs: their names, their texts and the features that they are needed for.
// The objects exist whether or not anything compiles, so that isOperative can always be called.

#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/zlf.h"
#include "resources/programPointers.h"
#include "resources/shaderTexts.h"

#include <algorithm>
#include <iterator>
#include <new>

RVSHADER *RVSHADER::pplDirect = nullptr;
RVSHADER *RVSHADER::pplOmni = nullptr;
RVSHADER *RVSHADER::pplSpot = nullptr;
RVSHADER *RVSHADER::pplDirectA = nullptr;
RVSHADER *RVSHADER::pplOmniA = nullptr;
RVSHADER *RVSHADER::pplSpotA = nullptr;
RVSHADER *RVSHADER::pplDirectT = nullptr;
RVSHADER *RVSHADER::pplOmniT = nullptr;
RVSHADER *RVSHADER::pplSpotT = nullptr;
RVSHADER *RVSHADER::pplDirectTA = nullptr;
RVSHADER *RVSHADER::pplOmniTA = nullptr;
RVSHADER *RVSHADER::pplSpotTA = nullptr;
RVSHADER *RVSHADER::pplSpotS = nullptr;
RVSHADER *RVSHADER::pplSpotSA = nullptr;
RVSHADER *RVSHADER::pplSpotTS = nullptr;
RVSHADER *RVSHADER::pplSpotTSA = nullptr;
RVSHADER *RVSHADER::passthrough = nullptr;
RVSHADER *RVSHADER::passthroughA = nullptr;
RVSHADER *RVSHADER::passthroughZPass = nullptr;
RVSHADER *RVSHADER::passthroughZPassA = nullptr;
RVSHADER *RVSHADER::bloomBright = nullptr;
RVSHADER *RVSHADER::bloomToneMapping = nullptr;
RVSHADER *RVSHADER::bloomCombine = nullptr;
RVSHADER *RVSHADER::bloomForceAlpha = nullptr;
RVSHADER *RVSHADER::bloomV = nullptr;
RVSHADER *RVSHADER::bloomH = nullptr;
RVSHADER *RVSHADER::gaussian = nullptr;
RVSHADER *RVSHADER::emitter = nullptr;
RVSHADER *RVSHADER::dofCombine = nullptr;
RVSHADER *RVSHADER::dof = nullptr;
RVSHADER *RVSHADER::skydome = nullptr;
RVSHADER *RVSHADER::water = nullptr;
RVSHADER *RVSHADER::waterS = nullptr;
RVSHADER *RVSHADER::terrainComplex = nullptr;
RVSHADER *RVSHADER::terrainSimple = nullptr;

namespace {

// A slot that is bound to another name after load.
struct Rebinding {
    unsigned int slot;
    const char *name; // NULL for none
};

struct Program {
    RVSHADER **program;
    const char *name;
    const char *vertexLabel; // labels of texts; no files
    const char *pixelLabel;
    Rebinding rebound[5] = {};
};

// In the order of their making. On purpose: two names are misspelt.
constexpr Program programs[] = {
    {&RVSHADER::pplDirect, "pplDirect", "pplVSdirect.glsl", "pplPSdirect.glsl"},
    {&RVSHADER::pplOmni, "pplOmni", "pplVSomni.glsl", "pplPSomni.glsl"},
    {&RVSHADER::pplSpot, "pplSpot", "pplVSspot.glsl", "pplPSspot.glsl"},
    {&RVSHADER::pplDirectA, "pplDirectA", "pplVSdirectA.glsl", "pplPSdirectA.glsl"},
    {&RVSHADER::pplOmniA, "pplOmniA", "pplVSomniA.glsl", "pplPSomniA.glsl"},
    {&RVSHADER::pplSpotA, "pplSpotA", "pplVSspotA.glsl", "pplPSspotA.glsl"},
    {&RVSHADER::pplDirectT, "pplDirectT", "pplVSdirectT.glsl", "pplPSdirectT.glsl"},
    {&RVSHADER::pplOmniT, "pplOmniT", "pplVSomniT.glsl", "pplPSomniT.glsl"},
    {&RVSHADER::pplSpotT, "pplSpotT", "pplVSspotT.glsl", "pplPSspotT.glsl"},
    {&RVSHADER::pplDirectTA, "pplDirectTA", "pplVSdirectTA.glsl", "pplPSdirectTA.glsl"},
    {&RVSHADER::pplOmniTA, "pplOmniTA", "pplVSomniTA.glsl", "pplPSomniTA.glsl"},
    {&RVSHADER::pplSpotTA, "pplSpotTA", "pplVSspotTA.glsl", "pplPSspotTA.glsl"},
    {&RVSHADER::pplSpotS, "pplSpotS", "pplVSspotS.glsl", "pplPSspotS.glsl"},
    {&RVSHADER::pplSpotSA, "pplSpotSA", "pplVSspotSA.glsl", "pplPSspotSA.glsl"},
    {&RVSHADER::pplSpotTS, "pplSpotTS", "pplVSspotTS.glsl", "pplPSspotTS.glsl"},
    {&RVSHADER::pplSpotTSA, "pplSpotTSA", "pplVSspotTSA.glsl", "pplPSspotTSA.glsl"},
    {&RVSHADER::passthrough, "passthrough", "passthroughVS.glsl", "passthroughPS.glsl"},
    {&RVSHADER::passthroughA, "passthroughA", "passthroughVSA.glsl", "passthroughPSA.glsl"},
    {&RVSHADER::passthroughZPass, "passhtroughZPass", "passthroughZPassVS.glsl",
     "passthroughZPassPS.glsl"},
    {&RVSHADER::passthroughZPassA, "passhtroughZPassA", "passthroughZPassVSA.glsl",
     "passthroughZPassPSA.glsl"},
    {&RVSHADER::bloomBright, "bloomBright", "bloomBrightVST.glsl", "bloomBrightPST.glsl"},
    {&RVSHADER::bloomToneMapping, "bloomToneMapping", "bloomToneMappingVST.glsl",
     "bloomToneMappingPST.glsl"},
    {&RVSHADER::bloomCombine, "bloomCombine", "bloomCombineVST.glsl", "bloomCombinePST.glsl"},
    {&RVSHADER::bloomForceAlpha, "bloomForceAlpha", "bloomForceAlphaVST.glsl",
     "bloomForceAlphaPST.glsl"},
    {&RVSHADER::bloomV, "bloomVert", "bloomVertVST.glsl", "bloomVertPST.glsl"},
    {&RVSHADER::bloomH, "bloomHor", "bloomHorVST.glsl", "bloomHorPST.glsl"},
    {&RVSHADER::gaussian, "gaussian", "gaussianVS.glsl", "gaussianPS.glsl"},
    {&RVSHADER::emitter, "emitter", "emitterShaderVS.glsl", "emitterShaderPS.glsl"},
    {&RVSHADER::dofCombine, "dofCombine", "dofCombineVST.glsl", "dofCombinePST.glsl"},
    {&RVSHADER::dof, "dof", "dofVS.glsl", "dofPS.glsl"},
    {&RVSHADER::skydome, "skydomeShader", "skydomeVS.glsl", "skydomeFS.glsl"},
    {&RVSHADER::water, "waterShader", "waterVS.glsl", "waterPS.glsl", {{20, "repeat"}}},
    {&RVSHADER::waterS, "waterShaderS", "waterSVS.glsl", "waterSPS.glsl", {{20, "repeat"}}},
    {&RVSHADER::terrainComplex,
     "terrainComplex",
     "terrainComplexVS.glsl",
     "terrainComplexPS.glsl",
     {{2, "inv"}, {3, "repeat1"}, {4, "repeat2"}, {5, "repeat3"}, {6, "repeat4"}}},
    {&RVSHADER::terrainSimple,
     "terrainSimple",
     "terrainSimpleVS.glsl",
     "terrainSimplePS.glsl",
     {{2, "inv"}, {3, "repeat1"}, {4, "repeat2"}, {5, "repeat3"}, {6, "repeat4"}}},
};

} // namespace

namespace ravolt {

struct BuiltinPrograms {
    // The uses of the driver's programs. A feature is on when all the programs that it needs
    // are operative and all its conditions are true; else the programs of the next column are
    // dropped. NULL is an unused entry.
    struct Feature {
        bool *flag;
        RVSHADER **needs[7];
        bool (*conditions[2])();
        RVSHADER **dropped[6];
        const char *supported;
        const char *unsupported;
    };

    static bool construct(); // false when memory runs out; those made so far stay
    static void clearFlags();
    static void compile();
    static void probe();
    static const Feature features[10];
};

// From top to bottom: a feature may miss what one above it has dropped.
const BuiltinPrograms::Feature BuiltinPrograms::features[] = {
    {.flag = &RVSHADER::pplFlag,
     .needs = {&RVSHADER::pplDirect, &RVSHADER::pplOmni, &RVSHADER::pplSpot, &RVSHADER::pplDirectT,
               &RVSHADER::pplOmniT, &RVSHADER::pplSpotT},
     .conditions = {},
     .dropped = {&RVSHADER::pplDirect, &RVSHADER::pplOmni, &RVSHADER::pplSpot,
                 &RVSHADER::pplDirectT, &RVSHADER::pplOmniT, &RVSHADER::pplSpotT},
     .supported = "      Basic per-pixel lighting supported\n",
     .unsupported = "      Basic per-pixel lighting not supported\n"},
    {.flag = &RVSHADER::passthroughFlag,
     .needs = {&RVSHADER::passthrough, &RVSHADER::passthroughA, &RVSHADER::passthroughZPass,
               &RVSHADER::passthroughZPassA},
     .conditions = {},
     .dropped = {&RVSHADER::passthrough, &RVSHADER::passthroughA, &RVSHADER::passthroughZPass,
                 &RVSHADER::passthroughZPassA},
     .supported = "      Passthrough supported\n",
     .unsupported = "      Passthrough not supported\n"},
    // On purpose: bloomToneMapping and bloomForceAlpha are not tested.
    {.flag = &RVSHADER::bloomFlag,
     .needs = {&RVSHADER::bloomCombine, &RVSHADER::bloomBright, &RVSHADER::bloomV,
               &RVSHADER::bloomH},
     .conditions = {RVOPENGL::useFBO, RVOPENGL::useMultitexturing},
     .dropped = {&RVSHADER::bloomCombine, &RVSHADER::bloomBright, &RVSHADER::bloomV,
                 &RVSHADER::bloomH},
     .supported = "      Bloom lighting supported\n",
     .unsupported = "      Bloom lighting not supported\n"},
    // On purpose: pplSpotSA is tested and not dropped.
    {.flag = &RVSHADER::shadowsFlag,
     .needs = {&RVSHADER::pplSpotS, &RVSHADER::pplSpotTS, &RVSHADER::pplSpotTSA,
               &RVSHADER::pplSpotSA},
     .conditions = {RVOPENGL::useFBO, RVOPENGL::useMultitexturing},
     .dropped = {&RVSHADER::pplSpotS, &RVSHADER::pplSpotTS, &RVSHADER::pplSpotTSA},
     .supported = "      Soft shadow-mapping supported\n",
     .unsupported = "      Soft shadow-mapping not supported\n"},
    {.flag = &RVSHADER::skinningFlag,
     .needs = {&RVSHADER::pplDirectTA, &RVSHADER::pplOmniTA, &RVSHADER::pplSpotTA,
               &RVSHADER::pplDirectA, &RVSHADER::pplOmniA, &RVSHADER::pplSpotA},
     .conditions = {RVOPENGL::useVBO},
     .dropped = {&RVSHADER::pplDirectTA, &RVSHADER::pplOmniTA, &RVSHADER::pplSpotTA,
                 &RVSHADER::pplDirectA, &RVSHADER::pplOmniA, &RVSHADER::pplSpotA},
     .supported = "      Hardware skinning supported\n",
     .unsupported = "      Hardware skinning not supported\n"},
    // On purpose: a program that failed is left to its own isOperative.
    {.flag = &RVSHADER::emitterFlag,
     .needs = {&RVSHADER::emitter},
     .conditions = {},
     .dropped = {},
     .supported = "      Hardware particle engine supported\n",
     .unsupported = "      Hardware particle engine not supported\n"},
    // On purpose: without bloom its two blurs are dropped, and so this falls with it.
    {.flag = &RVSHADER::dofFlag,
     .needs = {&RVSHADER::dofCombine, &RVSHADER::dof, &RVSHADER::bloomV, &RVSHADER::bloomH},
     .conditions = {RVOPENGL::useFBO, RVOPENGL::useMultitexturing},
     .dropped = {&RVSHADER::dofCombine, &RVSHADER::dof},
     .supported = "      Depth of field supported\n",
     .unsupported = "      Depth of field not supported\n"},
    {.flag = &RVSHADER::skydomeFlag,
     .needs = {&RVSHADER::skydome},
     .conditions = {},
     .dropped = {&RVSHADER::skydome},
     .supported = "      Skydome supported\n",
     .unsupported = "      Skydome not supported\n"},
    {.flag = &RVSHADER::waterFlag,
     .needs = {&RVSHADER::water, &RVSHADER::waterS},
     .conditions = {},
     .dropped = {&RVSHADER::water, &RVSHADER::waterS},
     .supported = "      Water supported\n",
     .unsupported = "      Water not supported\n"},
    {.flag = &RVSHADER::terrainFlag,
     .needs = {&RVSHADER::terrainComplex, &RVSHADER::terrainSimple},
     .conditions = {},
     .dropped = {&RVSHADER::terrainComplex, &RVSHADER::terrainSimple},
     .supported = "      Terrain supported\n",
     .unsupported = "      Terrain not supported\n"},
};

bool BuiltinPrograms::construct() {
    for (const Program &each : programs) {
        if (!RVSHADER::active)
            delete *each.program; // of a start that failed later
        RVSHADER *const made = new (std::nothrow) RVSHADER;
        if (!made)
            return false;
        *each.program = made;
    }
    return true;
}

void BuiltinPrograms::clearFlags() {
    for (const Feature &feature : features)
        *feature.flag = false;
}

// What fails here is detected by the probe.
void BuiltinPrograms::compile() {
    for (const Program &each : programs) {
        RVSHADER &program = **each.program;
        program.loadVertexShader(each.vertexLabel, shaderText(each.vertexLabel));
        program.loadPixelShader(each.pixelLabel, shaderText(each.pixelLabel));
        program.load(nullptr, nullptr, true);
        program.setName(each.name);
        for (const Rebinding &rebinding : each.rebound)
            if (rebinding.name)
                program.bindParam(rebinding.slot, rebinding.name, false);
    }
}

void BuiltinPrograms::probe() {
    const auto isNullOrOperative = [](RVSHADER **program) {
        return !program || (*program)->isOperative();
    };
    const auto holds = [](bool (*condition)()) { return !condition || condition(); };
    for (const Feature &feature : features) {
        *feature.flag =
            std::all_of(std::begin(feature.needs), std::end(feature.needs), isNullOrOperative) &&
            std::all_of(std::begin(feature.conditions), std::end(feature.conditions), holds);
        zlfLog("%s", *feature.flag ? feature.supported : feature.unsupported);
        if (*feature.flag)
            continue;
        for (RVSHADER **program : feature.dropped)
            if (program)
                (*program)->forceDeactivation();
    }
}

} // namespace ravolt

bool RVSHADER::init() {
    using ravolt::BuiltinPrograms;
    if (!BuiltinPrograms::construct()) {
        zlfLog("   [!] Out of memory @ RVSHADER::init\n");
        return false;
    }
    if (!active)
        BuiltinPrograms::clearFlags(); // a former run's
    if (!RVSETTINGS::getSDLShaders())
        return true;
    if (!RVOPENGL::useShaders()) {
        zlfLog("   [!] Shaders required but not supported on this hardware @ RVSHADER::init\n");
        return true;
    }
    if (active) {
        zlfLog("   [!] Shaders already active @ RVSHADER::init\n");
        return false;
    }
    zlfLog("   Init shaders...\n");
    active = true;
    BuiltinPrograms::compile();
    zlfLog("   Shaders initialized\n");
    zlfLog("   Check advanced codepaths:\n");
    BuiltinPrograms::probe();
    zlfLog("   Codepaths initialized\n");
    return true;
}

// On purpose: the flags do not change, and cleanUp deletes the programs.
bool RVSHADER::free() {
    if (!active)
        return false;
    zlfLog("   Release shaders...\n");
    zlfLog("   Shaders released\n");
    active = false;
    return true;
}

void ravolt::onProgramDestroyed(const RVSHADER *program) {
    for (const Program &each : programs)
        if (*each.program == program)
            *each.program = nullptr;
}
