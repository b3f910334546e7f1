#pragma once

// What the scenes of the picture tests are made of.

#include "tools/writers/rveWriter.h"

#include <string>

namespace ravolt::test {

// A cube of 24 vertices from -1 to 1, each side with the whole texture.
RveNode cubeMesh(const std::string &name, const std::string &material);

RveMaterial coloured(const std::string &name, RveColor diffuse, float transparency = 1);

} // namespace ravolt::test
