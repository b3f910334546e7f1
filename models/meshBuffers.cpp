// Invariant: the indices in a pool are those of its own vertices; the indices of a mesh's own array
// are not changed, and count from its first vertex.

#include "models/meshBuffers.h"

#include "engine/gl/bindings.h"
#include "ravolt/RVMESH.h"
#include "scene/nodeInternals.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace ravolt {

namespace {

constexpr unsigned int verticesOfAPool = 65536;
constexpr unsigned int vectorBytes = sizeof(Z3MVECTOR3D), uvBytes = sizeof(Z3MVECTOR2D);

void collectMeshes(RVNODE &node, std::vector<RVMESH *> &meshes) {
    if (NodeInternals::isObjectOf(node, RV_NODE_TYPE_MESH))
        meshes.push_back(static_cast<RVMESH *>(&node));
    for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
        if (RVNODE *child = node.getChild(index))
            collectMeshes(*child, meshes);
}

// Meshes that share only one buffer would mix indices and vertices of memory and of the pool.
void dropIncomplete(BufferPool &pool) {
    if (pool.arrays && pool.faces)
        return;
    deleteBuffer(pool.arrays);
    deleteBuffer(pool.faces);
    pool.arrays = pool.faces = 0;
}

} // namespace

// The attributes of a skin are in buffers of its own, in which no other mesh's vertices come first.
bool MeshBuffers::canShare(const RVMESH &mesh) {
    return mesh.vertex && mesh.vertexNormal && mesh.face && !mesh.isSkinned();
}

void MeshBuffers::create(RVMESH &mesh) {
    if (mesh.vertex || mesh.uv || mesh.face)
        createAlone(mesh);
    if (mesh.isSkinned())
        mesh.createSkinBuffers();
    unbindBuffers();
}

// `geometry` has the layout of a pool of one mesh. Without memory it is drawn from there.
void MeshBuffers::createAlone(RVMESH &mesh) {
    BufferPool *const pool = canCreateBuffers() ? new (std::nothrow) BufferPool{} : nullptr;
    if (!pool)
        return;
    if (mesh.vertex || mesh.uv)
        pool->arrays =
            createBuffer(GL_ARRAY_BUFFER_ARB, mesh.geometry,
                         mesh.numberOfVertices * 2 * vectorBytes + mesh.numberOfUVs * uvBytes);
    if (mesh.face)
        pool->faces = createBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, mesh.face,
                                   mesh.numberOfFaces * sizeof(RVFACE));
    place(mesh, *pool, mesh.numberOfVertices, 0);
    release(pool);
}

// The pool has `vertices` vertices, and the faces of the mesh begin after `faces` other ones.
void MeshBuffers::place(RVMESH &mesh, BufferPool &pool, unsigned int vertices, unsigned int faces) {
    mesh.vertexBuffer = mesh.normalBuffer = mesh.vertex ? pool.arrays : 0;
    mesh.uvBuffer = mesh.uv ? pool.arrays : 0;
    mesh.faceBuffer = pool.faces;
    mesh.normalOffset = vertices * vectorBytes;
    mesh.uvOffset = vertices * 2 * vectorBytes;
    mesh.faceOffset = faces * static_cast<unsigned int>(sizeof(RVFACE));
    mesh.owned->pool = &pool;
    ++pool.users;
}

void MeshBuffers::createForTree(RVNODE &root) {
    std::vector<RVMESH *> meshes;
    collectMeshes(root, meshes);
    const auto others = std::stable_partition(meshes.begin(), meshes.end(),
                                              [](const RVMESH *mesh) { return canShare(*mesh); });
    for (auto first = meshes.begin(); first != others;) {
        unsigned int vertices = 0;
        auto end = first;
        while (end != others && vertices + (*end)->numberOfVertices <= verticesOfAPool)
            vertices += (*end++)->numberOfVertices;
        if (end - first == 1)
            create(**first);
        else
            createPool(&*first, static_cast<unsigned int>(end - first), vertices);
        first = end;
    }
    std::for_each(others, meshes.end(), [](RVMESH *mesh) { create(*mesh); });
}

void MeshBuffers::createPool(RVMESH *const *meshes, unsigned int count, unsigned int vertices) {
    if (!canCreateBuffers())
        return;
    std::size_t faces = 0;
    for (unsigned int i = 0; i < count; ++i)
        faces += meshes[i]->numberOfFaces;
    std::vector<unsigned char> arrays(std::size_t{vertices} * (2 * vectorBytes + uvBytes));
    std::vector<unsigned short> indices(3 * faces);
    auto pool = std::make_unique<BufferPool>();
    unsigned char *vertex = arrays.data(), *normal = vertex + std::size_t{vertices} * vectorBytes,
                  *uv = normal + std::size_t{vertices} * vectorBytes;
    unsigned short *index = indices.data();
    unsigned int first = 0;
    for (unsigned int i = 0; i < count; ++i) {
        const RVMESH &mesh = *meshes[i];
        const unsigned int own = mesh.numberOfVertices;
        std::memcpy(vertex, mesh.vertex, own * vectorBytes);
        std::memcpy(normal, mesh.vertexNormal, own * vectorBytes);
        if (mesh.uv)
            std::memcpy(uv, mesh.uv, std::min<unsigned int>(own, mesh.numberOfUVs) * uvBytes);
        const unsigned short *const source = mesh.face->vertex;
        index = std::transform(
            source, source + 3 * mesh.numberOfFaces, index,
            [first](unsigned int each) { return static_cast<unsigned short>(first + each); });
        vertex += own * vectorBytes;
        normal += own * vectorBytes;
        uv += own * uvBytes;
        first += own;
    }
    pool->arrays = createBuffer(GL_ARRAY_BUFFER_ARB, arrays.data(), arrays.size());
    pool->faces = createBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, indices.data(),
                               indices.size() * sizeof indices[0]);
    dropIncomplete(*pool);
    unsigned int before = 0;
    for (unsigned int i = 0; i < count; ++i) {
        place(*meshes[i], *pool, vertices, before);
        before += meshes[i]->numberOfFaces;
    }
    release(pool.release());
    unbindBuffers();
}

void MeshBuffers::release(BufferPool *pool) {
    if (!pool || --pool->users)
        return;
    deleteBuffer(pool->arrays);
    deleteBuffer(pool->faces);
    delete pool;
}

} // namespace ravolt
