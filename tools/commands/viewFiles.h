#pragma once

// The files that the keys of a viewer go through: those of a folder, or those that were dropped.

#include <cstddef>
#include <filesystem>
#include <vector>

namespace ravolt::tool {

// Whether a file is one that is shown, by its content; a model by its name, since models have no
// common mark.
bool isViewable(const std::filesystem::path &file);

// Those of a folder, sorted by the bytes of their names, without hidden ones.
std::vector<std::filesystem::path> viewableFiles(const std::filesystem::path &folder);

class ViewFiles {
  public:
    // Beside that file. The folder is read at each step, as files come and go.
    explicit ViewFiles(const std::filesystem::path &file);

    // Dropped files, of which the first is the current one; one alone has those of its folder. Of a
    // dropped folder those in it. False, without a change, where there is none.
    bool take(const std::vector<std::filesystem::path> &dropped);

    // Goes to the next or the previous file, from the last one to the first. False if there is no
    // other one.
    bool step(bool backwards);

    const std::filesystem::path &current() const { return shown; } // absolute
  private:
    std::filesystem::path shown;
    std::vector<std::filesystem::path> list; // empty: of the folder of `shown`
};

} // namespace ravolt::tool
