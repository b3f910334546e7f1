#pragma once

// What a picture can be given beyond the plain drawing: which effects there are, what each needs,
// and the numbers that shape them. The command line, the viewer's keys and the stage all go by the
// two tables here.

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
    bool (*canBeDone)(); // asks the live engine, whose programs must have been wanted
};

enum class Number {
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
constexpr std::size_t numberOfNumbers = 10;

struct NumberRow {
    Number number;
    std::optional<Effect> of; // none: of every picture
    const char *option;       // "--exposure"
    const char *unit;         // "DEGREES", "FACTOR", ...
    double lowest, highest, start;
    double step;      // of the viewer's keys
    const char *what; // for the help
};

const std::array<EffectRow, numberOfEffects> &effectTable();
const std::array<NumberRow, numberOfNumbers> &numberTable();

const EffectRow &rowOf(Effect effect);
const NumberRow &rowOf(Number number);

constexpr int smallestShadowMap = 64, largestShadowMap = 4096, usualShadowMap = 1024;

class Effects {
  public:
    Effects();

    bool isOn(Effect effect) const { return on[static_cast<std::size_t>(effect)]; }
    // With what it needs.
    void switchOn(Effect effect);
    // With what needs it.
    void switchOff(Effect effect);

    double get(Number number) const { return values[static_cast<std::size_t>(number)]; }
    // Keeps within the number's range.
    void set(Number number, double value);

    // Whether GLSL programs are needed.
    bool needPrograms() const;
    // Whether the picture has to be drawn as a whole.
    bool needWholePicture() const;

    // Switches off what the live engine's display cannot do, and names it: "bloom, shadows". Empty
    // when it can do all.
    std::string leaveOutImpossible();

    // "per-pixel lighting, bloom", or "no effects".
    std::string names() const;

  private:
    std::array<bool, numberOfEffects> on{};
    std::array<double, numberOfNumbers> values{};
};

// Whether the live engine's display can do an effect and all that it needs.
bool canBeDone(Effect effect);

} // namespace ravolt::tool
