#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class RVANIM;
class RVNODE;

namespace ravolt::kit {

// How a clip is played.
struct ClipOptions {
    float framesPerSecond = 30; // of the clip: 30 as `ravolt convert` samples them; up to 1000
    float speed = 1;            // seconds of the clip per second, -100 to 100; negative: backwards
    bool looping = true;        // else it ends with its last frame, or backwards with its first
    float fade = 0;             // seconds from what the layer plays to this clip
    bool wholeFrames = false;   // the poses of frames alone, without those between them
};

// Plays clips on the bones of a tree, by time: poses between two frames are interpolated, rotations
// along the shorter arc. What a layer plays fades into the next clip; layers play clips on a part
// of the bones, over the layers below. The poses are those of the nodes (rotation, and position
// where RVANIM::getTranslating is true), so skins follow however they are drawn. The pose of one
// frame alone is exactly that of RVANIM::apply, and the rest pose is exactly itself. Nodes whose
// transform is a matrix (RV_NODE_POSITIONING_MATRIX) do not move. Bones that no clip moves are not
// changed.
//
// The player owns neither the tree nor the clips. The tree must outlive it and not lose nodes; make
// a new player when it gains bones. A clip that is deleted stops at once. Needs no OpenGL. Refused
// parameters give false and a line in the log, and change nothing.
class ClipPlayer {
  public:
    // The bones are the nodes of `root`, itself included, the first of each name. Their pose at
    // this time is the rest pose, from which and to which clips fade where nothing else plays.
    explicit ClipPlayer(RVNODE *root);
    ~ClipPlayer();
    ClipPlayer(const ClipPlayer &) = delete;
    ClipPlayer &operator=(const ClipPlayer &) = delete;

    // Adds a layer above all others, for these bones alone, and returns its number, from 1. Layer 0
    // is there from the beginning and has all bones. Bones that are not in the tree give a line in
    // the log. `weight`, from 0 to 1, is the part of the layer in the pose, the rest being that of
    // the layers below.
    std::size_t addLayer(const std::vector<std::string> &bones, float weight = 1);
    bool setLayerWeight(std::size_t layer, float weight);

    // The names of a node and of all nodes below it, for addLayer. None for NULL.
    static std::vector<std::string> bonesFrom(RVNODE *node);

    // Starts a clip on a layer: at its beginning, or backwards at its end. What the layer played
    // loses its weight within `options.fade` seconds, also while it is itself still fading in; the
    // weights have a sum of 1 at all times. False for NULL, for a clip without frames and for one
    // of whose bones the tree has none.
    bool play(RVANIM *clip, const ClipOptions &options = {}, std::size_t layer = 0);

    // Fades a layer out, to the layers below it or else to the rest pose.
    bool stop(float fade = 0, std::size_t layer = 0);

    // Of the clip that the layer played last.
    bool setSpeed(float speed, std::size_t layer = 0);
    // Continues from another time, in seconds, 0 to getDuration. Events on the way do not occur;
    // one at that time does.
    bool seek(float seconds, std::size_t layer = 0);
    // The same to the time of a frame, from 0: also the last one of a loop that equals the first.
    bool seekFrame(unsigned int frame, std::size_t layer = 0);

    // Of the clip that the layer played last: NULL and 0 when there is none. In a clip that loops
    // and whose last frame equals the first one, that frame is shown once, and does not count as a
    // time of its own; another loop takes one frame from the last to the first.
    RVANIM *getClip(std::size_t layer = 0) const;
    float getTime(std::size_t layer = 0) const;         // seconds, 0 to getDuration
    unsigned int getFrame(std::size_t layer = 0) const; // the last one until that time, from 0
    float getDuration(std::size_t layer = 0) const;     // seconds of a pass at speed 1
    bool isFinished(std::size_t layer = 0) const; // it does not loop and has ended; or no clip

    // The part of a clip in its layer, 0 to 1, as of the last update.
    float getWeight(const RVANIM *clip, std::size_t layer = 0) const;

    // Adds an event to a clip, on whichever layer it plays: it occurs once in each pass over that
    // time, in both directions, however long an update is. Also in a clip that is fading out. Times
    // beyond the clip's duration are never reached.
    bool addEvent(const RVANIM *clip, float seconds, const std::string &name);

    // Called by `update` for each event, when the new pose has been set; it may call the player.
    void setEventHandler(std::function<void(const std::string &name)> handler);

    // Moves on by so many seconds, from 0 to 3600, and sets the pose. With 0 it only sets it.
    bool update(float seconds);

  private:
    struct Track;
    struct Layer;
    struct Joint;
    struct Event;

    const Track *playing(std::size_t layer) const;
    void advance(Track &track, double seconds, std::vector<std::string> &occurred) const;
    void collect(const Track &track, double from, double to, bool forward,
                 std::vector<std::string> &occurred) const;
    void blend(const Track &track);
    void mixInto(const Layer &layer);
    void setPose();
    void dropDeletedClips();

    std::vector<Joint> joints;
    std::vector<std::unique_ptr<Layer>> layers;
    std::vector<Event> events; // by time
    std::function<void(const std::string &)> handler;
};

} // namespace ravolt::kit
