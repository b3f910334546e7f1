#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

class RVMESH;
class RVNODE;

namespace ravolt {
struct RvaRecord;
} // namespace ravolt

// Bones and frames that a clip has room for.
constexpr unsigned int RV_ANIM_BONES = 128;
constexpr unsigned int RV_ANIM_FRAMES = 1024;

// One bone in one frame.
struct RV_API RVBONEFRAME {
    Z3MVECTOR3D rotation; // degrees
    Z3MVECTOR3D translation;
    bool set = false; // a key, not a value between keys
};

// A clip: for every frame the rotation and translation of each bone of a skeleton, whose bones it
// knows by name alone. `apply` copies one frame onto the nodes of a tree; the skinned meshes of
// that tree bend after them. There is no clock and nothing between two frames: the application
// picks the number of the frame. Clips come from RVA files (load) or from the setters, and save
// writes such files. Each takes some 3.5 MiB of addresses, whatever its length, and memory for the
// frames that are set. All clips stand in a registry,
// which owns them: make them with `new`; RAVOLT::free or cleanUp deletes those that the application
// has not deleted. No OpenGL is needed.
class RV_API RVANIM {
  public:
    // Registers the clip under a fresh identifier and the name "[anim ID]"; no bones, no frames.
    RVANIM();
    // Gives the identifier back and leaves the registry.
    ~RVANIM();
    RVANIM(const RVANIM &) = delete;
    RVANIM &operator=(const RVANIM &) = delete;

    // Reads an RVA file, `fileName` behind the path of setRVAPath. False, with a line in the log
    // and the clip as it was, for NULL, a file that cannot be read, another kind of file, and one
    // that is cut off or holds more than RV_ANIM_BONES, RV_ANIM_FRAMES or 255 characters of a name.
    bool load(const char *fileName);

    // Writes an RVA file of that very name, without the path of setRVAPath. A bone's name of 255
    // characters loses its last one. False, with a line in the log, for NULL, for counts above
    // RV_ANIM_BONES or RV_ANIM_FRAMES, and when the file cannot be written; what was written of it
    // stays.
    bool save(const char *fileName) const;

    // Zeroes all entries within the counts. The counts and names stay.
    void reset();

    // Takes the bones of a mesh, number and names. False for NULL, with a line in the log, and for
    // a mesh without bones.
    bool acquireStructure(const RVMESH *mesh);

    // The bone's index, -1 for none; NULL also gives a line in the log.
    int findBoneByName(const char *name) const;

    // Numbers are cut to 16 bits and otherwise taken as they are; what is beyond RV_ANIM_BONES and
    // RV_ANIM_FRAMES has no entries, and a clip that says so cannot be saved.
    void setNumberOfBones(unsigned int bones);
    void setNumberOfFrames(unsigned int frames);
    unsigned short getNumberOfBones() const;
    unsigned short getNumberOfFrames() const;

    // Any of the RV_ANIM_BONES names; at most 255 characters are kept. False for another bone and
    // for NULL.
    bool setBoneName(unsigned int bone, const char *name);

    // Whatever stands in the storage, within the counts or not: RV_ANIM_BONES bones, and one frame
    // more than RV_ANIM_FRAMES. Beyond it NULL, and zeros.
    char *getBoneName(unsigned int bone);
    RVBONEFRAME *getKeyframe(unsigned int frame, unsigned int bone);
    Z3MVECTOR3D getFrameRotation(unsigned int frame, unsigned int bone) const;

    // Set a rotation, or one component of it, in degrees, and make the entry a key. False, with a
    // line in the log, for a bone that the clip does not have and for a frame behind the one that
    // follows its last: that one more frame may be set, as an end for createKeyframes.
    bool setFrame(unsigned int frame, unsigned int bone, float x, float y, float z);
    bool setFrameRotationX(unsigned int frame, unsigned int bone, float degrees);
    bool setFrameRotationY(unsigned int frame, unsigned int bone, float degrees);
    bool setFrameRotationZ(unsigned int frame, unsigned int bone, float degrees);
    // Makes the entry no key any more; its values stay. False as above.
    bool unsetFrame(unsigned int frame, unsigned int bone);

    // Fills the frames from `first` up to `last` that are no keys with equal steps from key to key,
    // rotations alone. `last` counts as a key in any case and stays as it is; `first`, where it is
    // none, is moved by the first step itself, so that its whole segment lies one step further on.
    // `last` may be the frame that follows the clip's last. False, with a line in the log, for
    // frames beyond that and for an empty range.
    bool createKeyframes(unsigned int first, unsigned int last);

    // Gives every bone's rotation in this frame, and with setTranslating its translation too, to
    // the first node of its name under `root`, root included; what has no node is skipped. It shows
    // on nodes of vector positioning. False, with a line in the log, for a frame that the clip does
    // not have and for NULL.
    bool apply(unsigned int frame, RVNODE *root) const;

    // Whether apply also moves the bones; off at first. Files do not hold it.
    void setTranslating(bool translating);
    bool getTranslating() const;

    // What is put before every file name by load, with no separator added; NULL empties it. At most
    // 255 characters are kept.
    static void setRVAPath(const char *path);
    static char *getRVAPath();

    // Deletes all clips. False when there are none.
    static bool cleanUp();

    static unsigned int getNumberOfAnims();
    // The first match in order of creation, or NULL. Letters count as they stand.
    static RVANIM *findById(unsigned int id);
    static RVANIM *findByFilename(const char *fileName);
    static RVANIM *getFirst();
    RVANIM *getNext() const;
    RVANIM *getPrevious() const;

    unsigned int getId() const;
    // As given to load, without the path; at most 255 characters are kept.
    char *getFilename();

  private:
    RVBONEFRAME *settable(unsigned int frame, unsigned int bone, const char *message);
    unsigned int storedBones() const;
    unsigned int storedFrames() const;
    void fillSegment(unsigned int bone, unsigned int from, unsigned int to);
    void take(const ravolt::RvaRecord &record);

    unsigned int id;
    char fileName[256];
    bool translating = false;
    unsigned short numberOfBones = 0;
    unsigned short numberOfFrames = 0;
    // Zeroed by the constructor as a block of memory: what is never set takes none. For the same
    // reason the entries are in a union, where they have no constructors that would write to them.
    char boneName[RV_ANIM_BONES][256];
    union {
        // One frame more than a clip has, since the one that follows its last may be set.
        RVBONEFRAME keyframe[RV_ANIM_FRAMES + 1][RV_ANIM_BONES];
    };
    RVANIM *previous, *next;

    static RVANIM *firstAnim, *lastAnim;
    static char rvaPath[256];

    friend struct ravolt::Registry<RVANIM>;
};
