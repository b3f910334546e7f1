// Clips: the counts, the bones, and which frames are keyframes.

#include "models/rvaFormat.h"
#include "models/rvaRecord.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <set>
#include <string>

namespace ravolt::tool::inspect {

namespace {

struct Entries {
    std::size_t keyframes = 0;
    std::optional<std::size_t> notFinite; // the offset of the first such entry
};

Entries readEntries(const RvaRecord &clip, std::size_t offset) {
    const std::size_t number = std::size_t{clip.numberOfFrames} * clip.numberOfBones;
    ByteReader reader(clip.entries, number * rva::entryBytes);
    Entries entries;
    for (std::size_t i = 0; i < number; ++i) {
        const auto rotation = reader.read<Z3MVECTOR3D>();
        const auto translation = reader.read<Z3MVECTOR3D>();
        entries.keyframes += reader.read<std::uint8_t>() != 0;
        if (!entries.notFinite && !(isFinite(rotation) && isFinite(translation)))
            entries.notFinite = offset + i * rva::entryBytes;
    }
    return entries;
}

void describe(const RvaRecord &clip, const Entries &entries, Json &content) {
    content["bones"] = clip.numberOfBones;
    content["frames"] = clip.numberOfFrames;
    content["keyframes"] = entries.keyframes;
    content["boneNames"] = Json::array();
    for (unsigned int bone = 0; bone < clip.numberOfBones; ++bone)
        content["boneNames"].push_back(utf8(clip.boneName[bone]));
}

void warnOfNames(const RvaRecord &clip, const FileBytes &file, Inspection &inspection) {
    std::set<std::string> names;
    for (unsigned int bone = 0; bone < clip.numberOfBones; ++bone) {
        const char *name = clip.boneName[bone];
        if (!names.insert(name).second)
            inspection.warn(atOffset(static_cast<std::uint64_t>(
                                name - reinterpret_cast<const char *>(file.data()))),
                            "a second bone " + quoted(name) + ": both move the same node");
    }
}

} // namespace

void inspectClip(Inspection &inspection) {
    FileBytes file;
    readBytes(inspection, file);
    if (!readRvaHeader(file.data(), file.size())) {
        inspection.error(atOffset(0), "it does not start with \"" + std::string(rva::magic) + "\"");
        return;
    }
    ByteReader reader(file.data(), file.size(), rva::headerBytes);
    RvaRecord clip;
    if (!readRvaRecord(reader, clip)) {
        inspection.error(atOffset(reader.problem().offset), reader.problem().reason);
        return;
    }
    const std::size_t end = reader.position();
    const std::size_t start =
        end - std::size_t{clip.numberOfFrames} * clip.numberOfBones * rva::entryBytes;
    const Entries entries = readEntries(clip, start);
    describe(clip, entries, inspection.content);
    warnOfNames(clip, file, inspection);
    if (clip.numberOfBones == 0 || clip.numberOfFrames == 0)
        inspection.warn(atOffset(rva::headerBytes), "the clip has no bones or no frames");
    if (entries.notFinite)
        inspection.warn(atOffset(*entries.notFinite), "a rotation or translation is no number");
    if (end < file.size())
        inspection.warn(atOffset(end), std::to_string(file.size() - end) +
                                           " bytes after the last frame, which are not read");
}

} // namespace ravolt::tool::inspect
