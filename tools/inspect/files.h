#pragma once

// The inspection of any file.

#include "tools/inspect/inspection.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool::inspect {

// The word for a kind, in options, texts and JSON.
const char *nameOf(FileKind kind);
std::optional<FileKind> kindNamed(const std::string &name);
// All of them, "scene, clip, ... or video".
std::string kindNames();

struct InspectionOptions {
    std::optional<FileKind> kind; // else it follows from the file
    Folders folders;
};

// The kind of a file, by its extension and its content. Throws Failure when it cannot be read.
std::optional<FileKind> knownKindOf(const std::filesystem::path &file);
// The same, and throws Failure when it has none.
FileKind kindOf(const std::filesystem::path &file);

// Reads the whole file. Throws Failure when it cannot be read, or has no known kind.
Inspection inspectFile(const std::filesystem::path &file, const InspectionOptions &options);

} // namespace ravolt::tool::inspect
