// Pictures are drawn at twice their size where the display can.

#include "tools/commands/shotEngine.h"

#include "tools/commands/shotOptions.h"
#include "tools/commands/show.h"
#include "tools/common/message.h"
#include "tools/process/logRedirect.h"

namespace ravolt::tool {

std::unique_ptr<Engine> startEngine(const ShotOptions &options, Drawing drawing, WindowSize &drawn,
                                    const std::string &warning) {
    const auto start = [&] {
        drawing.picture = drawn;
        return std::make_unique<Engine>(windowFor(drawn), "ravolt", false, LogRedirect::log(),
                                        drawing);
    };
    try {
        return start();
    } catch (const PictureTooLarge &) {
        if (drawn.width == options.size.width)
            throw;
    }
    drawn = options.size;
    auto engine = start();
    warn(warning, options.verbosity);
    return engine;
}

} // namespace ravolt::tool
