#include "tools/effectOptions.h"

#include "tools/ranges.h"

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

std::string helpFor(const NumberRow &row) {
    char range[64];
    std::snprintf(range, sizeof range, "; %g to %g (%g)", row.lowest, row.highest, row.start);
    return row.what + std::string(range);
}

void addNumber(CLI::App &command, const NumberRow &row, EffectOptions &to) {
    command.add_option(row.option, to.numbers[static_cast<std::size_t>(row.number)], helpFor(row))
        ->option_text(row.unit)
        ->group(group);
}

void addShadowMap(CLI::App &command, EffectOptions &to) {
    command
        .add_option(shadowMapOption, to.shadowMap,
                    "Side of the shadow map, the softer the smaller; " +
                        std::to_string(smallestShadowMap) + " to " +
                        std::to_string(largestShadowMap) + " (" + std::to_string(usualShadowMap) +
                        ")")
        ->option_text("PIXELS")
        ->group(group);
}

} // namespace

void addEffects(CLI::App &command, EffectOptions &to) {
    for (const NumberRow &row : numberTable())
        if (!row.of)
            addNumber(command, row, to);
    for (const EffectRow &effect : effectTable()) {
        command
            .add_flag(effect.option, to.on[static_cast<std::size_t>(effect.effect)],
                      helpFor(effect))
            ->disable_flag_override()
            ->group(group);
        for (const NumberRow &row : numberTable())
            if (row.of == effect.effect)
                addNumber(command, row, to);
        if (effect.effect == Effect::shadows)
            addShadowMap(command, to);
    }
}

void check(const EffectOptions &options) {
    for (const NumberRow &row : numberTable())
        if (const auto &number = options.numbers[static_cast<std::size_t>(row.number)])
            requireWithin(row.option, *number, row.lowest, row.highest);
    requireWithin(shadowMapOption, options.shadowMap.value_or(usualShadowMap), smallestShadowMap,
                  largestShadowMap);
}

Effects effectsFrom(const EffectOptions &options) {
    Effects effects;
    for (const EffectRow &row : effectTable())
        if (options.on[static_cast<std::size_t>(row.effect)])
            effects.switchOn(row.effect);
    if (options.shadowMap)
        effects.switchOn(Effect::shadows);
    for (const NumberRow &row : numberTable())
        if (const auto &number = options.numbers[static_cast<std::size_t>(row.number)]) {
            effects.set(row.number, *number);
            if (row.of)
                effects.switchOn(*row.of);
        }
    return effects;
}

} // namespace ravolt::tool
