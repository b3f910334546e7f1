#pragma once

// Vertex buffers of meshes. The rigid meshes of a file share buffers, as many as 16-bit indices can
// address, so that drawing one after the other binds nothing. Nothing happens where the driver has
// no buffers.

class RVMESH;
class RVNODE;

namespace ravolt {

// Buffers of one or several meshes; deleted with the last of these.
struct BufferPool {
    unsigned int arrays; // vertices, normals and texture coordinates, each of all meshes
    unsigned int faces;
    unsigned int users = 1; // the meshes, and who creates it, until they use it
};

struct MeshBuffers {
    // While one exists, RVMESH::load creates no buffers: createForTree will.
    class Deferral {
      public:
        Deferral() { deferred = true; }
        ~Deferral() { deferred = false; }
        Deferral(const Deferral &) = delete;
        Deferral &operator=(const Deferral &) = delete;
    };
    static bool isDeferred() { return deferred; }

    // Buffers for a mesh alone; of its skin as well.
    static void create(RVMESH &mesh);

    // Buffers for all meshes of a tree. Throws std::bad_alloc.
    static void createForTree(RVNODE &root);

    // The mesh no longer uses the pool.
    static void release(BufferPool *pool);

  private:
    static void createAlone(RVMESH &mesh);
    static void createPool(RVMESH *const *meshes, unsigned int count, unsigned int vertices);
    static void place(RVMESH &mesh, BufferPool &pool, unsigned int vertices, unsigned int faces);
    static bool canShare(const RVMESH &mesh);

    static inline bool deferred = false;
};

} // namespace ravolt
