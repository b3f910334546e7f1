// The pose of an update: each layer adds up its clips, bone by bone, and is mixed over the layers
// below. The time of a clip is always within one pass; a longer step is made of several, so that an
// event is compared with the very numbers that the next step begins with.

#include "ravolt/kit/clipPlayer.h"

#include "kit/pose.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVNODE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace ravolt::kit {

namespace {

constexpr float maxFramesPerSecond = 1000, maxSpeed = 100, maxSeconds = 3600;

// False for what is no number, too.
bool isWithin(float value, float low, float high) { return value >= low && value <= high; }

struct Pose {
    Rotation rotation;
    Z3MVECTOR3D position;
};

// Poses of a bone, added up by weight.
struct Sum {
    Pose pose;
    double rotationWeight = 0, positionWeight = 0;
    bool moves = false, translates = false; // there is a clip that does so, of any weight

    void addRotation(const Rotation &rotation, double weight) {
        moves = true;
        rotationWeight += weight;
        if (weight > 0)
            pose.rotation = mix(pose.rotation, rotation, weight / rotationWeight);
    }
    void addPosition(const Z3MVECTOR3D &position, double weight) {
        translates = true;
        positionWeight += weight;
        if (weight > 0)
            pose.position = mix(pose.position, position, weight / positionWeight);
    }
};

Pose poseOf(const RVBONEFRAME &entry) {
    return {Rotation::from(entry.rotation), entry.translation};
}

bool areEqual(const Pose &a, const Pose &b, bool translating) {
    constexpr double rounding = 1e-4;
    constexpr double sameRotation = 1 - rounding * rounding / 8;
    if (similarity(a.rotation.quaternion, b.rotation.quaternion) < sameRotation)
        return false;
    const Z3MVECTOR3D between = b.position - a.position;
    return !translating ||
           static_cast<double>(between.length()) <=
               rounding * static_cast<double>(std::max(a.position.length(), b.position.length()));
}

unsigned int framesOf(const RVANIM &clip) {
    return std::min<unsigned int>(clip.getNumberOfFrames(), RV_ANIM_FRAMES);
}

unsigned int bonesOf(const RVANIM &clip) {
    return std::min<unsigned int>(clip.getNumberOfBones(), RV_ANIM_BONES);
}

bool endsAsItBegins(RVANIM &clip) {
    for (unsigned int bone = 0; bone < bonesOf(clip); ++bone)
        if (!areEqual(poseOf(*clip.getKeyframe(0, bone)),
                      poseOf(*clip.getKeyframe(framesOf(clip) - 1, bone)), clip.getTranslating()))
            return false;
    return true;
}

bool isAlive(const RVANIM *clip) {
    for (const RVANIM *other = RVANIM::getFirst(); other; other = other->getNext())
        if (other == clip)
            return true;
    return false;
}

} // namespace

struct ClipPlayer::Joint {
    RVNODE *node;
    std::string name;
    Pose rest;

    // While the pose of an update is made.
    Pose pose = {}; // of the layers so far
    Sum layer = {}; // of the current layer
    bool moves = false, translates = false;
};

// A clip that plays.
struct ClipPlayer::Track {
    RVANIM *clip;
    ClipOptions options;
    unsigned int frames;        // of the clip when it was started
    double duration;            // seconds of a pass
    double time;                // seconds
    bool atStart;               // an event at this very time has not occurred yet
    bool ended = false;         // replaced without a fade, or completely faded out: to be removed
    double weight, startWeight; // now, and when the layer's last fade began
    std::vector<std::pair<std::size_t, unsigned int>>
        bones; // the joint of each of the clip's bones

    // The time in frames. The time of a frame is exactly that frame, without an error of rounding.
    double frame() const;
    Pose sample(unsigned int bone) const;
};

struct ClipPlayer::Layer {
    std::vector<bool> has; // by joint; empty: all
    float weight = 1;
    std::vector<Track> tracks;  // from the oldest
    bool stopping = false;      // else the newest track fades in
    double fade = 0, faded = 0; // seconds

    void startFade(float seconds);
    void advanceFade(double seconds);
};

struct ClipPlayer::Event {
    const RVANIM *clip;
    double seconds;
    std::string name;
};

double ClipPlayer::Track::frame() const {
    constexpr double rounding = 1e-9;
    const double number = time * static_cast<double>(options.framesPerSecond);
    const double whole = std::round(number);
    return std::fabs(number - whole) < rounding ? whole : number;
}

Pose ClipPlayer::Track::sample(unsigned int bone) const {
    const unsigned int first = std::min(static_cast<unsigned int>(frame()), frames - 1);
    const unsigned int last =
        options.looping ? (first + 1) % frames : std::min(first + 1, frames - 1);
    const double part = options.wholeFrames ? 0 : std::min(1.0, frame() - first);
    const Pose from = poseOf(*clip->getKeyframe(first, bone)),
               to = poseOf(*clip->getKeyframe(last, bone));
    return {mix(from.rotation, to.rotation, part), mix(from.position, to.position, part)};
}

// The newest track fades in, unless the layer stops.
void ClipPlayer::Layer::startFade(float seconds) {
    fade = static_cast<double>(seconds);
    faded = 0;
    for (Track &track : tracks)
        track.startWeight = track.weight;
    if (fade <= 0)
        advanceFade(0);
}

void ClipPlayer::Layer::advanceFade(double seconds) {
    faded += seconds;
    const double part = faded < fade ? faded / fade : 1;
    for (Track &track : tracks) {
        const bool fadesIn = !stopping && &track == &tracks.back();
        track.weight = fadesIn ? part : track.startWeight * (1 - part);
        track.ended = part >= 1 && !fadesIn;
    }
}

ClipPlayer::ClipPlayer(RVNODE *root) {
    layers.push_back(std::make_unique<Layer>());
    if (!root) {
        zlfLog("   [!] Invalid params @ ClipPlayer::ClipPlayer\n");
        return;
    }
    std::vector<RVNODE *> pending = {root};
    std::unordered_map<std::string, bool> known;
    while (!pending.empty()) { // depth first: of equal names the first one counts
        RVNODE *node = pending.back();
        pending.pop_back();
        if (!std::exchange(known[node->getName()], true))
            joints.push_back({node,
                              node->getName(),
                              {Rotation::from(node->getRotation()), node->getPosition()}});
        for (unsigned int i = node->getNumberOfChildren(); i > 0; --i)
            pending.push_back(node->getChild(i - 1));
    }
}

ClipPlayer::~ClipPlayer() = default;

std::size_t ClipPlayer::addLayer(const std::vector<std::string> &bones, float weight) {
    auto layer = std::make_unique<Layer>();
    layer->has.resize(joints.size());
    for (const std::string &bone : bones) {
        const auto joint = std::find_if(joints.begin(), joints.end(),
                                        [&](const Joint &each) { return each.name == bone; });
        if (joint == joints.end())
            zlfLog("   [!] Bone %s not found @ ClipPlayer::addLayer\n", bone.c_str());
        else
            layer->has[static_cast<std::size_t>(joint - joints.begin())] = true;
    }
    layers.push_back(std::move(layer));
    setLayerWeight(layers.size() - 1, weight);
    return layers.size() - 1;
}

bool ClipPlayer::setLayerWeight(std::size_t layer, float weight) {
    if (layer >= layers.size() || !isWithin(weight, 0, 1)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::setLayerWeight\n");
        return false;
    }
    layers[layer]->weight = weight;
    return true;
}

std::vector<std::string> ClipPlayer::bonesFrom(RVNODE *node) {
    std::vector<std::string> names;
    std::vector<RVNODE *> pending;
    if (node)
        pending.push_back(node);
    while (!pending.empty()) {
        RVNODE *next = pending.back();
        pending.pop_back();
        names.emplace_back(next->getName());
        for (unsigned int i = next->getNumberOfChildren(); i > 0; --i)
            pending.push_back(next->getChild(i - 1));
    }
    return names;
}

bool ClipPlayer::play(RVANIM *clip, const ClipOptions &options, std::size_t layer) {
    if (!clip || layer >= layers.size() || framesOf(*clip) == 0 ||
        !isWithin(options.framesPerSecond, 1e-3f, maxFramesPerSecond) ||
        !isWithin(options.speed, -maxSpeed, maxSpeed) || !isWithin(options.fade, 0, maxSeconds)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::play\n");
        return false;
    }
    const unsigned int frames = framesOf(*clip);
    const bool closes = options.looping && frames > 1 && !endsAsItBegins(*clip);
    const double duration =
        (closes ? frames : frames - 1) / static_cast<double>(options.framesPerSecond);
    Track track = {clip, options, frames, duration, options.speed < 0 ? duration : 0,
                   true, false,   0,      0,        {}};
    for (std::size_t joint = 0; joint < joints.size(); ++joint)
        for (unsigned int bone = bonesOf(*clip); bone-- > 0;)
            if (joints[joint].name == clip->getBoneName(bone)) {
                track.bones.emplace_back(joint, bone); // of equal names the last one, as with apply
                break;
            }
    if (track.bones.empty()) {
        zlfLog("   [!] No bone of clip %s found @ ClipPlayer::play\n", clip->getFilename());
        return false;
    }
    Layer &target = *layers[layer];
    target.tracks.push_back(std::move(track));
    target.stopping = false;
    target.startFade(options.fade);
    return true;
}

bool ClipPlayer::stop(float fade, std::size_t layer) {
    if (layer >= layers.size() || !isWithin(fade, 0, maxSeconds)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::stop\n");
        return false;
    }
    layers[layer]->stopping = true;
    layers[layer]->startFade(fade);
    return true;
}

// NULL when there is none, or when it has been stopped.
const ClipPlayer::Track *ClipPlayer::playing(std::size_t layer) const {
    if (layer >= layers.size() || layers[layer]->tracks.empty())
        return nullptr;
    const Track &newest = layers[layer]->tracks.back();
    return newest.ended || !isAlive(newest.clip) ? nullptr : &newest;
}

bool ClipPlayer::setSpeed(float speed, std::size_t layer) {
    if (!playing(layer) || !isWithin(speed, -maxSpeed, maxSpeed)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::setSpeed\n");
        return false;
    }
    layers[layer]->tracks.back().options.speed = speed;
    return true;
}

bool ClipPlayer::seek(float seconds, std::size_t layer) {
    if (!playing(layer) || !isWithin(seconds, 0, getDuration(layer))) {
        zlfLog("   [!] Invalid params @ ClipPlayer::seek\n");
        return false;
    }
    Track &track = layers[layer]->tracks.back();
    track.time = std::min(static_cast<double>(seconds), track.duration);
    track.atStart = true;
    return true;
}

bool ClipPlayer::seekFrame(unsigned int frame, std::size_t layer) {
    const Track *track = playing(layer);
    if (!track || frame >= track->frames) {
        zlfLog("   [!] Invalid params @ ClipPlayer::seekFrame\n");
        return false;
    }
    Track &newest = layers[layer]->tracks.back();
    newest.time = frame / static_cast<double>(newest.options.framesPerSecond);
    newest.atStart = true;
    return true;
}

RVANIM *ClipPlayer::getClip(std::size_t layer) const {
    return playing(layer) ? playing(layer)->clip : nullptr;
}

float ClipPlayer::getTime(std::size_t layer) const {
    return playing(layer) ? static_cast<float>(playing(layer)->time) : 0;
}

unsigned int ClipPlayer::getFrame(std::size_t layer) const {
    const Track *track = playing(layer);
    return track ? std::min(static_cast<unsigned int>(track->frame()), track->frames - 1) : 0;
}

float ClipPlayer::getDuration(std::size_t layer) const {
    return playing(layer) ? static_cast<float>(playing(layer)->duration) : 0;
}

bool ClipPlayer::isFinished(std::size_t layer) const {
    const Track *track = playing(layer);
    if (!track)
        return true;
    return !track->options.looping &&
           (track->options.speed < 0 ? track->time <= 0 : track->time >= track->duration);
}

float ClipPlayer::getWeight(const RVANIM *clip, std::size_t layer) const {
    double weight = 0; // a clip that was started again is there twice
    if (layer < layers.size())
        for (const Track &track : layers[layer]->tracks)
            weight += track.clip == clip ? track.weight : 0;
    return static_cast<float>(weight);
}

bool ClipPlayer::addEvent(const RVANIM *clip, float seconds, const std::string &name) {
    if (!clip || !isWithin(seconds, 0, maxSeconds * maxFramesPerSecond)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::addEvent\n");
        return false;
    }
    const double time = static_cast<double>(seconds);
    const auto later = std::find_if(events.begin(), events.end(),
                                    [&](const Event &event) { return event.seconds > time; });
    events.insert(later, {clip, time, name});
    return true;
}

void ClipPlayer::setEventHandler(std::function<void(const std::string &)> newHandler) {
    handler = std::move(newHandler);
}

bool ClipPlayer::update(float seconds) {
    if (!isWithin(seconds, 0, maxSeconds)) {
        zlfLog("   [!] Invalid params @ ClipPlayer::update\n");
        return false;
    }
    dropDeletedClips();
    const double time = static_cast<double>(seconds);
    std::vector<std::string> occurred;
    for (const auto &layer : layers) {
        for (Track &track : layer->tracks)
            if (!track.ended)
                advance(track, time * static_cast<double>(track.options.speed), occurred);
        layer->advanceFade(time);
    }
    setPose();
    for (const auto &layer : layers)
        layer->tracks.erase(std::remove_if(layer->tracks.begin(), layer->tracks.end(),
                                           [](const Track &track) { return track.ended; }),
                            layer->tracks.end());
    if (const auto call = handler) // which may set another one
        for (const std::string &name : occurred)
            call(name);
    return true;
}

void ClipPlayer::dropDeletedClips() {
    const auto isDead = [](const auto &each) { return !isAlive(each.clip); };
    for (const auto &layer : layers) {
        auto &tracks = layer->tracks;
        layer->stopping = layer->stopping || (!tracks.empty() && isDead(tracks.back()));
        tracks.erase(std::remove_if(tracks.begin(), tracks.end(), isDead), tracks.end());
    }
    events.erase(std::remove_if(events.begin(), events.end(), isDead), events.end());
}

void ClipPlayer::advance(Track &track, double step, std::vector<std::string> &occurred) const {
    const bool forward = step > 0 || (step == 0 && track.options.speed >= 0);
    const bool hasEvents = std::any_of(
        events.begin(), events.end(), [&](const Event &event) { return event.clip == track.clip; });
    if (!hasEvents && track.options.looping && track.duration > 0)
        step = std::fmod(step, track.duration);
    for (;;) {
        const double end = forward ? track.duration : 0, reached = track.time + step;
        const bool reachesEnd = forward ? reached >= end : reached <= end;
        const double next = reachesEnd ? end : reached;
        collect(track, track.time, next, forward, occurred);
        step -= next - track.time;
        track.time = next;
        track.atStart = false;
        if (!reachesEnd || !track.options.looping || track.duration <= 0 || step == 0)
            break;
        track.time = forward ? 0 : track.duration;
        track.atStart = true;
    }
}

void ClipPlayer::collect(const Track &track, double from, double to, bool forward,
                         std::vector<std::string> &occurred) const {
    const auto occurs = [&](const Event &event) {
        const double time = event.seconds;
        if (event.clip != track.clip)
            return false;
        if (time == from)
            return track.atStart;
        return forward ? time > from && time <= to : time < from && time >= to;
    };
    const auto add = [&](const Event &event) {
        if (occurs(event))
            occurred.push_back(event.name);
    };
    if (forward)
        std::for_each(events.begin(), events.end(), add);
    else
        std::for_each(events.rbegin(), events.rend(), add);
}

void ClipPlayer::setPose() {
    for (Joint &joint : joints) {
        joint.pose = joint.rest;
        joint.moves = joint.translates = false;
    }
    for (const auto &layer : layers) {
        for (Joint &joint : joints)
            joint.layer = {};
        for (const Track &track : layer->tracks)
            blend(track);
        mixInto(*layer);
    }
    for (const Joint &joint : joints) {
        if (joint.moves)
            joint.node->setRotation(joint.pose.rotation.toDegrees());
        if (joint.translates)
            joint.node->setPosition(joint.pose.position);
    }
}

// Clips that have just ended count with a weight of 0, so that their bones reach the pose below.
void ClipPlayer::blend(const Track &track) {
    for (const auto &[joint, bone] : track.bones) {
        const Pose pose = track.sample(bone);
        joints[joint].layer.addRotation(pose.rotation, track.weight);
        if (track.clip->getTranslating())
            joints[joint].layer.addPosition(pose.position, track.weight);
    }
}

void ClipPlayer::mixInto(const Layer &layer) {
    const double weight = static_cast<double>(layer.weight);
    for (std::size_t i = 0; i < joints.size(); ++i) {
        Joint &joint = joints[i];
        const Sum &sum = joint.layer;
        if (!layer.has.empty() && !layer.has[i])
            continue;
        if (sum.moves)
            joint.pose.rotation =
                mix(joint.pose.rotation, sum.pose.rotation, weight * sum.rotationWeight);
        if (sum.translates)
            joint.pose.position =
                mix(joint.pose.position, sum.pose.position, weight * sum.positionWeight);
        joint.moves = joint.moves || sum.moves;
        joint.translates = joint.translates || sum.translates;
    }
}

} // namespace ravolt::kit
