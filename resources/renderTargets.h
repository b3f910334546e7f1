#pragma once

class RVFBO;

namespace ravolt {

constexpr int renderTargets = 14;

// Makes the engine's render targets with their textures. The registries of both own them.
void makeRenderTargets(RVFBO *(&pool)[renderTargets]);

} // namespace ravolt
