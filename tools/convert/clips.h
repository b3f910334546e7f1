#pragma once

// Animations of a model as clips (RVA): for each frame the position and the rotation of each node
// that some clip of the model moves.

#include "tools/common/report.h"
#include "tools/convert/gltf2.h"
#include "tools/convert/motion.h"
#include "tools/convert/skeleton.h"
#include "tools/convert/skins.h"
#include "tools/writers/rvaWriter.h"

#include <map>
#include <string>
#include <vector>

namespace ravolt::tool {

// Frames of a clip in a second.
constexpr double minFps = 0.1, maxFps = 1000;

struct Clip {
    std::string name;   // a valid file name, unique in the model
    int animation = -1; // which one of the model; -1 for its own pose
    ravolt::RvaClip frames;
};

class Clips {
  public:
    // `fps` is the number of frames in a second.
    Clips(const aiScene &scene, const Interpolations &interpolations, const Skeleton &skeleton,
          const Skins &skins, double fps, Report &report);

    bool moves(std::size_t joint) const { return moved[joint]; }
    const std::vector<Clip> &all() const { return clips; }

  private:
    struct Track {
        std::size_t joint;
        Motion motion;
    };
    struct Source {
        std::string shownName, name;
        int animation = -1;
        std::vector<Track> tracks;
        double ticksPerSecond = 25;
        double firstTick = 0;
        double seconds = 0;
        std::size_t frames = 1;
    };

    void read(unsigned int index);
    void setTimes(Source &source, const aiAnimation &animation);
    std::string freeName(const std::string &wanted);
    template <class Visit> void play(const Source &source, const Visit &visit) const;
    std::vector<bool> movedBy(const Source &source);
    bool differs(const Placement &placement, std::size_t joint) const;
    bool isRescaled(const Placement &placement, std::size_t joint) const;
    std::vector<std::size_t> writableJoints(const std::string &name,
                                            const std::vector<bool> &moving);
    void warnOfOthersMoves(std::size_t number);
    void write(const Source &source, const std::vector<bool> &moving);

    const aiScene &scene;
    const Interpolations &interpolations;
    const Skeleton &skeleton;
    const Skins &skins;
    double fps;
    Report &report;
    double size = 0; // of the skeleton
    std::vector<Source> sources;
    std::vector<bool> moved;
    std::set<std::string> names; // in small letters
    std::vector<Clip> clips;
};

} // namespace ravolt::tool
