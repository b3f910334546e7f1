// Invariants of a Geometry: as many normals as positions; as many texture coordinates if it has
// any, and as many influences if it is skinned, else none; every index of a face is below that
// number.

#include "tools/convert/meshes.h"

#include "tools/convert/closedParts.h"
#include "tools/convert/vertices.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace ravolt::tool {

namespace {

constexpr std::uint32_t unused = std::numeric_limits<std::uint32_t>::max();

Point pointFrom(const Vector &v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

Vector vectorFrom(const Point &p) { return {p.x, p.y, p.z}; }

Vector crossOf(const Vector &a, const Vector &b, const Vector &c) { return cross(b - a, c - a); }

const Affine &transformOf(const VertexTransform &transform, const Affine &rigid,
                          std::uint32_t vertex) {
    return transform.posed.empty() ? rigid : transform.posed[vertex];
}

Vector normalOf(const aiMesh &mesh, std::uint32_t vertex) {
    return mesh.mNormals ? Vector(mesh.mNormals[vertex]) : Vector{};
}

// Whether the triangles contradict the normals on nearly all of the surface.
bool isInsideOut(const aiMesh &mesh) {
    double with = 0, against = 0;
    for (unsigned int i = 0; i < mesh.mNumFaces && mesh.mNormals; ++i) {
        const aiFace &face = mesh.mFaces[i];
        if (!isTriangle(face))
            continue;
        const unsigned int *index = face.mIndices;
        const Vector areaNormal =
            crossOf(Vector(mesh.mVertices[index[0]]), Vector(mesh.mVertices[index[1]]),
                    Vector(mesh.mVertices[index[2]]));
        const Vector normal =
            normalOf(mesh, index[0]) + normalOf(mesh, index[1]) + normalOf(mesh, index[2]);
        const double agreement = dot(areaNormal, normal);
        if (std::isfinite(agreement))
            (agreement < 0 ? against : with) += length(areaNormal);
    }
    return against > 9 * with;
}

bool isMissing(const Point &normal) { return length(vectorFrom(normal)) < 0.5; }

// Computes each normal from `first` on that has no direction from the triangles around it.
void computeMissingNormals(Geometry &geometry, std::size_t first) {
    const auto begin = geometry.normals.begin() + static_cast<std::ptrdiff_t>(first);
    if (std::none_of(begin, geometry.normals.end(), isMissing))
        return;
    std::vector<Vector> sums(geometry.positions.size() - first);
    for (const auto &face : geometry.faces) {
        if (face[0] < first)
            continue;
        const Vector areaNormal = crossOf(vectorFrom(geometry.positions[face[0]]),
                                          vectorFrom(geometry.positions[face[1]]),
                                          vectorFrom(geometry.positions[face[2]]));
        for (std::uint32_t index : face)
            sums[index - first] = sums[index - first] + areaNormal;
    }
    for (std::size_t i = first; i < geometry.normals.size(); ++i)
        if (isMissing(geometry.normals[i]))
            geometry.normals[i] = pointFrom(unit(sums[i - first], {0, 0, 1}));
}

// Reserves memory for more items, so that arrays which grow by many parts are seldom copied.
template <class Item> void reserveMore(std::vector<Item> &items, std::size_t more) {
    if (items.size() + more > items.capacity())
        items.reserve(items.empty() ? more : std::max(items.size() + more, 2 * items.capacity()));
}

void reserveFor(const aiMesh &mesh, Geometry &geometry) {
    reserveMore(geometry.positions, mesh.mNumVertices);
    reserveMore(geometry.normals, mesh.mNumVertices);
    if (geometry.hasTexCoords)
        reserveMore(geometry.texCoords, mesh.mNumVertices);
    reserveMore(geometry.faces, mesh.mNumFaces);
}

// Copies one vertex and returns its new index.
std::uint32_t addVertex(Geometry &geometry, const aiMesh &mesh, const VertexTransform &transform,
                        const Affine &rigid, std::uint32_t vertex) {
    const Affine &vertexTransform = transformOf(transform, rigid, vertex);
    const Vector normal = normalMatrix(vertexTransform.linear) * unit(normalOf(mesh, vertex));
    geometry.positions.push_back(pointFrom(vertexTransform(Vector(mesh.mVertices[vertex]))));
    geometry.normals.push_back(pointFrom(unit(normal)));
    if (geometry.hasTexCoords) {
        const aiVector3D *channel = mesh.mTextureCoords[transform.channel];
        geometry.texCoords.push_back(
            channel ? transform.texture(channel[vertex].x, channel[vertex].y) : TexCoord{});
    }
    if (!transform.influences.empty())
        geometry.influences.push_back(transform.influences[vertex]);
    return static_cast<std::uint32_t>(geometry.positions.size() - 1);
}

// Whether the corners are not on one line, in single precision.
bool hasArea(const Geometry &geometry, const std::array<std::uint32_t, 3> &face) {
    const Vector a = vectorFrom(geometry.positions[face[0]]);
    const Vector b = vectorFrom(geometry.positions[face[1]]);
    const Vector c = vectorFrom(geometry.positions[face[2]]);
    const double longest = std::max({length(b - a), length(c - b), length(a - c)});
    return length(crossOf(a, b, c)) > 1e-9 * longest * longest;
}

bool hasFinitePosition(const Geometry &geometry, const std::array<std::uint32_t, 3> &face) {
    return std::all_of(face.begin(), face.end(), [&](std::uint32_t index) {
        return isFinite(vectorFrom(geometry.positions[index]));
    });
}

// Moves vertices beyond the range of a float, which no triangle uses, to the position of another.
void collapseUnused(Geometry &geometry, std::size_t first) {
    const Point target =
        geometry.faces.empty() ? Point() : geometry.positions[geometry.faces[0][0]];
    for (std::size_t i = first; i < geometry.positions.size(); ++i)
        if (!isFinite(vectorFrom(geometry.positions[i])))
            geometry.positions[i] = target;
}

// Copies a vertex with its normal reversed, and returns the index of the copy.
std::uint32_t addBackOf(Geometry &geometry, std::uint32_t vertex) {
    const Point normal = geometry.normals[vertex], position = geometry.positions[vertex];
    geometry.positions.push_back(position);
    geometry.normals.push_back({-normal.x, -normal.y, -normal.z});
    if (geometry.hasTexCoords) {
        const TexCoord texCoord = geometry.texCoords[vertex];
        geometry.texCoords.push_back(texCoord);
    }
    if (!geometry.influences.empty()) {
        const VertexInfluences influences = geometry.influences[vertex];
        geometry.influences.push_back(influences);
    }
    return static_cast<std::uint32_t>(geometry.positions.size() - 1);
}

// Adds the backs of the triangles from `firstFace` on, except of those whose back is invisible.
void addBacks(Geometry &geometry, std::size_t firstVertex, std::size_t firstFace) {
    const std::vector<bool> closed = closedOutward(geometry, firstFace);
    std::vector<std::uint32_t> backs(geometry.positions.size() - firstVertex, unused);
    const auto back = [&](std::uint32_t vertex) {
        std::uint32_t &copy = backs[vertex - firstVertex];
        if (copy == unused)
            copy = addBackOf(geometry, vertex);
        return copy;
    };
    for (std::size_t i = 0; i < closed.size(); ++i) {
        if (closed[i])
            continue;
        const auto [a, b, c] = geometry.faces[firstFace + i];
        const std::uint32_t backOfA = back(a), backOfB = back(b), backOfC = back(c);
        geometry.faces.push_back({backOfA, backOfC, backOfB});
    }
}

template <class Visit> void eachBone(const VertexInfluences &influences, const Visit &visit) {
    for (std::size_t k = 0; k < bonesOfAVertex; ++k)
        if (influences.weight[k] > 0)
            visit(influences.bone[k]);
}

// Grows one piece of a split: maps each vertex of the whole to its index there.
class Piece {
  public:
    Piece(const Geometry &whole, std::vector<std::uint32_t> &indices)
        : from(whole), newIndex(indices) {}

    // How many vertices the face would add.
    std::size_t cost(const std::array<std::uint32_t, 3> &face) const {
        return static_cast<std::size_t>(
            std::count_if(face.begin(), face.end(),
                          [this](std::uint32_t index) { return newIndex[index] == unused; }));
    }

    // How many bones the piece would have with the face.
    std::size_t bonesWith(const std::array<std::uint32_t, 3> &face) const {
        if (from.influences.empty())
            return 0;
        std::set<std::uint32_t> more;
        for (std::uint32_t index : face)
            eachBone(from.influences[index], [&](std::uint32_t bone) {
                if (!bones.count(bone))
                    more.insert(bone);
            });
        return bones.size() + more.size();
    }

    void add(const std::array<std::uint32_t, 3> &face) {
        result.faces.push_back({moved(face[0]), moved(face[1]), moved(face[2])});
    }

    // Returns the piece and begins the next one.
    Geometry finish() {
        result.hasTexCoords = from.hasTexCoords;
        for (std::uint32_t index : taken)
            newIndex[index] = unused;
        taken.clear();
        bones.clear();
        return std::exchange(result, {});
    }

    std::size_t vertices() const { return result.positions.size(); }
    std::size_t faces() const { return result.faces.size(); }

  private:
    std::uint32_t moved(std::uint32_t index) {
        if (newIndex[index] == unused) {
            newIndex[index] = static_cast<std::uint32_t>(result.positions.size());
            taken.push_back(index);
            result.positions.push_back(from.positions[index]);
            result.normals.push_back(from.normals[index]);
            if (from.hasTexCoords)
                result.texCoords.push_back(from.texCoords[index]);
            if (!from.influences.empty()) {
                result.influences.push_back(from.influences[index]);
                eachBone(from.influences[index],
                         [this](std::uint32_t bone) { bones.insert(bone); });
            }
        }
        return newIndex[index];
    }

    const Geometry &from;
    std::vector<std::uint32_t> &newIndex;
    std::vector<std::uint32_t> taken;
    std::set<std::uint32_t> bones;
    Geometry result;
};

} // namespace

Dropped append(Geometry &geometry, const aiMesh &mesh, const VertexTransform &transform) {
    const std::size_t firstVertex = geometry.positions.size(), firstFace = geometry.faces.size();
    if (mesh.mTextureCoords[transform.channel] && !geometry.hasTexCoords) {
        geometry.hasTexCoords = true;
        geometry.texCoords.resize(firstVertex);
    }

    reserveFor(mesh, geometry);

    const Affine rigid{transform.residual, {}};
    const bool insideOut = isInsideOut(mesh);
    std::vector<std::uint32_t> newIndex(mesh.mNumVertices, unused);
    Dropped dropped;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i) {
        if (!isTriangle(mesh.mFaces[i]))
            continue;
        const unsigned int *index = mesh.mFaces[i].mIndices;
        std::array<std::uint32_t, 3> face;
        for (int corner = 0; corner < 3; ++corner) {
            std::uint32_t &here = newIndex[index[corner]];
            if (here == unused)
                here = addVertex(geometry, mesh, transform, rigid, index[corner]);
            face[static_cast<std::size_t>(corner)] = here;
        }
        const bool mirrored = transformOf(transform, rigid, index[0]).linear.Determinant() < 0;
        if (mirrored != insideOut)
            std::swap(face[1], face[2]);
        if (!hasFinitePosition(geometry, face))
            ++dropped.tooFar;
        else if (!hasArea(geometry, face))
            ++dropped.withoutArea;
        else
            geometry.faces.push_back(face);
    }
    if (dropped.tooFar)
        collapseUnused(geometry, firstVertex);
    computeMissingNormals(geometry, firstVertex);
    if (transform.bothSides)
        addBacks(geometry, firstVertex, firstFace);
    return dropped;
}

std::vector<std::uint32_t> bonesOf(const Geometry &geometry) {
    std::set<std::uint32_t> bones;
    for (const VertexInfluences &influences : geometry.influences)
        eachBone(influences, [&](std::uint32_t bone) { bones.insert(bone); });
    return {bones.begin(), bones.end()};
}

std::vector<Geometry> split(Geometry geometry, std::size_t limit, std::size_t maxBones) {
    std::vector<Geometry> pieces;
    if (geometry.positions.size() <= limit && geometry.faces.size() <= limit &&
        bonesOf(geometry).size() <= maxBones) {
        pieces.push_back(std::move(geometry));
        return pieces;
    }
    std::vector<std::uint32_t> indices(geometry.positions.size(), unused);
    Piece piece(geometry, indices);
    for (const auto &face : geometry.faces) {
        if (piece.faces() == limit || piece.vertices() + piece.cost(face) > limit ||
            piece.bonesWith(face) > maxBones)
            pieces.push_back(piece.finish());
        piece.add(face);
    }
    pieces.push_back(piece.finish());
    return pieces;
}

Bounds boundsOf(const Geometry &geometry) {
    Bounds bounds;
    if (geometry.positions.empty())
        return bounds;
    bounds.minimum = bounds.maximum = geometry.positions.front();
    double radius = 0;
    for (const Point &p : geometry.positions) {
        bounds.minimum = {std::min(bounds.minimum.x, p.x), std::min(bounds.minimum.y, p.y),
                          std::min(bounds.minimum.z, p.z)};
        bounds.maximum = {std::max(bounds.maximum.x, p.x), std::max(bounds.maximum.y, p.y),
                          std::max(bounds.maximum.z, p.z)};
        radius = std::max(radius, length(vectorFrom(p)));
    }
    bounds.radius = static_cast<float>(radius);
    return bounds;
}

} // namespace ravolt::tool
