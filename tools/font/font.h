#pragma once

// The whole job of `ravolt font`: a font file in, the texture and the kerning file of RVFONT out.

#include "kit/files/fileTransaction.h"
#include "tools/common/inputFiles.h"
#include "tools/common/report.h"

#include <filesystem>
#include <optional>

namespace ravolt::tool::font {

struct FontOptions {
    std::filesystem::path input;
    unsigned int face = 0;
    std::filesystem::path texture; // NAME.tga; the kerning file is NAME.txt

    unsigned int cellWidth = 16, cellHeight = 16; // in the texture and on the screen
    std::optional<unsigned int> size;             // pixels of the em square; the largest that fits
    double weight = 0;                            // pixels that strokes are thicker
    unsigned int outline = 0, shadow = 0;         // pixels
};

std::filesystem::path kerningFileOf(const FontOptions &options);

struct FontResult {
    unsigned int size = 0; // pixels of the em square
};

// Stages both files. Throws Failure.
FontResult stageFont(const FontOptions &options, Report &report, FileTransaction &files,
                     InputFiles &inputs);

} // namespace ravolt::tool::font
