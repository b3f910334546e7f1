#include "tools/commands.h"
#include "tools/failure.h"
#include "tools/logRedirect.h"
#include "tools/message.h"
#include "tools/scene.h"
#include "tools/show.h"
#include "tools/signals.h"
#include "tools/stage/glow.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <regex>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr int largestWhole = 4096; // which takes a gigabyte of video memory

constexpr int maxPictures = 10000;

// What is drawn, one picture after the other.
struct Series {
    int pictures = 1;
    int firstFrame = 0;
    bool ofClip = false;   // or a turn round the scene
    bool toTheEnd = false; // of the clip, whose length is not known yet
    int digits = 3;        // of the number in file names that do not say
};

// A whole number from 0 to `most`; -1 for anything else.
int wholeNumber(const std::string &text, int maximum) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && number >= 0 && number <= maximum ? number : -1;
}

Series seriesFrom(const ShotOptions &options) {
    Series series;
    series.firstFrame = options.frame;
    const std::string &text = options.frames;
    const std::size_t dots = text.find("..");
    if (dots == std::string::npos) {
        series.pictures = wholeNumber(text, maxPictures);
        if (series.pictures < 1)
            throw WrongOptions("--frames " + text + ": expected a number from 1 to " +
                               std::to_string(maxPictures) + ", or FIRST..LAST");
        return series;
    }
    constexpr int lastFrame = static_cast<int>(ravolt::rvaFrames) - 1;
    const std::string last = text.substr(dots + 2);
    series.ofClip = true;
    series.digits = 4;
    series.toTheEnd = last.empty();
    series.firstFrame = wholeNumber(text.substr(0, dots), lastFrame);
    const int end = last.empty() ? lastFrame : wholeNumber(last, lastFrame);
    if (series.firstFrame < 0 || end < series.firstFrame)
        throw WrongOptions("--frames " + text + ": expected FIRST..LAST, from 0 to " +
                           std::to_string(lastFrame));
    series.pictures = end - series.firstFrame + 1;
    return series;
}

// Puts the number where the name has "%d", "%4d" or "%04d"; else in front of the ending. One
// picture alone keeps a name without such a place.
fs::path pictureFile(const fs::path &output, int picture, const Series &series) {
    std::string name = output.filename().string();
    static const std::regex place("%0?([1-9]?)d");
    std::smatch found;
    int digits = series.digits;
    std::size_t at = output.stem().string().size(), length = 0;
    std::string before = "_";
    if (std::regex_search(name, found, place)) {
        at = static_cast<std::size_t>(found.position());
        length = static_cast<std::size_t>(found.length());
        digits = found[1].length() ? std::stoi(found[1]) : 1;
        before.clear();
    } else if (series.pictures == 1) {
        return output;
    }
    char number[24];
    std::snprintf(number, sizeof number, "%0*d", digits, picture);
    return output.parent_path() / name.replace(at, length, before + number);
}

// Fits the series to the clip, now that its length is known.
void fit(Series &series, const ShotOptions &options, const Playback &playback) {
    const int frames = playback.frames();
    if (series.ofClip && series.toTheEnd)
        series.pictures = std::max(1, frames - series.firstFrame);
    const int last = series.firstFrame + (series.ofClip ? series.pictures : 1) - 1;
    if (last >= frames)
        throw WrongOptions((series.ofClip ? "--frames " + options.frames
                                          : "--frame " + std::to_string(options.frame)) +
                           ": the clip '" + playback.name() + "' has frames 0 to " +
                           std::to_string(frames - 1));
}

} // namespace

void checkFrames(const ShotOptions &options) {
    const Series series = seriesFrom(options);
    if (options.clip.empty() && (series.ofClip || options.frame > 0))
        throw WrongOptions("which clip? There is no --clip");
    if (series.ofClip && options.frame > 0)
        throw WrongOptions("--frame " + std::to_string(options.frame) + ": --frames " +
                           options.frames + " tells the frames already");
    if (options.output == standardOutput && (series.pictures > 1 || series.toTheEnd))
        throw WrongOptions("--output -: standard output takes one picture, not many");
}

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

namespace {

bool usesTarget(const ShotOptions &options) {
    return effectsFrom(options.effects).needWholePicture() && !options.wireframe;
}

// Twice the size for a smooth picture, but where that is too large. Lines are one pixel wide, and
// would fade.
WindowSize sizeToDraw(const ShotOptions &options) {
    const WindowSize size = options.size;
    const bool lines = options.wireframe || options.normals || options.boxes;
    const int largest = (usesTarget(options) ? largestWhole : 2 * largestWhole) / 2;
    if (!options.smooth || lines || std::max(size.width, size.height) > largest)
        return size;
    return {2 * size.width, 2 * size.height};
}

// Falls back to the plain size, in `drawn` too, where the display has no target of twice the size.
std::unique_ptr<Engine> startEngine(const ShotOptions &options, const Verbosity &verbosity,
                                    WindowSize &drawn) {
    Drawing drawing = drawingFor(options, false);
    drawing.useTarget = usesTarget(options);
    const auto start = [&] {
        drawing.picture = drawn;
        return std::make_unique<Engine>(windowFor(drawn), "ravolt", false, LogRedirect::log(),
                                        drawing);
    };
    try {
        return start();
    } catch (const PictureTooLarge &) {
        if (drawn.width == options.size.width)
            throw;
    }
    drawn = options.size;
    auto engine = start();
    warn("the display cannot draw effects at twice the size: drawn as with --no-smooth", verbosity);
    return engine;
}

// The engine works in another folder.
fs::path outputOf(const ShotOptions &options) {
    if (options.output == standardOutput)
        return options.output;
    fs::path output = fs::absolute(options.output);
    std::error_code error;
    if (!fs::is_directory(output.parent_path(), error))
        throw Failure(output.parent_path().string(), "no such folder");
    return output;
}

void save(const Picture &picture, const fs::path &file, const InputFiles &inputs) {
    if (file == standardOutput)
        return printPng(picture);
    if (inputs.contains(file))
        throw Failure(file.string(), "is a file that was read for the picture; name another one");
    writePng(picture, file);
}

} // namespace

void runShot(const ShotOptions &options, const Verbosity &verbosity) {
    const fs::path output = outputOf(options);
    const SceneToShow scene(options, verbosity);
    const LogAtEnd logged(verbosity);
    WindowSize drawn = sizeToDraw(options);
    if (usesTarget(options) && std::max(options.size.width, options.size.height) > largestWhole)
        throw WrongOptions("--size " + std::to_string(options.size.width) + "x" +
                           std::to_string(options.size.height) +
                           ": with bloom, tone mapping or depth of field at most " +
                           std::to_string(largestWhole) + " pixels in each direction");
    const std::unique_ptr<Engine> engine = startEngine(options, verbosity, drawn);
    RVNODE *root = engine->load(scene.file());
    Stage stage(root);
    Playback playback(root, scene.clips(), scene.skins());
    Series series = seriesFrom(options);
    if (!options.clip.empty()) {
        playback.choose(scene.wantedClip());
        warnOfMissingNodes(playback, verbosity);
        stage.setSphere(playback.sphere());
        fit(series, options, playback);
        playback.setFrame(series.firstFrame);
    }
    arrange(stage, options, verbosity);
    removeBrokenTextures(verbosity);
    makeGlow(stage, options);
    settle(stage);
    const double start = stage.getYaw();
    bool something = false;
    {
        Progress progress(!verbosity.quiet && series.pictures > 1);
        progress.step("drawing", 0, 1);
        for (int i = 0; i < series.pictures; ++i) {
            throwIfInterrupted();
            if (series.ofClip)
                playback.setFrame(series.firstFrame + i);
            else
                stage.setYaw(start + 360.0 * i / series.pictures);
            Picture picture = shoot(stage, drawn);
            if (drawn.width > options.size.width)
                picture = halved(picture);
            something = something || showsSomething(picture);
            save(picture, pictureFile(output, i, series), scene.inputs());
            progress.update(static_cast<double>(i + 1) / series.pictures);
        }
    }
    if (!something)
        warn("nothing is seen from here; try --two-sided or --yaw", verbosity);
}

} // namespace ravolt::tool
