// Every clip has all nodes that any clip of the model moves, so that no node remains in the pose of
// the clip that was applied before. A clip has one frame more than full
// intervals; when the movement ends between two frames, the last one shows its end.

#include "tools/convert/clips.h"

#include "tools/common/sceneNames.h"
#include "tools/convert/plainName.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace ravolt::tool {

namespace {

// assimp's default if a model does not state the length of a tick.
constexpr double defaultTicksPerSecond = 25;

std::string rounded(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", number);
    return text;
}

// Names the option with which a clip is not cut, to two significant digits.
std::string fittingRate(double maxRate) {
    if (maxRate < minFps)
        return "";
    const double unit = std::pow(10, std::floor(std::log10(maxRate)) - 1);
    char text[32];
    std::snprintf(text, sizeof text, ": --fps %.2g fits", std::floor(maxRate / unit) * unit);
    return text;
}

} // namespace

Clips::Clips(const aiScene &model, const Interpolations &ways, const Skeleton &joints,
             const Skins &allSkins, double framesPerSecond, Report &lines)
    : scene(model), interpolations(ways), skeleton(joints), skins(allSkins), fps(framesPerSecond),
      report(lines), moved(joints.joints().size(), false) {
    size = poseExtent(skins.bindPose());
    if (skins.differsFromOwnPose()) {
        report.note("the skin is bound in another pose than the model's own, which becomes the "
                    "clip '" +
                    std::string(poseClipName) + "'");
        sources.emplace_back();
        sources.back().shownName = poseClipName;
        sources.back().name = freeName(poseClipName);
    }
    for (unsigned int i = 0; i < scene.mNumAnimations; ++i)
        read(i);

    std::vector<std::vector<bool>> moving;
    for (const Source &source : sources) {
        moving.push_back(movedBy(source));
        for (std::size_t i = 0; i < moved.size(); ++i)
            moved[i] = moved[i] || moving.back()[i];
    }
    const auto number = static_cast<std::size_t>(std::count(moved.begin(), moved.end(), true));
    const bool tooMany = number > ravolt::rvaBones;
    if (tooMany && sources.size() > 1)
        warnOfOthersMoves(number);
    for (std::size_t i = 0; i < sources.size(); ++i)
        write(sources[i], tooMany ? moving[i] : moved);
}

void Clips::warnOfOthersMoves(std::size_t number) {
    report.warn("the clips move " + std::to_string(number) + " nodes together, a clip holds " +
                std::to_string(ravolt::rvaBones) +
                ": each has its own alone, the others stay as the clip before has put them");
}

std::string Clips::freeName(const std::string &wanted) {
    std::string plain = wanted.empty() ? "clip" : plainName(wanted);
    std::replace(plain.begin(), plain.end(), '.', '_'); // a full stop ends the name of the scene
    std::string name = plain;
    for (int number = 2; !names.insert(inSmallLetters(name)).second; ++number)
        name = plain + "_" + std::to_string(number);
    return name;
}

void Clips::read(unsigned int index) {
    const aiAnimation &animation = *scene.mAnimations[index];
    Source source;
    source.animation = static_cast<int>(index);
    source.name = freeName(animation.mName.C_Str());
    source.shownName = animation.mName.length ? animation.mName.C_Str() : source.name;
    if (animation.mNumMeshChannels || animation.mNumMorphMeshChannels)
        report.warn("clip '" + source.shownName +
                    "': changes of shape left out, a clip moves nodes alone");
    std::size_t unknown = 0, straightened = 0;
    std::set<std::size_t> known;
    for (unsigned int i = 0; i < animation.mNumChannels; ++i) {
        const aiNodeAnim &channel = *animation.mChannels[i];
        const std::size_t joint = skeleton.find(channel.mNodeName.C_Str());
        if (joint == noJoint) {
            ++unknown;
        } else if (known.insert(joint).second) {
            const auto found = interpolations.find({index, channel.mNodeName.C_Str()});
            const Interpolation way =
                found == interpolations.end() ? Interpolation() : found->second;
            straightened += way.lacksTangents();
            source.tracks.push_back({joint, Motion(channel, way)});
        }
    }
    if (unknown)
        report.warn("clip '" + source.shownName + "': " + counted(unknown, "node", "nodes") +
                    " that the model does not have left out");
    if (straightened)
        report.warn("clip '" + source.shownName + "': cubic interpolation of " +
                    counted(straightened, "node", "nodes") + " replaced by a linear one");

    setTimes(source, animation);
    sources.push_back(std::move(source));
}

// Some readers state durations far beyond the last key. Some formats number their frames from one:
// then the keys exceed the duration, and the clip starts with the first key.
void Clips::setTimes(Source &source, const aiAnimation &animation) {
    double first = std::numeric_limits<double>::infinity(), last = 0;
    bool continues = false;
    for (const Track &track : source.tracks) {
        first = std::min(first, track.motion.firstKey());
        last = std::max(last, track.motion.lastKey());
        continues = continues || track.motion.continuesAfterEnd();
    }
    const double duration =
        std::isfinite(animation.mDuration) ? std::max(0.0, animation.mDuration) : 0;
    const double end = continues && duration > 0 ? duration : last;
    if (!continues && std::isfinite(first) && last > duration && last - first <= duration)
        source.firstTick = first;
    if (std::isfinite(animation.mTicksPerSecond) && animation.mTicksPerSecond > 0)
        source.ticksPerSecond = animation.mTicksPerSecond;
    else
        source.ticksPerSecond = defaultTicksPerSecond;
    source.seconds = (end - source.firstTick) / source.ticksPerSecond;
    constexpr double sameFrame = 1e-3; // tolerance of keys on a frame
    const double frames = std::ceil(source.seconds * fps - sameFrame) + 1;
    constexpr auto maxFrames = static_cast<double>(ravolt::rvaFrames);
    source.frames = static_cast<std::size_t>(std::clamp(frames, 1.0, maxFrames));
    if (frames > maxFrames)
        report.warn("clip '" + source.shownName + "': " + rounded(source.seconds) +
                    " seconds cut to " + rounded((maxFrames - 1) / fps) + ", a clip has " +
                    std::to_string(ravolt::rvaFrames) + " frames at most" +
                    fittingRate((maxFrames - 1) / source.seconds));
}

// Visits the pose of each frame.
template <class Visit> void Clips::play(const Source &source, const Visit &visit) const {
    Pose before = skins.bindPose();
    for (std::size_t frame = 0; frame < source.frames; ++frame) {
        const double seconds = std::min(static_cast<double>(frame) / fps, source.seconds);
        std::vector<Affine> locals = skeleton.ownLocals();
        for (const Track &track : source.tracks)
            locals[track.joint] =
                track.motion.at(source.firstTick + seconds * source.ticksPerSecond,
                                skeleton.joints()[track.joint].node->mTransformation);
        before = skeleton.poseOf(locals, before);
        visit(before);
    }
}

bool Clips::differs(const Placement &placement, std::size_t joint) const {
    const Placement &bound = skins.bindPose().placement[joint];
    return length(placement.degrees - bound.degrees) > 1e-4 ||
           length(placement.position - bound.position) > size * 1e-6;
}

// Whether everything attached to the joint would have to change its size.
bool Clips::isRescaled(const Placement &placement, std::size_t joint) const {
    const Matrix &own = skeleton.ownPose().placement[joint].residual;
    return largestDifference(placement.residual, own) > largestEntry(own) * 1e-3;
}

std::vector<bool> Clips::movedBy(const Source &source) {
    std::vector<bool> moving(moved.size(), false), rescaled(moved.size(), false);
    play(source, [&](const Pose &pose) {
        for (std::size_t i = 0; i < moving.size(); ++i) {
            moving[i] = moving[i] || differs(pose.placement[i], i);
            const bool shown = skins.isBone(i) || skeleton.joints()[i].node->mNumMeshes > 0;
            rescaled[i] = rescaled[i] || (shown && isRescaled(pose.placement[i], i));
        }
    });
    if (const auto number = std::count(rescaled.begin(), rescaled.end(), true))
        report.warn("clip '" + source.shownName + "': scaling of " +
                    counted(static_cast<std::size_t>(number), "node", "nodes") +
                    " left out, a clip holds places and rotations alone");
    return moving;
}

// The joints that fit into a clip.
std::vector<std::size_t> Clips::writableJoints(const std::string &name,
                                               const std::vector<bool> &moving) {
    std::vector<std::size_t> joints;
    for (std::size_t i = 0; i < moving.size(); ++i)
        if (moving[i])
            joints.push_back(i);
    if (joints.size() > ravolt::rvaBones) {
        report.warn("clip '" + name + "': moves " + std::to_string(joints.size()) +
                    " nodes, a clip holds the first " + std::to_string(ravolt::rvaBones) +
                    " of them");
        joints.resize(ravolt::rvaBones);
    }
    return joints;
}

void Clips::write(const Source &source, const std::vector<bool> &moving) {
    const std::vector<std::size_t> joints = writableJoints(source.shownName, moving);
    if (joints.empty()) {
        report.note("clip '" + source.shownName + "' left out: it moves nothing");
        return;
    }
    Clip clip;
    clip.name = source.name;
    clip.animation = source.animation;
    for (std::size_t joint : joints)
        clip.frames.bones.push_back(skeleton.joints()[joint].name);
    play(source, [&](const Pose &pose) {
        std::vector<ravolt::RvaEntry> entries;
        for (std::size_t joint : joints) {
            const Placement &at = pose.placement[joint];
            entries.push_back({floatsOf(at.degrees), floatsOf(at.position), true});
        }
        clip.frames.frames.push_back(std::move(entries));
    });
    clips.push_back(std::move(clip));
}

} // namespace ravolt::tool
