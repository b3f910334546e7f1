#include "tools/commands.h"
#include "tools/failure.h"
#include "tools/quietStart.h"
#include "tools/scene.h"
#include "tools/show.h"
#include "tools/stage/picture.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr int largestWhole = 4096; // which takes a gigabyte of the card

fs::path frameFile(const fs::path &output, int frame, int frames) {
    if (frames == 1)
        return output;
    char number[24];
    std::snprintf(number, sizeof number, "_%03d", frame);
    return output.parent_path() / (output.stem().string() + number + output.extension().string());
}

} // namespace

Drawing drawingFor(const ShowOptions &options, bool programs) {
    Drawing drawing;
    drawing.programs = programs || effectsFrom(options.effects).needPrograms();
    drawing.shadowMap = options.effects.shadowMap.value_or(usualShadowMap);
    drawing.picture = options.size;
    return drawing;
}

void arrange(Stage &stage, const ShowOptions &options, const Talk &talk) {
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
    const std::string lacking = effects.leaveOutImpossible();
    if (!lacking.empty())
        warn("this display cannot do " + lacking + ": drawn without", talk);
    stage.setEffects(effects);
}

void warn(const std::string &line, const Talk &talk) {
    if (!talk.quiet)
        std::fprintf(stderr, "ravolt: warning: %s\n", line.c_str());
}

void warnOfMissingTextures(const Talk &talk) {
    for (const std::string &file : Engine::missingFiles(QuietStart::log()))
        warn("texture " + file + " cannot be opened", talk);
}

LogAtEnd::~LogAtEnd() {
    if (!talk.verbose)
        return;
    std::ifstream log(QuietStart::log());
    std::cerr << log.rdbuf();
}

void runShot(const ShotOptions &options, const Talk &talk) {
    const fs::path output = fs::absolute(options.output); // the engine works in another folder
    std::error_code error;
    if (!fs::is_directory(output.parent_path(), error))
        throw Failure(output.parent_path().string(), "no such folder");

    const SceneToShow scene(options, talk);
    const LogAtEnd logged(talk);
    Drawing drawing = drawingFor(options, false);
    drawing.keepPicture = effectsFrom(options.effects).needWholePicture() && !options.wireframe;
    if (drawing.keepPicture && std::max(options.size.width, options.size.height) > largestWhole)
        throw WrongOptions("--size " + std::to_string(options.size.width) + "x" +
                           std::to_string(options.size.height) +
                           ": with bloom, tone mapping or depth of field at most " +
                           std::to_string(largestWhole) + " pixels in each direction");
    Engine engine(windowFor(options.size), "ravolt", false, QuietStart::log(), drawing);
    Stage stage(engine.load(scene.file()));
    arrange(stage, options, talk);
    warnOfMissingTextures(talk);
    settle(stage);
    const double start = stage.getYaw();
    bool something = false;
    {
        Progress progress(!talk.quiet && options.frames > 1);
        progress.step("drawing", 0, 1);
        for (int frame = 0; frame < options.frames; ++frame) {
            stage.setYaw(start + 360.0 * frame / options.frames);
            const Picture picture = shoot(stage, options.size);
            something = something || showsSomething(picture);
            writePng(picture, frameFile(output, frame, options.frames));
            progress.update(static_cast<double>(frame + 1) / options.frames);
        }
    }
    if (!something)
        warn("nothing is seen from here; try --two-sided or --yaw", talk);
}

} // namespace ravolt::tool
