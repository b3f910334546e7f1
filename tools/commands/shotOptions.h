#pragma once

// The options of `shot`, and the files of its pictures.

#include "tools/commands/showOptions.h"
#include "tools/common/inputFiles.h"
#include "tools/stage/picture.h"

namespace ravolt::tool {

struct ShotOptions : ShowOptions {
    std::filesystem::path output; // "-" for standard output
    std::optional<int> samples;   // of a pixel: 1, 4, 9 or 16
    int frame = 0;                // of the clip
    std::string frames = "1"; // a number above 1: a turn round the scene; FIRST..LAST: of a video
    std::optional<int> turn;  // frames of a video in which it goes once round
    int startNumber = 0;      // of the first picture
    std::optional<double> warmUp; // seconds of an emitter
    std::string sdlFolder;
};

constexpr int maxTarget = 4096; // which needs a gigabyte of video memory

// Throws WrongOptions for a picture that is larger: "--size 5000x10: `when`at most ...".
void requireTarget(const ShotOptions &options, const std::string &when = "");

// The size of the picture, or a multiple of it: the samples of a pixel are the pixels of a square
// of the larger picture. Fewer than wanted, with a warning if they were stated, where the larger
// one would exceed `limit` in one direction.
WindowSize sizeToDraw(const ShotOptions &options, int limit);

// The pictures to draw.
struct Series {
    int pictures = 1;
    int first = 0;         // frame of a video
    bool ofVideo = false;  // FIRST..LAST, of the clip if there is one; or a turn round the scene
    bool toTheEnd = false; // of the clip, whose length is not known yet
    int turn = 0;          // frames in which it goes once round; 0 for none
    int digits = 3;        // of the number in file names that do not say
    int startNumber = 0;   // of the first picture
};

// Throws WrongOptions for a --frames that is neither.
Series seriesFrom(const ShotOptions &options);

// Inserts the number at "%d", "%4d" or "%04d" in the name, else before the extension. The name of a
// single picture without such a format is unchanged. `picture` counts those of the series from 0.
std::filesystem::path pictureFile(const std::filesystem::path &output, int picture,
                                  const Series &series);

// --output as an absolute name, since the engine works in another folder. Throws Failure when its
// folder is missing.
std::filesystem::path outputOf(const ShotOptions &options);

// Throws Failure for one of the inputs, and when the file cannot be written.
void save(const Picture &picture, const std::filesystem::path &file, const InputFiles &inputs);

} // namespace ravolt::tool
