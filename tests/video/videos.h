#pragma once

// The videos that makeVideos.sh leaves in the build folder, and videos put together from them.

#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "tests/support/files.h"

#include <ostream>
#include <string>
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

// A video with all bits set that the extension of a sequence adds on top of its width and height.
inline Bytes withGiantSize(Bytes data) {
    for (std::size_t place = 0; place + 7 < data.size(); ++place)
        if (data[place] == 0 && data[place + 1] == 0 && data[place + 2] == 1 &&
            data[place + 3] == 0xb5 && data[place + 4] >> 4 == 1) {
            data[place + 5] |= 1;    // width, high bit
            data[place + 6] |= 0xe0; // width, low bit; height, both
        }
    return data;
}

// A video of a test. Its stream is closed when it goes, which the destructor of RVVIDEO leaves out.
class TestVideo {
  public:
    TestVideo() : video(new RVVIDEO) {}
    explicit TestVideo(const std::string &path) : TestVideo() {
        EXPECT_TRUE(video->load(path.c_str()));
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

// A texture for videos, with a reference; the engine owns it.
inline RVTEXTURE *makeScreen(unsigned int width, unsigned int height) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(false, false, true);
    EXPECT_TRUE(texture->create(width, height, 3));
    texture->incReferences();
    return texture;
}

} // namespace ravolt::test
