// Videos, as far as the header of their first sequence.

#include "tools/common/fileStart.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <algorithm>
#include <array>

namespace ravolt::tool::inspect {

namespace {

using Start = std::vector<unsigned char>;

constexpr unsigned char sequenceCode = 0xb3, extensionCode = 0xb5, packCode = 0xba;
constexpr unsigned int maxSize = 4096; // the decoder skips larger sequences

// Frames in a second by the code in the header.
constexpr std::array<double, 9> frameRates = {0,  24000 / 1001.0, 24, 25, 30000 / 1001.0, 30,
                                              50, 60000 / 1001.0, 60};

// The bytes after the start code, from an offset on; the end where there is none.
std::size_t findCode(const Start &start, unsigned char code, std::size_t from = 0) {
    const std::array<unsigned char, 4> wanted = {0, 0, 1, code};
    const auto at = std::search(start.begin() + static_cast<long>(from), start.end(),
                                wanted.begin(), wanted.end());
    return at == start.end() ? start.size() : static_cast<std::size_t>(at - start.begin()) + 4;
}

// The sequence extension, which MPEG-2 has at once after the header.
bool hasExtension(const Start &start, std::size_t header) {
    const std::size_t extension = findCode(start, extensionCode, header);
    return extension < start.size() && extension - header < 200 && start[extension] >> 4 == 1;
}

void describe(const Start &start, std::size_t header, Inspection &inspection) {
    const unsigned char *bytes = &start[header];
    unsigned int width = bytes[0] << 4 | bytes[1] >> 4, height = (bytes[1] & 15) << 8 | bytes[2];
    const bool mpeg2 = hasExtension(start, header);
    if (const std::size_t extension = findCode(start, extensionCode, header);
        mpeg2 && extension + 3 <= start.size()) {
        width |= (start[extension + 1] & 1u) << 13 | (start[extension + 2] & 0x80u) << 5;
        height |= (start[extension + 2] & 0x60u) << 7;
    }
    const unsigned int rate = bytes[3] & 15;
    inspection.content = {{"standard", mpeg2 ? "MPEG-2" : "MPEG-1"},
                          {"width", width},
                          {"height", height},
                          {"framesPerSecond", rate > 0 && rate < frameRates.size()
                                                  ? Json(frameRates[rate])
                                                  : Json(nullptr)}};
    if (width == 0 || height == 0 || width > maxSize || height > maxSize)
        inspection.warn(atOffset(header), std::to_string(width) + " x " + std::to_string(height) +
                                              " pixels: none of its frames is shown");
}

} // namespace

// The engine opens any file as a video, so nothing here is an error.
void inspectVideo(Inspection &inspection) {
    const std::string bytes = startOf(inspection.file);
    const Start start(bytes.begin(), bytes.end());
    const std::size_t header = findCode(start, sequenceCode);
    constexpr std::size_t headerBytes = 8;
    if (findCode(start, packCode) < std::min(header, start.size()))
        inspection.warn(atOffset(0), "a program stream: only elementary video streams are decoded");
    if (header + headerBytes > start.size())
        inspection.warn(atOffset(0), "no header of a sequence in the first megabyte");
    else
        describe(start, header, inspection);
}

} // namespace ravolt::tool::inspect
