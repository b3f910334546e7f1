// Invariant: every path that this file returns is allowed by mayRead.

#include "tools/convert/modelFiles.h"

#include "tools/common/failure.h"

#include <algorithm>
#include <assimp/DefaultIOSystem.h>
#include <cctype>
#include <cstring>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// The endings that are tried where a texture's file has another one than the model states, the
// likeliest first.
constexpr const char *pictureExtensions[] = {
    ".png", ".jpg", ".jpeg", ".tga", ".bmp",  ".dds", ".gif", ".psd", ".tif", ".tiff",
    ".sgi", ".rgb", ".rgba", ".bw",  ".webp", ".jp2", ".pcx", ".ppm", ".pgm"};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "%20" and the like, as in addresses.
std::string withoutEscapes(const std::string &text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '%' && i + 2 < text.size() &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
            result += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    return result;
}

// The stated path with the slashes of this system, and the same with its escapes resolved.
std::vector<std::string> spellingsOf(std::string stated) {
    if (lowerCase(stated.substr(0, 5)) == "file:") {
        stated.erase(0, 5);
        if (stated.rfind("//", 0) == 0)
            stated.erase(0, lowerCase(stated.substr(2, 10)) == "localhost/" ? 11 : 2);
    }
    std::replace(stated.begin(), stated.end(), '\\', '/');
    std::vector<std::string> spellings = {stated};
    if (const std::string plain = withoutEscapes(stated);
        plain != stated && plain.find('\0') == std::string::npos)
        spellings.push_back(plain);
    return spellings;
}

std::vector<std::string> partsOf(const std::string &path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string part = path.substr(start, end - start);
        if (!part.empty() && part != ".")
            parts.push_back(part);
        start = end + 1;
    }
    return parts;
}

bool isFile(const fs::path &path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

fs::path canonicalOf(const fs::path &path) {
    std::error_code error;
    const fs::path result = fs::canonical(path, error);
    return error ? fs::path() : result;
}

class ModelIo : public Assimp::DefaultIOSystem {
  public:
    explicit ModelIo(ModelFiles &source) : files(source) {}

    bool Exists(const char *file) const override { return file && !files.part(file).empty(); }

    Assimp::IOStream *Open(const char *file, const char *mode) override {
        if (!file || !mode || mode[0] != 'r' || std::strchr(mode, '+'))
            return nullptr;
        const fs::path found = files.part(file);
        return found.empty() ? nullptr : DefaultIOSystem::Open(found.c_str(), mode);
    }

  private:
    ModelFiles &files;
};

} // namespace

ModelFiles::ModelFiles(const fs::path &modelFile, const SourceOptions &options, Report &lines)
    : model(modelFile), home(modelFile.has_parent_path() ? modelFile.parent_path() : "."),
      follow(options.follow), report(lines) {
    const fs::path canonicalHome = canonicalOf(home);
    addFolder(canonicalHome);
    addTexturesBeside(canonicalHome);
    addTexturesBeside(canonicalHome.parent_path());
    for (const fs::path &folder : options.textureFolders) {
        std::error_code error;
        if (!fs::is_directory(folder, error))
            throw Failure(folder.string(), "no such folder");
        addFolder(canonicalOf(folder));
    }
    if (const fs::path canonical = canonicalOf(model); !canonical.empty())
        openedFiles.push_back(canonical);
}

void ModelFiles::addFolder(const fs::path &folder) {
    if (!folder.empty() && std::find(folders.begin(), folders.end(), folder) == folders.end())
        folders.push_back(folder);
}

// A symbolic link there may have come with the model, so it must not lead anywhere else.
void ModelFiles::addTexturesBeside(const fs::path &folder) {
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error))
        if (lowerCase(entry.path().filename().string()) == "textures" && !entry.is_symlink(error) &&
            entry.is_directory(error))
            addFolder(entry.path());
}

bool ModelFiles::isInside(const fs::path &canonical) const {
    return std::any_of(folders.begin(), folders.end(), [&](const fs::path &folder) {
        return std::mismatch(folder.begin(), folder.end(), canonical.begin(), canonical.end())
                   .first == folder.end();
    });
}

bool ModelFiles::mayRead(const fs::path &file) const {
    return follow || isInside(canonicalOf(file));
}

const ModelFiles::Names &ModelFiles::namesIn(const fs::path &folder) {
    const auto [listing, isNew] = listings.try_emplace(folder);
    std::error_code error;
    if (isNew)
        for (const fs::directory_entry &entry : fs::directory_iterator(folder, error)) {
            const std::string name = entry.path().filename().string();
            listing->second.emplace(lowerCase(name), name);
        }
    return listing->second;
}

// `name` in `folder`, in whatever letter case; empty when there is none.
fs::path ModelFiles::entryOf(const fs::path &folder, const std::string &name) {
    std::error_code error;
    if (name == ".." || fs::exists(folder / name, error))
        return folder / name;
    if (!mayRead(folder))
        return {};
    const Names &names = namesIn(folder);
    const auto found = names.find(lowerCase(name));
    return found == names.end() ? fs::path() : folder / found->second;
}

// The file at the parts from `first` on, below `folder`.
fs::path ModelFiles::below(fs::path folder, const Parts &parts, std::size_t first) {
    for (std::size_t i = first; i < parts.size() && !folder.empty(); ++i)
        folder = entryOf(folder, parts[i]);
    return !folder.empty() && isFile(folder) && mayRead(folder) ? folder : fs::path();
}

fs::path ModelFiles::search(const Parts &parts) {
    for (std::size_t first = 0; first < parts.size(); ++first) {
        for (const fs::path &folder : folders)
            if (const fs::path found = below(folder, parts, first); !found.empty())
                return found;
        // A folder beside the model's; there a mere file name is too little to go by.
        if (follow && first + 1 < parts.size())
            if (const fs::path found = below(home / "..", parts, first); !found.empty())
                return found;
    }
    return {};
}

fs::path ModelFiles::searchOtherExtensions(Parts parts) {
    if (parts.empty())
        return {};
    const std::string stated = parts.back();
    for (const std::string &stem : {fs::path(stated).stem().string(), stated})
        for (const char *extension : pictureExtensions) {
            parts.back() = stem + extension;
            if (const fs::path found = search(parts); !found.empty())
                return found;
        }
    return {};
}

ModelFiles::Found ModelFiles::findAsStated(const std::vector<std::string> &spellings) {
    Found result;
    for (const std::string &spelling : spellings) {
        const fs::path file = home / spelling; // an absolute one stays so
        if (!isFile(file))
            continue;
        if (mayRead(file))
            return {file, false};
        result.outside = true;
    }
    return result;
}

ModelFiles::Found ModelFiles::find(const std::string &stated, bool anyExtension) {
    if (stated.empty() || stated.find('\0') != std::string::npos)
        return {};
    const std::vector<std::string> spellings = spellingsOf(stated);
    Found result = findAsStated(spellings);
    for (const std::string &spelling : spellings)
        if (result.file.empty())
            result.file = search(partsOf(spelling));
    for (const std::string &spelling : spellings)
        if (result.file.empty() && anyExtension)
            result.file = searchOtherExtensions(partsOf(spelling));
    if (result.file.empty())
        return result;
    result.file = canonicalOf(result.file);
    if (std::find(openedFiles.begin(), openedFiles.end(), result.file) == openedFiles.end())
        openedFiles.push_back(result.file);
    return result;
}

ModelFiles::Found ModelFiles::texture(const std::string &stated) { return find(stated, true); }

fs::path ModelFiles::part(const std::string &stated) {
    if (stated == model.string())
        return model;
    // assimp prepends the model's folder to what the model states.
    std::string rest = stated;
    if (const std::string front = home.string() + "/"; rest.rfind(front, 0) == 0)
        rest.erase(0, front.size());
    const Found found = find(rest, false);
    if (found.outside)
        report.warn(
            "file '" + rest + "' lies outside the model's folders: " +
            (found.file.empty()
                 ? std::string("left out")
                 : std::string("'").append(found.file.string()).append("' is read in its place")) +
            "; --follow opens it");
    return found.file;
}

Assimp::IOSystem *ModelFiles::makeIoSystem() { return new ModelIo(*this); }

} // namespace ravolt::tool
