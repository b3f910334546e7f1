#pragma once

class RVTEXTURE;

namespace ravolt {

// Whether frame buffer objects can be used: RVOPENGL::useFBO(), and the driver has every function
// of the extension. Code that calls one of them tests this instead of the flag.
bool framebuffersWork();

struct RenderTargets {
    // Whether `texture` is attached to a target.
    static bool useTexture(const RVTEXTURE *texture);
};

} // namespace ravolt
