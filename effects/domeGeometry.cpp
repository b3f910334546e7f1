// The vertices and the index strip of a sky dome.

#include "effects/domeGeometry.h"

#include <cmath>
#include <cstddef>

namespace ravolt {
namespace {

constexpr int fullCircle = 360;
constexpr int quarterCircle = 90;

float radians(int degrees) { return static_cast<float>(degrees) / 180.0f * 3.14159274f; }

// Y is up, and the dome is lowered by a third of its radius.
RVSKYDOME_VERTEX makeVertex(float radius, int phi, int theta) {
    const float ring = std::sin(radians(phi)) * radius;
    const float height = std::cos(radians(phi)) * radius;
    RVSKYDOME_VERTEX vertex;
    vertex.setPosition(ring * std::cos(radians(theta)), height - radius / 3.0f,
                       ring * std::sin(radians(theta)));
    vertex.setTexCoord(static_cast<float>(fullCircle - theta) / fullCircle,
                       static_cast<float>(quarterCircle - phi) / quarterCircle);
    return vertex;
}

// The counts are truncated to whole numbers and to 16 bits.
std::size_t truncated(float count) { return static_cast<unsigned short>(count); }

} // namespace

// On purpose: the counts round the rows up where a step does not divide its circle. Vertices that
// no row has are zero, and the last index is repeated, which draws nothing.
DomeGeometry makeDome(float radius, float latitudeStep, float longitudeStep) {
    DomeGeometry dome;
    const int rowStep = static_cast<int>(latitudeStep);
    const int columnStep = static_cast<int>(longitudeStep);
    if (rowStep < 1 || columnStep < 1)
        return dome;

    const float columns = static_cast<float>(fullCircle) / static_cast<float>(columnStep) + 1.0f;
    const float steps = static_cast<float>(quarterCircle) / static_cast<float>(rowStep);
    dome.vertices.reserve(truncated(columns * (steps + 1.0f)));
    dome.indices.reserve(truncated(columns * steps * 2.0f));
    for (int phi = 0; phi <= quarterCircle; phi += rowStep)
        for (int theta = 0; theta <= fullCircle; theta += columnStep) {
            const std::size_t n = dome.vertices.size();
            dome.vertices.push_back(makeVertex(radius, phi, theta));
            if (phi + rowStep > quarterCircle)
                continue;
            const std::size_t below = n + 1 + static_cast<std::size_t>(fullCircle / columnStep);
            dome.indices.push_back(static_cast<unsigned short>(n));
            dome.indices.push_back(static_cast<unsigned short>(below));
        }
    dome.vertices.resize(truncated(columns * (steps + 1.0f)));
    dome.indices.resize(truncated(columns * steps * 2.0f), dome.indices.empty()
                                                               ? static_cast<unsigned short>(0)
                                                               : dome.indices.back());
    return dome;
}

} // namespace ravolt
