#pragma once

#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

namespace ravolt {
struct TextureInternals;
}

// Additional: names for the formats that `create` takes as depth.
constexpr unsigned int RV_TEXTURE_RGB = 3;        // three bytes a pixel
constexpr unsigned int RV_TEXTURE_RGBA = 4;       // four bytes a pixel
constexpr unsigned int RV_TEXTURE_DEPTH = 5;      // a shadow map
constexpr unsigned int RV_TEXTURE_HALF_FLOAT = 6; // a floating-point render target

// A two-dimensional OpenGL texture with its pixel copy in main memory. Pixels come from a TGA file
// (load), or the texture starts empty (create); the first render uploads them. Every upload is
// counted against RAVOLT's video memory, and an upload that finds too little free starts the
// collector, which evicts textures: a texture from a file is loaded again by its next render. All
// textures are in a registry, which owns them: create them with `new`; RAVOLT::free, cleanUp or the
// collector deletes those that the application has not deleted. Whatever calls OpenGL needs the
// engine's context; OpenGL's errors are not read.
class RV_API RVTEXTURE {
  public:
    // Registers the texture under a fresh identifier and the name "[texture ID]".
    RVTEXTURE();
    // Unloads the texture, releases its identifier and removes it from the registry; it is removed
    // from the slots of materials, too.
    ~RVTEXTURE();
    RVTEXTURE(const RVTEXTURE &) = delete;
    RVTEXTURE &operator=(const RVTEXTURE &) = delete;

    // Makes an empty texture, named "[dynamic]", and uploads it. Sizes in pixels, at most 4096;
    // `depth` is RV_TEXTURE_RGB, RV_TEXTURE_RGBA, RV_TEXTURE_DEPTH or RV_TEXTURE_HALF_FLOAT; only
    // the first two have a pixel copy, which starts black. It is not counted in the video
    // memory. Set the filter before. False, with a line in the log, for bad parameters or no
    // memory.
    bool create(unsigned int sizeX, unsigned int sizeY, unsigned int depth);

    // Reads a TGA file of 24 or 32 bits, plain or run-length, from 1 to 4096 pixels each way, into
    // the pixel copy; `filename` is appended to the path of setPath. The file's identifier field
    // must be empty. "[dynamic]" gives true and reads nothing. Video memory is not touched. False,
    // with a line in the log, for a file that cannot be opened, ends early, or has another depth or
    // size. A file of another kind (with a colour map, grey) is reported in the log but counts as
    // loaded, on purpose, with its size and in black.
    bool load(const char *filename);

    // Uploads the pixel copy, in place of a former upload. With mipmaps the pixel copy is
    // overwritten: the levels are computed in place. False, with a line in the log, without pixels.
    bool update();

    // Uploads an evicted texture again, and reads its file again when the pixels were released, on
    // purpose below the path that setPath has set by then. False when it is still in video memory;
    // true otherwise, also if that failed.
    bool reload();

    // Replaces all pixels of the uploaded image (mipmap levels stay) by `bitmap`, which must hold
    // getSizeX() times getSizeY() pixels of 3 or 4 bytes; that cannot be checked here. With `keep`
    // they are copied into the pixel copy too; the first such call on a texture without a pixel
    // copy only allocates it, and returns false. False, with a line in the log, for NULL.
    bool modify(const char *bitmap, bool keep);

    // Releases the video memory and, with `releaseBitmap`, the pixel copy. True when something was
    // released, which is also logged.
    bool unload(bool releaseBitmap);

    // Linear or nearest filter, with mipmaps or without, clamped to the edge or repeated. A texture
    // in video memory is uploaded again at once, from the current pixel copy. Always true.
    bool setFilter(bool linear, bool mipmap, bool clamp);

    // Binds the texture on a unit and enables the unit, after uploading an evicted texture again.
    // `data` is NULL for unit 0 or points to the unit, an unsigned int. The unit is selected
    // afterwards. False, with a line in the log, for a unit of RV_TEXTURE_UNITS or more.
    bool render(void *data);

    // Enable or disable two-dimensional texturing on one unit; RV_TEXTURE_UNITS or more means all.
    // Switching all off also invalidates the cache of the bindings. On purpose switching one unit
    // off does not: the next render of the same texture there does not switch it on again. A driver
    // with fewer fixed-function units raises an OpenGL error for the others. Always true.
    static bool texturingOn(unsigned int unit);
    static bool texturingOff(unsigned int unit);

    // The collector: unloads textures, the most recently rendered first, while `keep` bytes of
    // video memory or more are used; then deletes every texture without references, except one that
    // is being uploaded. The image of a render target or a water is not unloaded if it is not
    // counted. The textures of the engine's own targets have a reference; that of an application's
    // target needs one (incReferences), since a target does not count as a user of its texture.
    // False when there are no textures, or no memory to sort them.
    static bool garbageCollect(unsigned long keep);

    // Deletes all textures; every pointer to one is invalid then, except that slots of materials
    // are empty. False when there are none.
    static bool cleanUp();

    // The number of textures that exist.
    static unsigned int getNumberOfTextures();
    // The first match in order of creation, or NULL. Case counts.
    static RVTEXTURE *findById(unsigned int id);
    static RVTEXTURE *findByFilename(const char *filename);
    static RVTEXTURE *getFirst();
    RVTEXTURE *getNext() const;
    RVTEXTURE *getPrevious() const;

    // The prefix of every file name, without an added separator; NULL empties it. At most 255
    // characters are stored.
    static char *getPath();
    static void setPath(const char *path);

    // Bytes that the pixel copies count for. An estimate: every pixel counts four bytes, and
    // unloading a mipmapped texture subtracts twice what its load added. On purpose the number
    // therefore falls with each eviction and reload, to below 0 and on until it wraps, while the
    // memory that is really used stays the same.
    static int getUsedMemory();

    // The texture's own number; not OpenGL's name.
    unsigned int getId() const;
    // OpenGL's name; 0 when the texture is not in video memory.
    unsigned int getGLId() const;
    bool isLoaded() const;
    // As passed to load, without the path; at most 255 characters are stored.
    char *getFilename();
    // In pixels.
    unsigned int getSizeX() const;
    unsigned int getSizeY() const;
    // The pixel copy, R G B [A], bottom row first; owned by the texture. NULL for none.
    unsigned char *getBitmap() const;
    // RAVOLT::getTimeStamp() at the last render, 0 before.
    int getTimeStamp() const;

    // Users of the texture. The count may go below 0; only the collector reads it.
    int getReferences() const;
    void incReferences();
    void decReferences();

    // The filter; linear and mipmapped, not clamped by default.
    bool isTrilinear() const;
    bool isMipmapped() const;
    bool isClamped() const;

    // Stored for the application; nothing in the engine reads it.
    void setCubeType(unsigned int cubeType);

  private:
    void invalidateBindings();
    void releaseUpload();
    void releasePixels();
    void reserveVideoMemory();
    bool isEvictable() const;
    void bindForUpload() const;
    void uploadParameters() const;
    void uploadImage(unsigned char *pixels) const;
    void countUpload();

    unsigned int id;
    char filename[256];
    int timeStamp;
    int references;
    unsigned char *bitmap;
    unsigned int sizeX, sizeY;
    unsigned int memorySize;
    unsigned int depth;
    unsigned int cubeType;
    unsigned int glId;
    bool linear;
    bool mipmap;
    bool clamp;
    bool mipmapped; // the last update counted the texture with its chain
    RVTEXTURE *previous, *next;
    ravolt::WeakPointers<RVTEXTURE> weakPointers;

    static RVTEXTURE *firstTexture, *lastTexture;
    static unsigned long usedMemory;
    static unsigned long releases;                    // uploads deleted so far
    static RVTEXTURE *channelCache[RV_TEXTURE_UNITS]; // last bound on each unit
    static bool channelActive[RV_TEXTURE_UNITS];      // whether texturing is on
    static char texturePath[256];

    friend struct ravolt::TextureInternals;
    friend struct ravolt::Registry<RVTEXTURE>;
};
