// Terrains and interfaces are drawn into a target, as a whole.

#include "tools/commands/shotOthers.h"

#include "tools/commands/shotEngine.h"
#include "tools/commands/shotOptions.h"
#include "tools/commands/show.h"
#include "tools/common/progress.h"
#include "tools/process/signals.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"

#include <algorithm>
#include <memory>
#include <numbers>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr float frameSeconds = 1 / 30.0f; // of waves

Vector turnedAbout(const Vector &center, const Vector &point, double turns) {
    const double angle = 2 * std::numbers::pi * turns;
    const Vector arm = point - center;
    return center + Vector(arm.x * std::cos(angle) + arm.z * std::sin(angle), arm.y,
                           arm.z * std::cos(angle) - arm.x * std::sin(angle));
}

// In a target the picture is drawn as a whole, and with effects that need it.
std::unique_ptr<Engine> startForTarget(const ShotOptions &options, WindowSize &drawn) {
    Drawing drawing = drawingFor(options, true);
    drawing.useTarget = true;
    return startEngine(options, drawing, drawn,
                       "the display cannot draw at twice the size: drawn as with --no-smooth");
}

} // namespace

void shootTerrain(const ShotOptions &options) {
    const fs::path output = outputOf(options);
    const TerrainFiles files = findTerrain(options.input);
    InputFiles inputs;
    inputs.add(files.config);
    inputs.add(files.geometry);
    const LogAtEnd logged(options.verbosity);
    WindowSize drawn = options.size;
    const bool smooth = options.smooth && !options.wireframe && !options.boxes;
    if (smooth && std::max(drawn.width, drawn.height) <= maxTarget / 2)
        drawn = {2 * drawn.width, 2 * drawn.height};
    requireTarget(options);
    const std::unique_ptr<Engine> engine = startForTarget(options, drawn);
    RAVOLT::setFrameDuration(frameSeconds);
    Landscape landscape(*engine, files);
    arrange(landscape, options);
    removeBrokenTextures(options.verbosity);
    settle(landscape);
    if (options.boxes) // whose colours are those of the levels of the frame before
        landscape.draw();
    const Series series = seriesFrom(options);
    const Vector eye = landscape.getEye(), target = landscape.getTarget();
    Progress progress(!options.verbosity.quiet && series.pictures > 1);
    progress.step("drawing", 0, 1);
    for (int i = 0; i < series.pictures; ++i) {
        throwIfInterrupted();
        landscape.setEye(turnedAbout(target, eye, static_cast<double>(i) / series.pictures));
        Picture picture = shoot(landscape, drawn);
        if (drawn.width > options.size.width)
            picture = halved(picture);
        save(picture, pictureFile(output, i, series), inputs);
        progress.update(static_cast<double>(i + 1) / series.pictures);
    }
}

void shootInterface(const ShotOptions &options) {
    const fs::path output = outputOf(options);
    InputFiles inputs;
    inputs.add(options.input);
    const LogAtEnd logged(options.verbosity);
    ShotOptions fitting = options;
    WindowSize drawn = fitting.size;
    if (!options.sizeIsGiven)
        drawn = fitting.size = sizeOfInterface(fitting);
    requireTarget(fitting);
    const std::unique_ptr<Engine> engine = startForTarget(fitting, drawn);
    RAVOLT::setFrameDuration(frameSeconds);
    Panel panel(engine->loadInterface(fitting.input));
    removeBrokenTextures(options.verbosity);
    save(shoot(panel, drawn), pictureFile(output, 0, {}), inputs);
}

} // namespace ravolt::tool
