#pragma once

// The films that makeFilms.sh leaves in the build folder, and films put together from them.

#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "tests/support/files.h"

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

constexpr unsigned int framesOfFilms = 12;
constexpr unsigned int wholeFilm = 1000000; // more steps than any film has

struct Film {
    const char *name;
    unsigned int width, height;
    bool fields = false; // of two moments in each frame

    friend void PrintTo(const Film &film, std::ostream *out) { *out << film.name; }
};
inline const Film films[] = {
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

inline std::string pathOf(const std::string &film) { return RAVOLT_FILMS + film; }

inline Bytes bytesOf(const std::string &film) {
    const Bytes bytes = readFile(pathOf(film));
    EXPECT_FALSE(bytes.empty()) << film;
    return bytes;
}

// Sizes in whole macroblocks, as the decoder has them.
inline unsigned int wholeBlocks(unsigned int pixels) { return (pixels + 15) / 16 * 16; }

// A film with all bits set that the extension of a sequence adds on top of its width and height.
inline Bytes withGiantSize(Bytes film) {
    for (std::size_t place = 0; place + 7 < film.size(); ++place)
        if (film[place] == 0 && film[place + 1] == 0 && film[place + 2] == 1 &&
            film[place + 3] == 0xb5 && film[place + 4] >> 4 == 1) {
            film[place + 5] |= 1;    // width, high bit
            film[place + 6] |= 0xe0; // width, low bit; height, both
        }
    return film;
}

// A film of a test. Its stream is closed when it goes, which the destructor of RVVIDEO leaves out.
class TestFilm {
  public:
    TestFilm() : video(new RVVIDEO) {}
    explicit TestFilm(const std::string &path) : TestFilm() {
        EXPECT_TRUE(video->load(path.c_str()));
    }
    ~TestFilm() {
        video->load(nullptr);
        delete video;
    }
    TestFilm(const TestFilm &) = delete;
    TestFilm &operator=(const TestFilm &) = delete;

    RVVIDEO *operator->() const { return video; }
    RVVIDEO &operator*() const { return *video; }

  private:
    RVVIDEO *video;
};

// A texture for films, with a reference; the engine owns it.
inline RVTEXTURE *makeScreen(unsigned int width, unsigned int height) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(false, false, true);
    EXPECT_TRUE(texture->create(width, height, 3));
    texture->incReferences();
    return texture;
}

} // namespace ravolt::test
