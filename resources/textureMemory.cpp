// The budget of video memory: the estimated size of a texture, and the collector that limits the
// sum. The estimates follow fixed rules and are not checked against each other.
//
// Invariant: while the collector runs for an upload, it deletes neither the texture that is being
// uploaded nor its pixels, even if it detaches the pixels from the texture.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"

#include <algorithm>
#include <memory>

namespace {

// The texture for whose upload the collector runs; NULL otherwise.
const RVTEXTURE *uploading = nullptr;

struct FreeBlock {
    void operator()(void *block) const { zlfFree(block); }
};

using TextureArray = std::unique_ptr<RVTEXTURE *[], FreeBlock>;

bool isRenderedLater(const RVTEXTURE *a, const RVTEXTURE *b) {
    return a->getTimeStamp() > b->getTimeStamp();
}

void logCandidates(const TextureArray &textures, unsigned int number, unsigned long keep) {
    zlfLog("[BEGIN GARBAGE COLLECTOR]\n\n");
    zlfLog("   Memory used before : %d\n", static_cast<int>(RAVOLT::getUsedVideoMemory()));
    zlfLog("   Memory max. to keep: %d\n", static_cast<int>(keep));
    zlfLog("   Candidates:\n");
    for (unsigned int index = 0; index < number; ++index)
        zlfLog("      %d. %s (%d)\n", static_cast<int>(index), textures[index]->getFilename(),
               textures[index]->getTimeStamp());
}

unsigned int deleteUnreferenced(const TextureArray &textures, unsigned int number) {
    unsigned int dead = 0;
    for (unsigned int index = 0; index < number; ++index) {
        if (textures[index]->getReferences() >= 1 || textures[index] == uploading)
            continue;
        delete textures[index];
        ++dead;
    }
    return dead;
}

} // namespace

bool RVTEXTURE::unload(bool releaseBitmap) {
    bool freed = false;
    if (bitmap && releaseBitmap) {
        releasePixels();
        // On purpose: by then update has doubled what a mipmapped texture counts for.
        usedMemory -= memorySize;
        freed = true;
    }
    if (glId) {
        releaseUpload();
        if (mipmapped)
            RAVOLT::popVideoMemory(memorySize);
        freed = true;
    }
    if (freed)
        zlfLog("   %s unloaded\n", filename);
    return freed;
}

// The image of a render target, or of a water, cannot be restored, and may be of the frame that is
// being drawn. Those that the engine made are not counted, so that evicting them would not make
// room.
bool RVTEXTURE::isEvictable() const {
    return memorySize != 0 || !ravolt::RenderTargets::useTexture(this);
}

// On purpose: the newest are evicted first, and those not used for the longest time are not.
bool RVTEXTURE::garbageCollect(unsigned long keep) {
    const unsigned int number = getNumberOfTextures();
    if (number == 0)
        return false;
    const TextureArray textures(static_cast<RVTEXTURE **>(zlfMalloc(number * sizeof(RVTEXTURE *))));
    if (!textures) {
        zlfLog("   [!] Out of memory @ RVTEXTURE::garbageCollect()\n");
        return false;
    }
    unsigned int index = 0;
    for (RVTEXTURE *texture = firstTexture; texture; texture = texture->next)
        textures[index++] = texture;
    std::sort(&textures[0], &textures[0] + number, isRenderedLater);
    logCandidates(textures, number, keep);

    for (index = 0; index < number; ++index)
        if (RAVOLT::getUsedVideoMemory() >= keep && textures[index]->isEvictable())
            textures[index]->unload(true);
    const unsigned int dead = deleteUnreferenced(textures, number);

    zlfLog("   Memory used after : %d\n", static_cast<int>(RAVOLT::getUsedVideoMemory()));
    zlfLog("   Dead textures     : %d\n", static_cast<int>(dead));
    zlfLog("\n[END GARBAGE COLLECTOR]\n");
    return true;
}

// On purpose: a mipmapped texture was counted for twice of what this subtracts.
void RVTEXTURE::releaseUpload() {
    invalidateBindings(); // also of a texture without a name, which is bound as nothing
    if (!glId)
        return;
    glDeleteTextures(1, &glId);
    ++releases;
    RAVOLT::popVideoMemory(memorySize);
    glId = 0;
}

void RVTEXTURE::releasePixels() {
    if (bitmap && this != uploading)
        zlfFree(bitmap);
    bitmap = nullptr;
}

// On purpose: the mipmap levels are not part of the needed memory.
void RVTEXTURE::reserveVideoMemory() {
    const unsigned int needed = memorySize;
    if (mipmap)
        memorySize *= 2;
    if (RAVOLT::getFreeVideoMemory() >= needed)
        return;
    zlfLog("   Garbage collector at %d\n", static_cast<int>(RAVOLT::getTimeStamp()));
    uploading = this;
    garbageCollect(RAVOLT::getVideoMemory() - needed);
    uploading = nullptr;
}

// Without a context there is no name, and unload would never subtract the size.
void RVTEXTURE::countUpload() {
    if (!glId)
        return;
    RAVOLT::pushVideoMemory(mipmap ? memorySize * 2 : memorySize);
    mipmapped = mipmap;
}
