#pragma once

// Files of a conversion: those that the model names, as far as they can be found, and those that
// are written.

#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

// Finds a file by the path that a model in `folder` states for it. Models name their textures by
// paths of the machine that made them: backslashes, other letter case, folders that are not here.
// So the stated path is tried first, then ever shorter ends of it, beside the model and one folder
// up. An empty path when nothing is found.
std::filesystem::path findBeside(const std::filesystem::path &folder, std::string stated);

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
