// The pixels in the texture, against those of the same video by another decoder.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RVOPENGL.h"
#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

namespace ravolt::test {

namespace {

using namespace std::string_literals;

using Color = std::array<int, 3>; // red, green, blue

// How far two pictures are apart, over all channels of all pixels.
struct Distance {
    int maximum = 0;
    double squares = 0;
    std::size_t number = 0;

    void add(const unsigned char *rgb, const Color &wanted) {
        for (int channel = 0; channel < 3; ++channel, ++number) {
            const int difference = std::abs(rgb[channel] - wanted[channel]);
            maximum = std::max(maximum, difference);
            squares += difference * difference;
        }
    }
    // Peak signal to noise ratio in decibels; exact pictures count as 99.
    double psnr() const {
        return squares == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * double(number) / squares);
    }
};

// The planes of a video by the other decoder, and their colours by the formula of BT.601: each
// chroma sample is that of two by two pixels, of the same field if the video has two, and its share
// is rounded to whole steps of luma.
class Planes {
  public:
    explicit Planes(const VideoSample &shown)
        : sample(shown), bytes(bytesOf(sample.name + ".yuv"s)) {
        EXPECT_EQ(frameBytes() * framesPerVideo, bytes.size()) << sample.name;
    }

    Color at(unsigned int frame, unsigned int x, unsigned int y) const {
        constexpr double lumaRange = 219, chromaRange = 224, share = lumaRange / chromaRange;
        constexpr double kr = 0.299, kb = 0.114, kg = 1 - kr - kb;
        const unsigned char *const lumas = bytes.data() + frameBytes() * frame;
        const unsigned char *const blues = lumas + std::size_t(sample.width) * sample.height;
        const unsigned char *const reds = blues + chromaWidth() * chromaHeight();
        const unsigned int row = sample.fields ? y / 4 * 2 + y % 2 : y / 2;
        const std::size_t chroma = row * chromaWidth() + x / 2;
        const double blue = 2 * (1 - kb) * share * (blues[chroma] - 128);
        const double red = 2 * (1 - kr) * share * (reds[chroma] - 128);
        const long shares[] = {std::lround(red),
                               std::lround(-kb / kg * blue) + std::lround(-kr / kg * red),
                               std::lround(blue)};
        const int light = lumas[std::size_t(y) * sample.width + x] - 16;
        Color color{};
        for (int channel = 0; channel < 3; ++channel)
            color[channel] = static_cast<int>(std::clamp(
                std::lround(255 / lumaRange * double(light + shares[channel])), 0l, 255l));
        return color;
    }

  private:
    std::size_t chromaWidth() const { return (sample.width + 1) / 2; }
    std::size_t chromaHeight() const { return (sample.height + 1) / 2; }
    std::size_t frameBytes() const {
        return std::size_t(sample.width) * sample.height + 2 * chromaWidth() * chromaHeight();
    }

    VideoSample sample;
    Bytes bytes;
};

class Pixels : public EngineTest, public testing::WithParamInterface<VideoSample> {
  protected:
    const VideoSample &sample = GetParam();
    const unsigned int blocksX = wholeBlocks(sample.width), blocksY = wholeBlocks(sample.height);

    // A video that plays into a texture, and the pixels of the latter.
    class Shown {
      public:
        Shown(const char *name, unsigned int sizeX, unsigned int sizeY)
            : width(sizeX), screen(makeScreen(sizeX, sizeY)), video(pathOf(name), screen) {}

        RVVIDEO *operator->() const { return &*video; }

        // Continues up to the next frame that is copied to the texture.
        bool nextFrame() {
            while (video->getStatus() == RV_VIDEO_PLAY)
                if (callsOf([this] { video->update(1); }).contains("glTexSubImage2D")) {
                    pixels.resize(std::size_t(width) * screen->getSizeY() * 3);
                    glBindTexture(GL_TEXTURE_2D, screen->getGLId());
                    glPixelStorei(GL_PACK_ALIGNMENT, 1);
                    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
                    return true;
                }
            return false;
        }

        const unsigned char *at(unsigned int x, unsigned int y) const {
            return pixels.data() + (std::size_t(y) * width + x) * 3;
        }
        // Of a part of a row.
        Bytes row(unsigned int y, unsigned int from, unsigned int to) const {
            return Bytes(at(from, y), at(to, y));
        }

      private:
        unsigned int width;
        RVTEXTURE *screen;
        PlayingVideo video;
        Bytes pixels;
    };
};

TEST_P(Pixels, AreThoseOfTheOtherDecoder) {
    Shown video(sample.name, blocksX, blocksY);
    const Planes planes(sample);
    Distance all, first;
    unsigned int frame = 0;
    for (; video.nextFrame(); ++frame) {
        ASSERT_LT(frame, framesPerVideo);
        for (unsigned int y = 0; y < sample.height; ++y)
            for (unsigned int x = 0; x < sample.width; ++x)
                all.add(video.at(x, y), planes.at(frame, x, y));
        if (frame == 0)
            first = all;
    }
    EXPECT_EQ(framesPerVideo, frame);
    // Each decoder rounds its inverse transform in its own way, by one step of a sample here and
    // there, and predicted pictures repeat it until the next picture without prediction.
    EXPECT_GT(first.psnr(), 57.0);
    EXPECT_LE(first.maximum, 5);
    EXPECT_GT(all.psnr(), 53.0);
    EXPECT_LE(all.maximum, 8);
}

// Rows that are no multiple of four bytes, in the video's memory and in the texture.
TEST_P(Pixels, AreTheSameInATextureOfThePicturesSize) {
    Shown whole(sample.name, blocksX + 5, blocksY + 3);
    Shown exact(sample.name, sample.width, sample.height);
    for (int frame = 0; frame < 3; ++frame) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
        ASSERT_TRUE(whole.nextFrame() && exact.nextFrame());
        for (unsigned int y = 0; y < blocksY + 3; ++y) {
            if (y < sample.height) {
                EXPECT_EQ(whole.row(y, 0, sample.width), exact.row(y, 0, sample.width)) << y;
            }
            // Beside the frame nothing changes.
            const unsigned int end = y < blocksY ? blocksX : 0;
            EXPECT_EQ(whole.row(y, end, blocksX + 5), Bytes(3 * (blocksX + 5 - end))) << y;
        }
    }
}

// The rows of the picture alone, from the frame on at which flipping was switched; nothing above.
TEST_P(Pixels, AreThoseOfTheUnflippedFrameBottomUp) {
    for (const unsigned int margin : {0u, 21u}) {
        const unsigned int sizeX = sample.width + margin, sizeY = sample.height + margin;
        Shown plain(sample.name, sizeX, sizeY), flipped(sample.name, sizeX, sizeY);
        flipped->flipOn();
        ASSERT_TRUE(plain.nextFrame() && flipped.nextFrame());
        for (unsigned int y = sample.height; y < sizeY; ++y)
            EXPECT_EQ(flipped.row(y, 0, sizeX), Bytes(3 * sizeX)) << y;
        for (const bool flip : {true, false, true, true}) {
            flip ? flipped->flipOn() : flipped->flipOff();
            ASSERT_TRUE(plain.nextFrame() && flipped.nextFrame());
            for (unsigned int y = 0; y < sample.height; ++y)
                ASSERT_EQ(flipped.row(y, 0, sample.width),
                          plain.row(flip ? sample.height - 1 - y : y, 0, sample.width))
                    << "row " << y << ", flipped: " << flip;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Videos, Pixels, testing::ValuesIn(samples),
                         [](const auto &sample) { return std::string(sample.param.name); });

} // namespace

} // namespace ravolt::test
