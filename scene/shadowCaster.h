#pragma once

class RVLIGHT;

namespace ravolt {

// The light whose shadow map a frame with shadows draws: the last spot light of the render list
// that casts shadows. NULL without one.
RVLIGHT *findShadowCaster();

} // namespace ravolt
