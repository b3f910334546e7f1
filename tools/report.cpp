#include "tools/report.h"

#include <algorithm>

namespace ravolt::tool {

namespace {

void addOnce(std::vector<std::string> &lines, const std::string &line) {
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
