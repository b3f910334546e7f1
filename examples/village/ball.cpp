// A ball that noise has made uneven.

#include "examples/village/parts.h"

#include "tools/terrain/noise.h"

#include <cmath>

namespace village {

void writeBall(ObjWriter &obj, const Point &middle, const Ball &ball, int seed) {
    constexpr float pi = 3.1415927f;
    std::vector<std::vector<Point>> rows;
    for (int ring = 0; ring <= ball.rings; ++ring) {
        const float down = pi * static_cast<float>(ring) / static_cast<float>(ball.rings);
        std::vector<Point> row;
        for (int i = 0; i < ball.sides; ++i) {
            const float angle = 2 * pi * static_cast<float>(i) / static_cast<float>(ball.sides);
            const Point to = {std::sin(down) * std::sin(angle), std::cos(down),
                              std::sin(down) * std::cos(angle)},
                        at = to * ball.frequency;
            const float bump = ravolt::tool::terrain::fractalNoise(at[0], at[1], at[2], 3, seed);
            row.push_back(middle + Point{to[0], to[1] * ball.flatness, to[2]} *
                                       (ball.radius * (1 + ball.unevenness * bump)));
        }
        rows.push_back(row);
    }
    obj.rings(rows, ball.around);
}

} // namespace village
