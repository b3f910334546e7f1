#pragma once

// A command of the tool is a row of the table in tools/main.cpp and a source in this folder.

#include <functional>
#include <memory>

namespace CLI {
class App;
}

namespace ravolt::tool {

struct Command {
    const char *name;
    const char *description; // one line, for the help

    // Adds the options to the command line. What it returns runs the command when they are parsed:
    // it throws WrongOptions before any work when they make no sense, and Failure, with one line,
    // when the job cannot be done.
    std::function<void()> (*add)(CLI::App &app);
};

// The same for a command that its options alone are needed for: `addOptions` adds them, `check`
// throws WrongOptions, and `run` does the job.
template <class Options>
std::function<void()> addCommand(CLI::App &app, void (*addOptions)(CLI::App &, Options &),
                                 void (*run)(const Options &)) {
    const auto options = std::make_shared<Options>();
    addOptions(app, *options);
    return [options, run] {
        check(*options);
        run(*options);
    };
}

std::function<void()> addConvert(CLI::App &app);
std::function<void()> addView(CLI::App &app);
std::function<void()> addShot(CLI::App &app);
std::function<void()> addTerrain(CLI::App &app);
std::function<void()> addFont(CLI::App &app);
std::function<void()> addInfo(CLI::App &app);
std::function<void()> addCheck(CLI::App &app);

} // namespace ravolt::tool
