// Loads the clips of a scene, plays them, and finds nodes that they miss.

#include "tools/stage/playback.h"

#include "tools/common/failure.h"
#include "tools/common/sceneNames.h"

#include <algorithm>
#include <cmath>
#include <ravolt/RVANIM.h>
#include <ravolt/RVNODE.h>
#include <tuple>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char *clipExtension = ".rva";

// Of a clip, for its extent.
constexpr int maxSampledFrames = 24;

constexpr double longestStep = 3600; // seconds, of the player

} // namespace

std::vector<ClipFile> clipsBeside(const fs::path &scene) {
    const fs::path whole = fs::absolute(scene);
    const std::string start = whole.stem().string() + ".";
    std::vector<ClipFile> clips;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(whole.parent_path(), error)) {
        const fs::path name = entry.path().filename();
        const std::string stem = name.stem().string();
        if (name.extension() != clipExtension || stem.rfind(start, 0) != 0)
            continue;
        const std::string clip = stem.substr(start.size());
        // With a full stop: a clip of another scene, whose name begins with this one's.
        if (!clip.empty() && clip.find('.') == std::string::npos)
            clips.push_back({clip, entry.path()});
    }
    std::sort(clips.begin(), clips.end(), [](const ClipFile &a, const ClipFile &b) {
        const auto rank = [](const ClipFile &clip) {
            return std::make_tuple(clip.name == poseClipName, clip.name);
        };
        return rank(a) < rank(b);
    });
    return clips;
}

bool isClipFile(const std::string &nameOrFile) {
    return fs::path(nameOrFile).extension() == clipExtension;
}

Playback::Playback(RVNODE *root, std::vector<ClipFile> files, std::vector<SceneSkin> itsSkins,
                   double framesPerSecond)
    : scene(root), skins(std::move(itsSkins)), player(root) {
    options.framesPerSecond = static_cast<float>(framesPerSecond);
    options.wholeFrames = true;
    for (ClipFile &file : files)
        clips.push_back({std::move(file)});
}

RVANIM *Playback::clipOf(std::size_t index) {
    Entry &entry = clips[index];
    if (!entry.clip) {
        std::error_code error;
        if (!fs::exists(entry.file.file, error))
            throw Failure(entry.file.file.string(), "no such file");
        RVANIM *loaded = new RVANIM; // the engine's registry owns it
        if (!loaded->load(entry.file.file.c_str()) || loaded->getNumberOfFrames() == 0) {
            delete loaded;
            throw Failure(entry.file.file.string(), "is no clip that can be played");
        }
        loaded->setTranslating(true);
        entry.clip = loaded;
    }
    return entry.clip;
}

void Playback::showLoadedPose() {
    player.stop();
    player.update(0);
}

// A clip that moves nothing of the scene does not play.
void Playback::start() {
    if (current != none && missingNodes() < clips[current].clip->getNumberOfBones())
        player.play(clips[current].clip, options);
}

void Playback::choose(std::size_t index) {
    if (index != none)
        clipOf(index);
    showLoadedPose();
    current = index;
    start();
    show(0);
}

void Playback::choose(const std::string &nameOrFile) {
    for (std::size_t i = 0; i < clips.size(); ++i)
        if (clips[i].file.name == nameOrFile)
            return choose(i);
    if (isClipFile(nameOrFile)) {
        const fs::path file = nameOrFile;
        const std::string name = file.stem().string();
        clips.push_back({{name.substr(name.rfind('.') + 1), file}});
        return choose(clips.size() - 1);
    }
    std::string all;
    for (const Entry &entry : clips)
        all += (all.empty() ? ": there are " : ", ") + entry.file.name;
    throw WrongOptions("no clip '" + nameOrFile + "'" + (all.empty() ? ": there are none" : all));
}

void Playback::next(bool backwards) {
    const std::size_t ring = clips.size() + 1; // none comes after the last
    const std::size_t place = current == none ? clips.size() : current;
    const std::size_t wanted = (place + (backwards ? ring - 1 : 1)) % ring;
    if (wanted == clips.size())
        return choose(none);
    try {
        choose(wanted);
    } catch (const Failure &) {
        clips.erase(clips.begin() + static_cast<std::ptrdiff_t>(wanted));
        if (current != none && current > wanted)
            --current;
        throw;
    }
}

std::string Playback::name() const { return current == none ? "" : clips[current].file.name; }

int Playback::frames() const {
    return current == none ? 1 : clips[current].clip->getNumberOfFrames();
}

int Playback::period() const {
    if (!player.getClip())
        return frames();
    const double duration = static_cast<double>(player.getDuration());
    return std::max(
        1, static_cast<int>(std::lround(duration * static_cast<double>(options.framesPerSecond))));
}

void Playback::show(int index) {
    shown = index;
    if (!player.getClip())
        return;
    player.seekFrame(static_cast<unsigned int>(index));
    player.update(0);
}

void Playback::setFrame(int index) {
    const int count = frames();
    show((index % count + count) % count);
}

bool Playback::advance(double seconds) {
    if (!player.getClip() || period() < 2)
        return false;
    player.update(static_cast<float>(std::min(seconds, longestStep)));
    const int before = std::exchange(shown, static_cast<int>(player.getFrame()));
    return shown != before;
}

std::size_t Playback::missingNodes() const {
    std::size_t number = 0;
    for (unsigned int bone = 0; current != none && bone < clips[current].clip->getNumberOfBones();
         ++bone)
        number += !scene->findByNameInHierarchy(clips[current].clip->getBoneName(bone));
    return number;
}

std::string Playback::state() const {
    return current == none
               ? "no clip"
               : name() + " " + std::to_string(shown) + "/" + std::to_string(frames() - 1);
}

Sphere Playback::sphere() {
    const int before = shown;
    showLoadedPose();
    Extent extent(scene, skins);
    start();
    const int step = std::max(1, frames() / maxSampledFrames);
    for (int index = 0; current != none && index < frames(); index += step) {
        show(index);
        extent.add();
    }
    show(before);
    return extent.sphere();
}

} // namespace ravolt::tool
