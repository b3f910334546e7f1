#pragma once

class RVSHADER;

namespace ravolt {

// Materials that name `program`, which is being deleted, are without one from now on. Defined in
// resources/RVMATERIAL.cpp.
void detachFromMaterials(const RVSHADER *program);

} // namespace ravolt
