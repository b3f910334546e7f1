// Prepares the stage and the engine for `view` and `shot`.

#include "tools/commands/show.h"

#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/common/report.h"
#include "tools/process/logRedirect.h"
#include "tools/stage/glow.h"
#include "tools/stage/playback.h"

#include <fstream>
#include <iostream>

namespace ravolt::tool {

Drawing drawingFor(const ShowOptions &options, bool programs) {
    Drawing drawing;
    drawing.programs = programs || effectsFrom(options.effects).needPrograms();
    drawing.shadowMap = options.effects.shadowMap.value_or(defaultShadowMap);
    drawing.picture = options.size;
    return drawing;
}

void arrange(Stage &stage, const ShowOptions &options, const Verbosity &verbosity) {
    if (options.rig < 0 || options.rig >= stage.numberOfRigs())
        throw WrongOptions("no light rig " + std::to_string(options.rig) + ": there are 0 to " +
                           std::to_string(stage.numberOfRigs() - 1));
    stage.setRig(options.rig);
    if (options.yaw)
        stage.setYaw(*options.yaw);
    if (options.pitch)
        stage.setPitch(*options.pitch);
    stage.setZoom(options.zoom);
    stage.setWireframe(options.wireframe);
    stage.setNormals(options.normals);
    stage.setBoxes(options.boxes);
    Effects effects = effectsFrom(options.effects);
    const std::string lacking = effects.switchOffUnsupported();
    if (!lacking.empty())
        warn("this display cannot do " + lacking + ": drawn without", verbosity);
    stage.setEffects(effects);
}

void makeGlow(Stage &stage, const ShowOptions &options) {
    Effects effects = stage.getEffects();
    const auto &stated =
        options.effects.parameters[static_cast<std::size_t>(EffectParameter::brightness)];
    if (!effects.isOn(Effect::bloom) || stated || options.wireframe)
        return;
    effects.set(EffectParameter::brightness, brightnessForBloom(stage));
    stage.setEffects(effects);
}

void removeBrokenTextures(const Verbosity &verbosity) {
    for (const std::string &complaint : Engine::removeBrokenTextures(LogRedirect::log()))
        warn(complaint + ": drawn without", verbosity);
}

void warnOfMissingNodes(const Playback &playback, const Verbosity &verbosity) {
    if (const std::size_t number = playback.missingNodes())
        warn("clip '" + playback.name() + "' moves " + counted(number, "node", "nodes") +
                 " that the scene does not have",
             verbosity);
}

LogAtEnd::~LogAtEnd() {
    if (!verbosity.verbose)
        return;
    std::ifstream log(LogRedirect::log());
    std::cerr << log.rdbuf();
}

} // namespace ravolt::tool
