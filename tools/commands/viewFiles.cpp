// Only the first bytes of each file are read, and those of XML as far as its kind depends on them.

#include "tools/commands/viewFiles.h"

#include "tools/common/failure.h"
#include "tools/convert/import.h"
#include "tools/stage/content.h"

#include <algorithm>

namespace ravolt::tool {

namespace fs = std::filesystem;

bool isViewable(const fs::path &file) {
    try {
        return contentOf(file) != Content::model || isModelName(file);
    } catch (const Failure &) {
        return false;
    }
}

std::vector<fs::path> viewableFiles(const fs::path &folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error))
        if (!entry.path().filename().string().starts_with('.') && isViewable(entry.path()))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

ViewFiles::ViewFiles(const fs::path &file) : shown(fs::absolute(file)) {}

bool ViewFiles::take(const std::vector<fs::path> &dropped) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const fs::path &file : dropped)
        if (!fs::is_directory(file, error))
            files.push_back(file);
        else
            for (const fs::path &inside : viewableFiles(file))
                files.push_back(inside);
    if (files.empty())
        return false;
    shown = files.front();
    list = files.size() > 1 ? files : std::vector<fs::path>();
    return true;
}

// A file that is no longer there is followed by the one that comes after its name.
bool ViewFiles::step(bool backwards) {
    const std::vector<fs::path> files = list.empty() ? viewableFiles(shown.parent_path()) : list;
    if (files.empty() || (files.size() == 1 && files[0] == shown))
        return false;
    const auto at = list.empty() ? std::lower_bound(files.begin(), files.end(), shown)
                                 : std::find(files.begin(), files.end(), shown);
    const bool isThere = at != files.end() && *at == shown;
    const auto index = static_cast<std::size_t>(at - files.begin());
    const std::size_t steps = backwards ? files.size() - 1 : (isThere ? 1 : 0);
    shown = files[(index + steps) % files.size()];
    return true;
}

} // namespace ravolt::tool
