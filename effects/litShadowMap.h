#pragma once

namespace ravolt {

// OpenGL's name of a new shadow map without any shadow; 0 if it cannot be created.
unsigned int createLitShadowMap();
void deleteLitShadowMap(unsigned int map);

// Binds a shadow map, by OpenGL's name, on the unit that the shadowed programs read it from.
void bindShadowMapUnit(unsigned int map);

} // namespace ravolt
