#pragma once

// The labels of the thirty-five built-in programs, in the order of their creation.

namespace ravolt::test {

struct ProgramLabels {
    const char *vertex;
    const char *pixel;
};

inline constexpr ProgramLabels allPrograms[] = {
    {"pplVSdirect.glsl", "pplPSdirect.glsl"},
    {"pplVSomni.glsl", "pplPSomni.glsl"},
    {"pplVSspot.glsl", "pplPSspot.glsl"},
    {"pplVSdirectA.glsl", "pplPSdirectA.glsl"},
    {"pplVSomniA.glsl", "pplPSomniA.glsl"},
    {"pplVSspotA.glsl", "pplPSspotA.glsl"},
    {"pplVSdirectT.glsl", "pplPSdirectT.glsl"},
    {"pplVSomniT.glsl", "pplPSomniT.glsl"},
    {"pplVSspotT.glsl", "pplPSspotT.glsl"},
    {"pplVSdirectTA.glsl", "pplPSdirectTA.glsl"},
    {"pplVSomniTA.glsl", "pplPSomniTA.glsl"},
    {"pplVSspotTA.glsl", "pplPSspotTA.glsl"},
    {"pplVSspotS.glsl", "pplPSspotS.glsl"},
    {"pplVSspotSA.glsl", "pplPSspotSA.glsl"},
    {"pplVSspotTS.glsl", "pplPSspotTS.glsl"},
    {"pplVSspotTSA.glsl", "pplPSspotTSA.glsl"},
    {"passthroughVS.glsl", "passthroughPS.glsl"},
    {"passthroughVSA.glsl", "passthroughPSA.glsl"},
    {"passthroughZPassVS.glsl", "passthroughZPassPS.glsl"},
    {"passthroughZPassVSA.glsl", "passthroughZPassPSA.glsl"},
    {"bloomBrightVST.glsl", "bloomBrightPST.glsl"},
    {"bloomToneMappingVST.glsl", "bloomToneMappingPST.glsl"},
    {"bloomCombineVST.glsl", "bloomCombinePST.glsl"},
    {"bloomForceAlphaVST.glsl", "bloomForceAlphaPST.glsl"},
    {"bloomVertVST.glsl", "bloomVertPST.glsl"},
    {"bloomHorVST.glsl", "bloomHorPST.glsl"},
    {"gaussianVS.glsl", "gaussianPS.glsl"},
    {"emitterShaderVS.glsl", "emitterShaderPS.glsl"},
    {"dofCombineVST.glsl", "dofCombinePST.glsl"},
    {"dofVS.glsl", "dofPS.glsl"},
    {"skydomeVS.glsl", "skydomeFS.glsl"},
    {"waterVS.glsl", "waterPS.glsl"},
    {"waterSVS.glsl", "waterSPS.glsl"},
    {"terrainComplexVS.glsl", "terrainComplexPS.glsl"},
    {"terrainSimpleVS.glsl", "terrainSimplePS.glsl"},
};

} // namespace ravolt::test
