// Converts lights, and reports their unsupported properties.

#include "tools/convert/lights.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ravolt::tool {

namespace {

// Why a scene cannot contain a light; NULL if it can.
const char *unsupportedReason(const aiLight &light) {
    switch (light.mType) {
    case aiLightSource_DIRECTIONAL:
    case aiLightSource_POINT:
    case aiLightSource_SPOT:
        return nullptr;
    case aiLightSource_AMBIENT:
        return "is ambient";
    case aiLightSource_AREA:
        return "is an area";
    default:
        return "is of no known kind";
    }
}

ravolt::RveLightType typeOf(const aiLight &light) {
    switch (light.mType) {
    case aiLightSource_DIRECTIONAL:
        return ravolt::RveLightType::directional;
    case aiLightSource_SPOT:
        return ravolt::RveLightType::spot;
    default:
        return ravolt::RveLightType::omni;
    }
}

float strengthOf(const aiLight &light) {
    const aiColor3D &color = light.mColorDiffuse;
    const float strength = std::max({color.r, color.g, color.b});
    return std::isfinite(strength) ? strength : 0;
}

bool fades(const aiLight &light) {
    return light.mType != aiLightSource_DIRECTIONAL &&
           (light.mAttenuationLinear != 0 || light.mAttenuationQuadratic != 0);
}

std::string called(const aiLight &light) {
    return "light '" + std::string(light.mName.C_Str()) + "'";
}

void reportLosses(const aiLight &light, Report &report) {
    if (strengthOf(light) > 1)
        report.note(called(light) + " dimmed to full brightness: its colour goes above 1");
    if (fades(light))
        report.warn("lights do not fade with distance: the scene format holds no attenuation");
}

// Half of the cone in degrees, as OpenGL takes it.
float cutOffOf(const aiLight &light, bool halfCones) {
    if (light.mType != aiLightSource_SPOT)
        return 180;
    const double angle = light.mAngleOuterCone * (halfCones ? 1 : 0.5) * 180 / std::numbers::pi;
    return std::isfinite(angle) ? static_cast<float>(std::clamp(angle, 0.0, 90.0)) : 45.0f;
}

} // namespace

ModelLights::ModelLights(const Model &model, Report &report) : halfCones(model.hasHalfCones()) {
    const aiScene &scene = model.scene();
    for (unsigned int i = 0; i < scene.mNumLights; ++i) {
        const aiLight &light = *scene.mLights[i];
        if (const char *why = unsupportedReason(light)) {
            report.warn(called(light) + " left out: it " + why + " light");
        } else if (strengthOf(light) <= 0) {
            report.warn(called(light) + " left out: it is black");
        } else if (!scene.mRootNode->FindNode(light.mName)) {
            report.warn(called(light) + " left out: it stands nowhere");
        } else {
            reportLosses(light, report);
            byNode.emplace(light.mName.C_Str(), &light);
        }
    }
}

std::vector<const aiLight *> ModelLights::of(const std::string &node) const {
    std::vector<const aiLight *> result;
    const auto range = byNode.equal_range(node);
    for (auto entry = range.first; entry != range.second; ++entry)
        result.push_back(entry->second);
    return result;
}

ravolt::RveNode ModelLights::convert(const aiLight &light, const Affine &frame) const {
    const Vector position = light.mPosition;
    const Vector direction = frame.linear * Vector(light.mDirection);
    const float dimming = 1 / std::max(1.0f, strengthOf(light));
    const auto channel = [=](float value) {
        return std::isfinite(value) ? std::clamp(value * dimming, 0.0f, 1.0f) : 0.0f;
    };
    ravolt::RveNode node;
    node.kind = ravolt::RveKind::light;
    node.name = light.mName.C_Str();
    node.position = floatsOf(frame(isFinite(position) ? position : Vector{}));
    node.light.type = typeOf(light);
    node.light.direction = floatsOf(unit(direction, {0, 0, -1}));
    node.light.cutOff = cutOffOf(light, halfCones);
    node.light.color = {channel(light.mColorDiffuse.r), channel(light.mColorDiffuse.g),
                        channel(light.mColorDiffuse.b)};
    return node;
}

} // namespace ravolt::tool
