// Terrains and interfaces are drawn into a target, as a whole, and with effects that need it.

#include "tools/commands/shotOthers.h"

#include "tools/commands/shotEngine.h"
#include "tools/commands/shotOptions.h"
#include "tools/commands/shotSeries.h"
#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace {

Vector turnedAbout(const Vector &center, const Vector &point, double turns) {
    const double angle = 2 * std::numbers::pi * turns;
    const Vector arm = point - center;
    return center + Vector(arm.x * std::cos(angle) + arm.z * std::sin(angle), arm.y,
                           arm.z * std::cos(angle) - arm.x * std::sin(angle));
}

} // namespace

void shootTerrain(const ShotOptions &options) {
    const std::filesystem::path output = outputOf(options);
    const TerrainFiles files = findTerrain(options.input);
    InputFiles inputs;
    inputs.add(files.config);
    inputs.add(files.geometry);
    const LogAtEnd logged(options.verbosity);
    requireTarget(options);
    WindowSize drawn = sizeToDraw(options, maxTarget);
    const std::unique_ptr<Engine> engine = startEngine(options, true, true, drawn);
    RAVOLT::setFrameDuration(static_cast<float>(frameStep));
    Landscape landscape(*engine, files);
    arrange(landscape, options);
    removeBrokenTextures(options.verbosity);
    settle(landscape);
    if (options.boxes) // whose colours are those of the levels of the frame before
        landscape.draw();
    const Series series = seriesFrom(options);
    const Vector eye = landscape.getEye(), target = landscape.getTarget();
    const auto pose = [&](int frame) {
        const double turns = series.turn ? static_cast<double>(frame) / series.turn : 0;
        landscape.setEye(turnedAbout(target, eye, turns));
    };
    drawSeries(options, output, series, {landscape, drawn, pose, true},
               inputs); // waves have a clock
}

void shootInterface(const ShotOptions &options) {
    const std::filesystem::path output = outputOf(options);
    const Series series = seriesFrom(options);
    if (!series.ofVideo && series.pictures > 1)
        throw WrongOptions("--frames " + options.frames +
                           ": an interface is flat; state FIRST..LAST");
    InputFiles inputs;
    inputs.add(options.input);
    const LogAtEnd logged(options.verbosity);
    ShotOptions fitting = options;
    WindowSize drawn = fitting.size;
    if (!options.sizeIsGiven)
        drawn = fitting.size = sizeOfInterface(fitting);
    requireTarget(fitting);
    const std::unique_ptr<Engine> engine = startEngine(fitting, true, true, drawn);
    RAVOLT::setFrameDuration(static_cast<float>(frameStep));
    Panel panel(engine->loadInterface(fitting.input));
    removeBrokenTextures(options.verbosity);
    drawSeries(fitting, output, series, {panel, drawn, [](int) {}, true}, inputs);
}

} // namespace ravolt::tool
