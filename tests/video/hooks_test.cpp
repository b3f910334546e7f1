// The hooks by which an application gives libmpeg2 its own memory, in a process of their own each:
// the hooks are one pair for the whole process.

#include "tests/video/videos.h"
#include "video/decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>

extern "C" { // missing in its header
#include <mpeg2.h>
}

namespace ravolt::test {

namespace {

class Decoder {
  public:
    explicit Decoder(const char *name) {
        stream->file = std::fopen(pathOf(name).c_str(), "rb");
        stream->size = -1;
        EXPECT_TRUE(stream->file && startDecoder(*stream));
    }
    ~Decoder() {
        stopDecoder(*stream);
        std::fclose(stream->file);
    }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    // Up to so many frames; the number of them.
    unsigned int play(unsigned int limit) const {
        unsigned int frames = 0;
        while (frames < limit && stream->size != 0)
            frames += decodeStep(*stream).pixels != nullptr;
        return frames;
    }

  private:
    std::unique_ptr<RVVIDEO_STREAM> stream = std::make_unique<RVVIDEO_STREAM>();
};

// An application's memory, whose blocks nobody else can release.
std::set<void *> blocks;
std::size_t allocated = 0;

void *allocateOwn(unsigned int bytes, mpeg2_alloc_t) {
    void *const block = std::aligned_alloc(64, (std::size_t{bytes} + 63) / 64 * 64);
    blocks.insert(block);
    ++allocated;
    return block;
}

int freeOwn(void *block) {
    if (blocks.erase(block) == 0)
        return 0;
    std::free(block);
    return 1;
}

// A decoder from before the hooks, and one with them.
[[noreturn]] void playWithOwnHooks() {
    {
        const Decoder before("ffmpeg2_64x48_b");
        EXPECT_EQ(before.play(3), 3u);
        mpeg2_malloc_hooks(allocateOwn, freeOwn);
        const Decoder after("ffmpeg1_50x38_b");
        EXPECT_EQ(before.play(framesPerVideo), framesPerVideo - 3);
        EXPECT_EQ(after.play(framesPerVideo), framesPerVideo);
    }
    EXPECT_GT(allocated, 5u);
    EXPECT_TRUE(blocks.empty());
    std::exit(testing::Test::HasFailure());
}

TEST(HooksOfVideosDeathTest, HooksOfTheApplicationReplaceThatOfTheEngine) {
    EXPECT_EXIT(playWithOwnHooks(), testing::ExitedWithCode(0), "");
}

// Whether a block of the application is cleared, and aligned for vector instructions.
[[noreturn]] void allocateAsApplication() {
    constexpr unsigned int bytes = 5000;
    const auto allocate = [] {
        return static_cast<unsigned char *>(mpeg2_malloc(bytes, MPEG2_ALLOC_YUV));
    };
    unsigned char *block = allocate();
    std::fill_n(block, bytes, 1);
    mpeg2_free(block);
    block = allocate();
    EXPECT_EQ(std::count(block, block + bytes, 0), std::ptrdiff_t{bytes});
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
    mpeg2_malloc_hooks(nullptr, nullptr);
    mpeg2_free(block); // also where the application removes all hooks
    std::exit(testing::Test::HasFailure());
}

TEST(HooksOfVideosDeathTest, MemoryOfAnApplicationThatUsesTheLibraryIsClearedAndItsOwnToRelease) {
    EXPECT_EXIT(allocateAsApplication(), testing::ExitedWithCode(0), "");
}

} // namespace

} // namespace ravolt::test
