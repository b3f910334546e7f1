#pragma once

class RVFBO;

namespace ravolt {

constexpr int renderTargets = 14;

// Makes the engine's render targets with their textures. The registries of both own them. False
// when memory runs out for one of the objects: the pool is empty then.
bool makeRenderTargets(RVFBO *(&pool)[renderTargets]);

} // namespace ravolt
