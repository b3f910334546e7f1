// The kinds of files, and which function inspects each.

#include "tools/inspect/files.h"

#include "tools/common/failure.h"
#include "tools/common/fileStart.h"
#include "tools/inspect/formats.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ravolt::tool::inspect {

namespace fs = std::filesystem;

namespace {

struct Kind {
    FileKind kind;
    const char *name;
    void (*inspect)(Inspection &inspection);
};

constexpr Kind kinds[] = {
    {FileKind::scene, "scene", inspectScene},
    {FileKind::clip, "clip", inspectClip},
    {FileKind::texture, "texture", inspectTexture},
    {FileKind::settings, "settings", inspectSettings},
    {FileKind::kerning, "kerning", inspectKerning},
    {FileKind::interface, "interface", inspectInterface},
    {FileKind::emitter, "emitter", inspectEmitter},
    {FileKind::terrain, "terrain", inspectTerrain},
    {FileKind::geometry, "geometry", inspectGeometry},
    {FileKind::video, "video", inspectVideo},
};

const Kind &rowOf(FileKind kind) {
    return *std::find_if(std::begin(kinds), std::end(kinds),
                         [kind](const Kind &row) { return row.kind == kind; });
}

// Also where the content is damaged.
constexpr std::pair<std::string_view, FileKind> extensions[] = {
    {".rve", FileKind::scene},    {".rva", FileKind::clip},  {".tga", FileKind::texture},
    {".geo", FileKind::geometry}, {".mpg", FileKind::video}, {".mpeg", FileKind::video},
    {".m1v", FileKind::video},    {".m2v", FileKind::video},
};

bool has(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

// Whether an element starts so; it may be malformed otherwise.
bool hasElement(std::string_view text, std::string_view name) {
    for (std::size_t at = 0; (at = text.find(name, at)) != text.npos; ++at) {
        const std::string_view after = text.substr(at + name.size(), 1);
        if (at > 0 && text[at - 1] == '<' && (after.empty() || has(" \t\r\n/>", after)))
            return true;
    }
    return false;
}

std::optional<FileKind> kindOfXml(std::string_view text) {
    if (hasElement(text, "emitter"))
        return FileKind::emitter;
    if (hasElement(text, "root"))
        return FileKind::interface;
    for (const char *section : {"GEOMETRY", "TERRAIN", "WATER", "SKY", "LOD"})
        if (hasElement(text, section))
            return FileKind::terrain;
    return {};
}

std::optional<FileKind> kindOfContent(std::string_view start) {
    constexpr std::string_view sequence("\0\0\1\xb3", 4), pack("\0\0\1\xba", 4);
    if (start.starts_with("RVE file v"))
        return FileKind::scene;
    if (start.starts_with("RVA file v"))
        return FileKind::clip;
    if (start.starts_with(sequence) || start.starts_with(pack))
        return FileKind::video;
    if (isXml(start))
        return kindOfXml(start);
    if (has(start, "RAVOLT_kerning_"))
        return FileKind::kerning;
    if (has(start, "RAVOLT_"))
        return FileKind::settings;
    return {};
}

} // namespace

const char *nameOf(FileKind kind) { return rowOf(kind).name; }

std::optional<FileKind> kindNamed(const std::string &name) {
    for (const Kind &row : kinds)
        if (name == row.name)
            return row.kind;
    return {};
}

std::string kindNames() {
    std::string names;
    for (const Kind &row : kinds)
        names += (&row == std::begin(kinds)     ? ""
                  : &row + 1 == std::end(kinds) ? " or "
                                                : ", ") +
                 std::string(row.name);
    return names;
}

std::optional<FileKind> knownKindOf(const fs::path &file) {
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto &[known, kind] : extensions)
        if (extension == known)
            return kind;
    return kindOfContent(startOf(file));
}

FileKind kindOf(const fs::path &file) {
    if (const std::optional<FileKind> kind = knownKindOf(file))
        return *kind;
    throw Failure(file.string(), "is of no known kind; state it: --as " + kindNames());
}

Inspection inspectFile(const fs::path &file, const InspectionOptions &options) {
    requireRegularFile(file);
    Inspection inspection;
    inspection.file = file;
    inspection.kind = options.kind ? *options.kind : kindOf(file);
    inspection.folders = options.folders;
    if (inspection.folders.empty())
        inspection.folders = {file.parent_path()};
    rowOf(inspection.kind).inspect(inspection);
    return inspection;
}

} // namespace ravolt::tool::inspect
