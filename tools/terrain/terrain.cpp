// The steps of `ravolt terrain`, from the heights to the committed files.

#include "tools/terrain/terrain.h"

#include "tools/common/failure.h"
#include "tools/terrain/configWriter.h"
#include "tools/terrain/geometryWriter.h"
#include "tools/terrain/lodDistances.h"
#include "tools/terrain/media.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace ravolt::tool::terrain {

namespace {

namespace fs = std::filesystem;

constexpr const char *geometryName = "terrain.geo";
constexpr const char *configName = "terrain.xml";

// Of values without a unit: the range of heights, in longer sides of the terrain, but only as much
// as leaves this share of the slopes below a rise over run.
constexpr double suitableHeight = 1.0 / 6;
constexpr double gentleShare = 0.9, gentleSlope = 0.85;
// The sea is seen to cover this share of the values, and their lowest part in any case.
constexpr double suitableSea = 0.2, lowestSea = 0.04;
// The high layer begins where this share of the land is lower, but not below a part of the height.
constexpr double suitableHigh = 0.94, lowestHigh = 0.45;
// The engine draws the land this much above where it is, but not the water.
constexpr double drawnAbove = 2;
// The height of a beach above the water as it is drawn: a share of the heights, within these
// limits.
constexpr double suitableShore = 0.06, minShore = 0.8, maxShore = 4.2;

// Units that a layer's texture and the waves of the water cover.
constexpr std::array<double, numberOfLayers> tileSizes = {7, 12, 6, 15};
constexpr double waveSize = 26;
constexpr double waveSpeed = 0.012;

// Heights before they have a unit.
struct Source {
    Heights values;
    double stepsPerSample = 0; // see HeightFile
    bool coarse = false;
    std::optional<Island::Square> square;

    bool hasUnits() const { return square.has_value(); }
};

unsigned int islandSide(const TerrainOptions &options) {
    return nearestSize(513, 513, options.chunkSize, options.maxSide).width();
}

Source readSource(const TerrainOptions &options, Report &report) {
    Source source;
    if (options.island) {
        Island island = makeIsland(islandSide(options), *options.island);
        source.values = std::move(island.heights);
        source.square = island.square;
        source.square->x *= static_cast<float>(options.spacing);
        source.square->z *= static_cast<float>(options.spacing);
        source.square->radius *= static_cast<float>(options.spacing);
        return source;
    }
    HeightFile file = readHeights(options.input, options.file);
    if (file.filled)
        report.warn(options.input.string() + ": " + counted(file.filled, "value is", "values are") +
                    " missing, and filled in from those around");
    source.values = std::move(file.heights);
    source.stepsPerSample = file.stepsPerSample;
    source.coarse = file.coarse;
    return source;
}

std::string sizeText(unsigned int width, unsigned int depth) {
    return std::to_string(width) + " x " + std::to_string(depth);
}

GridSize sizeFor(const TerrainOptions &options, const Heights &heights) {
    const std::string name = options.island ? "the island" : options.input.string();
    const GridSize near =
        nearestSize(heights.width, heights.depth, options.chunkSize,
                    options.exact ? std::max(heights.width, heights.depth) + options.chunkSize
                                  : options.maxSide);
    if (options.exact) {
        const GridSize exact = exactSize(heights.width, heights.depth, options.chunkSize);
        if (!isLegal(exact))
            throw Failure(name, "has " + sizeText(heights.width, heights.depth) +
                                    " values, which make no even number of whole chunks of " +
                                    std::to_string(options.chunkSize) + " a side; " +
                                    sizeText(near.width(), near.depth()) + " would");
        return exact;
    }
    if (!isLegal(near))
        throw Failure(name, "would get " + std::to_string(near.chunks()) +
                                " chunks, at most 65535 are possible; state a larger --chunk or a "
                                "smaller --size");
    return near;
}

// The steps of the values that a unit along the ground rises, on slopes that are steeper than a
// share of all.
double slopeAt(const Heights &values, double spacing, double share) {
    Heights slopes(values.width - 1, values.depth - 1);
    for (unsigned int j = 0; j < slopes.depth; ++j)
        for (unsigned int i = 0; i < slopes.width; ++i)
            slopes.at(i, j) = std::hypot(values.at(i + 1, j) - values.at(i, j),
                                         values.at(i, j + 1) - values.at(i, j));
    return quantile(slopes, share) / spacing;
}

// Brings values to units above the water, in place.
struct Scale {
    double seaLevel = 0;
    double unitsPerStep = 1;

    void apply(Heights &heights) const {
        for (float &value : heights.values)
            value = static_cast<float>((value - seaLevel) * unitsPerStep);
    }
};

double unitsPerStep(const TerrainOptions &options, const Source &source, double spacing,
                    double range) {
    if (options.heightScale)
        return *options.heightScale;
    if (range == 0)
        return 1; // level ground
    if (options.height)
        return *options.height / range;
    if (source.stepsPerSample > 0)
        return options.spacing / source.stepsPerSample;
    const double length = spacing * (std::max(source.values.width, source.values.depth) - 1.0);
    const double slope = slopeAt(source.values, spacing, gentleShare);
    return std::min(suitableHeight * length / range, gentleSlope / std::max(slope, 1e-9));
}

Scale scaleFor(const TerrainOptions &options, const Source &source, double spacing) {
    Scale scale;
    if (source.hasUnits())
        return scale;
    const auto [lowest, highest] =
        std::minmax_element(source.values.values.begin(), source.values.values.end());
    const double range = *highest - *lowest;
    scale.unitsPerStep = unitsPerStep(options, source, spacing, range);
    if (options.seaLevel)
        scale.seaLevel = *options.seaLevel;
    else if (source.stepsPerSample == 0)
        scale.seaLevel =
            std::max<double>(quantile(source.values, suitableSea), *lowest + lowestSea * range) +
            drawnAbove / scale.unitsPerStep;
    return scale;
}

double highFrom(const Heights &heights) {
    Heights land;
    for (const float height : heights.values)
        if (height > 0)
            land.values.push_back(height);
    if (land.values.empty())
        return 1;
    const double highest = *std::max_element(land.values.begin(), land.values.end());
    return std::max<double>(quantile(land, suitableHigh), lowestHigh * highest);
}

double shoreUpTo(const Heights &heights) {
    const auto [lowest, highest] =
        std::minmax_element(heights.values.begin(), heights.values.end());
    const double range = *highest - *lowest;
    return std::clamp(suitableShore * range, minShore, maxShore) - drawnAbove;
}

GroundRules rulesFor(const TerrainOptions &options, const Heights &heights, double spacing) {
    GroundRules rules;
    rules.spacing = static_cast<float>(spacing);
    rules.steepSlope = static_cast<float>(std::tan(options.steep * std::numbers::pi / 180));
    rules.highFrom = static_cast<float>(options.high ? *options.high : highFrom(heights));
    rules.shoreUpTo = static_cast<float>(options.shore ? *options.shore : shoreUpTo(heights));
    return rules;
}

// The files that are staged, all of them in the folder and none of them through a link.
class Folder {
  public:
    Folder(const TerrainOptions &options, FileTransaction &target)
        : path(options.folder), files(target) {
        if (!options.input.empty())
            inputs.add(options.input);
    }

    void stage(const std::string &name,
               const std::function<bool(const FileTransaction::Append &)> &write) {
        const fs::path file = path / name;
        std::error_code error;
        if (fs::is_symlink(file, error))
            throw Failure(file.string(), "is a link; remove it first");
        if (inputs.contains(file))
            throw Failure(file.string(), "is read by this command; choose another folder");
        const std::string complaint = files.stage(file.string(), write);
        if (!complaint.empty())
            throw Failure(complaint);
        ++count;
    }
    void stage(const std::string &name, const std::vector<unsigned char> &bytes) {
        stage(name, [&](const FileTransaction::Append &append) {
            return append(bytes.data(), bytes.size());
        });
    }

    std::size_t numberOfFiles() const { return count; }

  private:
    fs::path path;
    FileTransaction &files;
    InputFiles inputs;
    std::size_t count = 0;
};

unsigned int repeats(double length, double tile) {
    return static_cast<unsigned int>(std::clamp(std::round(length / tile), 1.0, 65535.0));
}

std::string geometryInConfig(const TerrainOptions &options) {
    if (options.geometryPath)
        return *options.geometryPath + geometryName;
    return (options.folder / geometryName).string();
}

TerrainConfig configFor(const TerrainOptions &options, const GridSize &size, double spacing,
                        double centerDistance) {
    TerrainConfig config;
    config.geometry = geometryInConfig(options);
    for (std::size_t i = 0; i < numberOfLayers; ++i)
        config.layers[i] = {std::string(layerNames[i]) + diffuseEnding,
                            std::string(layerNames[i]) + normalEnding,
                            repeats(size.cells() * spacing, tileSizes[i])};
    config.waterNormal = waterNormal;
    config.waterDudv = waterDudv;
    config.waterRepeat = repeats((std::max(size.width(), size.depth()) - 1) * spacing, waveSize);
    config.waterSpeed = waveSpeed;
    config.sky = daySky;
    config.lod = lodDistances(centerDistance, options.detail.value_or(0));
    return config;
}

void stageTextures(const TerrainOptions &options, Progress &progress, Folder &folder) {
    constexpr double numberOfFiles = 16;
    constexpr unsigned int maxSky = 1024;
    std::size_t done = 0;
    const FileSink sink = [&](const std::string &name, const std::vector<unsigned char> &bytes) {
        folder.stage(name, bytes);
        progress.update(static_cast<double>(++done) / numberOfFiles);
    };
    makeGroundTextures(options.textureSize, sink);
    makeSkies(std::min(2 * options.textureSize, maxSky), sink);
    makeWaterTextures(options.textureSize, sink);
    makeFire(sink);
}

WrittenGeometry stageGeometry(const TerrainGround &ground, Progress &progress, Folder &folder) {
    WrittenGeometry written;
    folder.stage(geometryName, [&](const FileTransaction::Append &append) {
        written = writeGeometry(ground, append, [&](double part) { progress.update(part); });
        return written.whole;
    });
    return written;
}

// Between two vertices as between two values, but for what the rounding to whole chunks does.
double spacingFor(const TerrainOptions &options, const Heights &values, const GridSize &size) {
    const double alongX = (values.width - 1.0) / (size.width() - 1.0);
    const double alongZ = (values.depth - 1.0) / (size.depth() - 1.0);
    return options.spacing * std::sqrt(alongX * alongZ);
}

} // namespace

TerrainResult stageTerrain(const TerrainOptions &options, Report &report, Progress &progress,
                           FileTransaction &files) {
    progress.step("heights", 0, 0.2);
    Source source = readSource(options, report);
    TerrainResult result;
    result.square = source.square;
    result.size = sizeFor(options, source.values);
    result.spacing = spacingFor(options, source.values, result.size);
    if (source.coarse)
        smoothSteps(source.values);
    Heights &heights = source.values;
    heights = resampled(std::move(heights), result.size.width(), result.size.depth());
    scaleFor(options, source, result.spacing).apply(heights);

    Folder folder(options, files);
    progress.step("geometry", 0.2, options.textures ? 0.5 : 1);
    const TerrainGround ground = {heights, result.size, rulesFor(options, heights, result.spacing)};
    const WrittenGeometry written = stageGeometry(ground, progress, folder);
    result.lowest = written.lowest;
    result.highest = written.highest;
    result.shares = written.shares;
    const std::string config =
        configText(configFor(options, result.size, result.spacing, written.centerDistance));
    folder.stage(configName, std::vector<unsigned char>(config.begin(), config.end()));
    if (options.textures) {
        progress.step("textures", 0.5, 1);
        stageTextures(options, progress, folder);
    }
    result.files = folder.numberOfFiles();
    return result;
}

} // namespace ravolt::tool::terrain
