#pragma once

// Folders for passing use, and names of files that are written.

#include <filesystem>
#include <string>

namespace ravolt::tool {

// A folder for passing use, removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder(); // throws Failure when none can be made
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &path() const { return folder; }

  private:
    std::filesystem::path folder;
};

// A name of letters that every file system takes.
std::string plainName(const std::string &text);

} // namespace ravolt::tool
