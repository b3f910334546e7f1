#pragma once

// The library's access to the parts of RVTEXTURE that applications do not see. Defined in
// resources/RVTEXTURE.cpp, and uploads in resources/textureUpload.cpp.

class RVTEXTURE;

namespace ravolt {

struct TextureInternals {
    // As RVTEXTURE::reload, but also for a texture without a file, which comes back empty.
    static void restore(RVTEXTURE &texture);

    // Uploads that have been deleted so far: while the number is the same, no texture has another
    // OpenGL name.
    static unsigned long releasedUploads();

    // Called for each texture whose destruction begins; NULL for none, which is the initial value.
    static void (*onDestruction)(const RVTEXTURE &texture);

    // For code that binds something else on `unit`: the next render of a texture binds it anew.
    static void invalidateUnit(unsigned int unit);

    // Replaces the first `width` pixels of the first `height` rows of the uploaded image. The rows
    // of the pixels given, of `rowLength` pixels, follow each other without gaps.
    static void replacePixels(const RVTEXTURE &texture, unsigned int width, unsigned int height,
                              unsigned int rowLength, const void *pixels, bool rgb = true);

    // As RVTEXTURE::create, but OpenGL's image has one pixel until allocateImage gives it the
    // texture's sizes, under the same name. What OpenGL has bound does not change there.
    static void createPlaceholder(RVTEXTURE &texture, unsigned int sizeX, unsigned int sizeY,
                                  unsigned int depth);
    static void allocateImage(const RVTEXTURE &texture);

    // Releases the upload and the pixel copy without a log line.
    static void release(RVTEXTURE &texture);
};

} // namespace ravolt
