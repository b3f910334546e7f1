#pragma once

// Files of heights: PNG pictures of 8 or 16 bits, 16 bits without a header, and SRTM tiles (.hgt).

#include "tools/terrain/heights.h"

#include <filesystem>
#include <string>

namespace ravolt::tool::terrain {

enum class HeightFormat { automatic, png, raw, hgt };

struct HeightFileOptions {
    HeightFormat format = HeightFormat::automatic; // by the contents and the ending of the name
    unsigned int rawWidth = 0, rawDepth = 0;       // 0: a square
    bool bigEndian = false;                        // raw alone
};

constexpr unsigned int maxHeightsSide = 16384;

struct HeightFile {
    Heights heights;
    bool coarse = false;       // 8 bits, whose steps show as terraces
    double stepsPerSample = 0; // how many steps of the values are as long as the way from one to
                               // the next, if the format states it: metres; 0 where it does not
    std::size_t filled = 0;    // values that were missing
};

// Throws Failure when it cannot be read.
HeightFile readHeights(const std::filesystem::path &file, const HeightFileOptions &options);

} // namespace ravolt::tool::terrain
