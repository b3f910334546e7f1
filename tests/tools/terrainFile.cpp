// Reads geometry files for comparison.

#include "tests/tools/terrainFile.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace terrain_test {

namespace {

class Bytes {
  public:
    explicit Bytes(const std::string &all) : text(all) {}

    template <class Value> Value next() {
        Value value;
        std::memcpy(&value, part(sizeof value), sizeof value);
        return value;
    }
    Indices indices(long count) {
        Indices list(count > 0 ? static_cast<std::size_t>(count) : 0);
        if (!list.empty())
            std::memcpy(list.data(), part(2 * list.size()), 2 * list.size());
        return list;
    }
    void skip(std::size_t size) { part(size); }
    std::size_t left() const { return text.size() - at; }

  private:
    const char *part(std::size_t size) {
        if (size > left())
            throw std::out_of_range("the file ends early");
        at += size;
        return text.data() + at - size;
    }

    const std::string &text;
    std::size_t at = 0;
};

Level levelFrom(Bytes &bytes, long n, bool last) {
    Level level;
    level.body = bytes.indices(last ? (n * (n + 1) + n) * 2 - 2 : ((n - 2) * (n - 1) - 3 + n) * 2);
    for (int variant = 0; variant < 4; ++variant) {
        for (Indices &list : level.coarse[variant])
            list = bytes.indices(n * 2 + 2);
        for (Indices &list : level.same[variant])
            list = bytes.indices(n * 2 + 2);
    }
    return level;
}

Chunk chunkFrom(Bytes &bytes, unsigned int chunkSize) {
    Chunk chunk;
    chunk.gridX = bytes.next<std::uint16_t>();
    chunk.gridY = bytes.next<std::uint16_t>();
    chunk.minHeight = bytes.next<float>();
    chunk.maxHeight = bytes.next<float>();
    for (unsigned int &neighbour : chunk.neighbours)
        neighbour = bytes.next<std::uint16_t>();
    for (unsigned int i = 0; i < chunkSize * chunkSize; ++i)
        chunk.vertices.push_back(bytes.next<Vertex>());
    return chunk;
}

double dot(const std::array<double, 3> &a, const std::array<double, 3> &b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

File parse(const std::string &all) {
    Bytes bytes(all);
    File file;
    file.chunkSize = bytes.next<std::uint16_t>();
    file.sizeY = bytes.next<std::uint16_t>();
    file.sizeX = bytes.next<std::uint16_t>();
    bytes.skip(2);
    file.scale = bytes.next<float>();
    bytes.skip(8);
    file.numberOfLevels = bytes.next<std::uint8_t>();
    bytes.skip(3);
    const unsigned int cells = file.chunkSize - 1;
    for (unsigned int l = 0; l < file.numberOfLevels; ++l)
        file.levels.push_back(
            levelFrom(bytes, static_cast<long>(cells >> l), l + 1 == file.numberOfLevels));
    for (unsigned int i = 0; i < file.chunkSize * file.chunkSize; ++i)
        file.coords.push_back(bytes.next<std::array<float, 2>>());
    const unsigned int number = (file.sizeY - 1) / cells * ((file.sizeX - 1) / cells);
    for (unsigned int i = 0; i < number; ++i)
        file.chunks.push_back(chunkFrom(bytes, file.chunkSize));
    file.bytesAfterwards = bytes.left();
    return file;
}

std::array<float, 3> Chunk::center(const File &file) const {
    const unsigned int cells = file.chunkSize - 1;
    const auto middle = [&](unsigned int grid) {
        const float low = static_cast<float>(grid * cells) * file.scale;
        const float high = static_cast<float>(grid * cells + cells) * file.scale;
        return (low + high) / 2;
    };
    return {middle(gridX), (minHeight + maxHeight) / 2, middle(gridY)};
}

std::vector<std::string> textsOf(const std::string &xml, const std::string &element) {
    std::vector<std::string> texts;
    const std::string open = "<" + element + ">", close = "</" + element + ">";
    for (std::size_t at = xml.find(open); at != std::string::npos; at = xml.find(open, at)) {
        at += open.size();
        texts.push_back(xml.substr(at, xml.find(close, at) - at));
    }
    return texts;
}

double lambert(const Vertex &vertex, const std::array<double, 3> &mapNormal,
               const std::array<double, 3> &light) {
    const auto &[tx, ty, tz] = vertex.tangent;
    const auto &[nx, ny, nz] = vertex.weights;
    const std::array<double, 3> tangent = {tx, ty, tz}, normal = {nx, ny, nz};
    const std::array<double, 3> binormal = {ty * nz - tz * ny, tz * nx - tx * nz,
                                            tx * ny - ty * nx};
    const std::array<double, 3> own = {dot(light, tangent), dot(light, binormal),
                                       dot(light, normal)};
    return dot(own, mapNormal) / std::sqrt(dot(own, own) * dot(mapNormal, mapNormal));
}

} // namespace terrain_test
