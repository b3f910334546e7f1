// Adds and checks the options that several commands share.

#include "tools/commands/options.h"

#include "tools/common/failure.h"

#include <CLI/CLI.hpp>
#include <map>
#include <string>

namespace ravolt::tool {

void addVerbosity(CLI::App &app, Verbosity &to) {
    CLI::Option *quiet = app.add_flag("-q,--quiet", to.quiet, "Say nothing but errors");
    app.add_flag("-v,--verbose", to.verbose, "Say everything, the engine's log too")
        ->excludes(quiet);
}

void addAlpha(CLI::App &app, AlphaUse &to) {
    static const std::map<std::string, AlphaUse> words = {{"auto", AlphaUse::picture},
                                                          {"opaque", AlphaUse::opaque},
                                                          {"cutout", AlphaUse::cutout},
                                                          {"blend", AlphaUse::blended}};
    app.add_option("--alpha", to,
                   "What the alpha of a texture does where the model does not say: opaque, cutout "
                   "or blend; auto looks at the pixels (auto)")
        ->transform(CLI::CheckedTransformer(words))
        ->type_name("{auto,opaque,cutout,blend}");
}

void addSources(CLI::App &app, SourceOptions &to) {
    app.add_option("--textures", to.textureFolders,
                   "A folder where textures are looked for too; may be stated again")
        ->type_name("DIR")
        ->take_all()
        ->expected(1);
    app.add_flag("--follow", to.follow,
                 "Open files wherever the model names them: for models that you trust");
}

void addLimits(CLI::App &app, Limits &to) {
    app.add_option("--max-memory", to.megabytes, "Megabytes that reading a model may take")
        ->check(CLI::Range(16u, 1u << 20))
        ->capture_default_str();
    app.add_option("--max-time", to.seconds, "Seconds of processor time that it may take")
        ->check(CLI::Range(1u, 1000000u))
        ->capture_default_str();
}

void requireName(const char *what, const std::filesystem::path &name) {
    if (name.empty())
        throw WrongOptions(std::string(what) + ": the name is empty");
}

} // namespace ravolt::tool
