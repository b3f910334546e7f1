#pragma once

// Visits a node and all below it.

#include <ravolt/RVNODE.h>
#include <vector>

namespace ravolt::tool {

template <class Visit> void walk(RVNODE *node, const Visit &visit) {
    // The children are counted first: a visit may unlink the node it is given.
    std::vector<RVNODE *> children;
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        children.push_back(node->getChild(i));
    visit(node);
    for (RVNODE *child : children)
        walk(child, visit);
}

} // namespace ravolt::tool
