#pragma once

// Files that a conversion writes.

#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

// The files that a conversion has written. They are removed again unless `keep` is called, so that
// a conversion which fails leaves nothing behind.
class WrittenFiles {
  public:
    WrittenFiles() = default;
    ~WrittenFiles();
    WrittenFiles(const WrittenFiles &) = delete;
    WrittenFiles &operator=(const WrittenFiles &) = delete;

    void add(const std::filesystem::path &file) { files.push_back(file); }
    void keep() { files.clear(); }

  private:
    std::vector<std::filesystem::path> files;
};

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
