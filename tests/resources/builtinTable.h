#pragma once

// The thirty-five built-in programs in the order of their creation.

#include "ravolt/RVSHADER.h"

namespace ravolt::test {

struct BuiltinProgram {
    RVSHADER **program;
    const char *name, *vertexLabel, *pixelLabel;
};

inline constexpr BuiltinProgram builtinPrograms[] = {
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
    {&RVSHADER::water, "waterShader", "waterVS.glsl", "waterPS.glsl"},
    {&RVSHADER::waterS, "waterShaderS", "waterSVS.glsl", "waterSPS.glsl"},
    {&RVSHADER::terrainComplex, "terrainComplex", "terrainComplexVS.glsl", "terrainComplexPS.glsl"},
    {&RVSHADER::terrainSimple, "terrainSimple", "terrainSimpleVS.glsl", "terrainSimplePS.glsl"},
};

} // namespace ravolt::test
