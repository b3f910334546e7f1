#include "tools/commands/inspectOptions.h"

#include "tools/common/failure.h"
#include "tools/process/logRedirect.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace ravolt::tool {

void addInspect(CLI::App &app, InspectOptions &to) {
    app.add_option("--as", to.kind,
                   "The kind of file, where neither its name nor its content says it: " +
                       inspect::kindNames())
        ->type_name("KIND");
    app.add_option("--path", to.inspection.folders,
                   "A folder of the textures, programs and kerning files that a file names, "
                   "instead of its own; may be stated again")
        ->type_name("DIR")
        ->take_all()
        ->expected(1);
    app.add_flag("--json", to.json, "Print JSON, as docs/inspection.md describes it");
}

void check(InspectOptions &options) {
    if (options.kind.empty())
        return;
    options.inspection.kind = inspect::kindNamed(options.kind);
    if (!options.inspection.kind)
        throw WrongOptions("--as " + options.kind + ": expected " + inspect::kindNames());
}

void startInspecting() { LogRedirect::clear(); }

void printJson(const inspect::Json &json) { std::printf("%s\n", json.dump(2).c_str()); }

} // namespace ravolt::tool
