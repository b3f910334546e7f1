// The pixels that reach the texture, against what another decoder makes of the same video.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RVOPENGL.h"
#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace ravolt::test {

namespace {

using namespace std::string_literals;

struct Color {
    int channels[3] = {};

    Color() = default;
    explicit Color(const unsigned char *rgb) : channels{rgb[0], rgb[1], rgb[2]} {}
};

// How far two pictures are apart, over all channels of all pixels.
struct Distance {
    int maximum = 0;
    double squares = 0;
    std::size_t number = 0;

    void add(const Color &a, const Color &b) {
        for (int channel = 0; channel < 3; ++channel, ++number) {
            const int difference = std::abs(a.channels[channel] - b.channels[channel]);
            maximum = std::max(maximum, difference);
            squares += difference * difference;
        }
    }
    // Peak signal to noise ratio in decibels; exact pictures count as 99.
    double psnr() const {
        return squares == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * double(number) / squares);
    }
};

// The planes of a video as the other decoder has them, and their colours by the formula of BT.601:
// each chroma sample stands for two by two pixels, of the same field where the video has two, and
// its share is rounded to whole steps of luma.
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
        Color color;
        for (int channel = 0; channel < 3; ++channel)
            color.channels[channel] = static_cast<int>(std::clamp(
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

// What the other decoder's own conversion makes of them, in even sizes.
class Colors {
  public:
    explicit Colors(const VideoSample &sample)
        : width(sample.width / 2 * 2), height(sample.height / 2 * 2),
          bytes(bytesOf(sample.name + ".rgb"s)) {
        EXPECT_EQ(std::size_t(width) * height * 3 * framesPerVideo, bytes.size()) << sample.name;
    }

    bool has(unsigned int x, unsigned int y) const { return x < width && y < height; }
    Color at(unsigned int frame, unsigned int x, unsigned int y) const {
        return Color(&bytes[((std::size_t(frame) * height + y) * width + x) * 3]);
    }

  private:
    unsigned int width, height;
    Bytes bytes;
};

class Pixels : public EngineTest, public testing::WithParamInterface<VideoSample> {
  protected:
    // Goes on to the next frame that is copied to the texture.
    bool nextFrame(RVVIDEO &video) {
        while (video.getStatus() == RV_VIDEO_PLAY) {
            if (callsOf([&] { video.update(1); }).contains("glTexSubImage2D"))
                return true;
        }
        return false;
    }

    static Bytes pixelsOf(const RVTEXTURE &texture) {
        Bytes pixels(std::size_t(texture.getSizeX()) * texture.getSizeY() * 3);
        glBindTexture(GL_TEXTURE_2D, texture.getGLId());
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }
};

TEST_P(Pixels, AreThoseOfTheOtherDecoder) {
    const VideoSample &sample = GetParam();
    const TestVideo video(pathOf(sample.name));
    RVTEXTURE *screen = makeScreen(wholeBlocks(sample.width), wholeBlocks(sample.height));
    video->setTexture(screen);
    video->play();

    const Planes planes(sample);
    const Colors colors(sample);
    Distance toPlanes, toColors, firstToPlanes;
    unsigned int frame = 0;
    for (; nextFrame(*video); ++frame) {
        ASSERT_LT(frame, framesPerVideo);
        const Bytes shown = pixelsOf(*screen);
        for (unsigned int y = 0; y < sample.height; ++y)
            for (unsigned int x = 0; x < sample.width; ++x) {
                const Color is(&shown[(std::size_t(y) * screen->getSizeX() + x) * 3]);
                const Color wanted = planes.at(frame, x, y);
                toPlanes.add(is, wanted);
                if (frame == 0)
                    firstToPlanes.add(is, wanted);
                if (colors.has(x, y))
                    toColors.add(is, colors.at(frame, x, y));
            }
    }
    EXPECT_EQ(framesPerVideo, frame);
    // The two decoders round their inverse transform each in its own way, by one step of a sample
    // here and there, and what is predicted carries it on until the next picture of its own.
    EXPECT_GT(firstToPlanes.psnr(), 57.0);
    EXPECT_LE(firstToPlanes.maximum, 5);
    EXPECT_GT(toPlanes.psnr(), 53.0);
    EXPECT_LE(toPlanes.maximum, 8);
    // Roundings of colours besides: one of the other decoder, and of the engine's, which rounds the
    // share of chroma to whole steps of luma, two for red and blue and three for green. Evenly
    // distributed, they alone make 53.1 dB.
    EXPECT_GT(toColors.psnr(), 51.0);
    EXPECT_LE(toColors.maximum, 8);
    std::printf("%-30s planes: PSNR %5.2f dB, largest %d (first frame %5.2f dB, %d); "
                "rgb: PSNR %5.2f dB, largest %d\n",
                sample.name, toPlanes.psnr(), toPlanes.maximum, firstToPlanes.psnr(),
                firstToPlanes.maximum, toColors.psnr(), toColors.maximum);
}

// Rows that are no multiple of four bytes, in the video's memory and in the texture.
TEST_P(Pixels, AreTheSameInATextureOfThePicturesSize) {
    const VideoSample &sample = GetParam();
    const TestVideo video(pathOf(sample.name)), cut(pathOf(sample.name));
    RVTEXTURE *whole = makeScreen(wholeBlocks(sample.width) + 5, wholeBlocks(sample.height) + 3);
    RVTEXTURE *exact = makeScreen(sample.width, sample.height);
    video->setTexture(whole);
    cut->setTexture(exact);
    video->play();
    cut->play();
    for (int frame = 0; frame < 3; ++frame) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
        ASSERT_TRUE(nextFrame(*video) && nextFrame(*cut));
        const Bytes wide = pixelsOf(*whole), narrow = pixelsOf(*exact);
        for (unsigned int y = 0; y < whole->getSizeY(); ++y) {
            const auto row = wide.begin() + std::ptrdiff_t(y) * whole->getSizeX() * 3;
            const auto end = row + std::ptrdiff_t(wholeBlocks(sample.width)) * 3;
            if (y < sample.height) {
                const auto other = narrow.begin() + std::ptrdiff_t(y) * sample.width * 3;
                EXPECT_TRUE(std::equal(other, other + sample.width * 3, row)) << y;
            }
            // What lies beside the frame stays as it was.
            const auto beside = y < wholeBlocks(sample.height) ? end : row;
            EXPECT_TRUE(std::all_of(beside, row + whole->getSizeX() * 3, [](unsigned char value) {
                return value == 0;
            })) << y;
        }
    }
}

// The rows of the picture alone, the other way up, from the frame on at which the switch was
// turned.
TEST_P(Pixels, AreThoseOfTheUnflippedFrameBottomUp) {
    const VideoSample &sample = GetParam();
    for (const unsigned int margin : {0u, 21u}) {
        const TestVideo plain(pathOf(sample.name)), flipped(pathOf(sample.name));
        RVTEXTURE *upright = makeScreen(sample.width + margin, sample.height + margin);
        RVTEXTURE *turned = makeScreen(sample.width + margin, sample.height + margin);
        plain->setTexture(upright);
        flipped->setTexture(turned);
        plain->play();
        flipped->play();
        for (const bool flip : {true, false, true, true}) {
            flip ? flipped->flipOn() : flipped->flipOff();
            ASSERT_TRUE(nextFrame(*plain) && nextFrame(*flipped));
            const Bytes is = pixelsOf(*turned), wanted = pixelsOf(*upright);
            const std::size_t rowBytes = std::size_t(upright->getSizeX()) * 3;
            for (unsigned int y = 0; y < sample.height; ++y) {
                const unsigned int other = flip ? sample.height - 1 - y : y;
                const unsigned char *row = &wanted[other * rowBytes];
                ASSERT_TRUE(std::equal(row, row + sample.width * 3, &is[y * rowBytes]))
                    << "row " << y << ", flipped: " << flip;
            }
        }
    }
}

TEST_P(Pixels, OfAFlippedFrameEndWithThePicture) {
    const VideoSample &sample = GetParam();
    const TestVideo video(pathOf(sample.name));
    RVTEXTURE *screen = makeScreen(sample.width + 21, sample.height + 21);
    video->setTexture(screen);
    video->flipOn();
    video->play();
    ASSERT_TRUE(nextFrame(*video));
    const Bytes pixels = pixelsOf(*screen);
    const auto above =
        pixels.begin() + std::ptrdiff_t(sample.height) * std::ptrdiff_t(screen->getSizeX()) * 3;
    EXPECT_TRUE(std::all_of(above, pixels.end(), [](unsigned char value) { return value == 0; }));
}

INSTANTIATE_TEST_SUITE_P(Videos, Pixels, testing::ValuesIn(samples),
                         [](const auto &sample) { return std::string(sample.param.name); });

} // namespace

} // namespace ravolt::test
