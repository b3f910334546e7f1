// The command `check`: what is wrong with files, a line for each finding.

#include "tools/commands/command.h"
#include "tools/commands/inspectOptions.h"
#include "tools/common/failure.h"
#include "tools/common/report.h"
#include "tools/inspect/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <vector>

namespace ravolt::tool {

namespace {

using namespace inspect;

struct CheckCommandOptions : InspectOptions {
    std::vector<std::filesystem::path> files;
    bool strict = false;
};

// A file that cannot be read, or has no known kind, has that as its error.
struct Checked {
    std::filesystem::path file;
    std::optional<Inspection> inspection;
    std::string failure;

    bool isRefused() const { return !inspection || inspection->hasErrors(); }
    bool hasWarnings() const { return inspection && inspection->hasWarnings(); }
};

Checked checkFile(const std::filesystem::path &file, const InspectionOptions &options) {
    Checked checked{file, {}, {}};
    try {
        checked.inspection = inspectFile(file, options);
    } catch (const Failure &failure) {
        checked.failure = std::string(failure.what()).substr(file.string().size() + 2);
    }
    return checked;
}

Json jsonOf(const Checked &checked) {
    if (checked.inspection)
        return checkOf(*checked.inspection);
    Inspection unreadable;
    unreadable.file = checked.file;
    unreadable.error({}, checked.failure);
    Json json = checkOf(unreadable);
    json["kind"] = nullptr;
    return json;
}

void printLines(const Checked &checked) {
    if (!checked.inspection) {
        std::printf("%s: error: %s\n", checked.file.c_str(), checked.failure.c_str());
        return;
    }
    for (const Finding &finding : checked.inspection->findings)
        std::printf("%s\n", textOf(checked.file, finding).c_str());
}

void addOptions(CLI::App &app, CheckCommandOptions &to) {
    app.add_option("FILE", to.files,
                   "Scenes, clips, textures, terrains, geometries, interfaces, emitters, kerning "
                   "files, settings files or videos")
        ->required();
    addInspect(app, to);
    app.add_flag("--strict", to.strict, "Exit with 1 for warnings, too");
    app.footer("Prints FILE:OFFSET or FILE:LINE:COLUMN, error or warning, and the reason. An error "
               "is what the engine refuses to load, a warning what cannot be meant.\n");
}

void checkFiles(const CheckCommandOptions &options) {
    startInspecting();
    std::size_t refused = 0, warned = 0;
    Json files = Json::array();
    for (const std::filesystem::path &file : options.files) {
        const Checked checked = checkFile(file, options.inspection);
        refused += checked.isRefused();
        warned += checked.hasWarnings();
        if (options.json)
            files.push_back(jsonOf(checked));
        else
            printLines(checked);
    }
    if (options.json)
        printJson({{"files", files}});
    std::fflush(stdout);
    const std::string all = counted(options.files.size(), "file", "files");
    if (refused > 0)
        throw Failure(std::to_string(refused) + " of " + all + " would be refused");
    if (options.strict && warned > 0)
        throw Failure(std::to_string(warned) + " of " + all + " with warnings");
}

} // namespace

std::function<void()> addCheck(CLI::App &app) { return addCommand(app, addOptions, checkFiles); }

} // namespace ravolt::tool
