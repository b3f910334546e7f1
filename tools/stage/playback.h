#pragma once

// Clips that are played on a scene: those beside its file, or a given one.

#include "tools/stage/sphere.h"

#include <cstddef>
#include <filesystem>
#include <ravolt/kit/clipPlayer.h>
#include <string>
#include <utility>
#include <vector>

class RVANIM;
class RVNODE;

namespace ravolt::tool {

struct ClipFile {
    std::string name;
    std::filesystem::path file; // absolute
};

// SCENE.NAME.rva beside SCENE.rve, by name; the model's own pose comes last.
std::vector<ClipFile> clipsBeside(const std::filesystem::path &scene);

// Whether that is the file of a clip rather than a name.
bool isClipFile(const std::string &nameOrFile);

class Playback {
  public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    // On the engine's scene `root`, as loaded, whose file has those skins. Create it after
    // the engine and destroy it before.
    Playback(RVNODE *root, std::vector<ClipFile> clips, std::vector<SceneSkin> skins = {},
             double framesPerSecond = 30);

    bool empty() const { return clips.empty(); }

    // Shows the first frame of a clip; `none` is the scene as it was loaded. The clip of a name, or
    // the one in an RVA file. Throws Failure when the file is broken, WrongOptions when there is no
    // such clip.
    void choose(std::size_t index);
    void choose(const std::string &nameOrFile);
    // The next or the previous one; between the last and the first is none. Throws Failure for one
    // whose file is broken: the frame that is shown remains, and that clip is removed.
    void next(bool backwards);

    std::size_t chosen() const { return current; }
    std::string name() const; // of the chosen clip
    int frames() const;       // of it; 1 with none
    int period() const;       // without the last frame of a clip whose last frame equals its first
    int frame() const { return shown; }
    void setFrame(int index); // wraps around at both ends
    // Moves on by so many seconds, from whole frame to whole frame. Whether it shows another one.
    bool advance(double seconds);

    // How many nodes the chosen clip moves that the scene does not have.
    std::size_t missingNodes() const;

    // "walk 3/30": the clip, its frame from 0 and its last frame.
    std::string state() const;

    // Around the scene in all frames of the chosen clip. The frame that is shown remains.
    Sphere sphere();

  private:
    void show(int index);
    void start();
    void showLoadedPose();
    RVANIM *clipOf(std::size_t index);

    struct Entry {
        ClipFile file;
        RVANIM *clip = nullptr; // of the engine, once it is loaded
    };

    RVNODE *scene;
    std::vector<SceneSkin> skins;
    std::vector<Entry> clips;
    kit::ClipPlayer player; // its rest pose is that of the scene as it was loaded
    kit::ClipOptions options;
    std::size_t current = none;
    int shown = 0;
};

} // namespace ravolt::tool
