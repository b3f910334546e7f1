// Textures as the engine reads TGA files.

#include "resources/tga.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <bit>

namespace ravolt::tool::inspect {

namespace {

const char *compressionOf(TgaKind kind) {
    switch (kind) {
    case TgaKind::uncompressed:
        return "none";
    case TgaKind::runLength:
        return "run-length";
    case TgaKind::unsupported:
        break;
    }
    return "unsupported";
}

} // namespace

void inspectTexture(Inspection &inspection) {
    FileBytes file;
    readBytes(inspection, file);
    TgaImage image;
    FileProblem problem;
    if (inspectTga(file.data(), file.size(), image, &problem) != TgaResult::ok) {
        inspection.error(atOffset(problem.offset), problem.reason);
        return;
    }
    inspection.content = {{"width", image.width},
                          {"height", image.height},
                          {"bitsPerPixel", image.depth * 8},
                          {"compression", compressionOf(image.kind)},
                          {"topRowFirst", image.reverseRows}};
    if (image.kind == TgaKind::unsupported)
        inspection.warn(atOffset(0), "a TGA of another type, or with an identification field, a "
                                     "colour map or an origin: all its pixels are black");
    if (!std::has_single_bit(image.width) || !std::has_single_bit(image.height))
        inspection.warn(atOffset(12), "sides that are no powers of two: drivers without "
                                      "GL_ARB_texture_non_power_of_two do not draw it");
}

} // namespace ravolt::tool::inspect
