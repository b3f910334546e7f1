#pragma once

class RVFBO;

namespace ravolt {

constexpr int renderTargets = 14;

// Makes the engine's render targets with their textures. The registries of both own them. False
// when memory runs out for one of the objects: the pool is empty then.
// Their images, 38 MB with the default sizes, are placeholders of one pixel at first, which OpenGL
// has under the same names.
bool makeRenderTargets(RVFBO *(&pool)[renderTargets]);

// Gives the images of the pool their sizes, once; what OpenGL has bound does not change. The
// switches of the effects do so, since no frame is to wait for it, and RVOPENGL::getFbo.
void allocateRenderTargets();

} // namespace ravolt
