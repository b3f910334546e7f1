#pragma once

class RVTEXTURE;

namespace ravolt {

// The texture of this file name: the one that is already loaded, or else a new one; NULL without
// memory. A new one is mipmapped and repeated if `mipmapped`. Sets `loaded` to false when the file
// cannot be read; the texture then has no pixels.
RVTEXTURE *findOrLoadTexture(const char *filename, bool mipmapped, bool &loaded);

} // namespace ravolt
