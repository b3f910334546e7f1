// The command `shot`: its options, the numbering of its pictures, and their drawing.

#include "tools/commands/command.h"
#include "tools/commands/scene.h"
#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/display.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"
#include "tools/stage/glow.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <regex>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// Pictures are numbered from 0, whichever frame is the first.
constexpr const char *videoHelp =
    "A video of a clip, of an even size:\n"
    "  ravolt shot MODEL --clip NAME --frames 0.. -o video_%04d.png\n"
    "  ffmpeg -framerate 30 -i video_%04d.png -pix_fmt yuv420p video.mp4\n";

struct ShotOptions : ShowOptions {
    fs::path output;          // "-" for standard output
    bool smooth = true;       // drawn twice as large
    int frame = 0;            // of the clip
    std::string frames = "1"; // a number above 1: a turn round the scene; FIRST..LAST: of the clip
    std::string sdlFolder;
};

void addOptions(CLI::App &app, ShotOptions &to) {
    addShow(app, to);
    app.add_option("-o,--output", to.output,
                   "The picture to write, a PNG file; - for standard output")
        ->required();
    app.add_option("--frames", to.frames,
                   "N: go once round the scene in N pictures, OUT_000.png and so on; "
                   "FIRST..LAST: these frames of the clip, or FIRST.. up to its end, as "
                   "OUT_0000.png and so on")
        ->capture_default_str();
    app.add_flag("!--no-smooth", to.smooth,
                 "Leave edges jagged: draw in the size of the picture, where otherwise it is "
                 "drawn twice as large, up to 4096 pixels and 2048 with effects of the whole "
                 "picture, and without lines");
    app.add_option("--frame", to.frame, "Frame of the clip, from 0")
        ->check(CLI::Range(0, 1023))
        ->capture_default_str();
    app.add_option("--sdl", to.sdlFolder,
                   "Folder of SDL 1.2's interface over SDL 2, which draws without a display "
                   "(looked for in /usr/lib)");
    app.footer(videoHelp);
}

constexpr int maxTarget = 4096; // which needs a gigabyte of video memory

constexpr int maxPictures = 10000;

// The pictures to draw.
struct Series {
    int pictures = 1;
    int firstFrame = 0;
    bool ofClip = false;   // or a turn round the scene
    bool toTheEnd = false; // of the clip, whose length is not known yet
    int digits = 3;        // of the number in file names that do not say
};

// A whole number from 0 to `maximum`; -1 for anything else.
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

// Inserts the number at "%d", "%4d" or "%04d" in the name, else before the extension. The name of a
// single picture without such a format is unchanged.
fs::path pictureFile(const fs::path &output, int picture, const Series &series) {
    std::string name = output.filename().string();
    static const std::regex format("%0?([1-9]?)d");
    std::smatch found;
    int digits = series.digits;
    std::size_t at = output.stem().string().size(), length = 0;
    std::string before = "_";
    if (std::regex_search(name, found, format)) {
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

// Adapts the series to the clip, whose length is known now.
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

void checkPicture(const fs::path &output) {
    requireName("--output", output);
    if (output == standardOutput)
        return;
    std::string ending = output.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending != ".png")
        throw WrongOptions("--output " + output.string() + ": expected a name that ends in .png");
}

bool usesTarget(const ShotOptions &options) {
    return effectsFrom(options.effects).needWholePicture() && !options.wireframe;
}

// Twice the size for a smooth picture, unless that is too large. Lines are one pixel wide, and
// would fade.
WindowSize sizeToDraw(const ShotOptions &options) {
    const WindowSize size = options.size;
    const bool lines = options.wireframe || options.normals || options.boxes;
    const int limit = (usesTarget(options) ? maxTarget : 2 * maxTarget) / 2;
    if (!options.smooth || lines || std::max(size.width, size.height) > limit)
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

void drawPictures(const ShotOptions &options) {
    const Verbosity &verbosity = options.verbosity;
    const fs::path output = outputOf(options);
    const SceneToShow scene(options, verbosity);
    const LogAtEnd logged(verbosity);
    WindowSize drawn = sizeToDraw(options);
    if (usesTarget(options) && std::max(options.size.width, options.size.height) > maxTarget)
        throw WrongOptions("--size " + std::to_string(options.size.width) + "x" +
                           std::to_string(options.size.height) +
                           ": with bloom, tone mapping or depth of field at most " +
                           std::to_string(maxTarget) + " pixels in each direction");
    const std::unique_ptr<Engine> engine = startEngine(options, verbosity, drawn);
    RVNODE *root = engine->load(scene.file());
    Stage stage(root);
    Playback playback(root, scene.clips(), scene.skins());
    Series series = seriesFrom(options);
    if (!options.clip.empty()) {
        playback.choose(scene.requestedClip());
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

} // namespace

std::function<void()> addShot(CLI::App &app) {
    const auto options = std::make_shared<ShotOptions>();
    addOptions(app, *options);
    return [options, &app] {
        check(app, *options);
        checkPicture(options->output);
        checkFrames(*options);
        options->size = sizeFrom(options->sizeText);
        requireDisplayOrOffscreen(options->sdlFolder, options->verbosity);
        drawPictures(*options);
    };
}

} // namespace ravolt::tool
