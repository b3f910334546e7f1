#pragma once

// The effects of a picture: what each needs, and its parameters. The command line, the viewer's
// keys and the stage use the two tables here.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ravolt::tool {

enum class Effect { perPixel, spot, shadows, floor, bloom, toneMapping, depthOfField };
constexpr std::size_t numberOfEffects = 7;

struct EffectRow {
    Effect effect;
    const char *option; // "--bloom"
    const char *name;   // "bloom"
    const char *what;   // for the help
    std::vector<Effect> needs;
    bool wholePicture;   // works on the picture as a whole, in a render target
    bool (*canBeDone)(); // of the running engine; programs must be enabled
};

enum class EffectParameter {
    brightness,
    spotYaw,
    spotPitch,
    spotDistance,
    spotAngle,
    spotFade,
    bloomIntensity,
    exposure,
    focus,
    focusDepth
};
constexpr std::size_t numberOfEffectParameters = 10;

struct EffectParameterRow {
    EffectParameter parameter;
    std::optional<Effect> of; // none: of every picture
    const char *option;       // "--exposure"
    const char *unit;         // "DEGREES", "FACTOR", ...
    double min, max, start;
    double step;      // of the viewer's keys
    const char *what; // for the help
};

const std::array<EffectRow, numberOfEffects> &effectTable();
const std::array<EffectParameterRow, numberOfEffectParameters> &effectParameterTable();

const EffectRow &rowOf(Effect effect);
const EffectParameterRow &rowOf(EffectParameter parameter);

constexpr int minShadowMap = 64, maxShadowMap = 4096, defaultShadowMap = 1024;

class Effects {
  public:
    Effects();

    bool isOn(Effect effect) const { return on[static_cast<std::size_t>(effect)]; }
    // With what it needs.
    void switchOn(Effect effect);
    // With what needs it.
    void switchOff(Effect effect);

    double get(EffectParameter parameter) const {
        return values[static_cast<std::size_t>(parameter)];
    }
    // Clamps to the parameter's range.
    void set(EffectParameter parameter, double value);

    // Whether GLSL programs are needed.
    bool needPrograms() const;
    // Whether the picture has to be drawn as a whole.
    bool needWholePicture() const;

    // Switches off what the live engine's display cannot do, and names it: "bloom, shadows". Empty
    // when it can do all.
    std::string switchOffUnsupported();

    // "per-pixel lighting, bloom", or "no effects".
    std::string names() const;

  private:
    std::array<bool, numberOfEffects> on{};
    std::array<double, numberOfEffectParameters> values{};
};

// The engine's settings of effects persist, so each frame sets all of them.
void switchTo(bool on, void (*switchOn)(), void (*switchOff)());
// Those that work on the picture as a whole, or none of them, but for where the focus is.
void applyToPicture(const Effects &effects, bool wanted);

// Whether the live engine's display can do an effect and all that it needs.
bool canBeDone(Effect effect);

} // namespace ravolt::tool
