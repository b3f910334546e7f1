// Reads the sizes that the headers of binary glTF, FBX and other files state.

#include "tools/convert/container.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>

namespace ravolt::tool {

namespace {

class Bytes {
  public:
    // A pipe is not read, since it can be read only once.
    explicit Bytes(const std::filesystem::path &file) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(file, error))
            return;
        stream.open(file, std::ios::binary);
        const std::uintmax_t found = std::filesystem::file_size(file, error);
        length = error ? 0 : found;
    }

    std::uint64_t size() const { return length; }

    bool has(std::uint64_t at, const std::string &text) {
        std::string found(text.size(), '\0');
        return read(at, found.data(), found.size()) && found == text;
    }

    // Numbers of four bytes; 0 beyond the end.
    std::uint32_t little(std::uint64_t at) {
        std::array<unsigned char, 4> b{};
        read(at, reinterpret_cast<char *>(b.data()), b.size());
        return std::uint32_t(b[0]) | std::uint32_t(b[1]) << 8 | std::uint32_t(b[2]) << 16 |
               std::uint32_t(b[3]) << 24;
    }
    std::uint32_t big(std::uint64_t at) { return __builtin_bswap32(little(at)); }

  private:
    bool read(std::uint64_t at, char *target, std::size_t number) {
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(at));
        return static_cast<bool>(stream.read(target, static_cast<std::streamsize>(number)));
    }

    std::ifstream stream;
    std::uint64_t length = 0;
};

std::string complaint(const char *what, std::uint64_t stated, std::uint64_t size) {
    return std::string("is cut off: ") + what + " " + std::to_string(stated) +
           " bytes, the file has " + std::to_string(size);
}

std::string cutGlb(Bytes &file) {
    constexpr std::uint64_t header = 12, chunkHeader = 8, version1Header = 20;
    if (file.size() < header)
        return complaint("a header has", header, file.size());
    const std::uint64_t stated = file.little(8);
    if (stated > file.size())
        return complaint("its header states", stated, file.size());
    if (file.little(4) == 1) {
        const std::uint64_t end = version1Header + file.little(12);
        return end > file.size() ? complaint("its scene ends at", end, file.size()) : "";
    }
    for (std::uint64_t at = header; at + chunkHeader <= stated;) {
        at += chunkHeader + file.little(at);
        if (at > file.size())
            return complaint("a chunk ends at", at, file.size());
    }
    return "";
}

// Where the file's records end, as its header has it; 0 where there is no such number.
std::uint64_t statedSize(Bytes &file) {
    if (file.has(0, std::string("\x4d\x4d", 2))) // 3DS
        return file.little(2);
    if (file.has(0, "FORM")) // LWO and other IFF files
        return 8 + std::uint64_t(file.big(4));
    if (file.has(0, "IDP2")) // MD2
        return file.little(64);
    if (file.has(0, "IDP3")) // MD3
        return file.little(104);
    return 0;
}

constexpr std::uint64_t maxFileSize = std::uint64_t(1) << 40; // no model has a terabyte

// The records of a binary FBX file, each of which states where it ends; a record of zeros is last.
std::string cutFbx(Bytes &file) {
    constexpr std::uint64_t header = 27, record = 13;
    constexpr std::uint32_t longRecords = 7500; // from that version on numbers have eight bytes
    const bool isLong = file.little(23) >= longRecords;
    for (std::uint64_t at = header; at + record <= file.size();) {
        const std::uint64_t end =
            file.little(at) | (isLong ? std::uint64_t(file.little(at + 4)) << 32 : 0);
        if (end == 0)
            return "";
        if (end > maxFileSize)
            return ""; // invalid in another way
        if (end > file.size())
            return complaint("a record ends at", end, file.size());
        if (end <= at)
            return ""; // likewise
        at = end;
    }
    return complaint("its records go on behind", file.size(), file.size());
}

} // namespace

bool isGlb(const std::filesystem::path &file) { return Bytes(file).has(0, "glTF"); }

std::string cutOff(const std::filesystem::path &file) {
    Bytes bytes(file);
    if (bytes.has(0, "glTF"))
        return cutGlb(bytes);
    if (bytes.has(0, "Kaydara FBX Binary  "))
        return cutFbx(bytes);
    const std::uint64_t stated = statedSize(bytes);
    return stated > bytes.size() ? complaint("its header states", stated, bytes.size()) : "";
}

} // namespace ravolt::tool
