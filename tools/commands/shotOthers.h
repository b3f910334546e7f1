#pragma once

// Pictures of what is shown on no stage.

namespace ravolt::tool {

struct ShotOptions;

void shootTerrain(const ShotOptions &options);
void shootInterface(const ShotOptions &options);

} // namespace ravolt::tool
