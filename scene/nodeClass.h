#pragma once

#include "ravolt/RVNODE.h"

namespace ravolt {

struct NodeClass {
    // Whether `node` is an object of the class that stands behind `type`, and may be cast to it.
    // Its own type does not tell: it may have come with the fields of another node.
    static bool is(const RVNODE &node, RV_NODE_TYPE type) {
        return node.type == type && node.registration->dynamicClass == type;
    }
};

} // namespace ravolt
