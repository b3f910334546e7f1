// Pictures are drawn with as many samples as the display can.

#include "tools/commands/shotEngine.h"

#include "tools/commands/shotOptions.h"
#include "tools/commands/show.h"
#include "tools/common/message.h"
#include "tools/process/logRedirect.h"

namespace ravolt::tool {

std::unique_ptr<Engine> startEngine(const ShotOptions &options, bool programs, bool useTarget,
                                    WindowSize &drawn) {
    Drawing drawing = drawingFor(options, programs);
    drawing.useTarget = useTarget;
    const WindowSize size = options.size;
    const int wanted = drawn.width / size.width;
    for (int side = wanted;; --side) {
        drawn = drawing.picture = {side * size.width, side * size.height};
        try {
            auto engine = std::make_unique<Engine>(windowFor(drawn), "ravolt", false,
                                                   LogRedirect::log(), drawing);
            if (side < wanted)
                warn("the display has no target for " + std::to_string(wanted * wanted) +
                         " samples: drawn with " + std::to_string(side * side),
                     options.verbosity);
            return engine;
        } catch (const PictureTooLarge &) {
            if (side == 1)
                throw;
        }
    }
}

} // namespace ravolt::tool
