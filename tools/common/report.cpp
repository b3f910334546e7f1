#include "tools/common/report.h"

#include <algorithm>

namespace ravolt::tool {

namespace {

// Names in models may contain control characters, which a terminal would interpret.
void addOnce(std::vector<std::string> &lines, std::string line) {
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 127; }, '?');
    if (std::find(lines.begin(), lines.end(), line) == lines.end())
        lines.push_back(line);
}

} // namespace

void Report::warn(const std::string &line) { addOnce(warningLines, line); }

void Report::note(const std::string &line) { addOnce(noteLines, line); }

std::string counted(std::size_t number, const std::string &one, const std::string &many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

} // namespace ravolt::tool
