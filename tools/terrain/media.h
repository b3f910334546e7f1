#pragma once

// The textures and emitters of a terrain, computed from noise. Each maker hands its files, one
// after the other, to a sink.

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace ravolt::tool::terrain {

using FileSink = std::function<void(const std::string &name, const std::vector<unsigned char> &)>;

// Names without an ending of the layers 1 to 4, and the part of a diffuse and of a normal map.
inline constexpr std::array<const char *, 4> layerNames = {"grass", "snow", "sand", "rock"};
inline constexpr const char *diffuseEnding = "_d.tga";
inline constexpr const char *normalEnding = "_n.tga";

inline constexpr const char *daySky = "sky_day.tga";
inline constexpr const char *nightSky = "sky_night.tga";
inline constexpr const char *waterNormal = "water_n.tga";
inline constexpr const char *waterDudv = "water_dudv.tga";

// For each layer a diffuse map with heights in the alpha, and a normal map with gloss in the alpha.
// All tile. The normal maps of layers 2 and 3 lean against the frame of the engine's program, see
// ground.h.
void makeGroundTextures(unsigned int side, const FileSink &sink);

// The sun is at +X, 35 degrees up; the moon at -X. U goes round, V up to the zenith, and a
// fifth of it is below the horizon.
void makeSkies(unsigned int side, const FileSink &sink);

// Waves: a normal map, and offsets in red and green. Both tile.
void makeWaterTextures(unsigned int side, const FileSink &sink);

// fire.xml and smoke.xml, emitters of a camp fire, and their textures.
void makeFire(const FileSink &sink);

} // namespace ravolt::tool::terrain
