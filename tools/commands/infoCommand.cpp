// The command `info`: what a file holds.

#include "tools/commands/command.h"
#include "tools/commands/inspectOptions.h"
#include "tools/common/failure.h"
#include "tools/inspect/text.h"
#include "tools/process/logRedirect.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

namespace ravolt::tool {

namespace {

using namespace inspect;

struct Options : InspectOptions {
    std::filesystem::path file;
};

void requireGood(const Inspection &inspection) {
    const auto error = std::find_if(inspection.findings.begin(), inspection.findings.end(),
                                    [](const Finding &finding) { return finding.isError; });
    if (error != inspection.findings.end())
        throw Failure(textOf(inspection.file, *error));
}

void print(const Options &options) {
    const Inspection inspection = inspectFile(options.file, options.inspection);
    requireGood(inspection);
    const Json info = infoOf(inspection);
    const std::string text = options.json ? info.dump(2) + "\n" : textOf(info);
    std::fputs(text.c_str(), stdout);
}

} // namespace

std::function<void()> addInfo(CLI::App &app) {
    const auto options = std::make_shared<Options>();
    app.add_option("FILE", options->file,
                   "A scene, clip, texture, terrain, geometry, interface, emitter, kerning file, "
                   "settings file or video")
        ->required();
    addInspect(app, *options);
    return [options] {
        check(*options);
        LogRedirect::clear(); // what the engine's readers log is among the findings
        print(*options);
    };
}

} // namespace ravolt::tool
