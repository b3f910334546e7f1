#pragma once

class RVTEXTURE;

namespace ravolt {

// The texture of this file name: the one that is loaded already, or else a new one; NULL without
// memory. A new one has mipmaps, and is repeated, where `mipmapped` says so. `loaded` becomes false
// when the file cannot be read; the texture then stays without pixels.
RVTEXTURE *findOrLoadTexture(const char *filename, bool mipmapped, bool &loaded);

} // namespace ravolt
