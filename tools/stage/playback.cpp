// Loads the clips of a scene, plays them, and finds nodes that they miss.

#include "tools/stage/playback.h"

#include "tools/common/failure.h"
#include "tools/common/rotation.h"
#include "tools/common/sceneNames.h"
#include "tools/stage/walk.h"

#include <algorithm>
#include <ravolt/RVANIM.h>
#include <tuple>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char *ending = ".rva";

// Of a clip, for its extent.
constexpr int maxSampledFrames = 24;

Vector vectorFrom(const Z3MVECTOR3D &v) { return {v.x, v.y, v.z}; }

Z3MVECTOR3D floats(const Vector &v) {
    return Z3MVECTOR3D(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

// Whether two entries are equal but for rounding. A rotation has several triples of angles.
bool areEqual(const RVBONEFRAME &a, const RVBONEFRAME &b) {
    constexpr double rounding = 1e-4;
    const Vector here = vectorFrom(a.translation), there = vectorFrom(b.translation);
    return length(here - there) <= rounding * std::max(length(here), length(there)) &&
           largestDifference(rotationFromDegrees(vectorFrom(a.rotation)),
                             rotationFromDegrees(vectorFrom(b.rotation))) <= rounding;
}

bool endsAsItBegins(RVANIM &clip) {
    const unsigned int last = clip.getNumberOfFrames() - 1u;
    for (unsigned int bone = 0; bone < clip.getNumberOfBones(); ++bone)
        if (!areEqual(*clip.getKeyframe(0, bone), *clip.getKeyframe(last, bone)))
            return false;
    return true;
}

} // namespace

std::vector<ClipFile> clipsBeside(const fs::path &scene) {
    const fs::path whole = fs::absolute(scene);
    const std::string start = whole.stem().string() + ".";
    std::vector<ClipFile> clips;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(whole.parent_path(), error)) {
        const fs::path name = entry.path().filename();
        const std::string stem = name.stem().string();
        if (name.extension() != ending || stem.rfind(start, 0) != 0)
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
    return fs::path(nameOrFile).extension() == ending;
}

Playback::Playback(RVNODE *root, std::vector<ClipFile> files, std::vector<SceneSkin> itsSkins)
    : scene(root), skins(std::move(itsSkins)) {
    for (ClipFile &file : files)
        clips.push_back({std::move(file)});
    walk(scene, [this](RVNODE *node) {
        loadedPoses.push_back(
            {node, vectorFrom(node->getPosition()), vectorFrom(node->getRotation())});
    });
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
        entry.loops = endsAsItBegins(*loaded);
    }
    return entry.clip;
}

void Playback::restoreLoadedPose() {
    for (const LoadedPose &one : loadedPoses) {
        one.node->setPosition(floats(one.position));
        one.node->setRotation(floats(one.degrees));
    }
}

void Playback::choose(std::size_t index) {
    if (index != none)
        clipOf(index);
    restoreLoadedPose();
    current = index;
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
    const bool loops = current != none && clips[current].loops;
    return loops ? std::max(1, frames() - 1) : frames();
}

void Playback::show(int index) {
    shown = index;
    if (current != none)
        clips[current].clip->apply(static_cast<unsigned int>(index), scene);
}

void Playback::setFrame(int index) {
    const int count = frames();
    show((index % count + count) % count);
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
    restoreLoadedPose();
    Extent extent(scene, skins);
    const int step = std::max(1, frames() / maxSampledFrames);
    for (int index = 0; current != none && index < frames(); index += step) {
        show(index);
        extent.add();
    }
    show(before);
    return extent.sphere();
}

} // namespace ravolt::tool
