#pragma once

// The effects as options of the command line, the same for every command that draws.

#include "tools/stage/effects.h"

#include <array>
#include <optional>

namespace CLI {
class App;
}

namespace ravolt::tool {

// The values of the options. An option that is a parameter of an effect switches it on too.
struct EffectOptions {
    std::array<bool, numberOfEffects> on{};
    std::array<std::optional<double>, numberOfEffectParameters> parameters{};
    std::optional<int> shadowMap; // its side in pixels
};

void addEffects(CLI::App &command, EffectOptions &to);

// Throws WrongOptions for a number beyond its range.
void check(const EffectOptions &options);

Effects effectsFrom(const EffectOptions &options);

} // namespace ravolt::tool
