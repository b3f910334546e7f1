// Videos that are cut off, damaged or none at all. Nothing here may crash, hang, or access foreign
// memory, which the sanitizers check: every pixel of every decoded frame is read.

#include "ravolt/RVVIDEO.h"

#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"
#include "video/decoder.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <numeric>
#include <random>
#include <string>

namespace ravolt::test {

namespace {

// Small ones, so that there can be many.
const char *const smallVideos[] = {"ffmpeg1_16x16", "ffmpeg1_50x38_b", "ffmpeg2_50x38",
                                   "ffmpeg2_64x48_b", "mjpegtools2_64x48"};

struct Ignore {
    void operator()(const unsigned char *, std::size_t) const {}
};

// Decodes a video from memory, to its end; the number of its frames. `use` is called with the
// pixels of each and their size.
template <class Use = Ignore> unsigned int playThrough(Bytes data, Use use = {}) {
    if (data.empty())
        return 0;
    unsigned int frames = 0;
    auto stream = std::make_unique<RVVIDEO_STREAM>();
    stream->file = fmemopen(data.data(), data.size(), "rb");
    EXPECT_TRUE(startDecoder(*stream));
    std::size_t steps = 0;
    for (stream->size = -1; stream->size != 0 && !testing::Test::HasFailure(); ++steps) {
        EXPECT_LE(steps, data.size() + 100) << "the video does not end";
        const VideoFrame frame = decodeStep(*stream);
        if (!frame.pixels)
            continue;
        ++frames;
        EXPECT_LE(frame.pictureWidth, frame.width);
        EXPECT_LE(frame.pictureHeight, frame.height);
        const std::size_t bytes = std::size_t(frame.width) * frame.height * 3;
        EXPECT_LE(std::accumulate(frame.pixels, frame.pixels + bytes, 0ul), 255 * bytes); // reads
        use(frame.pixels, bytes);
    }
    stopDecoder(*stream);
    std::fclose(stream->file);
    return frames;
}

class Damage {
  public:
    explicit Damage(unsigned int seed) : numbers(seed) {}

    std::size_t below(std::size_t limit) { return numbers() % limit; }

    Bytes anyVideo() { return bytesOf(smallVideos[below(std::size(smallVideos))]); }

    // Some bits, anywhere.
    void flipBits(Bytes &data) {
        for (std::size_t count = 1 + below(20); count > 0; --count)
            data[below(data.size())] ^= static_cast<unsigned char>(1u << below(8));
    }

    // Some bytes of headers: they follow start codes.
    void spoilHeaders(Bytes &data) {
        std::vector<std::size_t> codes;
        for (std::size_t at = 0; at + 2 < data.size(); ++at)
            if (data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1)
                codes.push_back(at);
        for (std::size_t count = 1 + below(10); count > 0 && !codes.empty(); --count) {
            const std::size_t at = codes[below(codes.size())] + 3 + below(12);
            if (at < data.size())
                data[at] = static_cast<unsigned char>(numbers());
        }
    }

    Bytes garbage(std::size_t size, bool startCodes) {
        Bytes bytes(size);
        for (unsigned char &byte : bytes)
            byte = static_cast<unsigned char>(numbers());
        for (std::size_t at = 0; startCodes && at + 8 < size; at += 4 + below(60)) {
            bytes[at] = bytes[at + 1] = 0;
            bytes[at + 2] = 1;
            if (below(2))
                bytes[at + 3] = static_cast<unsigned char>(0xb0 + below(16));
        }
        return bytes;
    }

  private:
    std::mt19937 numbers;
};

TEST(DamagedVideo, CutAtEitherEndThePartPlaysAsFarAsItGoes) {
    for (const char *name : smallVideos) {
        const Bytes whole = bytesOf(name);
        const auto part = [&whole](std::size_t from, std::size_t to) {
            const auto start = whole.begin();
            return Bytes(start + std::ptrdiff_t(from), start + std::ptrdiff_t(to));
        };
        unsigned int shown = 0;
        for (std::size_t size = 0; size < whole.size(); size += whole.size() / 400 + 1) {
            const unsigned int frames = playThrough(part(0, size));
            EXPECT_GE(frames, shown) << name << " cut at " << size;
            shown = frames;
        }
        EXPECT_GE(shown, framesPerVideo - 2) << name;
        EXPECT_EQ(playThrough(whole), framesPerVideo) << name;
        for (std::size_t from = 0; from < whole.size(); from += whole.size() / 200 + 1)
            EXPECT_LE(playThrough(part(from, whole.size())), framesPerVideo);
    }
}

TEST(DamagedVideo, DamagedPartsAreSkipped) {
    unsigned int frames = 0;
    for (unsigned int seed = 0; seed < 1500; ++seed) {
        SCOPED_TRACE(seed);
        Damage damage(seed);
        Bytes data = damage.anyVideo();
        damage.flipBits(data);
        if (seed % 2)
            damage.spoilHeaders(data);
        frames += playThrough(data);
    }
    EXPECT_GT(frames, 1500u); // damage does not end a video

    for (unsigned int seed = 0; seed < 300; ++seed) { // three videos, each cut off
        SCOPED_TRACE(seed);
        Damage damage(seed);
        Bytes data;
        for (int part = 0; part < 3; ++part) {
            Bytes next = damage.anyVideo();
            if (damage.below(2))
                damage.flipBits(next);
            next.resize(damage.below(next.size()) + 1);
            data = data + next;
        }
        playThrough(data);
    }
}

// The heap fills what it allocates while one exists, as far as a sanitizer's heap does not.
class FilledHeap {
  public:
    explicit FilledHeap(unsigned char byte) {
        mallopt(M_MMAP_THRESHOLD, 1 << 25); // else large blocks are new pages
        mallopt(M_PERTURB, static_cast<unsigned char>(~byte));
    }
    ~FilledHeap() { mallopt(M_PERTURB, 0); }
    FilledHeap(const FilledHeap &) = delete;
    FilledHeap &operator=(const FilledHeap &) = delete;
};

// The pixels of all frames, decoded in a heap that is filled.
Bytes pixelsOf(const Bytes &data, unsigned char fill) {
    const FilledHeap heap(fill);
    Bytes all;
    playThrough(data, [&all](const unsigned char *pixels, std::size_t bytes) {
        all.insert(all.end(), pixels, pixels + bytes);
    });
    return all;
}

TEST(DamagedVideo, FramesDoNotShowWhatTheMemoryContainedBefore) {
    for (const char *name : smallVideos) { // without the frames that the others refer to
        SCOPED_TRACE(name);
        const Bytes whole = bytesOf(name);
        const Bytes data(whole.begin() + std::ptrdiff_t(whole.size() / 3), whole.end());
        EXPECT_TRUE(pixelsOf(data, 0x11) == pixelsOf(data, 0xee));
    }
    for (unsigned int seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        Damage damage(seed);
        Bytes data = damage.anyVideo();
        damage.flipBits(data);
        damage.spoilHeaders(data);
        EXPECT_TRUE(pixelsOf(data, 0x11) == pixelsOf(data, 0xee));
    }
}

TEST(DamagedVideo, GarbageHasNoFrames) {
    for (unsigned int seed = 0; seed < 40; ++seed) {
        Damage damage(seed);
        EXPECT_EQ(playThrough(damage.garbage(1 + damage.below(20000), false)), 0u);
        playThrough(damage.garbage(20000, true));
    }
    for (const unsigned char byte : {0, 1, 255})
        EXPECT_EQ(playThrough(Bytes(10000, byte)), 0u);
}

// The headers of sequence and picture say that there are fields, of which each has half of the
// lines: eight here. The decoder would write sixteen.
TEST(DamagedVideo, FieldsLowerThanAMacroblockAreSkipped) {
    const Bytes data = bytesOf("ffmpeg2_16x16");
    EXPECT_EQ(playThrough(data), framesPerVideo);
    EXPECT_EQ(playThrough(withHeaders(data, 0xb5,
                                      [](unsigned char *extension) {
                                          if (extension[0] >> 4 == 8) // of a picture
                                              extension[2] = (extension[2] & ~3) | 1;
                                      })),
              0u);
}

// The decoder would allocate gigabytes.
TEST(DamagedVideo, SizeThatNoTextureHasGetsNoMemory) {
    EXPECT_EQ(playThrough(withGiantSize(bytesOf("ffmpeg2_64x48_b"))), 0u);
}

class DamagedVideos : public SilentEngineTest {};

// The same through the class, with a texture.
TEST_F(DamagedVideos, LoadAndPlayLikeAnyOther) {
    const TestVideo video;
    video->setTexture(makeScreen(64, 64));
    for (unsigned int seed = 0; seed < 60; ++seed) {
        Damage damage(seed);
        Bytes data = damage.anyVideo();
        damage.flipBits(data);
        damage.spoilHeaders(data);
        data.resize(data.size() - damage.below(data.size() / 2));
        writeFile("damaged", data);
        ASSERT_TRUE(video->load("damaged"));
        video->play();
        EXPECT_TRUE(video->update(wholeVideo));
        EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    }
    for (const Bytes &data :
         {Bytes(), Bytes(1, 0), Bytes(4096, 0), Damage(1).garbage(5000, true)}) {
        writeFile("garbage", data);
        ASSERT_TRUE(video->load("garbage"));
        video->playLoop();
        EXPECT_TRUE(video->update(100));
        EXPECT_EQ(video->getStatus(), RV_VIDEO_PLAYLOOP);
    }
}

} // namespace

} // namespace ravolt::test
