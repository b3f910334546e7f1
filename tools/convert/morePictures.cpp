// ImageMagick is given the format by name and the bytes in memory, so that nothing in a picture
// chooses another reader or another file.

#include "tools/convert/morePictures.h"

#include <memory>
#include <new>
#include <wand/MagickWand.h>

namespace ravolt::tool {

namespace {

constexpr MagickSizeType longestSide = 32768;
constexpr MagickSizeType maxMemory = MagickSizeType(4) << 30;

// Once in a process; what is larger is refused by the reader itself.
void start() {
    static const bool started = [] {
        MagickWandGenesis();
        MagickSetResourceLimit(WidthResource, longestSide);
        MagickSetResourceLimit(HeightResource, longestSide);
        MagickSetResourceLimit(MemoryResource, maxMemory);
        MagickSetResourceLimit(MapResource, maxMemory);
        MagickSetResourceLimit(DiskResource, 0);
        MagickSetResourceLimit(ThreadResource, 1);
        return true;
    }();
    static_cast<void>(started);
}

using Wand = std::unique_ptr<MagickWand, decltype(&DestroyMagickWand)>;

// With a format as prefix of the name the library does not detect one from the bytes.
Wand wandFor(const char *format) {
    Wand wand(NewMagickWand(), &DestroyMagickWand);
    MagickSetFilename(wand.get(), (std::string(format) + ":picture").c_str());
    return wand;
}

// What is read of a file that was cut off counts as read, with an error beside it; warnings are of
// things that no picture needs.
bool hasError(const Wand &wand) { return MagickGetExceptionType(wand.get()) >= ErrorException; }

// Throws where there is no memory, for a picture that is as good as any.
bool readWhole(const Wand &wand, const unsigned char *bytes, std::size_t size) {
    const bool isRead = MagickReadImageBlob(wand.get(), bytes, size);
    const ExceptionType kind = MagickGetExceptionType(wand.get());
    if (kind == ResourceLimitError || kind == ResourceLimitFatalError)
        throw std::bad_alloc();
    return isRead && !hasError(wand);
}

} // namespace

Image decodeOther(const char *format, const unsigned char *bytes, std::size_t size,
                  std::uint64_t maxPixels, std::string &reason) {
    start();
    const Wand header = wandFor(format);
    if (!MagickPingImageBlob(header.get(), bytes, size)) {
        reason = std::string("is broken, or too large (") + format + ")";
        return {};
    }
    const std::uint64_t width = MagickGetImageWidth(header.get());
    const std::uint64_t height = MagickGetImageHeight(header.get());
    if (width < 1 || height < 1 || width * height > maxPixels) {
        reason = "has an impossible size";
        return {};
    }
    const Wand wand = wandFor(format);
    Image image;
    image.width = static_cast<unsigned int>(width);
    image.height = static_cast<unsigned int>(height);
    image.pixels.resize(4 * width * height);
    if (!readWhole(wand, bytes, size) ||
        (MagickResetIterator(wand.get()), !MagickNextImage(wand.get())) ||
        MagickGetImageWidth(wand.get()) != width || MagickGetImageHeight(wand.get()) != height ||
        !MagickExportImagePixels(wand.get(), 0, 0, width, height, "RGBA", CharPixel,
                                 image.pixels.data())) {
        reason = std::string("is broken (") + format + ")";
        return {};
    }
    return image;
}

} // namespace ravolt::tool
