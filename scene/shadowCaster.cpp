#include "scene/shadowCaster.h"

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "scene/nodeInternals.h"
#include "scene/renderList.h"

namespace {

bool isCaster(const RVNODE &node) {
    if (!ravolt::NodeInternals::isObjectOf(node, RV_NODE_TYPE_LIGHT))
        return false;
    const RVLIGHT &light = static_cast<const RVLIGHT &>(node);
    return light.getLightType() == RV_LIGHT_TYPE_SPOT && light.isShadowCaster();
}

} // namespace

RVLIGHT *ravolt::findShadowCaster() {
    RVLIGHT *caster = nullptr;
    for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index) {
        RVNODE *node = RenderList::entry(index)->getNode();
        if (isCaster(*node))
            caster = static_cast<RVLIGHT *>(node);
    }
    return caster;
}
