// The command line of the content tool. Exit codes: 0 done, 1 the job failed, 2 the command line
// makes no sense, 128 + N a signal has ended it.

#include "tools/commands/command.h"
#include "tools/commands/documents.h"
#include "tools/common/failure.h"
#include "tools/process/exitCode.h"
#include "tools/process/logRedirect.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>

namespace {

using namespace ravolt::tool;

constexpr std::array commands = {
    Command{"convert", "Make a scene file (RVE), with textures (TGA) and clips (RVA), of a model",
            addConvert},
    Command{"view", "Show a scene, a model or an emitter in a window", addView},
    Command{"shot", "Draw pictures of these, terrains and interfaces, without a display too",
            addShot},
    Command{"terrain", "Make a terrain with its textures, water and sky of a map of heights",
            addTerrain},
    Command{"font", "Make the texture and the kerning file of a font", addFont},
    Command{"info", "Print what a file of the engine holds, without OpenGL", addInfo},
    Command{"check", "Find what is wrong with files of the engine, without OpenGL", addCheck},
};

constexpr const char *exitCodes = "Exit codes: 0 done, 1 the job failed, 2 wrong options, "
                                  "128 + N ended by signal N.";

// "convert, view and shot".
std::string commandNames() {
    std::string text;
    for (std::size_t i = 0; i < commands.size(); ++i)
        text += (i == 0                    ? ""
                 : i + 1 < commands.size() ? ", "
                                           : " and ") +
                std::string(commands[i].name);
    return text;
}

// CLI11 complains of a missing command only.
void checkCommand(const std::string &word) {
    const bool known = std::any_of(commands.begin(), commands.end(),
                                   [&](const Command &command) { return word == command.name; });
    if (!known && (word.empty() || word[0] != '-'))
        throw WrongOptions("no command '" + word + "': there are " + commandNames());
}

// CLI11's own words, and where to look.
std::string complaintOf(const CLI::App &app, const CLI::ParseError &error) {
    std::string command = "ravolt";
    for (const CLI::App *parsed : app.get_subcommands())
        command += " " + parsed->get_name();
    return std::string(error.what()) + " (see " + command + " --help)";
}

// What runs the command when its options are parsed.
std::function<void()> addCommand(CLI::App &app, const Command &command) {
    CLI::App *own = app.add_subcommand(command.name, command.description);
    std::function<void()> job = command.add(*own);
    own->footer(own->get_footer() + exitCodes);
    return job;
}

int run(int argc, char **argv) {
    CLI::App app("Makes and shows scenes of the Ravolt engine.", "ravolt");
    app.require_subcommand(1);
    app.set_version_flag("--version", "ravolt " RAVOLT_TOOL_VERSION);
    std::array<std::function<void()>, commands.size()> jobs;
    for (std::size_t i = 0; i < commands.size(); ++i)
        jobs[i] = addCommand(app, commands[i]);
    app.footer(std::string("ravolt COMMAND --help tells the options of a command.\n") + exitCodes);
    if (argc < 2) {
        std::fputs(app.help().c_str(), stdout);
        return 2;
    }
    if (argc == 3 &&
        argv[1] == std::string("--write-documents")) { // for the build, not in the help
        writeDocuments(app, argv[2]);
        return 0;
    }
    checkCommand(argv[1]);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // the help, or the version
        throw WrongOptions(complaintOf(app, error));
    }
    for (std::size_t i = 0; i < commands.size(); ++i)
        if (app.got_subcommand(commands[i].name))
            jobs[i]();
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    endOrderlyWithoutMemory();
    const LogRedirect quiet;
    return exitCodeOf([=] { return run(argc, argv); });
}
