// Prepares the stage and the engine for `view` and `shot`.

#include "tools/commands/show.h"

#include "tools/commands/scene.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/common/report.h"
#include "tools/process/logRedirect.h"
#include "tools/stage/glow.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"
#include "tools/stage/playback.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <ravolt/RVEMITTER.h>

namespace ravolt::tool {

namespace {

// The effects that the display can do; warns of others.
Effects possible(const ShowOptions &options) {
    Effects effects = effectsFrom(options.effects);
    const std::string lacking = effects.switchOffUnsupported();
    if (!lacking.empty())
        warn("this display cannot do " + lacking + ": drawn without", options.verbosity);
    return effects;
}

} // namespace

Drawing drawingFor(const ShowOptions &options, bool programs) {
    Drawing drawing;
    drawing.programs = programs || effectsFrom(options.effects).needPrograms();
    drawing.shadowMap = options.effects.shadowMap.value_or(defaultShadowMap);
    drawing.picture = options.size;
    drawing.anisotropy = options.anisotropy;
    return drawing;
}

void arrange(Stage &stage, const ShowOptions &options) {
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
    stage.setEffects(possible(options));
}

void arrange(Landscape &landscape, const ShowOptions &options) {
    if (options.target)
        landscape.lookAt(*options.target);
    landscape.orbit(options.yaw.value_or(Landscape::defaultYaw),
                    options.pitch.value_or(Landscape::defaultPitch), options.zoom);
    if (options.eye)
        landscape.setEye(*options.eye);
    landscape.setWireframe(options.wireframe);
    landscape.setChunks(options.boxes);
    landscape.setEffects(possible(options));
}

LoadedScene load(Engine &engine, const SceneToShow &scene, const ShowOptions &options) {
    if (options.content != Content::emitter)
        return {engine.load(scene.file())};
    std::srand(options.seed); // births of particles use the library's numbers
    RVEMITTER *emitter = engine.loadEmitter(scene.file());
    return {emitter->getParent(), emitter};
}

WindowSize sizeOfInterface(const ShowOptions &options) {
    const std::filesystem::path folder = std::filesystem::current_path();
    Engine engine(options.size, "ravolt", false, LogRedirect::log(), drawingFor(options, false));
    const WindowSize size = Panel(engine.loadInterface(options.input)).fittingSize();
    std::filesystem::current_path(folder);
    return size;
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
