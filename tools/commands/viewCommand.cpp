// Opens one file after the other in one window, as the keys and the dropped files say. The first
// one must be shown; why a later one cannot be is a message in the window.

#include "tools/commands/command.h"
#include "tools/commands/show.h"
#include "tools/commands/viewFiles.h"
#include "tools/commands/viewLoop.h"
#include "tools/commands/viewModel.h"
#include "tools/commands/viewOthers.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/common/ranges.h"
#include "tools/process/display.h"
#include "tools/process/memoryShortage.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

std::string helpText() {
    return "Keys:\n" + printed(modelKeys()) + "Of every viewer:\n" +
           printed(rowsOf(ViewLoop::commonKeys())) + "On a terrain:\n" + printed(terrainKeys()) +
           "An interface is operated; the title names each event, and letters are typed.\n";
}

Ending show(ViewSession &session, ViewOptions &options) {
    switch (options.content) {
    case Content::terrain:
        return viewTerrain(session, options);
    case Content::interface:
        return viewInterface(session, options);
    default:
        return viewModel(session, options);
    }
}

// The options of another file: without those that belong to the first one alone.
ViewOptions optionsFor(const fs::path &file, const ViewOptions &first) {
    ViewOptions options = first;
    options.input = file;
    options.content = contentOf(file);
    options.clip.clear();
    options.eye.reset();
    options.target.reset();
    options.sizeIsGiven = true; // that of the window
    addFloorOfEmitters(options);
    return options;
}

// What the user has switched on a stage.
void storeSwitches(const ViewOptions &shown, ViewOptions &options) {
    if (shown.content != Content::model && shown.content != Content::scene)
        return;
    options.wireframe = shown.wireframe;
    options.normals = shown.normals;
    options.boxes = shown.boxes;
    options.spin = shown.spin;
    options.rig = shown.rig;
    options.effects.on = shown.effects.on;
}

// Another file in the window, or the reason why it cannot be shown.
Ending showNext(ViewSession &session, const fs::path &file, ViewOptions &common) {
    session.unload();
    session.text.setMessage("");
    try {
        ViewOptions options = optionsFor(file, common);
        const Ending ending = show(session, options);
        storeSwitches(options, common);
        return ending;
    } catch (const Failure &failure) {
        warn(failure.what(), common.verbosity);
        session.unload();
        ViewSession::setTitle(file);
        session.text.setMessage(failure.what());
        return EmptyViewer(session, file.filename().string()).run();
    }
}

// Goes to the file that the user has chosen; without one the same is opened again.
void choose(ViewFiles &files, ViewSession &session, Ending ending) {
    if (ending == Ending::dropped)
        files.take(session.dropped);
    else
        files.step(ending == Ending::previousFile);
}

void view(ViewOptions &options) {
    const LogAtEnd logged(options.verbosity);
    // The engine works in other folders.
    options.pictures = fs::current_path();
    ViewFiles files(options.input);
    ViewSession session(options.seconds);
    ViewOptions first = options;
    Ending ending = show(session, first);
    storeSwitches(first, options);
    while (ending != Ending::closed) {
        choose(files, session, ending);
        ending = showNext(session, files.current(), options);
    }
    const std::string words = MemoryShortage().next();
    if (!words.empty())
        warn("something was not shown, as the engine had no memory: " + words, options.verbosity);
}

} // namespace

std::function<void()> addView(CLI::App &app) {
    const auto options = std::make_shared<ViewOptions>();
    addShow(app, *options);
    app.add_flag("--spin", options->spin, "Turn by itself");
    app.add_option("--seconds", options->seconds, "End by itself after that time");
    app.footer(helpText());
    return [options, &app] {
        check(app, *options);
        requireWithin("--seconds", options->seconds, 0, 1e9);
        options->size = sizeFrom(options->sizeText);
        requireDisplay();
        contentFor(app, *options);
        view(*options);
    };
}

} // namespace ravolt::tool
