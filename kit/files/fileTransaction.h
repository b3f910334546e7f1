#pragma once

// Files that are written together: each first under a temporary name beside its target, then all
// are renamed. Until then, and after any failure, the former files remain. Only
// the end of the process by SIGKILL does not remove the temporaries; between two renames it leaves
// each file complete, some of them new.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace ravolt {

class FileTransaction {
  public:
    struct Staged {
        std::string path;      // as the caller named it, for messages
        std::string target;    // where links lead
        std::string temporary; // its bytes until `commit`
        bool replaced = true;  // or written into: what is no regular file
        bool existed = false;  // when `commit` began
        std::string backup;    // the former file during `commit`; empty for none
    };

    FileTransaction() = default;
    ~FileTransaction(); // removes the temporaries of what is not committed
    FileTransaction(const FileTransaction &) = delete;
    FileTransaction &operator=(const FileTransaction &) = delete;

    // Writes the bytes to a temporary. Gives what is wrong, or an empty text; a target that is
    // read-only is refused.
    std::string stage(const std::string &path, const std::vector<unsigned char> &bytes);

    // Appends bytes to the temporary. False when they cannot be written; whoever calls it then
    // ends.
    using Append = std::function<bool(const void *bytes, std::size_t size)>;

    // The same for a file that is made piece by piece: `write` returns false when it has failed.
    std::string stage(const std::string &path, const std::function<bool(const Append &)> &write);

    // Takes over what another process has staged, or was about to stage.
    void adopt(Staged other) { files.push_back(std::move(other)); }

    // Replaces all targets. Gives what is wrong, or an empty text; then nothing is replaced.
    std::string commit();

    // Is called with each file before its temporary is made.
    std::function<void(const Staged &)> onStage;

  private:
    void backUp();
    bool replace(std::size_t number);
    void restore(std::size_t number);
    void removeBackups();
    void finish();

    std::vector<Staged> files;
};

} // namespace ravolt
