#pragma once

// The pictures of a series, drawn one after the other.

#include "tools/stage/engine.h"

#include <filesystem>
#include <functional>

namespace ravolt::tool {

class Drawable;
class InputFiles;
struct Series;
struct ShotOptions;

constexpr double frameStep = 1 / 30.0; // seconds from one frame to the next, but for clips

struct SeriesSource {
    Drawable &drawable;
    WindowSize drawn;              // a multiple of the picture's size
    std::function<void(int)> pose; // sets the state of a frame, counted from 0
    bool dependsOnEarlier = false; // frames depend on those before them
};

// Draws the pictures, with the samples that `drawn` has, and saves them under names made of
// `output`, which is outputOf(options) before the engine starts. Frames before the first one
// are drawn unseen where later ones depend on them, so that each picture is the same in every
// series that has its frame. Returns whether a picture shows more than the background. Throws
// Failure where the engine has run out of memory.
bool drawSeries(const ShotOptions &options, const std::filesystem::path &output,
                const Series &series, const SeriesSource &source, const InputFiles &inputs);

} // namespace ravolt::tool
