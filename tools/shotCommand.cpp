#include "tools/commands.h"
#include "tools/failure.h"
#include "tools/quietStart.h"
#include "tools/scene.h"
#include "tools/show.h"
#include "tools/stage/picture.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

fs::path frameFile(const fs::path &output, int frame, int frames) {
    if (frames == 1)
        return output;
    char number[24];
    std::snprintf(number, sizeof number, "_%03d", frame);
    return output.parent_path() / (output.stem().string() + number + output.extension().string());
}

} // namespace

void arrange(Stage &stage, const ShowOptions &options) {
    if (options.rig < 0 || options.rig >= stage.numberOfRigs())
        throw Failure("no light rig " + std::to_string(options.rig) + ": there are 0 to " +
                      std::to_string(stage.numberOfRigs() - 1));
    stage.setRig(options.rig);
    stage.setYaw(options.yaw);
    stage.setPitch(options.pitch);
    stage.setZoom(options.zoom);
    stage.setWireframe(options.wireframe);
    stage.setNormals(options.normals);
    stage.setBoxes(options.boxes);
}

void sayLog(const Talk &talk) {
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
    Engine engine(options.size, "ravolt", false, QuietStart::log());
    Stage stage(engine.load(scene.file()));
    arrange(stage, options);
    {
        Progress progress(!talk.quiet && options.frames > 1);
        progress.step("drawing", 0, 1);
        for (int frame = 0; frame < options.frames; ++frame) {
            stage.setYaw(options.yaw + 360.0 * frame / options.frames);
            stage.draw();
            writePng(takePicture(), frameFile(output, frame, options.frames));
            RAVOLT::swap();
            progress.update(static_cast<double>(frame + 1) / options.frames);
        }
    }
    sayLog(talk);
}

} // namespace ravolt::tool
