// Every block of memory of the encoder is known here, since the encoder continues after a failed
// allocation as if it had succeeded.

#include "kit/files/pngWriter.h"

#include "kit/files/wholeFile.h"

#include <cstdlib>
#include <new>
#include <set>

namespace ravolt {
namespace {

// The memory of the encoder. A failed allocation throws, and the blocks are freed on the way out.
class Blocks {
  public:
    ~Blocks() {
        while (!all.empty())
            release(*all.begin());
    }

    static void *resize(void *former, std::size_t size) {
        // The entry is allocated first: nothing fails once the block is.
        std::set<void *> spare = {nullptr};
        void *block = std::realloc(former, size);
        if (!block)
            throw std::bad_alloc();
        all.erase(former);
        auto entry = spare.extract(spare.begin());
        entry.value() = block;
        all.insert(std::move(entry));
        return block;
    }

    static void release(void *block) {
        all.erase(block);
        std::free(block);
    }

  private:
    static std::set<void *> all;
};

std::set<void *> Blocks::all;

} // namespace
} // namespace ravolt

#define STBIW_MALLOC(size) ravolt::Blocks::resize(nullptr, size)
#define STBIW_REALLOC(block, size) ravolt::Blocks::resize(block, size)
#define STBIW_FREE(block) ravolt::Blocks::release(block)
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace ravolt {

namespace {

void append(void *bytes, void *data, int size) {
    const auto *start = static_cast<const unsigned char *>(data);
    auto &all = *static_cast<std::vector<unsigned char> *>(bytes);
    all.insert(all.end(), start, start + size);
}

} // namespace

std::vector<unsigned char> encodePng(const PngPicture &picture) {
    const Blocks blocks;
    std::vector<unsigned char> bytes;
    stbi_flip_vertically_on_write(!picture.topRowFirst);
    if (!stbi_write_png_to_func(append, &bytes, picture.width, picture.height, picture.channels,
                                picture.pixels, picture.width * picture.channels))
        throw std::bad_alloc(); // it has no other reason
    return bytes;
}

std::string writePng(const std::string &path, const PngPicture &picture) {
    return writeWholeFile(path, encodePng(picture));
}

} // namespace ravolt
