#pragma once

// The library's access to the parts of RVELEMENT, and of its list, that applications do not see.
// Filling the list is defined in scene/list/pass.cpp, the rest in scene/RVELEMENT.cpp.

class RVELEMENT;
class RVMESH;
class RVNODE;
class Z3MMATRIX;

namespace ravolt {

struct RenderList {
    // The entry at `index` of the drawing order; `index` is below getNumberOfPassedElements, which
    // may decrease while nodes are drawn.
    static RVELEMENT *entry(unsigned int index);

    // Whether `entry` is in use in this frame; false for NULL. It may be a pointer of an earlier
    // frame.
    static bool contains(const RVELEMENT *entry);

    // An entry of `node` that is not in the list.
    static RVELEMENT entryOutside(RVNODE *node);

    // Removes all entries of `node`, which is being deleted.
    static void removeNode(const RVNODE &node);

    // Adds entries for the nodes of a tree. `around` is the eye-space matrix of what is above it.
    // False with a log line when the list is full.
    static bool pass(RVNODE &node, const Z3MMATRIX &around);

    // Stores the matrices of the nodes of a tree that move the bones of `mesh` in its skeleton.
    static void passSkeleton(const RVNODE &node, const RVMESH &mesh, const Z3MMATRIX &around);

    // A number that is equal for copies of a mesh, and differs for most others.
    static unsigned int shapeOf(const RVMESH &mesh);

  private:
    static void removeEntry(unsigned int index);
    static bool isClipped(const RVNODE &node, const Z3MMATRIX &eye);
    static void add(RVNODE &node, const Z3MMATRIX &eye);
    static unsigned int addSkeleton(RVMESH &mesh);
    static void storeBoneMatrix(const RVNODE &node, const RVMESH &mesh, const Z3MMATRIX &matrix);
};

// A walk over the entries in drawing order. Nodes may be deleted meanwhile, also the one whose
// entry was returned last: it misses no entry for that, and returns none twice.
class RenderListWalk {
  public:
    explicit RenderListWalk(unsigned int first = 0);
    ~RenderListWalk();
    RenderListWalk(const RenderListWalk &) = delete;
    RenderListWalk &operator=(const RenderListWalk &) = delete;

    // The next entry; NULL after the last one.
    RVELEMENT *next();

    // Where the entry that next() has returned is now; NULL if it was removed, or the list emptied.
    RVELEMENT *current() const;

  private:
    friend struct RenderList;
    friend class ::RVELEMENT;

    static void entryRemoved(unsigned int index);
    static void listEmptied();

    unsigned int position; // of the entry that next() returns
    bool removed;          // the one before it
    RenderListWalk *const outer;
    static RenderListWalk *innermost;
};

} // namespace ravolt
