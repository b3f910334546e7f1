#pragma once

namespace ravolt {

// OpenGL's name of a new shadow map that lets all light through; 0 when there is none.
unsigned int createLitShadowMap();
void deleteLitShadowMap(unsigned int map);

// Binds a shadow map, by OpenGL's name, on the unit that the shadowed programs read it from.
void bindShadowMapUnit(unsigned int map);

} // namespace ravolt
