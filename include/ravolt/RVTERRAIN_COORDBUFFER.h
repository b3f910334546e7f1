#pragma once

#include "ravolt/api.h"

class Z3MVECTOR2D;

// The texture coordinates that all chunks of a terrain share, in a vertex buffer that it owns.
class RV_API RVTERRAIN_COORDBUFFER {
  public:
    // Uploads `chunkSize` times `chunkSize` pairs of coordinates. Without vertex buffers there is
    // none.
    RVTERRAIN_COORDBUFFER(Z3MVECTOR2D *coords, unsigned short chunkSize);
    ~RVTERRAIN_COORDBUFFER();
    RVTERRAIN_COORDBUFFER(const RVTERRAIN_COORDBUFFER &) = delete;
    RVTERRAIN_COORDBUFFER &operator=(const RVTERRAIN_COORDBUFFER &) = delete;

    // OpenGL's name; 0 for none.
    unsigned int getBuffer() const { return buffer; }

  private:
    unsigned int buffer;
};
