#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

class RVMESH;
class RVNODE;

// The largest numbers of bones and frames of a clip.
constexpr unsigned int RV_ANIM_BONES = 128;
constexpr unsigned int RV_ANIM_FRAMES = 1024;

// One bone in one frame.
struct RV_API RVBONEFRAME {
    Z3MVECTOR3D rotation;    // degrees
    Z3MVECTOR3D translation; // units of the scene
    bool set = false;        // a key, not a value between keys
};

// A clip: for every frame the rotation and translation of each bone of a skeleton, whose bones are
// identified by name. `apply` copies one frame to the nodes of a tree, whose skinned meshes follow.
// There is no clock and no interpolation: the application selects the frame. Clips come from RVA
// files (load) or from the setters, and save writes such files. Each takes about 3.5 MiB of address
// space, whatever its length, and memory only for the frames that are set. All clips are in a
// registry, which owns them: make them with `new`; RAVOLT::free or cleanUp deletes those that the
// application has not deleted. No OpenGL is needed.
class RV_API RVANIM {
  public:
    // Registers the clip under a fresh identifier and the name "[anim ID]"; no bones, no frames.
    RVANIM();
    // Releases the identifier and leaves the registry.
    ~RVANIM();
    RVANIM(const RVANIM &) = delete;
    RVANIM &operator=(const RVANIM &) = delete;

    // Reads an RVA file; `fileName` is appended to the path of setRVAPath. False, with a line in
    // the log and the clip unchanged, for NULL, for a file that cannot be read or is of another
    // kind, and for one that is truncated or has more than RV_ANIM_BONES bones, RV_ANIM_FRAMES
    // frames or 255 characters in a name.
    bool load(const char *fileName);

    // Writes the RVA file `fileName`, without the path of setRVAPath. A bone's name of 255
    // characters loses its last one. False, with a line in the log, for NULL, for counts above
    // RV_ANIM_BONES or RV_ANIM_FRAMES, and when the file cannot be written; an incomplete file is
    // not deleted.
    bool save(const char *fileName) const;

    // Zeroes all entries within the counts. The counts and names do not change.
    void reset();

    // Copies the number and the names of the bones of a mesh. False for NULL, with a line in the
    // log, and for a mesh without bones.
    bool acquireStructure(const RVMESH *mesh);

    // The bone's index, -1 for none; NULL also gives a line in the log.
    int findBoneByName(const char *name) const;

    // Counts are cut to 16 bits and not checked: there are no entries beyond RV_ANIM_BONES and
    // RV_ANIM_FRAMES, and a clip with larger counts cannot be saved.
    void setNumberOfBones(unsigned int bones);
    void setNumberOfFrames(unsigned int frames);
    unsigned short getNumberOfBones() const;
    unsigned short getNumberOfFrames() const;

    // Any of the RV_ANIM_BONES names; at most 255 characters are kept. False for another bone and
    // for NULL.
    bool setBoneName(unsigned int bone, const char *name);

    // Any stored value, within the counts or not: of RV_ANIM_BONES bones and RV_ANIM_FRAMES + 1
    // frames. Beyond them NULL, or a rotation of zeros.
    char *getBoneName(unsigned int bone);
    RVBONEFRAME *getKeyframe(unsigned int frame, unsigned int bone);
    Z3MVECTOR3D getFrameRotation(unsigned int frame, unsigned int bone) const;

    // Set a rotation, or one component of it, in degrees, and make the entry a key. False, with a
    // line in the log, for a bone that the clip does not have and for a frame above
    // getNumberOfFrames: the frame after the last may be set, as the end of createKeyframes.
    bool setFrame(unsigned int frame, unsigned int bone, float x, float y, float z);
    bool setFrameRotationX(unsigned int frame, unsigned int bone, float degrees);
    bool setFrameRotationY(unsigned int frame, unsigned int bone, float degrees);
    bool setFrameRotationZ(unsigned int frame, unsigned int bone, float degrees);
    // The entry is no key any more; its values do not change. False as above.
    bool unsetFrame(unsigned int frame, unsigned int bone);

    // Interpolates the rotations of the frames from `first` to `last` that are no keys, linearly
    // from key to key; translations do not change. `last` counts as a key in any case and does not
    // change. If `first` is no key, it is moved by one step itself, and its whole segment is one
    // step ahead. `last` may be the frame after the clip's last. False, with a line in the log, for
    // frames beyond that and for an empty range.
    bool createKeyframes(unsigned int first, unsigned int last);

    // Copies every bone's rotation in this frame, and with setTranslating its translation too, to
    // the first node of its name under `root`, root included; a bone without a node is skipped.
    // Only nodes with vector positioning use them. False, with a line in the log, for a frame that
    // the clip does not have and for NULL.
    bool apply(unsigned int frame, RVNODE *root) const;

    // Whether apply also moves the bones; off by default, and not stored in files.
    void setTranslating(bool translating);
    bool getTranslating() const;

    // The prefix of every file name in load; no separator is added, and NULL empties it. At most
    // 255 characters are kept.
    static void setRVAPath(const char *path);
    static char *getRVAPath();

    // Deletes all clips. False when there are none.
    static bool cleanUp();

    // The number of clips that exist.
    static unsigned int getNumberOfAnims();
    // The first match in order of creation, or NULL. Case matters.
    static RVANIM *findById(unsigned int id);
    static RVANIM *findByFilename(const char *fileName);
    static RVANIM *getFirst();
    RVANIM *getNext() const;
    RVANIM *getPrevious() const;

    // The clip's own number.
    unsigned int getId() const;
    // As given to load, without the path; at most 255 characters are kept.
    char *getFilename();

  private:
    unsigned int id;
    char fileName[256];
    bool translating = false;
    unsigned short numberOfBones = 0;
    unsigned short numberOfFrames = 0;
    // The constructor clears these as memory, so that pages which are never written take none. For
    // the same reason the entries are in a union: it runs no constructors, which would write them.
    char boneName[RV_ANIM_BONES][256];
    union {
        // One frame more than a clip has, since the frame after its last may be set.
        RVBONEFRAME keyframe[RV_ANIM_FRAMES + 1][RV_ANIM_BONES];
    };
    RVANIM *previous, *next;

    static RVANIM *firstAnim, *lastAnim;
    static char rvaPath[256];

    friend struct ravolt::Registry<RVANIM>;
};
