#pragma once

// Textures of the village. Each gives the colour at a point from 0 to 1 of a picture that tiles.

#include "examples/village/objWriter.h"

namespace village {

using Color = Point; // red, green, blue, 0 to 1

Color gravelTexture(float u, float v);
Color pavingTexture(float u, float v);
Color stoneTexture(float u, float v);
Color brickTexture(float u, float v);
Color tilesTexture(float u, float v);
Color creamTexture(float u, float v);
Color ochreTexture(float u, float v);
Color roseTexture(float u, float v);
Color paleTexture(float u, float v);
Color timberTexture(float u, float v);
Color whitewoodTexture(float u, float v);
Color planksTexture(float u, float v);
Color shutterTexture(float u, float v);
Color barkTexture(float u, float v);
Color leavesTexture(float u, float v);
Color flowersTexture(float u, float v);
Color awningTexture(float u, float v);
Color windowTexture(float u, float v);
Color rockTexture(float u, float v);
Color needlesTexture(float u, float v);
Color hullTexture(float u, float v);
Color fishTexture(float u, float v);

} // namespace village
