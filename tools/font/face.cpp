// Loads a font file and renders its characters by FreeType.

#include "tools/font/face.h"

#include "tools/common/failure.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace ravolt::tool::font {

namespace {

// FreeType counts in 64ths of a pixel.
constexpr double unitsPerPixel = 64;

int floorPixels(FT_Pos units) { return static_cast<int>(units >> 6); }
int ceilPixels(FT_Pos units) { return static_cast<int>((units + 63) >> 6); }
int roundedPixels(FT_Pos units) { return static_cast<int>((units + 32) >> 6); }

FT_ULong codeOf(char c) { return static_cast<unsigned char>(c); }

Extent extentOf(FT_Outline &outline) {
    FT_BBox box;
    FT_Outline_Get_CBox(&outline, &box);
    return {floorPixels(box.xMin), ceilPixels(box.xMax), floorPixels(box.yMin),
            ceilPixels(box.yMax)};
}

void checkFile(const std::filesystem::path &file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        throw Failure(file.string(), "no such file");
    if (std::filesystem::is_directory(file, error))
        throw Failure(file.string(), "is a folder, not a font");
    if (!std::filesystem::is_regular_file(file, error))
        throw Failure(file.string(), "is no regular file");
    if (!std::ifstream(file, std::ios::binary))
        throw Failure(file.string(), "cannot be opened");
}

} // namespace

void Extent::include(const Extent &other) {
    left = std::min(left, other.left);
    right = std::max(right, other.right);
    bottom = std::min(bottom, other.bottom);
    top = std::max(top, other.top);
}

struct Face::Handles {
    FT_Library library = nullptr;
    FT_Face face = nullptr;

    ~Handles() {
        if (face)
            FT_Done_Face(face);
        if (library)
            FT_Done_FreeType(library);
    }
};

Face::Face(const std::filesystem::path &file, unsigned int index)
    : name(file.string()), handles(std::make_unique<Handles>()) {
    checkFile(file);
    if (FT_Init_FreeType(&handles->library) != 0)
        throw Failure("FreeType does not start");
    if (FT_New_Face(handles->library, name.c_str(), 0, &handles->face) != 0)
        throw Failure(name, "is no font that FreeType reads");
    const FT_Long faces = handles->face->num_faces;
    if (static_cast<FT_Long>(index) >= faces)
        throw Failure(name, "has no face " + std::to_string(index) + ": the last one is " +
                                std::to_string(faces - 1));
    if (index > 0) {
        FT_Done_Face(handles->face);
        handles->face = nullptr;
        if (FT_New_Face(handles->library, name.c_str(), static_cast<FT_Long>(index),
                        &handles->face) != 0)
            throw Failure(name, "face " + std::to_string(index) + " is broken");
    }
    if (!FT_IS_SCALABLE(handles->face))
        throw Failure(name, "has pictures of one size, but no outlines");
}

Face::~Face() = default;

bool Face::has(char c) const { return FT_Get_Char_Index(handles->face, codeOf(c)) != 0; }

void Face::setSize(unsigned int pixels, double addedWeight) {
    if (FT_Set_Pixel_Sizes(handles->face, 0, pixels) != 0)
        throw Failure(name, "cannot be drawn with " + std::to_string(pixels) + " pixels");
    weight = addedWeight;
}

// Into the slot of the face, as an outline.
void Face::load(char c) {
    const FT_GlyphSlot slot = handles->face->glyph;
    if (FT_Load_Char(handles->face, codeOf(c), FT_LOAD_NO_BITMAP) != 0 ||
        slot->format != FT_GLYPH_FORMAT_OUTLINE)
        throw Failure(name, std::string("the outline of '") + c + "' is broken");
    const auto strength = static_cast<FT_Pos>(std::lround(weight * unitsPerPixel));
    if (strength == 0)
        return;
    FT_Outline_Embolden(&slot->outline, strength);
    if (slot->advance.x > 0)
        slot->advance.x += strength;
}

Extent Face::extentOf(char c) {
    load(c);
    return font::extentOf(handles->face->glyph->outline);
}

Glyph Face::draw(char c) {
    load(c);
    const FT_GlyphSlot slot = handles->face->glyph;
    Glyph glyph{font::extentOf(slot->outline), roundedPixels(slot->advance.x), {}};
    if (glyph.extent.width() <= 0 || glyph.extent.height() <= 0)
        return glyph;
    glyph.coverage.resize(static_cast<std::size_t>(glyph.extent.width()) *
                          static_cast<std::size_t>(glyph.extent.height()));
    FT_Bitmap target{};
    target.width = static_cast<unsigned int>(glyph.extent.width());
    target.rows = static_cast<unsigned int>(glyph.extent.height());
    target.pitch = glyph.extent.width(); // rows from the top
    target.buffer = glyph.coverage.data();
    target.num_grays = 256;
    target.pixel_mode = FT_PIXEL_MODE_GRAY;
    FT_Outline_Translate(&slot->outline, -glyph.extent.left * 64, -glyph.extent.bottom * 64);
    if (FT_Outline_Get_Bitmap(handles->library, &slot->outline, &target) != 0)
        throw Failure(name, std::string("'") + c + "' cannot be drawn");
    return glyph;
}

} // namespace ravolt::tool::font
