#pragma once

// The scene file that is to be shown: the one given, or one made of a model, in a temporary folder
// that is removed with this object.

#include "tools/commands/showOptions.h"
#include "tools/common/temporaryFolder.h"
#include "tools/stage/playback.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ravolt::tool {

// Prints a report on standard error, line by line.
void say(const Report &report, const Verbosity &verbosity);

class SceneToShow {
  public:
    // Throws Failure when there is no such file or the model cannot be converted.
    SceneToShow(const ShowOptions &options, const Verbosity &verbosity);

    const std::filesystem::path &file() const { return scene; }
    // What was read for it.
    const InputFiles &inputs() const { return inputFiles; }
    // Its skins and clips, and the requested clip, valid after a change of the working folder too.
    const std::vector<SceneSkin> &skins() const { return sceneSkins; }
    const std::vector<ClipFile> &clips() const { return clipFiles; }
    const std::string &requestedClip() const { return clip; }

  private:
    void convert(const ShowOptions &options, const Verbosity &verbosity);

    std::optional<TemporaryFolder> folder;
    std::filesystem::path scene;
    std::vector<SceneSkin> sceneSkins;
    InputFiles inputFiles;
    std::vector<ClipFile> clipFiles;
    std::string clip;
};

} // namespace ravolt::tool
