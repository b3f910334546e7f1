#pragma once

// The options of `shot`, and the files of its pictures.

#include "tools/commands/showOptions.h"
#include "tools/common/inputFiles.h"
#include "tools/stage/picture.h"

namespace ravolt::tool {

struct ShotOptions : ShowOptions {
    std::filesystem::path output; // "-" for standard output
    bool smooth = true;           // drawn twice as large
    int frame = 0;                // of the clip
    std::string frames = "1"; // a number above 1: a turn round the scene; FIRST..LAST: of the clip
    std::optional<double> warmUp; // seconds of an emitter
    std::string sdlFolder;
};

constexpr int maxTarget = 4096; // which needs a gigabyte of video memory

// Throws WrongOptions for a picture that is larger: "--size 5000x10: `when`at most ...".
void requireTarget(const ShotOptions &options, const std::string &when = "");

// The pictures to draw.
struct Series {
    int pictures = 1;
    int firstFrame = 0;
    bool ofClip = false;   // or a turn round the scene
    bool toTheEnd = false; // of the clip, whose length is not known yet
    int digits = 3;        // of the number in file names that do not say
};

// Throws WrongOptions for a --frames that is neither.
Series seriesFrom(const ShotOptions &options);

// Inserts the number at "%d", "%4d" or "%04d" in the name, else before the extension. The name of a
// single picture without such a format is unchanged.
std::filesystem::path pictureFile(const std::filesystem::path &output, int picture,
                                  const Series &series);

// --output as an absolute name, since the engine works in another folder. Throws Failure when its
// folder is missing.
std::filesystem::path outputOf(const ShotOptions &options);

// Throws Failure for one of the inputs, and when the file cannot be written.
void save(const Picture &picture, const std::filesystem::path &file, const InputFiles &inputs);

} // namespace ravolt::tool
