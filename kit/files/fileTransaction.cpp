// Temporary files beside their targets, and renaming all of them at once.

#include "kit/files/fileTransaction.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace ravolt {

namespace {

namespace fs = std::filesystem;

class Descriptor {
  public:
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }
    bool close() {
        const bool closed = number < 0 || ::close(number) == 0;
        number = -1;
        return closed;
    }

  private:
    int number;
};

// The open file that /dev/stdout and the like refer to, independent of its name.
bool isOpenFile(const fs::path &target) { return target.string().rfind("/proc/", 0) == 0; }

// Where a chain of links ends, whether there is a file or not.
std::string targetOf(const std::string &path) {
    constexpr int longestChain = 40;
    fs::path target = path;
    std::error_code error;
    for (int i = 0; i < longestChain && fs::is_symlink(target, error) && !isOpenFile(target); ++i)
        target = target.parent_path() / fs::read_symlink(target, error);
    return target.string();
}

bool isDevice(const std::string &target) {
    std::error_code error;
    return isOpenFile(target) ||
           (fs::exists(target, error) && !fs::is_regular_file(target, error) &&
            !fs::is_directory(target, error));
}

// Why the file must not be replaced; NULL when it may. The bits count for the superuser too, who
// could write to anything.
const char *protection(const std::string &target) {
    struct stat state;
    if (stat(target.c_str(), &state) != 0)
        return nullptr;
    if (S_ISDIR(state.st_mode))
        return "is a folder";
    if (!S_ISREG(state.st_mode))
        return nullptr;
    const bool writable = state.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH);
    return writable && access(target.c_str(), W_OK) == 0 ? nullptr : "is read-only";
}

// A name in `folder` that no other process chooses, short enough for every file system.
std::string temporaryName(const fs::path &folder) {
    static std::random_device random;
    char name[40];
    std::snprintf(name, sizeof name, ".ravolt-%08x%08x.tmp", random(), random());
    return (folder / name).string();
}

fs::path temporaryFolder() {
    const char *place = std::getenv("TMPDIR");
    return place && *place ? place : "/tmp";
}

bool writeAll(int file, const unsigned char *bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(file, bytes, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// As the file that it replaces.
void copyMode(const std::string &from, int file) {
    struct stat state;
    if (stat(from.c_str(), &state) == 0)
        static_cast<void>(fchmod(file, state.st_mode & 07777));
}

bool writeTemporary(const FileTransaction::Staged &file,
                    const std::function<bool(const FileTransaction::Append &)> &write) {
    Descriptor to(open(file.temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!to.isOpen())
        return false;
    if (file.replaced)
        copyMode(file.target, to.get());
    const auto append = [&](const void *bytes, std::size_t size) {
        return writeAll(to.get(), static_cast<const unsigned char *>(bytes), size);
    };
    return write(append) && fsync(to.get()) == 0 && to.close();
}

bool copyInto(const FileTransaction::Staged &file) {
    Descriptor from(open(file.temporary.c_str(), O_RDONLY | O_CLOEXEC));
    Descriptor to(open(file.target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!from.isOpen() || !to.isOpen())
        return false;
    std::vector<unsigned char> part(1 << 16);
    ssize_t count;
    while ((count = read(from.get(), part.data(), part.size())) > 0)
        if (!writeAll(to.get(), part.data(), static_cast<std::size_t>(count)))
            return false;
    return count == 0 && to.close();
}

fs::path folderOf(const std::string &file) {
    const fs::path folder = fs::path(file).parent_path();
    return folder.empty() ? "." : folder;
}

// So that the new names outlast a loss of power; not every file system can.
void syncFolder(const fs::path &folder) {
    const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen())
        static_cast<void>(fsync(opened.get()));
}

} // namespace

FileTransaction::~FileTransaction() {
    for (const Staged &file : files)
        unlink(file.temporary.c_str());
}

std::string FileTransaction::stage(const std::string &path,
                                   const std::vector<unsigned char> &bytes) {
    return stage(path, [&](const Append &append) { return append(bytes.data(), bytes.size()); });
}

std::string FileTransaction::stage(const std::string &path,
                                   const std::function<bool(const Append &)> &write) {
    Staged file;
    file.path = path;
    file.target = targetOf(path);
    file.replaced = !isDevice(file.target);
    file.temporary = temporaryName(file.replaced ? folderOf(file.target) : temporaryFolder());
    if (const char *why = protection(file.target))
        return path + ": " + why;
    if (onStage)
        onStage(file);
    files.push_back(file);
    return writeTemporary(file, write) ? "" : path + ": cannot be written";
}

// Hard links, where the file system has them: without one there is no way back from a rename.
void FileTransaction::backUp() {
    for (Staged &file : files) {
        std::error_code error;
        file.existed = fs::exists(file.target, error);
        const std::string backup = temporaryName(folderOf(file.target));
        if (files.size() > 1 && file.replaced && file.existed &&
            link(file.target.c_str(), backup.c_str()) == 0)
            file.backup = backup;
    }
}

// The first `number` files as they were before.
void FileTransaction::restore(std::size_t number) {
    while (number-- > 0) {
        const Staged &file = files[number];
        if (!file.backup.empty())
            std::rename(file.backup.c_str(), file.target.c_str());
        else if (file.replaced && !file.existed)
            unlink(file.target.c_str());
    }
}

void FileTransaction::removeBackups() {
    for (Staged &file : files)
        if (!file.backup.empty())
            unlink(file.backup.c_str());
}

bool FileTransaction::replace(std::size_t number) {
    const Staged &file = files[number];
    return !file.replaced || std::rename(file.temporary.c_str(), file.target.c_str()) == 0;
}

void FileTransaction::finish() {
    removeBackups();
    std::set<fs::path> folders;
    for (const Staged &file : files) {
        if (file.replaced)
            folders.insert(folderOf(file.target));
        else
            unlink(file.temporary.c_str());
    }
    files.clear();
    for (const fs::path &folder : folders)
        syncFolder(folder);
}

std::string FileTransaction::commit() {
    for (const Staged &file : files)
        if (const char *why = protection(file.target))
            return file.path + ": " + why;
    for (const Staged &file : files)
        if (!file.replaced && !copyInto(file))
            return file.path + ": cannot be written";
    backUp();
    for (std::size_t i = 0; i < files.size(); ++i)
        if (!replace(i)) {
            restore(i);
            removeBackups();
            return files[i].path + ": cannot be written";
        }
    finish();
    return "";
}

} // namespace ravolt
