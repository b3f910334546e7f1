// Each frame is drawn by the same calls whether it is saved or unseen.

#include "tools/commands/shotSeries.h"

#include "tools/commands/shotOptions.h"
#include "tools/common/failure.h"
#include "tools/common/progress.h"
#include "tools/process/memoryShortage.h"
#include "tools/process/signals.h"

namespace ravolt::tool {

namespace {

// A picture is whole, or none is saved.
void requireMemory(MemoryShortage &shortage, const std::filesystem::path &file) {
    const std::string words = shortage.next();
    if (!words.empty())
        throw Failure(file.string(), "not drawn, as the engine has no memory: " + words);
}

} // namespace

bool drawSeries(const ShotOptions &options, const std::filesystem::path &output,
                const Series &series, const SeriesSource &source, const InputFiles &inputs) {
    const int start = source.dependsOnEarlier ? 0 : series.first;
    const int end = series.first + series.pictures;
    bool something = false;
    MemoryShortage shortage;
    Progress progress(!options.verbosity.quiet && end - start > 1);
    progress.step("drawing", 0, 1);
    for (int frame = start; frame < end; ++frame) {
        throwIfInterrupted();
        source.pose(frame);
        if (frame < series.first) {
            drawUnseen(source.drawable, source.drawn);
        } else {
            Picture picture = shoot(source.drawable, source.drawn);
            picture.shrink(source.drawn.width / options.size.width); // the mean of the samples
            something = something || showsSomething(picture);
            const std::filesystem::path file = pictureFile(output, frame - series.first, series);
            requireMemory(shortage, file);
            save(picture, file, inputs);
        }
        progress.update(static_cast<double>(frame + 1 - start) / (end - start));
    }
    return something;
}

} // namespace ravolt::tool
