#pragma once

#include <filesystem>

namespace ravolt::tool {

// A new folder for temporary files, removed with its contents.
class TemporaryFolder {
  public:
    TemporaryFolder(); // throws Failure when it cannot be created
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &path() const { return folder; }

  private:
    std::filesystem::path folder;
};

} // namespace ravolt::tool
