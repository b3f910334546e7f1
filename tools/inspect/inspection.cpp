// What is found in a file, in the order in which it is found.

#include "tools/inspect/inspection.h"

#include "foundation/text.h"
#include "tools/inspect/names.h"

#include <algorithm>
#include <system_error>

namespace ravolt::tool::inspect {

namespace fs = std::filesystem;

Place atOffset(std::uint64_t offset) { return {offset, 0, 0}; }
Place atLine(int line, int column) { return {{}, line, column}; }

fs::path findCompanion(const Folders &folders, const std::string &name) {
    std::error_code error;
    for (const fs::path &folder : folders)
        if (fs::is_regular_file(folder / name, error))
            return folder / name;
    return {};
}

const Finding *Inspection::firstError() const {
    const auto error = std::find_if(findings.begin(), findings.end(),
                                    [](const Finding &finding) { return finding.isError; });
    return error == findings.end() ? nullptr : &*error;
}

bool Inspection::hasWarnings() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding &finding) { return !finding.isError; });
}

void Inspection::warnOfUnconfined(const Place &place, const std::string &what,
                                  const std::string &name) {
    warn(place,
         what + " " + quoted(name) + " leaves its folder: RAVOLT::confineFilesOn refuses it");
}

bool Inspection::requireConfined(const Place &place, const std::string &what,
                                 const std::string &name) {
    const bool confined = staysBelowPath(name);
    if (!confined)
        warnOfUnconfined(place, what, name);
    return confined;
}

void Inspection::requireCompanion(const Place &place, const std::string &what,
                                  const std::string &name) {
    if (requireConfined(place, what, name) && findCompanion(folders, name).empty())
        warn(place, what + " " + quoted(name) + " is missing");
}

} // namespace ravolt::tool::inspect
