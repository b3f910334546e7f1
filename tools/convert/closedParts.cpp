// Finds connected parts by their shared vertices, and tests whether each is closed with its
// faces outward.

#include "tools/convert/closedParts.h"

#include "tools/common/algebra.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numeric>
#include <tuple>

namespace ravolt::tool {

namespace {

// Of the cube of a part's size. A sheet with two equal sides has a volume of 0 but for rounding.
constexpr double smallestVolume = 1e-6;

using Triangle = std::array<std::uint32_t, 3>;
using Edge = std::pair<std::uint32_t, std::uint32_t>; // from the lower vertex to the higher

// Sets that are joined pair by pair, each known by one member.
class Sets {
  public:
    explicit Sets(std::size_t size) : parent(size) { std::iota(parent.begin(), parent.end(), 0u); }

    std::uint32_t find(std::uint32_t member) {
        while (parent[member] != member)
            member = parent[member] = parent[parent[member]];
        return member;
    }

    void join(std::uint32_t a, std::uint32_t b) { parent[find(a)] = find(b); }

  private:
    std::vector<std::uint32_t> parent;
};

// The vertices by numbers that those at one position share.
std::vector<std::uint32_t> weld(const Geometry &geometry) {
    using Key = std::tuple<float, float, float, std::array<std::uint32_t, bonesOfAVertex>,
                           std::array<float, bonesOfAVertex>>;
    std::map<Key, std::uint32_t> numbers;
    std::vector<std::uint32_t> result;
    result.reserve(geometry.positions.size());
    for (std::size_t i = 0; i < geometry.positions.size(); ++i) {
        const Point &p = geometry.positions[i];
        const VertexInfluences influences =
            geometry.influences.empty() ? VertexInfluences() : geometry.influences[i];
        const Key key{p.x, p.y, p.z, influences.bone, influences.weight};
        result.push_back(
            numbers.emplace(key, static_cast<std::uint32_t>(numbers.size())).first->second);
    }
    return result;
}

// How often triangles run along an edge, one way and the other.
struct Uses {
    unsigned int up = 0, down = 0;
};

std::map<Edge, Uses> edgesOf(const std::vector<Triangle> &faces, Sets &parts) {
    std::map<Edge, Uses> edges;
    for (const Triangle &face : faces)
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t from = face[k], to = face[(k + 1) % 3];
            parts.join(from, to);
            Uses &uses = edges[{std::min(from, to), std::max(from, to)}];
            ++(from < to ? uses.up : uses.down);
        }
    return edges;
}

// What is summed up over a part.
struct Part {
    bool open = false;
    bool started = false;
    Vector origin; // volumes are counted from here, for precision
    Vector low, high;
    double volume = 0;

    void take(const Vector &a, const Vector &b, const Vector &c) {
        if (!started)
            origin = low = high = a;
        started = true;
        for (const Vector &corner : {a, b, c}) {
            low = {std::min(low.x, corner.x), std::min(low.y, corner.y), std::min(low.z, corner.z)};
            high = {std::max(high.x, corner.x), std::max(high.y, corner.y),
                    std::max(high.z, corner.z)};
        }
        volume += dot(a - origin, cross(b - origin, c - origin)) / 6;
    }

    bool isClosedOutward() const {
        return !open && volume > smallestVolume * std::pow(length(high - low), 3);
    }
};

Vector at(const Geometry &geometry, std::uint32_t index) {
    const Point &p = geometry.positions[index];
    return {p.x, p.y, p.z};
}

} // namespace

std::vector<bool> closedOutward(const Geometry &geometry, std::size_t firstFace) {
    const std::vector<std::uint32_t> welded = weld(geometry);
    std::vector<Triangle> faces;
    for (std::size_t i = firstFace; i < geometry.faces.size(); ++i) {
        const auto &[a, b, c] = geometry.faces[i];
        faces.push_back({welded[a], welded[b], welded[c]});
    }
    Sets sets(welded.size());
    const std::map<Edge, Uses> edges = edgesOf(faces, sets);

    std::map<std::uint32_t, Part> parts;
    for (const auto &[edge, uses] : edges)
        if (uses.up != 1 || uses.down != 1)
            parts[sets.find(edge.first)].open = true;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const auto &[a, b, c] = geometry.faces[firstFace + i];
        parts[sets.find(faces[i][0])].take(at(geometry, a), at(geometry, b), at(geometry, c));
    }
    std::vector<bool> result;
    for (const Triangle &face : faces)
        result.push_back(parts[sets.find(face[0])].isClosedOutward());
    return result;
}

} // namespace ravolt::tool
