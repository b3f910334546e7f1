#include "tools/common/geometryPath.h"

#include <system_error>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

bool isFile(const fs::path &file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

} // namespace

fs::path folderOfGeometry(const fs::path &path, const fs::path &config) {
    for (fs::path folder = fs::absolute(config).parent_path();; folder = folder.parent_path()) {
        if (isFile(folder / path))
            return folder;
        if (folder == folder.parent_path())
            break;
    }
    return isFile(path) ? fs::current_path() : fs::path();
}

} // namespace ravolt::tool
