#pragma once

// Small valid files of random contents; the same for the same seed.

#include <cstdint>
#include <vector>

namespace ravolt::fuzz {

// A tree of nodes, lights and meshes, some of them skinned, in either version.
std::vector<std::uint8_t> randomScene(unsigned int seed);

// A clip of a few bones and frames.
std::vector<std::uint8_t> randomClip(unsigned int seed);

// A texture of at most 16 by 16 pixels.
std::vector<std::uint8_t> randomTexture(unsigned int seed);

} // namespace ravolt::fuzz
