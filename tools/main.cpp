// The command line of the content tool. Exit codes: 0 done, 1 the job failed, 2 the command line
// makes no sense, 128 + N a signal has ended it.

#include "tools/commands.h"
#include "tools/convert/clips.h"
#include "tools/display.h"
#include "tools/failure.h"
#include "tools/logRedirect.h"
#include "tools/message.h"
#include "tools/ranges.h"
#include "tools/signals.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>
#include <new>

namespace {

using namespace ravolt::tool;

// A name with a number in it is counted on from 0, whichever frame comes first.
constexpr const char *videoHelp =
    "A video of a clip, of an even size:\n"
    "  ravolt shot MODEL --clip NAME --frames 0.. -o video_%04d.png\n"
    "  ffmpeg -framerate 30 -i video_%04d.png -pix_fmt yuv420p video.mp4\n";

constexpr const char *exitCodes = "Exit codes: 0 done, 1 the job failed, 2 wrong options, "
                                  "128 + N ended by signal N.";

struct Options {
    ConvertOptions convert;
    ShotOptions shot;
    ViewOptions view;
    Limits limits;
    Verbosity verbosity;
    std::string size = "960x640";
    std::string sdlFolder;
};

WindowSize sizeFrom(const std::string &text) {
    WindowSize size;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &size.width, &size.height, &rest) != 2 ||
        size.width < 1 || size.height < 1 || size.width > 8192 || size.height > 8192)
        throw WrongOptions("--size " + text + ": expected WIDTHxHEIGHT, each from 1 to 8192");
    return size;
}

void requireName(const char *what, const std::filesystem::path &name) {
    if (name.empty())
        throw WrongOptions(std::string(what) + ": the name is empty");
}

void check(const ConvertOptions &options) {
    requireName("MODEL", options.model);
    requireName("--output", options.scene);
    if (options.scene == standardOutput)
        throw WrongOptions("--output -: a scene has files beside it, so it cannot go to standard "
                           "output; name a file");
    requireWithin("--scale", options.scale, 1e-30, 1e30);
    requireWithin("--fps", options.fps, minFps, maxFps);
}

void check(const CLI::App &command, const ShowOptions &options) {
    requireName("SCENE", options.input);
    if (command.count("--clip"))
        requireName("--clip", options.clip);
    requireWithin("--rig", options.rig, 0, 4);
    requireWithin("--yaw", options.yaw.value_or(0), -36000, 36000);
    requireWithin("--pitch", options.pitch.value_or(0), -89, 89);
    requireWithin("--zoom", options.zoom, 0.05, 50);
    requireWithin("--fps", options.fps, minFps, maxFps);
    check(options.effects);
}

void checkPicture(const std::filesystem::path &output) {
    requireName("--output", output);
    if (output == standardOutput)
        return;
    std::string ending = output.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending != ".png")
        throw WrongOptions("--output " + output.string() + ": expected a name that ends in .png");
}

// CLI11 complains of a missing command only.
void checkCommand(const CLI::App &app, const std::string &word) {
    const auto all = app.get_subcommands([](const CLI::App *) { return true; });
    const bool known = std::any_of(all.begin(), all.end(), [&](const CLI::App *command) {
        return command->get_name() == word;
    });
    if (!known && (word.empty() || word[0] != '-'))
        throw WrongOptions("no command '" + word + "': there are convert, view and shot");
}

// CLI11's own words, and where to look.
std::string complaintOf(const CLI::App &app, const CLI::ParseError &error) {
    std::string command = "ravolt";
    for (const CLI::App *parsed : app.get_subcommands())
        command += " " + parsed->get_name();
    return std::string(error.what()) + " (see " + command + " --help)";
}

void addVerbosity(CLI::App &command, Options &options) {
    CLI::Option *quiet =
        command.add_flag("-q,--quiet", options.verbosity.quiet, "Say nothing but errors");
    command
        .add_flag("-v,--verbose", options.verbosity.verbose, "Say everything, the engine's log too")
        ->excludes(quiet);
}

void addAlpha(CLI::App &command, AlphaUse &to) {
    static const std::map<std::string, AlphaUse> words = {{"auto", AlphaUse::picture},
                                                          {"opaque", AlphaUse::opaque},
                                                          {"cutout", AlphaUse::cutout},
                                                          {"blend", AlphaUse::blended}};
    command
        .add_option("--alpha", to,
                    "What the alpha of a texture does where the model does not say: opaque, cutout "
                    "or blend; auto looks at the pixels (auto)")
        ->transform(CLI::CheckedTransformer(words))
        ->type_name("WORD");
}

// What may be read for a model, and where its textures are looked for.
void addSources(CLI::App &command, SourceOptions &to) {
    command
        .add_option("--textures", to.textureFolders,
                    "A folder where textures are looked for too; may be stated again")
        ->type_name("DIR")
        ->take_all()
        ->expected(1);
    command.add_flag("--follow", to.follow,
                     "Open files wherever the model names them: for models that you trust");
}

void addLimits(CLI::App &command, Limits &to) {
    command.add_option("--max-memory", to.megabytes, "Megabytes that reading a model may take")
        ->check(CLI::Range(16u, 1u << 20))
        ->capture_default_str();
    command.add_option("--max-time", to.seconds, "Seconds of processor time that it may take")
        ->check(CLI::Range(1u, 1000000u))
        ->capture_default_str();
}

CLI::App *addConvert(CLI::App &app, Options &options) {
    CLI::App *command = app.add_subcommand(
        "convert", "Make a scene file (RVE), with textures (TGA) and clips (RVA), of a model");
    ConvertOptions &to = options.convert;
    command->add_option("MODEL", to.model, "Any model that assimp reads: glTF, FBX, OBJ, ...")
        ->required();
    command
        ->add_option("-o,--output", to.scene,
                     "The scene file; textures and clips (SCENE.CLIP.rva) go beside it")
        ->required();
    addSources(*command, to.sources);
    command->add_flag("--normal-maps", to.normalMaps, "Write normal maps too, as NAME_n.tga");
    addAlpha(*command, to.alpha);
    command->add_flag("--two-sided", to.twoSided, "Make every surface visible from behind too");
    command->add_option("--max-texture", to.largestTexture, "Longest side of a texture in pixels")
        ->check(CLI::Range(1u, 4096u))
        ->capture_default_str();
    command->add_option("--scale", to.scale, "Factor for all lengths")->capture_default_str();
    command
        ->add_option("--fps", to.fps,
                     "Frames of a clip in a second, 0.1 to 1000; a clip has at most 1024")
        ->capture_default_str();
    command->add_option("--prefix", to.prefix,
                        "Put in front of the names of materials and textures; the engine shares "
                        "materials of the same name between scenes");
    addLimits(*command, options.limits);
    addVerbosity(*command, options);
    command->footer(exitCodes);
    return command;
}

void addShow(CLI::App &command, Options &options, ShowOptions &to) {
    command.add_option("SCENE", to.input, "A scene file, or a model, which is converted first")
        ->required();
    command
        .add_option("--size", options.size,
                    "Size of the picture in pixels, WIDTHxHEIGHT, each up to 8192")
        ->capture_default_str();
    std::string rigs = "Lights:";
    for (int i = 0; i < 5; ++i)
        rigs += (i ? ", " : " ") + std::to_string(i) + " " + Stage::rigName(i);
    command.add_option("--rig", to.rig, rigs)->capture_default_str();
    command.add_option("--yaw", to.yaw,
                       "Degrees round the scene (30, or before what faces away from there)");
    command.add_option("--pitch", to.pitch, "Degrees above it, -89 to 89 (20)");
    command.add_option("--zoom", to.zoom, "1 shows the whole scene, 2 half of it; from 0.05 to 50")
        ->capture_default_str();
    command.add_flag("--wireframe", to.wireframe,
                     "Show lines only, without bloom and depth of field");
    command.add_flag("--two-sided", to.twoSided,
                     "Show a model's surfaces from behind too; no effect on a scene file");
    addAlpha(command, to.alpha);
    addSources(command, to.sources);
    command.add_flag("--normals", to.normals, "Show normals, one unit long");
    command.add_flag("--boxes", to.boxes, "Show bounding boxes");
    command.add_option("--clip", to.clip,
                       "Show this clip: the CLIP of a file SCENE.CLIP.rva beside the scene, that "
                       "of an animation of the model, or any RVA file");
    command
        .add_option("--fps", to.fps,
                    "Frames of a model's clips in a second, 0.1 to 1000; a clip has at most 1024")
        ->capture_default_str();
    addEffects(command, to.effects);
    addLimits(command, to.limits);
    addVerbosity(command, options);
}

CLI::App *addView(CLI::App &app, Options &options) {
    CLI::App *command = app.add_subcommand("view", "Show a scene or a model in a window");
    addShow(*command, options, options.view);
    command->add_flag("--spin", options.view.spin, "Turn by itself");
    command->add_option("--seconds", options.view.seconds, "End by itself after that time");
    command->footer(viewKeys() + exitCodes);
    return command;
}

CLI::App *addShot(CLI::App &app, Options &options) {
    CLI::App *command =
        app.add_subcommand("shot", "Draw pictures of a scene or a model, without a display too");
    addShow(*command, options, options.shot);
    command
        ->add_option("-o,--output", options.shot.output,
                     "The picture to write, a PNG file; - for standard output")
        ->required();
    command
        ->add_option("--frames", options.shot.frames,
                     "N: go once round the scene in N pictures, OUT_000.png and so on; "
                     "FIRST..LAST: these frames of the clip, or FIRST.. up to its end, as "
                     "OUT_0000.png and so on")
        ->capture_default_str();
    command->add_flag("!--no-smooth", options.shot.smooth,
                      "Leave edges jagged: draw in the size of the picture, where otherwise it is "
                      "drawn twice as large, up to 4096 pixels and 2048 with effects of the whole "
                      "picture, and without lines");
    command->add_option("--frame", options.shot.frame, "Frame of the clip, from 0")
        ->check(CLI::Range(0, 1023))
        ->capture_default_str();
    command->add_option("--sdl", options.sdlFolder,
                        "Folder of SDL 1.2's interface over SDL 2, which draws without a display "
                        "(looked for in /usr/lib)");
    command->footer(videoHelp + std::string(exitCodes));
    return command;
}

int run(int argc, char **argv) {
    CLI::App app("Makes and shows scenes of the Ravolt engine.", "ravolt");
    Options options;
    app.require_subcommand(1);
    app.set_version_flag("--version", "ravolt " RAVOLT_TOOL_VERSION);
    app.footer(std::string("ravolt COMMAND --help tells the options of a command.\n") + exitCodes);
    CLI::App *convert = addConvert(app, options);
    CLI::App *view = addView(app, options);
    CLI::App *shot = addShot(app, options);
    if (argc < 2) {
        std::fputs(app.help().c_str(), stdout);
        return 2;
    }
    checkCommand(app, argv[1]);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // the help, or the version
        throw WrongOptions(complaintOf(app, error));
    }

    if (convert->parsed()) {
        check(options.convert);
        LogRedirect::clear(); // no engine, so nothing to log
        runConvert(options.convert, options.limits, options.verbosity);
    } else if (view->parsed()) {
        check(*view, options.view);
        requireWithin("--seconds", options.view.seconds, 0, 1e9);
        options.view.size = sizeFrom(options.size);
        requireDisplay();
        runView(options.view, options.verbosity);
    } else if (shot->parsed()) {
        check(*shot, options.shot);
        checkPicture(options.shot.output);
        checkFrames(options.shot);
        options.shot.size = sizeFrom(options.size);
        requireDisplayOrOffscreen(argv, options.sdlFolder, options.verbosity);
        runShot(options.shot, options.verbosity);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    const LogRedirect quiet;
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc &) {
        sayError("out of memory");
    } catch (const Interrupted &end) {
        return 128 + end.signal();
    } catch (const WrongOptions &error) {
        sayError(error.what());
        return 2;
    } catch (const std::exception &error) {
        if (receivedSignal()) // which has cut short what failed
            return 128 + receivedSignal();
        sayError(error.what());
    }
    return 1;
}
