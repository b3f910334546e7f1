// Clips in files: RVANIM::load and RVANIM::save. A file is checked to its end before anything is
// copied into the clip, so that a damaged one changes nothing.

#include "ravolt/RVANIM.h"

#include "foundation/bytes.h"
#include "foundation/platform.h"
#include "foundation/text.h"
#include "models/modelFile.h"
#include "models/rvaFormat.h"
#include "models/rvaRecord.h"
#include "ravolt/zlf.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <string>

using ravolt::ByteReader;
using ravolt::RvaRecord;

namespace {

using namespace ravolt::rva;
static_assert(maxBones == RV_ANIM_BONES && maxFrames == RV_ANIM_FRAMES);

// On purpose: the length of a name with its terminator is limited as if it were stored in a byte.
constexpr std::size_t maxSavedName = 254;

// --- Reading

bool readHeader(const char *path, const ravolt::FileBytes &file) {
    if (!ravolt::readRvaHeader(file.data(), file.size())) {
        zlfLog("   [!] Invalid header in file %s @ RVANIM::load\n", path);
        return false;
    }
    zlfLog("   Header: %s\n", magic.data());
    return true;
}

// Names and entries beyond the counts of the file do not change.
void copyRecord(const RvaRecord &record, RVANIM &clip) {
    clip.setNumberOfBones(record.numberOfBones);
    clip.setNumberOfFrames(record.numberOfFrames);
    for (unsigned int bone = 0; bone < record.numberOfBones; ++bone)
        clip.setBoneName(bone, record.boneName[bone]);
    ByteReader entries(record.entries,
                       std::size_t{record.numberOfFrames} * record.numberOfBones * entryBytes);
    for (unsigned int frame = 0; frame < record.numberOfFrames; ++frame)
        for (unsigned int bone = 0; bone < record.numberOfBones; ++bone) {
            RVBONEFRAME &entry = *clip.getKeyframe(frame, bone);
            entry.rotation = entries.read<Z3MVECTOR3D>();
            entry.translation = entries.read<Z3MVECTOR3D>();
            entry.set = entries.read<std::uint8_t>() != 0;
        }
}

// --- Writing

class Output {
  public:
    explicit Output(const char *path) : file(zlfOpenFile(path, "wb")) {}

    bool isOpen() const { return file != nullptr; }

    void put(const void *data, std::size_t size) {
        good = good && std::fwrite(data, 1, size, file.get()) == size;
    }

    template <class T> void put(const T &value) { put(&value, sizeof value); }

    void putName(const char *name) {
        put(name, strnlen(name, maxSavedName));
        put('\0');
    }

    void putEntry(const RVBONEFRAME &entry) {
        put(&entry.rotation, sizeof entry.rotation);
        put(&entry.translation, sizeof entry.translation);
        put(static_cast<std::uint8_t>(entry.set));
    }

    // Whether everything has been written.
    bool close() { return std::fclose(file.release()) == 0 && good; }

  private:
    ravolt::File file;
    bool good = true;
};

} // namespace

bool RVANIM::load(const char *newFileName) try {
    const std::string name = newFileName ? std::string(rvaPath) + newFileName : "";
    const char *path = name.c_str();
    if (!zlfFileExists(path)) {
        zlfLog("   [!] Invalid params or file not found @ RVANIM::load\n");
        return false;
    }
    zlfLog("\n   Loading RVA file '%s'...\n", path);
    ravolt::FileBytes file;
    if (!ravolt::readModelFile(path, "RVANIM::load", file) || !readHeader(path, file))
        return false;
    RvaRecord record;
    ByteReader reader(file.data(), file.size(), headerBytes);
    if (!ravolt::readRvaRecord(reader, record)) {
        zlfLog("   [!] Corrupted file %s @ RVANIM::load\n", path);
        return false;
    }
    copyRecord(record, *this);
    ravolt::copyText(fileName, newFileName);
    return true;
} catch (const std::bad_alloc &) {
    zlfLog("   [!] Out of memory for file %s%s @ RVANIM::load\n", rvaPath, newFileName);
    return false;
}

bool RVANIM::save(const char *path) const {
    if (!path || numberOfBones > RV_ANIM_BONES || numberOfFrames > RV_ANIM_FRAMES) {
        zlfLog("   [!] Invalid params @ RVANIM::save\n");
        return false;
    }
    zlfLog("\n   Saving RVA file '%s'...\n", path);
    Output output(path);
    if (!output.isOpen()) {
        zlfLog("   [!] Unable to open file %s @ RVANIM::save\n", path);
        return false;
    }
    output.put(magic.data(), magic.size());
    output.put(separator);
    output.put(numberOfBones);
    output.put(numberOfFrames);
    for (unsigned int bone = 0; bone < numberOfBones; ++bone)
        output.putName(boneName[bone]);
    for (unsigned int frame = 0; frame < numberOfFrames; ++frame)
        for (unsigned int bone = 0; bone < numberOfBones; ++bone)
            output.putEntry(keyframe[frame][bone]);
    if (!output.close()) {
        zlfLog("   [!] Unable to write file %s @ RVANIM::save\n", path);
        return false;
    }
    return true;
}
