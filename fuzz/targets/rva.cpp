// A clip: it is loaded, applied to nodes that have the names of its bones, saved and loaded again.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVNODE.h"

#include <algorithm>
#include <cstring>

namespace ravolt::fuzz {
namespace {

RVNODE *makeSkeleton(RVANIM &clip) {
    auto *const root = new RVNODE;
    for (unsigned int bone = 0; bone < std::min<unsigned int>(clip.getNumberOfBones(), 8); ++bone) {
        auto *const node = new RVNODE;
        node->setName(clip.getBoneName(bone));
        node->link(root);
    }
    return root;
}

// What a clip has saved is the same clip. A name of 255 characters loses its last one.
void compareSaved(RVANIM &clip) {
    const std::string path = folder() + "saved.rva";
    auto *const saved = new RVANIM;
    if (!clip.save(path.c_str()) || !saved->load("saved.rva"))
        reportFinding("a loaded clip cannot be saved and loaded");
    if (saved->getNumberOfBones() != clip.getNumberOfBones() ||
        saved->getNumberOfFrames() != clip.getNumberOfFrames())
        reportFinding("a saved clip has other counts");
    for (unsigned int bone = 0; bone < clip.getNumberOfBones(); ++bone)
        if (std::strncmp(saved->getBoneName(bone), clip.getBoneName(bone), 254) != 0)
            reportFinding("a saved clip has another name of a bone");
}

} // namespace

void rva(Bytes bytes) {
    const SilentRun run;
    writeFile("i.rva", bytes);
    auto *const clip = new RVANIM;
    if (!clip->load("i.rva"))
        return;
    RVNODE *const root = makeSkeleton(*clip);
    clip->setTranslating(true);
    const unsigned int frames = clip->getNumberOfFrames();
    for (unsigned int frame = 0; frame < frames; frame += 1 + frames / 4)
        clip->apply(frame, root);
    clip->createKeyframes(0, frames);
    compareSaved(*clip);
}

} // namespace ravolt::fuzz
