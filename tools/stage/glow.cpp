// Every pixel is a + b * brightness, where a is the emission of the surface and its reflection of
// the ambient light. Two pictures give both, and so the brightness at which it begins to glow.

#include "tools/stage/glow.h"

#include "tools/stage/picture.h"
#include "tools/stage/stage.h"

#include <algorithm>
#include <cmath>
#include <ravolt/RAVOLT.h>
#include <vector>

namespace ravolt::tool {

namespace {

constexpr double glowingPart = 0.05; // of the pixels that the scene covers
constexpr double maxBrightness = 6;
constexpr double aboveWhite = 1.1; // of faces that are lit alike
constexpr double brightnessStep = 0.05;
constexpr double measuredAt = 0.5;                      // dim, so that few values end at white
constexpr double red = 0.30, green = 0.59, blue = 0.11; // of the program that picks what glows

Picture measured(Stage &stage, const Effects &effects, double brightness) {
    Effects plain = effects;
    for (const Effect effect :
         {Effect::shadows, Effect::floor, Effect::bloom, Effect::toneMapping, Effect::depthOfField})
        plain.switchOff(effect);
    plain.set(EffectParameter::brightness, brightness);
    stage.setEffects(plain);
    stage.draw();
    Picture picture = takePicture();
    RAVOLT::swap();
    return picture;
}

double luminance(const unsigned char *pixel) {
    return (red * pixel[0] + green * pixel[1] + blue * pixel[2]) / 255;
}

} // namespace

double brightnessForBloom(Stage &stage) {
    const Effects effects = stage.getEffects();
    const Picture dark = measured(stage, effects, 0), lit = measured(stage, effects, measuredAt);
    stage.setEffects(effects);
    std::vector<double> begins;
    for (std::size_t i = 0; i < dark.getPixels().size(); i += 3) {
        const unsigned char *pixel = &dark.getPixels()[i];
        if (Stage::isBackground(pixel[0], pixel[1], pixel[2]))
            continue;
        const double rise = (luminance(&lit.getPixels()[i]) - luminance(pixel)) / measuredAt;
        begins.push_back(rise > 0 ? std::min(maxBrightness, (1 - luminance(pixel)) / rise)
                                  : maxBrightness);
    }
    if (begins.empty())
        return 1;
    const auto part = begins.begin() +
                      static_cast<std::ptrdiff_t>(glowingPart * static_cast<double>(begins.size()));
    std::nth_element(begins.begin(), part, begins.end());
    // In whole steps, for the reader of a number, and a little above white.
    return std::max(1.0, std::ceil(*part * aboveWhite / brightnessStep) * brightnessStep);
}

} // namespace ravolt::tool
