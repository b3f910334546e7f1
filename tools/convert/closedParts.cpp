// Finds connected parts by their shared vertices, and tests whether each is closed with its
// faces outward.

#include "tools/convert/closedParts.h"

#include "tools/common/algebra.h"
#include "tools/common/firstEqual.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

// Of the cube of a part's size. A sheet with two equal sides has a volume of 0 but for rounding.
constexpr double smallestVolume = 1e-6;

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

// Compares vertices by their positions and influences.
class Vertices {
  public:
    explicit Vertices(const Geometry &all) : geometry(all) {}

    std::size_t hash(std::uint32_t vertex) const {
        const Point &p = geometry.positions[vertex];
        std::size_t result = mixed(mixed(mixed(0, p.x), p.y), p.z);
        if (geometry.influences.empty())
            return result;
        const VertexInfluences &influences = geometry.influences[vertex];
        for (std::size_t i = 0; i < bonesOfAVertex; ++i)
            result = mixed(mixed(result, influences.bone[i]), influences.weight[i]);
        return result;
    }

    bool areEqual(std::uint32_t a, std::uint32_t b) const {
        const Point &p = geometry.positions[a], &q = geometry.positions[b];
        return p.x == q.x && p.y == q.y && p.z == q.z &&
               (geometry.influences.empty() ||
                (geometry.influences[a].bone == geometry.influences[b].bone &&
                 geometry.influences[a].weight == geometry.influences[b].weight));
    }

  private:
    const Geometry &geometry;
};

// Of each vertex the first one that is equal.
std::vector<std::uint32_t> weld(const Geometry &geometry) {
    const Vertices vertices(geometry);
    FirstEqual known([&](std::uint32_t vertex) { return vertices.hash(vertex); },
                     [&](std::uint32_t a, std::uint32_t b) { return vertices.areEqual(a, b); });
    std::vector<std::uint32_t> result(geometry.positions.size());
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = known.of(static_cast<std::uint32_t>(i));
    return result;
}

// The edges of triangles that run one way, by the lower of their two vertices.
class Edges {
  public:
    explicit Edges(std::size_t vertices) : ends(vertices) {}

    // First all are counted, then all are added.
    void count(std::uint32_t lower) { ++ends[lower]; }
    void endCounting() {
        std::size_t all = 0;
        for (std::size_t &end : ends)
            all += std::exchange(end, all);
        higher.resize(all);
    }
    void add(std::uint32_t lower, std::uint32_t other) { higher[ends[lower]++] = other; }

    // Their higher vertices, sorted.
    std::span<const std::uint32_t> of(std::uint32_t lower) {
        const std::size_t begin = lower ? ends[lower - 1] : 0;
        const std::span<std::uint32_t> result(higher.data() + begin, ends[lower] - begin);
        std::sort(result.begin(), result.end());
        return result;
    }

  private:
    std::vector<std::size_t> ends; // in `higher`, of each lower vertex
    std::vector<std::uint32_t> higher;
};

// The faces of a geometry from the first one on, with equal vertices joined.
class WeldedFaces {
  public:
    WeldedFaces(const Geometry &all, std::size_t first)
        : geometry(all), firstFace(first), welded(weld(all)) {}

    std::size_t size() const { return geometry.faces.size() - firstFace; }
    std::size_t vertices() const { return welded.size(); }
    std::uint32_t corner(std::size_t face, std::size_t k) const {
        return welded[geometry.faces[firstFace + face][k]];
    }

    template <class Visit> void eachEdge(const Visit &visit) const {
        for (std::size_t face = 0; face < size(); ++face)
            for (std::size_t k = 0; k < 3; ++k)
                visit(corner(face, k), corner(face, (k + 1) % 3));
    }

  private:
    const Geometry &geometry;
    std::size_t firstFace;
    std::vector<std::uint32_t> welded;
};

// The lower vertices of the edges that are not used by two triangles, once in each direction.
std::vector<std::uint32_t> findOpenEdges(const WeldedFaces &faces) {
    Edges up(faces.vertices()), down(faces.vertices());
    faces.eachEdge(
        [&](std::uint32_t from, std::uint32_t to) { from < to ? up.count(from) : down.count(to); });
    up.endCounting();
    down.endCounting();
    faces.eachEdge([&](std::uint32_t from, std::uint32_t to) {
        from < to ? up.add(from, to) : down.add(to, from);
    });
    std::vector<std::uint32_t> open;
    for (std::uint32_t lower = 0; lower < faces.vertices(); ++lower) {
        const auto one = up.of(lower), other = down.of(lower);
        if (!std::equal(one.begin(), one.end(), other.begin(), other.end()) ||
            std::adjacent_find(one.begin(), one.end()) != one.end())
            open.push_back(lower);
    }
    return open;
}

// What is summed up over a part.
struct Part {
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
        return volume > smallestVolume * std::pow(length(high - low), 3);
    }
};

Vector at(const Geometry &geometry, std::uint32_t index) {
    const Point &p = geometry.positions[index];
    return {p.x, p.y, p.z};
}

} // namespace

std::vector<bool> closedOutward(const Geometry &geometry, std::size_t firstFace) {
    const WeldedFaces faces(geometry, firstFace);
    Sets sets(faces.vertices());
    faces.eachEdge([&](std::uint32_t from, std::uint32_t to) { sets.join(from, to); });
    std::vector<bool> open(faces.vertices()); // by the member that a part is known by
    for (const std::uint32_t lower : findOpenEdges(faces))
        open[sets.find(lower)] = true;

    std::vector<bool> result(faces.size());
    std::unordered_map<std::uint32_t, Part> parts;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const std::uint32_t part = sets.find(faces.corner(i, 0));
        const auto &[a, b, c] = geometry.faces[firstFace + i];
        if (!open[part])
            parts[part].take(at(geometry, a), at(geometry, b), at(geometry, c));
    }
    std::vector<bool> closed(faces.vertices());
    for (const auto &[member, part] : parts)
        closed[member] = part.isClosedOutward();
    for (std::size_t i = 0; i < faces.size(); ++i)
        result[i] = closed[sets.find(faces.corner(i, 0))];
    return result;
}

} // namespace ravolt::tool
