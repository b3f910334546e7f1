// The command `terrain`: its options, its output folder, and the message about its result.

#include "tools/commands/command.h"
#include "tools/commands/fileJob.h"
#include "tools/commands/options.h"
#include "tools/common/failure.h"
#include "tools/terrain/terrain.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <map>

namespace ravolt::tool {

namespace {

namespace fs = std::filesystem;
using terrain::chunkSizes;
using terrain::HeightFormat;
using terrain::maxHeightsSide;
using terrain::stageTerrain;
using terrain::TerrainOptions;
using terrain::TerrainResult;

constexpr const char *otherFormats =
    "Any other elevation data, as a PNG of 16 bits by GDAL (Debian: gdal-bin):\n"
    "  gdal_translate -of PNG -ot UInt16 -scale INPUT map.png\n";

struct TerrainCommandOptions : TerrainOptions {
    std::string rawSize;
    bool bigEndian = false;
    Limits limits;
    Verbosity verbosity;
};

// CLI11's range, which lets through what is no number.
CLI::Validator within(double lowest, double highest) {
    return CLI::Range(lowest, highest) &
           CLI::Validator(
               [](std::string &text) {
                   double number = 0;
                   CLI::detail::lexical_cast(text, number);
                   return std::isnan(number) ? "Value " + text + " is no number" : std::string();
               },
               "");
}

void addInput(CLI::App &app, TerrainCommandOptions &to) {
    static const std::map<std::string, HeightFormat> formats = {{"auto", HeightFormat::automatic},
                                                                {"png", HeightFormat::png},
                                                                {"raw", HeightFormat::raw},
                                                                {"hgt", HeightFormat::hgt}};
    CLI::Option *heights = app.add_option(
        "HEIGHTS", to.input,
        "A PNG picture of 8 or 16 bits, bright is high; 16-bit values (.raw, .r16); or an SRTM "
        "tile (.hgt). Its upper edge is the north, -Z");
    app.add_option("--island", to.island,
                   "In place of HEIGHTS: make up an island of about 512 x 512 units with this "
                   "number, 0 to 65535")
        ->check(CLI::Range(0u, 65535u))
        ->excludes(heights);
    app.add_option("--format", to.file.format, "What HEIGHTS is: auto, png, raw or hgt (auto)")
        ->transform(CLI::CheckedTransformer(formats))
        ->type_name("WORD");
    app.add_option("--raw-size", to.rawSize,
                   "Values of a raw file along both sides, WIDTHxDEPTH (a square)");
    app.add_flag("--big-endian", to.bigEndian,
                 "The first byte of a raw file's values is the high one");
}

void addSizes(CLI::App &app, TerrainCommandOptions &to) {
    app.add_option("--size", to.maxSide,
                   "Vertices along the longer side, at most; more values are averaged")
        ->check(CLI::Range(65u, 65535u))
        ->capture_default_str();
    app.add_option("--chunk", to.chunkSize,
                   "Vertices along a side of a chunk: 65, 97, 129, 161, 193 or 225")
        ->check(CLI::IsMember(std::vector<unsigned int>(chunkSizes.begin(), chunkSizes.end())))
        ->capture_default_str();
    app.add_flag("--exact", to.exact,
                 "Refuse HEIGHTS unless its values are the vertices of whole chunks, an even "
                 "number of them; otherwise it is resampled")
        ->excludes("--size");
    app.add_option("--spacing", to.spacing, "Units from one value of HEIGHTS to the next")
        ->check(within(1e-3, 1e5))
        ->capture_default_str();
    CLI::Option *height =
        app.add_option("--height", to.height,
                       "Units from the lowest value to the highest (a sixth of the longer side, "
                       "or what leaves most slopes below 40 degrees; a tile's true proportions)")
            ->check(within(0, 1e6));
    app.add_option("--height-scale", to.heightScale, "Units that a value of one more is higher")
        ->check(within(0, 1e6))
        ->excludes(height);
    app.add_option("--sea-level", to.seaLevel,
                   "The value of HEIGHTS where the water stands; a tile's are metres (0 in a "
                   "tile; else a fifth of the land is seen "
                   "below it)")
        ->check(within(-1e6, 1e6));
}

void addLooks(CLI::App &app, TerrainCommandOptions &to) {
    app.add_option("--steep", to.steep, "Degrees of slope from which there is rock")
        ->check(within(1, 89))
        ->capture_default_str();
    app.add_option("--high", to.high,
                   "Units above the water from which there is snow (on the highest 6 % "
                   "of the land)")
        ->check(within(-1e6, 1e6));
    app.add_option("--shore", to.shore,
                   "Units above the water up to which there is sand (6 % of the height, less 2)")
        ->check(within(-1e6, 1e6));
    app.add_option("--detail", to.detail,
                   "Units from the eye within which all is drawn in full detail (1.5 chunks)")
        ->check(within(1e-3, 1e6));
    app.add_flag("!--no-textures", to.textures,
                 "Write the geometry and the configuration alone: the textures of ground, water "
                 "and sky that this one names are your own");
    app.add_option("--texture-size", to.textureSize,
                   "Pixels along a side of the ground's textures: 64, 128 ... 2048")
        ->check(CLI::IsMember({64u, 128u, 256u, 512u, 1024u, 2048u}))
        ->capture_default_str();
}

void addOptions(CLI::App &app, TerrainCommandOptions &to) {
    addInput(app, to);
    app.add_option("-o,--output", to.folder,
                   "The folder for terrain.xml, terrain.geo, textures and emitters; it is made if "
                   "it is not there")
        ->required();
    app.add_option("--geometry-path", to.geometryPath,
                   "What the configuration puts before the name of the geometry: the folder as "
                   "the application sees it (that of --output, and a slash)");
    addSizes(app, to);
    addLooks(app, to);
    addLimits(app, to.limits);
    addVerbosity(app, to.verbosity);
    app.footer(otherFormats);
}

void check(TerrainCommandOptions &options) {
    requireName("--output", options.folder);
    if (options.folder == standardOutput)
        throw WrongOptions("--output -: a terrain is a folder of files; name one");
    if (!options.island && options.input.empty())
        throw WrongOptions("HEIGHTS is required, or --island (see ravolt terrain --help)");
    options.file.bigEndian = options.bigEndian;
    if (options.rawSize.empty())
        return;
    char rest = 0;
    unsigned int &width = options.file.rawWidth, &depth = options.file.rawDepth;
    if (std::sscanf(options.rawSize.c_str(), "%5ux%5u%c", &width, &depth, &rest) != 2 ||
        width < 2 || depth < 2 || width > maxHeightsSide || depth > maxHeightsSide)
        throw WrongOptions("--raw-size " + options.rawSize +
                           ": expected WIDTHxDEPTH, each from 2 to " +
                           std::to_string(maxHeightsSide));
}

// Makes the folder if it is not there, and removes it again if nothing comes into it.
class OutputFolder {
  public:
    explicit OutputFolder(const fs::path &wanted) : folder(wanted) {
        std::error_code error;
        if (fs::is_directory(folder, error))
            return;
        if (fs::exists(fs::symlink_status(folder, error)))
            throw Failure(folder.string(), "is no folder");
        made = fs::create_directory(folder, error);
        if (!made)
            throw Failure(folder.string(), "cannot be made: " + error.message());
    }
    ~OutputFolder() {
        std::error_code error;
        if (made)
            fs::remove(folder, error); // fails if it is not empty
    }
    OutputFolder(const OutputFolder &) = delete;
    OutputFolder &operator=(const OutputFolder &) = delete;

  private:
    fs::path folder;
    bool made = false;
};

std::string closingMessage(const TerrainCommandOptions &options, const TerrainResult &result) {
    char text[400];
    std::snprintf(text, sizeof text,
                  ": %zu chunks of %u x %u vertices, %.6g x %.6g units, heights %.4g to %.4g, "
                  "grass %.0f %%, snow %.0f %%, sand %.0f %%, rock %.0f %%, %s",
                  result.size.chunks(), result.size.chunkSize, result.size.chunkSize,
                  (result.size.width() - 1) * result.spacing,
                  (result.size.depth() - 1) * result.spacing, result.lowest, result.highest,
                  100 * result.shares[0], 100 * result.shares[1], 100 * result.shares[2],
                  100 * result.shares[3], counted(result.files, "file", "files").c_str());
    std::string words = (options.folder / "terrain.xml").string() + text;
    if (result.square) {
        std::snprintf(text, sizeof text, "; level ground at %.4g, %.4g, %.4g, radius %.4g",
                      result.square->x, result.square->y, result.square->z, result.square->radius);
        words += text;
    }
    return words;
}

void makeTerrain(const TerrainCommandOptions &options) {
    const OutputFolder folder(options.folder);
    writeFiles(options.island ? "the island" : options.input.string(), options.limits,
               options.verbosity, [&](GuardedJob &job, Report &report) {
                   Progress progress(!options.verbosity.quiet);
                   return closingMessage(options,
                                         stageTerrain(options, report, progress, job.files));
               });
}

} // namespace

std::function<void()> addTerrain(CLI::App &app) { return addCommand(app, addOptions, makeTerrain); }

} // namespace ravolt::tool
