// The command `shot`: its options, the numbering of its pictures, and their drawing.

#include "tools/commands/command.h"
#include "tools/commands/scene.h"
#include "tools/commands/shotEngine.h"
#include "tools/commands/shotOptions.h"
#include "tools/commands/shotOthers.h"
#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/display.h"
#include "tools/process/signals.h"
#include "tools/stage/glow.h"
#include "tools/stage/particles.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <memory>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// Pictures are numbered from 0, whichever frame is the first.
constexpr const char *videoHelp =
    "A video of a clip, of an even size:\n"
    "  ravolt shot MODEL --clip NAME --frames 0.. -o video_%04d.png\n"
    "  ffmpeg -framerate 30 -i video_%04d.png -pix_fmt yuv420p video.mp4\n";

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
    app.add_option("--warm-up", to.warmUp,
                   "Seconds that an emitter runs before the first picture, 0 to 600 (until all of "
                   "it is seen)")
        ->check(CLI::Range(0.0, 600.0));
    app.add_option("--seed", to.seed, "Another number gives an emitter other particles")
        ->capture_default_str();
    app.add_option("--sdl", to.sdlFolder,
                   "Folder of SDL 1.2's interface over SDL 2, which draws without a display "
                   "(looked for in /usr/lib)");
    app.footer(videoHelp);
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

std::unique_ptr<Engine> startForStage(const ShotOptions &options, WindowSize &drawn) {
    Drawing drawing = drawingFor(options, options.content == Content::emitter);
    drawing.useTarget = usesTarget(options);
    return startEngine(
        options, drawing, drawn,
        "the display cannot draw effects at twice the size: drawn as with --no-smooth");
}

void drawOnStage(const ShotOptions &options) {
    const Verbosity &verbosity = options.verbosity;
    const fs::path output = outputOf(options);
    const SceneToShow scene(options, verbosity);
    const LogAtEnd logged(verbosity);
    WindowSize drawn = sizeToDraw(options);
    if (usesTarget(options))
        requireTarget(options, "with bloom, tone mapping or depth of field ");
    const std::unique_ptr<Engine> engine = startForStage(options, drawn);
    const LoadedScene loaded = load(*engine, scene, options);
    Stage stage(loaded.root);
    if (loaded.emitter)
        stage.setSphere(sphereAround(*loaded.emitter));
    Playback playback(loaded.root, scene.clips(), scene.skins());
    Series series = seriesFrom(options);
    if (!options.clip.empty()) {
        playback.choose(scene.requestedClip());
        warnOfMissingNodes(playback, verbosity);
        stage.setSphere(playback.sphere());
        fit(series, options, playback);
        playback.setFrame(series.firstFrame);
    }
    arrange(stage, options);
    removeBrokenTextures(verbosity);
    makeGlow(stage, options);
    settle(stage);
    if (loaded.emitter)
        moveParticles(stage, options.warmUp.value_or(fullAfter(*loaded.emitter)));
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

void drawPictures(const ShotOptions &options, Content content) {
    if (content == Content::terrain)
        return shootTerrain(options);
    if (content == Content::interface)
        return shootInterface(options);
    drawOnStage(options);
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
        drawPictures(*options, contentFor(app, *options));
    };
}

} // namespace ravolt::tool
