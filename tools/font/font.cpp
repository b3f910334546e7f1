// The steps of `ravolt font`, from the options to the committed files.

#include "tools/font/font.h"

#include "tools/common/failure.h"
#include "tools/font/atlas.h"
#include "tools/font/kerning.h"

#include <algorithm>

namespace ravolt::tool::font {

namespace {

// Around all printable characters at the size that is set.
Extent extentOfAll(Face &face) {
    Extent all;
    for (char c = firstCharacter; c <= lastCharacter; ++c)
        all.include(face.extentOf(c));
    return all;
}

std::string cellText(unsigned int width, unsigned int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

class Job {
  public:
    Job(const FontOptions &wanted, Report &messages)
        : options(wanted), report(messages), face(wanted.input, wanted.face) {
        layout.width = options.cellWidth;
        layout.height = options.cellHeight;
        layout.outline = options.outline;
        layout.shadow = options.shadow;
        reportMissing();
        size = options.size ? *options.size : largestSize();
        setSize(size);
        if (!layout.place(extent))
            throw Failure(options.input.string(),
                          "needs cells of " +
                              cellText(layout.neededWidth(extent), layout.neededHeight(extent)) +
                              " pixels at a size of " + std::to_string(size) +
                              "; state a larger --cell or a smaller --size");
    }

    unsigned int chosenSize() const { return size; }

    // The texture, and the corrections into `kerning`.
    std::vector<unsigned char> draw(Kerning &kerning) {
        Atlas atlas(layout);
        for (char c = firstCharacter; c <= lastCharacter; ++c) {
            const Glyph glyph = face.draw(c);
            atlas.draw(c, glyph);
            kerning[static_cast<std::size_t>(c - firstCharacter)] = correctionOf(c, glyph);
        }
        atlas.drawCursor(extent);
        return atlas.tga();
    }

  private:
    void setSize(unsigned int pixels) {
        face.setSize(pixels, options.weight);
        extent = extentOfAll(face);
    }

    // At which all characters fit into their cells.
    unsigned int largestSize() {
        for (unsigned int pixels = 2 * std::max(layout.width, layout.height); pixels > 0;
             --pixels) {
            setSize(pixels);
            if (layout.place(extent))
                return pixels;
        }
        throw Failure(options.input.string(),
                      "fits at no size into cells of " + cellText(layout.width, layout.height));
    }

    void reportMissing() {
        std::string missing;
        for (char c = firstCharacter; c <= lastCharacter; ++c)
            if (!face.has(c))
                missing += c;
        if (missing.size() == kerningEntries)
            throw Failure(options.input.string(), "has none of the printable characters of ASCII");
        if (!missing.empty())
            report.warn(options.input.string() + ": has no " + missing);
    }

    int correctionOf(char c, const Glyph &glyph) const {
        const int correction =
            static_cast<int>(layout.width) - glyph.advance - static_cast<int>(layout.outline);
        if (correction < -128 || correction > 127)
            throw Failure(options.input.string(), std::string("'") + c + "' advances by " +
                                                      std::to_string(glyph.advance) +
                                                      " pixels, which no kerning file can state");
        return correction;
    }

    const FontOptions &options;
    Report &report;
    Face face;
    CellLayout layout;
    unsigned int size = 0;
    Extent extent;
};

void stage(const std::filesystem::path &file, const std::vector<unsigned char> &bytes,
           const InputFiles &inputs, FileTransaction &files) {
    if (inputs.contains(file))
        throw Failure(file.string(), "is read by this command; choose another name");
    const std::string complaint = files.stage(file.string(), bytes);
    if (!complaint.empty())
        throw Failure(complaint);
}

} // namespace

std::filesystem::path kerningFileOf(const FontOptions &options) {
    std::filesystem::path file = options.texture;
    return file.replace_extension(".txt");
}

FontResult stageFont(const FontOptions &options, Report &report, FileTransaction &files,
                     InputFiles &inputs) {
    inputs.add(options.input);
    Job job(options, report);
    Kerning kerning{};
    const std::vector<unsigned char> texture = job.draw(kerning);
    const std::string text = kerningText(kerning);
    stage(options.texture, texture, inputs, files);
    stage(kerningFileOf(options), {text.begin(), text.end()}, inputs, files);
    return {job.chosenSize()};
}

} // namespace ravolt::tool::font
