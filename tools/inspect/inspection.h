#pragma once

// What a file holds and what is wrong with it, found without OpenGL by the engine's own readers.

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace ravolt::tool::inspect {

using Json = nlohmann::ordered_json;

enum class FileKind {
    scene,
    clip,
    texture,
    settings,
    kerning,
    interface,
    emitter,
    terrain,
    geometry,
    video
};

// An offset in a binary file, or a line and a column of a text, from 1; none for the whole file.
struct Place {
    std::optional<std::uint64_t> offset;
    int line = 0, column = 0;
};
Place atOffset(std::uint64_t offset);
Place atLine(int line, int column = 1);

// An error is what the engine refuses; a warning is what it loads, but what cannot be meant.
struct Finding {
    bool isError;
    Place place;
    std::string reason;
};

// The files that a file names are searched in the folders of --path, or else in its own.
using Folders = std::vector<std::filesystem::path>;

// The file that a name leads to; empty for none.
std::filesystem::path findCompanion(const Folders &folders, const std::string &name);

struct Inspection {
    std::filesystem::path file;
    FileKind kind = FileKind::scene;
    Folders folders;
    Json content = Json::object(); // as far as it was read
    std::vector<Finding> findings;

    void error(const Place &place, const std::string &reason) {
        findings.push_back({true, place, reason});
    }
    void warn(const Place &place, const std::string &reason) {
        findings.push_back({false, place, reason});
    }
    const Finding *firstError() const; // NULL for none
    bool hasErrors() const { return firstError() != nullptr; }
    bool hasWarnings() const;

    // False, with a warning, for a name of a file that RAVOLT::confineFilesOn refuses.
    bool requireConfined(const Place &place, const std::string &what, const std::string &name);
    void warnOfUnconfined(const Place &place, const std::string &what, const std::string &name);

    // A warning where a file that this one names is missing, or its name is not confined.
    void requireCompanion(const Place &place, const std::string &what, const std::string &name);
};

} // namespace ravolt::tool::inspect
