// The command `shot`: its options, the numbering of its pictures, and their drawing.

#include "tools/commands/command.h"
#include "tools/commands/scene.h"
#include "tools/commands/shotEngine.h"
#include "tools/commands/shotOptions.h"
#include "tools/commands/shotOthers.h"
#include "tools/commands/shotSeries.h"
#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/display.h"
#include "tools/stage/glow.h"
#include "tools/stage/particles.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <memory>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// Pictures are numbered from --start-number, whichever frame is the first.
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
                   "FIRST..LAST: these frames, from 0, of a video, or of the clip, there also "
                   "FIRST.. up to its end, as OUT_0000.png and so on; a frame is the same picture "
                   "in every run that draws it")
        ->capture_default_str();
    app.add_option("--turn", to.turn,
                   "With --frames FIRST..LAST: go once round the scene in so many frames")
        ->check(CLI::Range(1, 100000));
    app.add_option("--start-number", to.startNumber, "Number of the first picture")
        ->check(CLI::Range(0, 99999))
        ->capture_default_str();
    CLI::Option *samples =
        app.add_option("--samples", to.samples,
                       "Samples of a pixel, 1, 4, 9 or 16, for smooth edges: the picture is drawn "
                       "that many times as large, up to 8192 pixels in a direction and 4096 with "
                       "effects of the whole picture or of a terrain (4, and 1 with lines)")
            ->check(CLI::IsMember({1, 4, 9, 16}));
    app.add_flag_callback(
           "--no-smooth", [&to] { to.samples = 1; }, "The same as --samples 1")
        ->excludes(samples);
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
    if (series.ofVideo && series.toTheEnd)
        series.pictures = std::max(1, frames - series.first);
    const int last = series.ofVideo ? series.first + series.pictures - 1 : options.frame;
    if (last >= frames)
        throw WrongOptions((series.ofVideo ? "--frames " + options.frames
                                           : "--frame " + std::to_string(options.frame)) +
                           ": the clip '" + playback.name() + "' has frames 0 to " +
                           std::to_string(frames - 1));
}

void checkFrames(const ShotOptions &options) {
    const Series series = seriesFrom(options);
    if (options.clip.empty() && options.frame > 0)
        throw WrongOptions("which clip? There is no --clip");
    if (options.clip.empty() && series.toTheEnd)
        throw WrongOptions("--frames " + options.frames + ": only a clip has an end");
    if (series.ofVideo && options.frame > 0)
        throw WrongOptions("--frame " + std::to_string(options.frame) + ": --frames " +
                           options.frames + " tells the frames already");
    if (options.turn && !series.ofVideo)
        throw WrongOptions("--turn " + std::to_string(*options.turn) +
                           ": only with --frames FIRST..LAST");
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

void drawOnStage(const ShotOptions &options) {
    const Verbosity &verbosity = options.verbosity;
    const fs::path output = outputOf(options);
    const SceneToShow scene(options, verbosity);
    const LogAtEnd logged(verbosity);
    if (usesTarget(options))
        requireTarget(options, "with bloom, tone mapping or depth of field ");
    WindowSize drawn = sizeToDraw(options, usesTarget(options) ? maxTarget : 2 * maxTarget);
    const std::unique_ptr<Engine> engine =
        startEngine(options, options.content == Content::emitter, usesTarget(options), drawn);
    const bool ofClip = !options.clip.empty();
    RAVOLT::setFrameDuration(static_cast<float>(ofClip ? 1 / options.fps : frameStep));
    const LoadedScene loaded = load(*engine, scene, options);
    Stage stage(loaded.root);
    if (loaded.emitter)
        stage.setSphere(sphereAround(*loaded.emitter));
    Playback playback(loaded.root, scene.clips(), scene.skins());
    Series series = seriesFrom(options);
    if (ofClip) {
        playback.choose(scene.requestedClip());
        warnOfMissingNodes(playback, verbosity);
        stage.setSphere(playback.sphere());
        fit(series, options, playback);
        playback.setFrame(series.ofVideo ? 0 : options.frame);
    }
    arrange(stage, options);
    removeBrokenTextures(verbosity);
    makeGlow(stage, options);
    settle(stage);
    if (loaded.emitter)
        moveParticles(stage, options.warmUp.value_or(fullAfter(*loaded.emitter)));
    const double start = stage.getYaw();
    const auto pose = [&](int frame) {
        if (series.ofVideo && loaded.emitter && frame > 0)
            moveParticles(stage, frameStep);
        if (series.ofVideo && ofClip)
            playback.setFrame(frame);
        if (series.turn)
            stage.setYaw(start + 360.0 * frame / series.turn);
    };
    const bool dependsOnEarlier = loaded.emitter || stage.getEffects().isOn(Effect::toneMapping);
    if (!drawSeries(options, output, series, {stage, drawn, pose, dependsOnEarlier},
                    scene.inputs()))
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
