#pragma once

// The videos that makeVideos.sh makes in the build folder, and videos composed of them.

#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "tests/support/files.h"

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

constexpr unsigned int framesPerVideo = 12;
constexpr unsigned int wholeVideo = 1000000; // more steps than any video has

struct VideoSample {
    const char *name;
    unsigned int width, height;
    bool fields = false; // of two moments in each frame

    friend void PrintTo(const VideoSample &sample, std::ostream *out) { *out << sample.name; }
};
inline const VideoSample samples[] = {
    {"ffmpeg1_16x16", 16, 16},
    {"ffmpeg1_50x38_b", 50, 38},
    {"ffmpeg1_352x288_b", 352, 288},
    {"ffmpeg2_16x16", 16, 16},
    {"ffmpeg2_50x38", 50, 38},
    {"ffmpeg2_51x37_b", 51, 37},
    {"ffmpeg2_64x48_b", 64, 48},
    {"ffmpeg2_176x144", 176, 144},
    {"ffmpeg2_352x288_fields_b", 352, 288, true},
    {"mjpegtools1_176x144", 176, 144},
    {"mjpegtools1_352x288_b", 352, 288},
    {"mjpegtools2_64x48", 64, 48},
    {"mjpegtools2_176x144_b", 176, 144},
    {"mjpegtools2_352x288_fields_b", 352, 288, true},
};

inline std::string pathOf(const std::string &name) { return RAVOLT_VIDEOS + name; }

inline Bytes bytesOf(const std::string &name) {
    const Bytes bytes = readFile(pathOf(name));
    EXPECT_FALSE(bytes.empty()) << name;
    return bytes;
}

// Sizes in whole macroblocks, as the decoder has them.
inline unsigned int wholeBlocks(unsigned int pixels) { return (pixels + 15) / 16 * 16; }

// A copy in which `change` has been called with the bytes after each start code of this value.
template <class Change> Bytes withHeaders(Bytes data, unsigned char code, Change change) {
    for (std::size_t at = 0; at + 9 < data.size(); ++at)
        if (data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1 && data[at + 3] == code)
            change(&data[at + 4]);
    return data;
}

// A video with all bits set that the extension of a sequence adds on top of its width and height.
inline Bytes withGiantSize(Bytes data) {
    return withHeaders(std::move(data), 0xb5, [](unsigned char *extension) {
        if (extension[0] >> 4 == 1) {
            extension[1] |= 1;    // width, high bit
            extension[2] |= 0xe0; // width, low bit; height, both
        }
    });
}

// A video of a test. Its stream is closed with it, which the destructor of RVVIDEO does not do.
class TestVideo {
  public:
    TestVideo() : video(new RVVIDEO) {}
    explicit TestVideo(const std::string &path, RVTEXTURE *texture = nullptr) : TestVideo() {
        EXPECT_TRUE(video->load(path.c_str()));
        video->setTexture(texture);
    }
    ~TestVideo() {
        video->load(nullptr);
        delete video;
    }
    TestVideo(const TestVideo &) = delete;
    TestVideo &operator=(const TestVideo &) = delete;

    RVVIDEO *operator->() const { return video; }
    RVVIDEO &operator*() const { return *video; }

  private:
    RVVIDEO *video;
};

class PlayingVideo : public TestVideo {
  public:
    explicit PlayingVideo(const std::string &path, RVTEXTURE *texture = nullptr)
        : TestVideo(path, texture) {
        (*this)->play();
    }
};

// A texture for videos, with a reference; the engine owns it.
inline RVTEXTURE *makeScreen(unsigned int width, unsigned int height) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(false, false, true);
    EXPECT_TRUE(texture->create(width, height, 3));
    texture->incReferences();
    return texture;
}

} // namespace ravolt::test
