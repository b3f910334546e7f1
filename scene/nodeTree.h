#pragma once

// The doors through which a loader builds a tree without growing its arrays one by one. Their
// bodies stand in scene/RVNODE.cpp, with the arrays.

class RVNODE;

namespace ravolt {

struct NodeTree {
    // Gives a node without children `count` empty places (NULL). False when memory runs out.
    // Every walk skips empty places.
    static bool reserveChildren(RVNODE &parent, unsigned int count);

    // Puts `child` into an empty place and sets its parent.
    static void place(RVNODE &parent, unsigned int index, RVNODE &child);
};

} // namespace ravolt
