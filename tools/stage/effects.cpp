// The table of the effects and their parameters, and how each is applied.

#include "tools/stage/effects.h"

#include <algorithm>
#include <iterator>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVOPENGL.h>
#include <ravolt/RVSHADER.h>
#include <sstream>

namespace ravolt::tool {

namespace {

bool always() { return true; }

bool hasExtension(const std::string &name) {
    const GLubyte *all = glGetString(GL_EXTENSIONS);
    std::istringstream names(all ? reinterpret_cast<const char *>(all) : "");
    return std::find(std::istream_iterator<std::string>(names), {}, name) !=
           std::istream_iterator<std::string>();
}

// The engine checks the programs only, which would read an ordinary texture as shadows.
bool shadowsWork() {
    return RVSHADER::useShadows() && hasExtension("GL_ARB_depth_texture") &&
           hasExtension("GL_ARB_shadow");
}

bool toneMappingWorks() {
    return RVSHADER::useBloom() && RVSHADER::bloomToneMapping->isOperative();
}

// The depths come from the passthrough programs.
bool depthOfFieldWorks() { return RVSHADER::useDOF() && RVSHADER::usePassthrough(); }

bool isListed(const std::vector<Effect> &effects, Effect effect) {
    return std::find(effects.begin(), effects.end(), effect) != effects.end();
}

} // namespace

const std::array<EffectRow, numberOfEffects> &effectTable() {
    using enum Effect;
    static const std::array<EffectRow, numberOfEffects> table = {{
        {perPixel,
         "--per-pixel",
         "per-pixel lighting",
         "Light every pixel by a program, which knows one light: the first of a rig",
         {},
         false,
         RVSHADER::usePPL},
        {spot,
         "--spot",
         "spot light",
         "Light the scene by a spot light in place of a rig",
         {},
         false,
         always},
        {shadows,
         "--shadows",
         "shadows",
         "The spot light casts soft shadows",
         {perPixel, spot},
         false,
         shadowsWork},
        {floor, "--floor", "floor", "Put a floor under the scene", {}, false, always},
        {bloom,
         "--bloom",
         "bloom",
         "What is brighter than white glows; without --brightness the light is so bright that "
         "a twentieth of the scene does",
         {perPixel},
         true,
         RVSHADER::useBloom},
        {toneMapping,
         "--tone-mapping",
         "tone mapping",
         "Raise the contrast about the mean brightness, to which the eye gets used",
         {bloom},
         true,
         toneMappingWorks},
        {depthOfField,
         "--depth-of-field",
         "depth of field",
         "Blur what is out of focus",
         {},
         true,
         depthOfFieldWorks},
    }};
    return table;
}

const std::array<EffectParameterRow, numberOfEffectParameters> &effectParameterTable() {
    using enum Effect;
    static const std::array<EffectParameterRow, numberOfEffectParameters> table = {{
        {EffectParameter::brightness, std::nullopt, "--brightness", "FACTOR", 0, 16, 1, 0.25,
         "Brightness of the rig or the spot light"},
        {EffectParameter::spotYaw, spot, "--spot-yaw", "DEGREES", -360, 360, 70, 10,
         "Where the spot light stands, round the scene"},
        {EffectParameter::spotPitch, spot, "--spot-pitch", "DEGREES", 5, 85, 50, 5,
         "Where it stands, above the scene"},
        {EffectParameter::spotDistance, spot, "--spot-distance", "RADII", 1.5, 50, 4, 0.25,
         "How far it stands from the middle of the scene, whose radius is 1"},
        {EffectParameter::spotAngle, spot, "--spot-angle", "DEGREES", 2, 150, 60, 5,
         "How wide its cone opens"},
        {EffectParameter::spotFade, spot, "--spot-fade", "EXPONENT", 0, 128, 16, 2,
         "How strongly it fades towards the edge of the cone"},
        {EffectParameter::bloomIntensity, bloom, "--bloom-intensity", "FACTOR", 0, 8, 0.5, 0.1,
         "Brightness of the glow"},
        {EffectParameter::exposure, toneMapping, "--exposure", "FACTOR", 0.1, 64, 4, 1,
         "The lower, the more contrast tone mapping makes"},
        {EffectParameter::focus, depthOfField, "--focus", "PLACE", -1, 10, 0.5, 0.05,
         "What is sharp: 0 the front of the scene, 0.5 its middle, 1 its back"},
        {EffectParameter::focusDepth, depthOfField, "--focus-depth", "PLACE", 0.01, 10, 0.5, 0.05,
         "How far before and behind it the blur is complete"},
    }};
    return table;
}

const EffectRow &rowOf(Effect effect) { return effectTable()[static_cast<std::size_t>(effect)]; }

const EffectParameterRow &rowOf(EffectParameter parameter) {
    return effectParameterTable()[static_cast<std::size_t>(parameter)];
}

bool canBeDone(Effect effect) {
    const EffectRow &row = rowOf(effect);
    return row.canBeDone() && std::all_of(row.needs.begin(), row.needs.end(), canBeDone);
}

Effects::Effects() {
    for (const EffectParameterRow &row : effectParameterTable())
        set(row.parameter, row.start);
}

void Effects::switchOn(Effect effect) {
    on[static_cast<std::size_t>(effect)] = true;
    for (const Effect needed : rowOf(effect).needs)
        switchOn(needed);
}

void Effects::switchOff(Effect effect) {
    on[static_cast<std::size_t>(effect)] = false;
    for (const EffectRow &row : effectTable())
        if (isListed(row.needs, effect))
            switchOff(row.effect);
}

void Effects::set(EffectParameter parameter, double value) {
    const EffectParameterRow &row = rowOf(parameter);
    values[static_cast<std::size_t>(parameter)] = std::clamp(value, row.min, row.max);
}

bool Effects::needPrograms() const { return isOn(Effect::perPixel) || isOn(Effect::depthOfField); }

bool Effects::needWholePicture() const {
    return std::any_of(effectTable().begin(), effectTable().end(), [this](const EffectRow &row) {
        return row.wholePicture && isOn(row.effect);
    });
}

std::string Effects::switchOffUnsupported() {
    std::string lacking;
    for (const EffectRow &row : effectTable())
        if (isOn(row.effect) && !tool::canBeDone(row.effect))
            lacking += (lacking.empty() ? "" : ", ") + std::string(row.name);
    for (const EffectRow &row : effectTable())
        if (isOn(row.effect) && !tool::canBeDone(row.effect))
            switchOff(row.effect);
    return lacking;
}

std::string Effects::names() const {
    std::string all;
    for (const EffectRow &row : effectTable())
        if (isOn(row.effect))
            all += (all.empty() ? "" : ", ") + std::string(row.name);
    return all.empty() ? "no effects" : all;
}

void switchTo(bool on, void (*switchOn)(), void (*switchOff)()) { on ? switchOn() : switchOff(); }

void applyToPicture(const Effects &effects, bool wanted) {
    const auto isOn = [&](Effect effect) { return wanted && effects.isOn(effect); };
    switchTo(isOn(Effect::bloom), RAVOLT::bloomingOn, RAVOLT::bloomingOff);
    switchTo(isOn(Effect::toneMapping), RAVOLT::HDROn, RAVOLT::HDROff);
    switchTo(isOn(Effect::depthOfField), RAVOLT::DOFOn, RAVOLT::DOFOff);
    RAVOLT::setBloomingIntensity(static_cast<float>(effects.get(EffectParameter::bloomIntensity)));
    RAVOLT::setHDRExposure(static_cast<float>(effects.get(EffectParameter::exposure)));
}

} // namespace ravolt::tool
