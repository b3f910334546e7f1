#include "tools/common/temporaryFolder.h"

#include "tools/common/failure.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    const char *place = std::getenv("TMPDIR");
    std::string pattern = std::string(place && *place ? place : "/tmp") + "/ravolt-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw Failure(pattern,
                      std::string("cannot make a temporary folder: ") + std::strerror(errno));
    folder = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(folder, error);
}

} // namespace ravolt::tool
