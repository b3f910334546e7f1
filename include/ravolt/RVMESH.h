#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/owned.h"
#include "ravolt/weakPointer.h"

class RVELEMENT;
class RVMATERIAL;

namespace ravolt {
struct BufferPool;
struct MeshBuffers;
struct MeshRecord;
struct RenderList;
} // namespace ravolt

// The largest number of bones of a mesh, and the number of entries of the skeleton cache.
constexpr unsigned int RV_BONES = 100;
constexpr unsigned int RV_SKELETONS = 256;

// One triangle: three vertex indices.
struct RV_API RVFACE {
    unsigned short vertex[3]; // counter-clockwise as seen from the front
};

// One bone of a mesh: the node that moves it, found by name, and the pose it was bound in.
struct RV_API RVBONE {
    char name[256];         // of the node
    RVNODE *node = nullptr; // not owned; NULL when the tree has no node of that name
    Z3MMATRIX matrix;       // inverse of the bone's matrix in the bind pose
};

// One entry of the skeleton cache: the matrices of the bones of one mesh in this frame, relative to
// the parent of the mesh.
struct RV_API RVSKELETON {
    Z3MMATRIX matrix[RV_BONES]; // by bone
    RVNODE *mesh = nullptr;     // not owned
};

// A mesh of triangles that draws itself in each kind of pass, from vertex buffers where the driver
// has them. A skinned mesh is moved by bones. Bones must be meshes, which may be empty, below the
// parent of the skinned mesh: a node of another type, or elsewhere, does not move the skin. Each
// pass stores the bones' matrices in the skeleton cache, so that one tree may be passed several
// times in a frame, each time in another pose. (Move it by a node above "HumanoidRoot": the
// transforms of that node and of those from it to the mesh are read when the mesh is drawn, not
// when it is passed.) Drawing skins the mesh, on the GPU if RVSHADER::useSkinning is true. A mesh
// owns its arrays, shares buffers with the rigid meshes of its file and counts as one user of its
// material. Meshes with geometry come from RAVOLT::load alone; one made with `new` draws nothing.
// A mesh with a transparent material is drawn inner faces first, then outer ones; without lighting
// (RVLIGHT::lightingOff) it is drawn once, as an opaque one, though still blended. Needs the live
// OpenGL context.
class RV_API RVMESH : public RVNODE {
  public:
    RVMESH();
    ~RVMESH() override;

    // A copy has the values of every field and shares the original's arrays and buffers, which it
    // does not own: it must not be used once the original has been deleted. It has no reference to
    // its material: neither setMaterial nor the destructor of the copy changes a count.
    RVMESH(const RVMESH &other);

    // Shares likewise. The arrays and buffers that a registered mesh owned before are no longer
    // used, and its destructor releases them; its references to materials are updated.
    RVMESH &operator=(const RVMESH &) = default;

    // The skeleton cache of RV_SKELETONS entries; for RAVOLT::init and RAVOLT::free. Both return
    // true.
    static bool init();
    static bool free();

    // Starts a frame: an empty skeleton cache, all client arrays off, no element buffer.
    static void reset();

    // Reads a mesh body at `buffer + *cursor` and moves the cursor past it; `obsolete` means
    // format 1.5a. The size of the buffer is unknown here: the caller must have checked its
    // contents, the indices included. Returns NULL, with a log line, when memory runs out
    // or when the body holds a text or a bone table larger than the engine's.
    static RVNODE *load(const char *buffer, long *cursor, bool obsolete);

    // Finds the bones by name under `root` and stores their bind pose, relative to the ancestor
    // named "HumanoidRoot" or else to the tree's root. False, with a log line, for NULL.
    bool resetBones(RVNODE *root);

    // Skins the mesh by entry `skeleton` of the cache: with RVSHADER::useSkinning and four weights
    // a vertex by passing the bones to the program in use, else by computing vertices and normals.
    // A mesh with another number of weights that was loaded while useSkinning was true cannot be
    // skinned and is drawn in its bind pose: do not load such files then. False, with a log line,
    // for an entry outside the cache (256, when the cache was full).
    bool animate(unsigned int skeleton);

    // Draws the mesh; `element` is its RVELEMENT. False for NULL, with a log line, and when the
    // mesh cannot be animated.
    bool render(void *element) override;

    // Draws the normals of every mesh as lines of one unit, from green to dark green, but not those
    // of meshes that a program skins.
    static void showNormals();
    static void hideNormals();

    // Additional: the length of these lines, in units of the mesh; 1 by default. Only finite
    // numbers above 0 are taken.
    static void setNormalLength(float length);
    static float getNormalLength();

    // A hidden mesh is not drawn; its children are.
    void setDisplayStatus(bool visible);
    bool isHidden() const;

    // Never set by the engine.
    bool isClosed() const;

    // A flag for the application: the engine does not read it, and every mesh casts shadows (see
    // RAVOLT::shadowingOn).
    bool getShadowCaster() const;
    void setShadowCaster(bool caster);

    // True when the mesh has weights.
    bool isSkinned() const;

    // Bounding radius, -1 when there is none, and bounding box.
    float getRadius() const;
    Z3MVECTOR3D getMinimum() const;
    Z3MVECTOR3D getMaximum() const;

    // Lowers the count of the old material and raises that of the new one; NULL for none. A skinned
    // mesh marks its material as skinned when it is loaded (RVMATERIAL::setSkinning), not here:
    // mark the new material yourself. Rigid meshes may share a marked material; they are drawn by
    // the programs for rigid meshes. When the material is deleted, the mesh has none.
    void setMaterial(RVMATERIAL *material);
    RVMATERIAL *getMaterial() const;

    // The sizes of the arrays below.
    int getNumberOfBones() const;
    unsigned int getNumberOfVertices() const;
    unsigned int getNumberOfUVs() const;
    unsigned int getNumberOfFaces() const;

    // The mesh's own arrays, valid until it is deleted; NULL where their count is 0. Positions and
    // normals have one entry a vertex, face normals one a face.
    const Z3MVECTOR3D *getVertexPtr() const;
    const Z3MVECTOR3D *getVertexNormalPtr() const;
    const Z3MVECTOR2D *getUVPtr() const;
    const RVFACE *getFacePtr() const;
    const Z3MVECTOR3D *getFaceNormalPtr() const;

  private:
    friend class RVANIM; // takes the names of the bones
    friend struct ravolt::MeshBuffers;
    friend struct ravolt::RenderList;

    // The material, to which the mesh has a reference; copies never have one.
    class MaterialUse {
      public:
        MaterialUse() : counted(true) {}
        MaterialUse(const MaterialUse &other);
        MaterialUse &operator=(const MaterialUse &other) {
            set(other.get());
            return *this;
        }
        ~MaterialUse() { set(nullptr); }

        void set(RVMATERIAL *newMaterial);
        RVMATERIAL *get() const { return material.get(); }

      private:
        ravolt::WeakPointer<RVMATERIAL> material;
        ravolt::Owned<bool> counted; // as a reference of the material
    };

    // What the destructor releases; none for a copy.
    struct Storage {
        void *block[7];
        unsigned int buffer[2];
        ravolt::BufferPool *pool; // with the meshes of the same file
    };

    void copyProperties(const ravolt::MeshRecord &record);
    bool copyGeometry(const ravolt::MeshRecord &record);
    bool copySkin(const ravolt::MeshRecord &record);
    void createSkinBuffers();
    bool isSkinnedByProgram() const;
    bool cannotSkin() const;
    void animateByProgram() const;
    void animateVertices();
    void drawSurfaces(const RVELEMENT &entry, bool transparent) const;
    void bindArrays() const;
    void drawFaces() const;
    void drawNormals() const;

    float radius = -1.0f;
    Z3MVECTOR3D minimum;
    Z3MVECTOR3D maximum;
    MaterialUse material;
    bool shadowCaster = false;
    bool closed = false;
    bool hidden = false;

    unsigned short numberOfVertices = 0;
    unsigned short numberOfUVs = 0;
    unsigned short numberOfFaces = 0;
    unsigned short numberOfWeights = 0; // a vertex; 0 for a rigid mesh
    unsigned short numberOfBones = 0;

    unsigned char *geometry = nullptr; // one block with the next five arrays
    Z3MVECTOR3D *vertex = nullptr;
    Z3MVECTOR3D *vertexNormal = nullptr;
    Z3MVECTOR3D *faceNormal = nullptr;
    Z3MVECTOR2D *uv = nullptr;
    RVFACE *face = nullptr;

    // Indices of bones and their weights, numberOfWeights for each vertex.
    unsigned char *boneIndex = nullptr;
    float *boneWeight = nullptr;
    float *boneIndexFloat = nullptr; // the same indices, for a vertex attribute
    RVBONE *bone = nullptr;

    // The skinned vertices and normals of the last animate; NULL where a program skins the mesh.
    Z3MVECTOR3D *skinnedVertex = nullptr;
    Z3MVECTOR3D *skinnedNormal = nullptr;

    // Names of OpenGL buffers; 0 for none. Vertices, normals and coordinates share one, in which
    // normals, coordinates and faces begin at offsets in bytes.
    unsigned int vertexBuffer = 0;
    unsigned int normalBuffer = 0;
    unsigned int uvBuffer = 0;
    unsigned int faceBuffer = 0;
    unsigned int boneIndexBuffer = 0;
    unsigned int boneWeightBuffer = 0;
    unsigned int normalOffset = 0;
    unsigned int uvOffset = 0;
    unsigned int faceOffset = 0;

    ravolt::Owned<Storage> owned;

    static RVSKELETON *skeletonElement;  // RV_SKELETONS entries; NULL between free and init
    static unsigned int currentSkeleton; // entries used in this frame
    static bool displayNormals;
    static float normalLength;
    // Temporary values of animate and the drawing that follows: from the bind pose to this frame.
    static Z3MMATRIX boneMatrix[RV_BONES];
    static Z3MVECTOR3D boneTrans[RV_BONES];
    static Z3MVECTOR4D boneQuat[RV_BONES];
};
