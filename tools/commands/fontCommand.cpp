// The command `font`: its options, and the message about its result.

#include "tools/commands/command.h"
#include "tools/commands/fileJob.h"
#include "tools/commands/options.h"
#include "tools/common/failure.h"
#include "tools/common/ranges.h"
#include "tools/font/cells.h"
#include "tools/font/font.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace ravolt::tool {

namespace {

using namespace font;

struct FontCommandOptions : FontOptions {
    std::string cell = "16x16";
    Limits limits;
    Verbosity verbosity;
};

void addOptions(CLI::App &app, FontCommandOptions &to) {
    app.add_option("FONT", to.input, "A font with outlines that FreeType reads: TTF, OTF, PFB, ...")
        ->required();
    app.add_option("-o,--output", to.texture,
                   "The texture, NAME.tga; the kerning file NAME.txt goes beside it")
        ->required();
    app.add_option("--face", to.face, "The number of the face in a collection")
        ->capture_default_str();
    app.add_option("--cell", to.cell,
                   "Pixels of a cell, WIDTHxHEIGHT, 4 to 128 each: those of setCharSizeX and "
                   "setCharSizeY in the engine")
        ->capture_default_str();
    app.add_option("--size", to.size,
                   "Pixels of the em square, 1 to 256 (the largest at which all fits)")
        ->check(CLI::Range(1u, 256u));
    app.add_option("--weight", to.weight, "Pixels that strokes are thicker, 0 to 8")
        ->capture_default_str();
    app.add_option("--outline", to.outline, "Pixels of a black outline")
        ->check(CLI::Range(0u, 16u))
        ->capture_default_str();
    app.add_option("--shadow", to.shadow, "Pixels, to the right and down, of a black shadow")
        ->check(CLI::Range(0u, 16u))
        ->capture_default_str();
    addLimits(app, to.limits);
    addVerbosity(app, to.verbosity);
}

void check(FontCommandOptions &options) {
    requireName("FONT", options.input);
    requireName("--output", options.texture);
    if (options.texture.extension() != ".tga" || options.texture.stem().empty())
        throw WrongOptions("--output " + options.texture.string() +
                           ": expected a name that ends with .tga");
    requireWithin("--weight", options.weight, 0, 8);
    char rest = 0;
    unsigned int &width = options.cellWidth, &height = options.cellHeight;
    if (std::sscanf(options.cell.c_str(), "%4ux%4u%c", &width, &height, &rest) != 2 ||
        width < minCell || width > maxCell || height < minCell || height > maxCell)
        throw WrongOptions("--cell " + options.cell + ": expected WIDTHxHEIGHT, each from " +
                           std::to_string(minCell) + " to " + std::to_string(maxCell));
}

std::string closingMessage(const FontCommandOptions &options, const FontResult &result) {
    return options.texture.string() + ": " + std::to_string(options.cellWidth * cellsPerSide) +
           " x " + std::to_string(options.cellHeight * cellsPerSide) + " pixels, size " +
           std::to_string(result.size) + "; " + kerningFileOf(options).string() + ": " +
           std::to_string(kerningEntries) + " characters";
}

void makeFont(const FontCommandOptions &options) {
    writeFiles(options.input.string(), options.limits, options.verbosity,
               [&](GuardedJob &job, Report &report) {
                   return closingMessage(options,
                                         stageFont(options, report, job.files, job.inputs));
               });
}

} // namespace

std::function<void()> addFont(CLI::App &app) { return addCommand(app, addOptions, makeFont); }

} // namespace ravolt::tool
