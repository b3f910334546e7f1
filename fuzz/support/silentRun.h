#pragma once

// The engine in front of the silent driver, for one input: small, with a clock that counts the same
// time for each frame, without a log.

#include "fuzz/targets.h"

#include <string>

class RVNODE;
class RVSETTINGS;

namespace ravolt::fuzz {

// Settings of a small window with small render targets. The paths lead to the folder of the files.
RVSETTINGS smallSettings(bool shaders = false);

// The engine of one input. At its end all objects are deleted; it aborts where a draw was outside
// its buffers or something is left.
class SilentRun {
  public:
    // Without shaders or with them. Starting takes most of the time of an input, so that one start
    // serves many inputs, but those on a driver without an extension.
    explicit SilentRun(bool shaders = false, const char *hiddenExtension = nullptr);
    // Starts with these settings, for this input alone.
    explicit SilentRun(RVSETTINGS &settings);
    ~SilentRun();
    SilentRun(const SilentRun &) = delete;
    SilentRun &operator=(const SilentRun &) = delete;

    // Whether the engine has started.
    static bool isActive();
};

// The folder of the files of this process, with a slash at its end: deleted when it exits. There
// are a texture "t.tga" and a kerning file "k.txt".
const std::string &folder();

// Writes a file there and returns its path.
std::string writeFile(const std::string &name, Bytes bytes);

// Draws frames of a tree: the first block is 3D, the second 2D.
void drawFrames(RVNODE *root, unsigned int number);

// Prints the text and aborts, which is a finding.
[[noreturn]] void reportFinding(const std::string &text);

} // namespace ravolt::fuzz
