// Videos that are cut off, damaged or none at all. Nothing here may crash, hang, or leave its
// memory, which the sanitizers watch: every pixel of every frame that the decoder hands out is
// read.

#include "ravolt/RVVIDEO.h"

#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"
#include "video/decoder.h"

#include <gtest/gtest.h>

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

struct Played {
    unsigned int frames = 0;
    unsigned long pixels = 0; // their sum, so that each one has been read
};

// Decodes a video from memory, to its end.
Played playThrough(Bytes data) {
    Played played;
    if (data.empty())
        return played;
    auto stream = std::make_unique<RVVIDEO_STREAM>();
    stream->file = fmemopen(data.data(), data.size(), "rb");
    EXPECT_TRUE(startDecoder(*stream));
    std::size_t steps = 0;
    for (stream->size = -1; stream->size != 0; ++steps) {
        if (steps > data.size() + 100) {
            ADD_FAILURE() << "the video does not end";
            break;
        }
        const VideoFrame frame = decodeStep(*stream);
        if (!frame.pixels)
            continue;
        ++played.frames;
        EXPECT_LE(frame.pictureWidth, frame.width);
        EXPECT_LE(frame.pictureHeight, frame.height);
        played.pixels = std::accumulate(frame.pixels,
                                        frame.pixels + std::size_t(frame.width) * frame.height * 3,
                                        played.pixels);
    }
    stopDecoder(*stream);
    std::fclose(stream->file);
    return played;
}

class Damage {
  public:
    explicit Damage(unsigned int seed) : numbers(seed) {}

    std::size_t below(std::size_t limit) { return numbers() % limit; }

    // Some bits, anywhere.
    void flipBits(Bytes &data) {
        for (std::size_t count = 1 + below(20); count > 0; --count)
            data[below(data.size())] ^= static_cast<unsigned char>(1u << below(8));
    }

    // Some bytes of headers, which stand behind start codes.
    void spoilHeaders(Bytes &data) {
        const Bytes start = {0, 0, 1};
        std::vector<std::size_t> codes;
        for (auto at = data.begin();; ++at) {
            at = std::search(at, data.end(), start.begin(), start.end());
            if (at == data.end())
                break;
            codes.push_back(static_cast<std::size_t>(at - data.begin()));
        }
        for (std::size_t count = 1 + below(10); count > 0 && !codes.empty(); --count) {
            const std::size_t place = codes[below(codes.size())] + 3 + below(12);
            if (place < data.size())
                data[place] = static_cast<unsigned char>(numbers());
        }
    }

    Bytes garbage(std::size_t size, bool startCodes) {
        Bytes bytes(size);
        for (unsigned char &byte : bytes)
            byte = static_cast<unsigned char>(numbers());
        for (std::size_t place = 0; startCodes && place + 8 < size; place += 4 + below(60)) {
            bytes[place] = bytes[place + 1] = 0;
            bytes[place + 2] = 1;
            if (below(2))
                bytes[place + 3] = static_cast<unsigned char>(0xb0 + below(16));
        }
        return bytes;
    }

  private:
    std::mt19937 numbers;
};

TEST(DamagedVideo, CutAnywhereItPlaysAsFarAsItGoes) {
    for (const char *name : smallVideos) {
        const Bytes whole = bytesOf(name);
        const std::size_t step = whole.size() / 400 + 1;
        unsigned int most = 0;
        for (std::size_t size = 0; size < whole.size(); size += step) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
            const Played played = playThrough(Bytes(whole.begin(), end));
            EXPECT_GE(played.frames, most) << name << " cut at " << size;
            most = played.frames;
        }
        EXPECT_GE(most, framesPerVideo - 2) << name;
        EXPECT_EQ(playThrough(whole).frames, framesPerVideo) << name;
    }
}

TEST(DamagedVideo, CutAtItsFrontItPlaysFromWhereItCan) {
    for (const char *name : smallVideos) {
        const Bytes whole = bytesOf(name);
        for (std::size_t from = 0; from < whole.size(); from += whole.size() / 200 + 1)
            EXPECT_LE(
                playThrough(Bytes(whole.begin() + static_cast<std::ptrdiff_t>(from), whole.end()))
                    .frames,
                framesPerVideo);
    }
}

TEST(DamagedVideo, FlippedBitsAndSpoiledHeadersArePassedOver) {
    unsigned int frames = 0;
    for (unsigned int seed = 0; seed < 1500; ++seed) {
        Damage damage(seed);
        Bytes data = bytesOf(smallVideos[damage.below(std::size(smallVideos))]);
        damage.flipBits(data);
        if (seed % 2)
            damage.spoilHeaders(data);
        SCOPED_TRACE(seed);
        frames += playThrough(data).frames;
    }
    EXPECT_GT(frames, 1500u); // damage does not end a video
}

TEST(DamagedVideo, VideosThatBreakOffIntoOthersArePassedOver) {
    for (unsigned int seed = 0; seed < 300; ++seed) {
        Damage damage(seed);
        Bytes data;
        for (int part = 0; part < 3; ++part) {
            Bytes next = bytesOf(smallVideos[damage.below(std::size(smallVideos))]);
            if (damage.below(2))
                damage.flipBits(next);
            next.resize(damage.below(next.size()) + 1);
            data = data + next;
        }
        SCOPED_TRACE(seed);
        playThrough(data);
    }
}

TEST(DamagedVideo, GarbageHasNoFrames) {
    for (unsigned int seed = 0; seed < 40; ++seed) {
        Damage damage(seed);
        EXPECT_EQ(playThrough(damage.garbage(1 + damage.below(20000), false)).frames, 0u);
        playThrough(damage.garbage(20000, true));
    }
    for (const unsigned char byte : {0, 1, 255})
        EXPECT_EQ(playThrough(Bytes(10000, byte)).frames, 0u);
}

// Sequence and picture tell the decoder of fields, of which each has half of the lines: eight here.
// The decoder would write sixteen.
TEST(DamagedVideo, FieldsLowerThanAMacroblockAreSkipped) {
    Bytes data = bytesOf("ffmpeg2_16x16");
    EXPECT_EQ(playThrough(data).frames, framesPerVideo);
    const Bytes extension = {0, 0, 1, 0xb5};
    for (auto at = data.begin();; ++at) {
        at = std::search(at, data.end() - 8, extension.begin(), extension.end());
        if (at == data.end() - 8)
            break;
        if (at[4] >> 4 == 8) // of a picture
            at[6] = static_cast<unsigned char>((at[6] & ~3) | 1);
    }
    EXPECT_EQ(playThrough(data).frames, 0u);
}

// The decoder would ask for gigabytes.
TEST(DamagedVideo, SizeThatNoTextureHasGetsNoMemory) {
    EXPECT_EQ(playThrough(withGiantSize(bytesOf("ffmpeg2_64x48_b"))).frames, 0u);
}

class DamagedVideos : public SilentEngineTest {};

// The same through the class, with a texture.
TEST_F(DamagedVideos, LoadAndPlayLikeAnyOther) {
    const TestVideo video;
    video->setTexture(makeScreen(64, 64));
    for (unsigned int seed = 0; seed < 60; ++seed) {
        Damage damage(seed);
        Bytes data = bytesOf(smallVideos[damage.below(std::size(smallVideos))]);
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
