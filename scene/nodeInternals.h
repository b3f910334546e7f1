#pragma once

// The library's access to the parts of RVNODE that applications do not see. Defined in
// scene/RVNODE.cpp.

class RVNODE;
enum RV_NODE_TYPE : int;

namespace ravolt {

struct NodeInternals {
    // Whether `node` is an object of the class that `type` names, and may be cast to it. Its own
    // type alone does not say so: it may have been assigned from another node.
    static bool isObjectOf(const RVNODE &node, RV_NODE_TYPE type);

    // The frame in which the node was last passed.
    static void setTimeStamp(RVNODE &node, int stamp);

    // The frame in which the node was last added to the render list.
    static void setListStamp(RVNODE &node, int stamp);

    // Gives a node without children an array of `count` empty (NULL) entries, so that a loader need
    // not grow it child by child. False when memory runs out. Every walk skips empty entries.
    static bool reserveChildren(RVNODE &parent, unsigned int count);

    // Stores `child` in an empty entry and sets its parent.
    static void setChild(RVNODE &parent, unsigned int index, RVNODE &child);

    // Whether `node` may become a child of `parent`; logs why not.
    static bool mayLink(const RVNODE &node, const RVNODE *parent);

    // Reserves entries for `more` children of `parent`. False when it runs out.
    static bool reserveEntries(RVNODE &parent, unsigned int more);

    // Makes `node` the last child of `parent`, which has an entry reserved for it.
    static void append(RVNODE &node, RVNODE &parent);

    // Deletes the array of the children, which are no longer children of `node`.
    static void releaseChildren(RVNODE &node);

    // The children of a copy's own array have no parent afterwards; the array does not change.
    static void detachChildren(RVNODE &copy);

    static RVNODE **findEntry(const RVNODE &node);
    static void removeEntry(RVNODE &parent, RVNODE **entry);

  private:
    static bool sharesChildren(const RVNODE &node);
    static unsigned int firstSlot(const RVNODE &parent);
};

} // namespace ravolt
