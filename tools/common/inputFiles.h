#pragma once

// The files that a conversion reads, identified by device and inode instead of by name, so that
// none of them is ever written to, not through a link either.

#include <compare>
#include <filesystem>
#include <set>
#include <sys/types.h>

namespace ravolt::tool {

class InputFiles {
  public:
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        auto operator<=>(const Identity &) const = default;
    };

    // A name without a file is ignored.
    void add(const std::filesystem::path &file);
    void add(const Identity &file) { files.insert(file); }
    void add(const InputFiles &others) { files.insert(others.files.begin(), others.files.end()); }

    bool contains(const std::filesystem::path &file) const;

    const std::set<Identity> &all() const { return files; }

  private:
    std::set<Identity> files;
};

} // namespace ravolt::tool
