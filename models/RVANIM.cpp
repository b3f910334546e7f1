// Clips: the registry, the entries and their use on a tree. Files are in rvaFile.cpp.
//
// The two counts are set by the application and may exceed the storage; every index is checked
// against the storage too, and every loop ends with it.

#include "ravolt/RVANIM.h"

#include "foundation/platform.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstring>

using AnimRegistry = ravolt::Registry<RVANIM>;

RVANIM *RVANIM::firstAnim = nullptr;
RVANIM *RVANIM::lastAnim = nullptr;
char RVANIM::rvaPath[256] = "";

namespace {

unsigned int storedBones(const RVANIM &clip) {
    return std::min<unsigned int>(clip.getNumberOfBones(), RV_ANIM_BONES);
}

unsigned int storedFrames(const RVANIM &clip) {
    return std::min<unsigned int>(clip.getNumberOfFrames(), RV_ANIM_FRAMES + 1);
}

// The entry if it may be set; otherwise NULL, with the message in the log.
// On purpose: the frame after the last one is accepted, a bone after the last one is not.
RVBONEFRAME *settableEntry(RVANIM &clip, unsigned int frame, unsigned int bone,
                           const char *message) {
    if (frame <= clip.getNumberOfFrames() && frame <= RV_ANIM_FRAMES && bone < storedBones(clip))
        return clip.getKeyframe(frame, bone);
    zlfLog("%s", message);
    return nullptr;
}

bool setComponent(RVBONEFRAME *entry, float Z3MVECTOR3D::*component, float degrees) {
    if (!entry)
        return false;
    entry->rotation.*component = degrees;
    entry->set = true;
    return true;
}

// On purpose: if `from` is no key it is moved by one step itself, and all that follows is one step
// ahead; and neighbours are not changed, key or not.
void fillSegment(RVANIM &clip, unsigned int bone, unsigned int from, unsigned int to) {
    if (to == from + 1)
        return;
    Z3MVECTOR3D rotation = clip.getFrameRotation(from, bone);
    const Z3MVECTOR3D step = (clip.getFrameRotation(to, bone) - rotation) / (to - from);
    for (unsigned int frame = from; frame < to; ++frame)
        if (RVBONEFRAME *entry = clip.getKeyframe(frame, bone); !entry->set) {
            rotation += step;
            entry->rotation = rotation;
        }
}

} // namespace

RVANIM::RVANIM() : id(zlfNewId()) {
    ravolt::platform::clear(boneName, sizeof boneName);
    ravolt::platform::clear(keyframe, sizeof keyframe);
    ravolt::formatText(fileName, "[anim %d]", id);
    AnimRegistry::append(firstAnim, lastAnim, this);
}

RVANIM::~RVANIM() {
    releaseId(id);
    AnimRegistry::unlink(firstAnim, lastAnim, this);
}

void RVANIM::reset() {
    for (unsigned int frame = 0; frame < storedFrames(*this); ++frame)
        std::fill_n(keyframe[frame], storedBones(*this), RVBONEFRAME());
}

bool RVANIM::acquireStructure(const RVMESH *mesh) {
    if (!mesh) {
        zlfLog("   [!] Invalid params @ RVANIM::acquireStructure\n");
        return false;
    }
    if (!mesh->numberOfBones)
        return false;
    numberOfBones = mesh->numberOfBones;
    for (unsigned int bone = 0; bone < storedBones(*this); ++bone)
        ravolt::copyText(boneName[bone], mesh->bone[bone].name);
    return true;
}

int RVANIM::findBoneByName(const char *name) const {
    if (!name) {
        zlfLog("   [!] Invalid params @ RVANIM::findBoneByName\n");
        return -1;
    }
    for (unsigned int bone = 0; bone < storedBones(*this); ++bone)
        if (std::strcmp(boneName[bone], name) == 0)
            return static_cast<int>(bone);
    return -1;
}

void RVANIM::setNumberOfBones(unsigned int bones) {
    numberOfBones = static_cast<unsigned short>(bones);
}
void RVANIM::setNumberOfFrames(unsigned int frames) {
    numberOfFrames = static_cast<unsigned short>(frames);
}
unsigned short RVANIM::getNumberOfBones() const { return numberOfBones; }
unsigned short RVANIM::getNumberOfFrames() const { return numberOfFrames; }

bool RVANIM::setBoneName(unsigned int bone, const char *name) {
    if (bone >= RV_ANIM_BONES || !name)
        return false;
    ravolt::copyText(boneName[bone], name);
    return true;
}

char *RVANIM::getBoneName(unsigned int bone) {
    return bone < RV_ANIM_BONES ? boneName[bone] : nullptr;
}

RVBONEFRAME *RVANIM::getKeyframe(unsigned int frame, unsigned int bone) {
    return frame <= RV_ANIM_FRAMES && bone < RV_ANIM_BONES ? &keyframe[frame][bone] : nullptr;
}

Z3MVECTOR3D RVANIM::getFrameRotation(unsigned int frame, unsigned int bone) const {
    return frame <= RV_ANIM_FRAMES && bone < RV_ANIM_BONES ? keyframe[frame][bone].rotation
                                                           : Z3MVECTOR3D();
}

bool RVANIM::setFrame(unsigned int frame, unsigned int bone, float x, float y, float z) {
    RVBONEFRAME *entry =
        settableEntry(*this, frame, bone, "   [!] Invalid params @ RVANIM::setFrame\n");
    if (!entry)
        return false;
    entry->rotation.set(x, y, z);
    entry->set = true;
    return true;
}

bool RVANIM::setFrameRotationX(unsigned int frame, unsigned int bone, float degrees) {
    return setComponent(
        settableEntry(*this, frame, bone, "   [!] Invalid params @ RVANIM::setFrameRotationX\n"),
        &Z3MVECTOR3D::x, degrees);
}

bool RVANIM::setFrameRotationY(unsigned int frame, unsigned int bone, float degrees) {
    return setComponent(
        settableEntry(*this, frame, bone, "   [!] Invalid params @ RVANIM::setFrameRotationY\n"),
        &Z3MVECTOR3D::y, degrees);
}

bool RVANIM::setFrameRotationZ(unsigned int frame, unsigned int bone, float degrees) {
    return setComponent(
        settableEntry(*this, frame, bone, "   [!] Invalid params @ RVANIM::setFrameRotationZ\n"),
        &Z3MVECTOR3D::z, degrees);
}

bool RVANIM::unsetFrame(unsigned int frame, unsigned int bone) {
    RVBONEFRAME *entry =
        settableEntry(*this, frame, bone, "   [!] Invalid params @ RVANIM::unsetFrame\n");
    if (!entry)
        return false;
    entry->set = false;
    return true;
}

bool RVANIM::createKeyframes(unsigned int first, unsigned int last) {
    if (first >= numberOfFrames || last > numberOfFrames || first >= last ||
        last > RV_ANIM_FRAMES) {
        zlfLog("   [!] Invalid params @ RVANIM::createKeyframes\n");
        return false;
    }
    for (unsigned int bone = 0; bone < storedBones(*this); ++bone)
        for (unsigned int from = first, to; from < last; from = to) {
            to = from + 1;
            while (to < last && !keyframe[to][bone].set)
                ++to;
            fillSegment(*this, bone, from, to);
        }
    return true;
}

bool RVANIM::apply(unsigned int frame, RVNODE *root) const {
    if (frame >= storedFrames(*this) || !root) {
        zlfLog("   [!] Invalid params @ RVANIM::apply\n");
        return false;
    }
    for (unsigned int bone = 0; bone < storedBones(*this); ++bone) {
        RVNODE *node = root->findByNameInHierarchy(boneName[bone]);
        if (!node)
            continue;
        node->setRotation(keyframe[frame][bone].rotation);
        if (translating)
            node->setPosition(keyframe[frame][bone].translation);
    }
    return true;
}

void RVANIM::setTranslating(bool newTranslating) { translating = newTranslating; }
bool RVANIM::getTranslating() const { return translating; }

void RVANIM::setRVAPath(const char *path) { ravolt::copyText(rvaPath, path); }
char *RVANIM::getRVAPath() { return rvaPath; }

bool RVANIM::cleanUp() { return AnimRegistry::cleanUp(firstAnim) != 0; }

unsigned int RVANIM::getNumberOfAnims() { return AnimRegistry::count(firstAnim); }

RVANIM *RVANIM::findById(unsigned int id) { return AnimRegistry::findById(firstAnim, id); }

RVANIM *RVANIM::findByFilename(const char *fileName) {
    return AnimRegistry::findByText(firstAnim, &RVANIM::fileName, fileName);
}

RVANIM *RVANIM::getFirst() { return firstAnim; }
RVANIM *RVANIM::getNext() const { return next; }
RVANIM *RVANIM::getPrevious() const { return previous; }

unsigned int RVANIM::getId() const { return id; }
char *RVANIM::getFilename() { return fileName; }
