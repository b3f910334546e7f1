// The projection of a frame and its end, which everything that is drawn shares.

#include "tools/stage/drawable.h"

#include "tools/process/scopedSilentLog.h"
#include "tools/stage/engine.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVOPENGL.h>

namespace ravolt::tool {

double aspectOf(const PicturePart &part) {
    const WindowSize canvas = canvasSize();
    const double width = part.wholeWidth ? part.wholeWidth : canvas.width;
    const double height = part.wholeHeight ? part.wholeHeight : canvas.height;
    return width / std::max(1.0, height);
}

void project(const Projection &projection, const PicturePart &part) {
    const auto f = [](double value) { return static_cast<float>(value); };
    RVOPENGL::setAngleOfView(f(projection.angle));
    RVOPENGL::setNearPlane(f(projection.nearest));
    RVOPENGL::setFarPlane(f(projection.farthest));
    const WindowSize canvas = canvasSize();
    RVOPENGL::resize(0, 0, canvas.width, canvas.height);
    if (!part.wholeWidth)
        return;
    const double half = projection.angle / 2 * std::numbers::pi / 180;
    const double pixel = 2 * projection.nearest * std::tan(half) / part.wholeHeight;
    const double left = (part.left - part.wholeWidth / 2.0) * pixel;
    const double bottom = (part.bottom - part.wholeHeight / 2.0) * pixel;
    RVOPENGL::setFrustum(f(left), f(left + canvas.width * pixel), f(bottom),
                         f(bottom + canvas.height * pixel), f(projection.nearest),
                         f(projection.farthest), false);
}

void endFrame() {
    {
        const ScopedSilentLog silence; // tone mapping prints a line in each frame
        RAVOLT::end3D(true);
    }
    RAVOLT::begin2D();
    RAVOLT::end2D();
}

} // namespace ravolt::tool
