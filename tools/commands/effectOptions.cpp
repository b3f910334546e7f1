// Adds the options of the effects from the tables of tools/stage/effects.h, and checks them.

#include "tools/commands/effectOptions.h"

#include "tools/common/ranges.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace ravolt::tool {

namespace {

constexpr const char *group = "Effects (an option that shapes one switches it on)";
constexpr const char *shadowMapOption = "--shadow-map";

std::string helpFor(const EffectRow &row) {
    std::string text = row.what;
    for (std::size_t i = 0; i < row.needs.size(); ++i)
        text += (i ? " and " : "; with ") + std::string(rowOf(row.needs[i]).option);
    return text;
}

std::string helpFor(const EffectParameterRow &row) {
    char range[64];
    std::snprintf(range, sizeof range, "; %g to %g (%g)", row.min, row.max, row.start);
    return row.what + std::string(range);
}

void addParameter(CLI::App &command, const EffectParameterRow &row, EffectOptions &to) {
    command
        .add_option(row.option, to.parameters[static_cast<std::size_t>(row.parameter)],
                    helpFor(row))
        ->option_text(row.unit)
        ->group(group);
}

void addShadowMap(CLI::App &command, EffectOptions &to) {
    command
        .add_option(shadowMapOption, to.shadowMap,
                    "Side of the shadow map, the softer the smaller; " +
                        std::to_string(minShadowMap) + " to " + std::to_string(maxShadowMap) +
                        " (" + std::to_string(defaultShadowMap) + ")")
        ->option_text("PIXELS")
        ->group(group);
}

} // namespace

void addEffects(CLI::App &command, EffectOptions &to) {
    for (const EffectParameterRow &row : effectParameterTable())
        if (!row.of)
            addParameter(command, row, to);
    for (const EffectRow &effect : effectTable()) {
        command
            .add_flag(effect.option, to.on[static_cast<std::size_t>(effect.effect)],
                      helpFor(effect))
            ->disable_flag_override()
            ->group(group);
        for (const EffectParameterRow &row : effectParameterTable())
            if (row.of == effect.effect)
                addParameter(command, row, to);
        if (effect.effect == Effect::shadows)
            addShadowMap(command, to);
    }
}

void check(const EffectOptions &options) {
    for (const EffectParameterRow &row : effectParameterTable())
        if (const auto &value = options.parameters[static_cast<std::size_t>(row.parameter)])
            requireWithin(row.option, *value, row.min, row.max);
    requireWithin(shadowMapOption, options.shadowMap.value_or(defaultShadowMap), minShadowMap,
                  maxShadowMap);
}

Effects effectsFrom(const EffectOptions &options) {
    Effects effects;
    for (const EffectRow &row : effectTable())
        if (options.on[static_cast<std::size_t>(row.effect)])
            effects.switchOn(row.effect);
    if (options.shadowMap)
        effects.switchOn(Effect::shadows);
    for (const EffectParameterRow &row : effectParameterTable())
        if (const auto &value = options.parameters[static_cast<std::size_t>(row.parameter)]) {
            effects.set(row.parameter, *value);
            if (row.of)
                effects.switchOn(*row.of);
        }
    return effects;
}

} // namespace ravolt::tool
