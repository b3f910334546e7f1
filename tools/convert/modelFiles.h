#pragma once

// The files that a model may make the converter read. A model can come from anywhere, so the names
// in it lead to files of its own folders alone: the model's folder and all below it, a folder
// `textures` beside it or beside its folder, and the folders that the caller names. Symbolic links
// are resolved before that is judged. The reader of the format gets its files by the same rule.

#include "tools/common/report.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Assimp {
class IOSystem;
}

namespace ravolt::tool {

struct SourceOptions {
    std::vector<std::filesystem::path> textureFolders; // searched too, with all below them
    bool follow = false;                               // names may lead anywhere
};

class ModelFiles {
  public:
    // Throws Failure for a folder of the options that does not exist.
    ModelFiles(const std::filesystem::path &modelFile, const SourceOptions &options, Report &lines);

    struct Found {
        std::filesystem::path file; // empty when there is none
        bool outside = false;       // the name leads to a file that may not be read
    };

    // Finds a texture by the path that the model states for it. Models name their textures by paths
    // of the machine that made them: backslashes, other letter case, folders that are not here, or
    // with another extension than the file has. So the stated path is tried first, then ever
    // shorter ends of it in each folder, then all that with the extensions of pictures.
    Found texture(const std::string &stated);

    // Finds a further file of the model, named relative to the working folder; likewise, but for
    // the extensions. Warns where the name leads outside.
    std::filesystem::path part(const std::string &stated);

    // File access for assimp that knows these files alone. The caller owns it; this object must
    // outlive it.
    Assimp::IOSystem *makeIoSystem();

    // Every file that was found, the model itself first; the paths are canonical.
    const std::vector<std::filesystem::path> &opened() const { return openedFiles; }

  private:
    using Parts = std::vector<std::string>;
    using Names = std::map<std::string, std::string>; // by their lower case

    void addFolder(const std::filesystem::path &folder);
    void addTexturesBeside(const std::filesystem::path &folder);
    bool isInside(const std::filesystem::path &canonical) const;
    bool mayRead(const std::filesystem::path &file) const;
    const Names &namesIn(const std::filesystem::path &folder);
    std::filesystem::path entryOf(const std::filesystem::path &folder, const std::string &name);
    std::filesystem::path below(std::filesystem::path folder, const Parts &parts,
                                std::size_t first);
    std::filesystem::path search(const Parts &parts);
    std::filesystem::path searchOtherExtensions(Parts parts);
    Found findAsStated(const std::vector<std::string> &spellings);
    Found find(const std::string &stated, bool anyExtension);

    std::filesystem::path model, home;
    std::vector<std::filesystem::path> folders; // canonical, in the order of the search
    bool follow;
    Report &report;
    std::map<std::filesystem::path, Names> listings;
    std::vector<std::filesystem::path> openedFiles;
};

} // namespace ravolt::tool
