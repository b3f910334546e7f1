// The options of `shot` are checked before any work, and its pictures are numbered from 0.

#include "tools/commands/shotOptions.h"

#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/writers/rvaWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <regex>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr int maxPictures = 10000;
constexpr int maxFrame = 99999; // of a video that is not a clip

// A whole number from 0 to `maximum`; -1 for anything else.
int wholeNumber(const std::string &text, int maximum) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && number >= 0 && number <= maximum ? number : -1;
}

} // namespace

Series seriesFrom(const ShotOptions &options) {
    Series series;
    series.startNumber = options.startNumber;
    const std::string &text = options.frames;
    const std::size_t dots = text.find("..");
    if (dots == std::string::npos) {
        series.pictures = series.turn = wholeNumber(text, maxPictures);
        if (series.pictures < 1)
            throw WrongOptions("--frames " + text + ": expected a number from 1 to " +
                               std::to_string(maxPictures) + ", or FIRST..LAST");
        return series;
    }
    const int lastFrame = options.clip.empty() ? maxFrame : static_cast<int>(ravolt::rvaFrames) - 1;
    const std::string last = text.substr(dots + 2);
    series.ofVideo = true;
    series.digits = 4;
    series.turn = options.turn.value_or(0);
    series.toTheEnd = last.empty();
    series.first = wholeNumber(text.substr(0, dots), lastFrame);
    const int end = last.empty() ? lastFrame : wholeNumber(last, lastFrame);
    if (series.first < 0 || end < series.first)
        throw WrongOptions("--frames " + text + ": expected FIRST..LAST, from 0 to " +
                           std::to_string(lastFrame));
    series.pictures = end - series.first + 1;
    return series;
}

fs::path pictureFile(const fs::path &output, int picture, const Series &series) {
    std::string name = output.filename().string();
    static const std::regex format("%0?([1-9]?)d");
    std::smatch found;
    int digits = series.digits;
    std::size_t at = output.stem().string().size(), length = 0;
    std::string before = "_";
    if (std::regex_search(name, found, format)) {
        at = static_cast<std::size_t>(found.position());
        length = static_cast<std::size_t>(found.length());
        digits = found[1].length() ? std::stoi(found[1]) : 1;
        before.clear();
    } else if (series.pictures == 1) {
        return output;
    }
    char number[24];
    std::snprintf(number, sizeof number, "%0*d", digits, series.startNumber + picture);
    return output.parent_path() / name.replace(at, length, before + number);
}

void requireTarget(const ShotOptions &options, const std::string &when) {
    const WindowSize size = options.size;
    if (std::max(size.width, size.height) > maxTarget)
        throw WrongOptions("--size " + std::to_string(size.width) + "x" +
                           std::to_string(size.height) + ": " + when + "at most " +
                           std::to_string(maxTarget) + " pixels in each direction");
}

WindowSize sizeToDraw(const ShotOptions &options, int limit) {
    // Lines are one pixel wide, and would fade.
    const bool lines = options.wireframe || options.normals || options.boxes;
    const int wanted = options.samples.value_or(lines ? 1 : 4);
    const WindowSize size = options.size;
    int side = static_cast<int>(std::lround(std::sqrt(wanted)));
    while (side > 1 && std::max(size.width, size.height) * side > limit)
        --side;
    if (options.samples && side * side < wanted)
        warn("--samples " + std::to_string(wanted) + ": the picture is too large, drawn with " +
                 std::to_string(side * side),
             options.verbosity);
    return {side * size.width, side * size.height};
}

fs::path outputOf(const ShotOptions &options) {
    if (options.output == standardOutput)
        return options.output;
    fs::path output = fs::absolute(options.output);
    std::error_code error;
    if (!fs::is_directory(output.parent_path(), error))
        throw Failure(output.parent_path().string(), "no such folder");
    return output;
}

void save(const Picture &picture, const fs::path &file, const InputFiles &inputs) {
    if (file == standardOutput)
        return printPng(picture);
    if (inputs.contains(file))
        throw Failure(file.string(), "is a file that was read for the picture; name another one");
    writePng(picture, file);
}

} // namespace ravolt::tool
