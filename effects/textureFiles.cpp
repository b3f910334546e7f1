#include "effects/textureFiles.h"

#include "ravolt/RVTEXTURE.h"

#include <new>

namespace ravolt {

RVTEXTURE *findOrLoadTexture(const char *filename, bool mipmapped, bool &loaded) {
    RVTEXTURE *texture = RVTEXTURE::findByFilename(filename);
    if (texture)
        return texture;
    texture = new (std::nothrow) RVTEXTURE;
    if (!texture || !texture->load(filename))
        loaded = false;
    else if (mipmapped)
        texture->setFilter(true, true, false);
    return texture;
}

} // namespace ravolt
