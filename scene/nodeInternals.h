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

    // The frame in which the node was last added to the render list.
    static void setListStamp(RVNODE &node, int stamp);

    // Gives a node without children an array of `count` empty (NULL) entries, so that a loader need
    // not grow it child by child. False when memory runs out. Every walk skips empty entries.
    static bool reserveChildren(RVNODE &parent, unsigned int count);

    // Stores `child` in an empty entry and sets its parent.
    static void setChild(RVNODE &parent, unsigned int index, RVNODE &child);

    // Whether `node` may become a child of `parent`; logs why not.
    static bool mayLink(const RVNODE &node, const RVNODE *parent);

    // Makes `node` the last child of `parent`, whose array is replaced by `grown`: it has room for
    // one entry more.
    static void append(RVNODE &node, RVNODE &parent, RVNODE **grown);
};

} // namespace ravolt
