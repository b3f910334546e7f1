#pragma once

class RVFBO;
class RVTEXTURE;

namespace ravolt {

// Whether frame buffer objects can be used: RVOPENGL::useFBO(), and the driver has every function
// of the extension. Code that calls one of them tests this instead of the flag.
bool framebuffersWork();

// At the start, while the window is bound.
void detectWindowFramebuffer();

// OpenGL's name of the bound frame buffer object; 0 for the window. SDL 1.2's interface on SDL 2
// draws a window with multisampling into an object of its own. It must be bound as 0: under its own
// name it would count as an object of the application, whose pixels are not resolved when they are
// read.
unsigned int boundFramebuffer();

struct RenderTargets {
    // Whether `texture` is attached to a target, or is an image of a water.
    static bool useTexture(const RVTEXTURE *texture);

    // Set by the first water that has images; NULL for none.
    static bool (*isWaterImage)(const RVTEXTURE *texture);

    // Whether a target is at this address, which is not followed.
    static bool exists(const RVFBO *target);

    // Gives the images of the pool their sizes if one of its targets has this texture, whose OpenGL
    // object is to be used.
    static void allocateIfTarget(const RVTEXTURE &texture);

    // Attaches a depth buffer of one pixel, for a target that has the sizes of its texture, until
    // allocateDepthBuffer gives it these sizes. What OpenGL has bound does not change there.
    static void bindDepthPlaceholder(RVFBO &target);
    static void allocateDepthBuffer(const RVFBO &target);

    // Logs a line if OpenGL cannot draw into the target. What OpenGL has bound does not change
    // there.
    static void report(const RVFBO &target);
};

} // namespace ravolt
