// The entry and the storage of the list; scene/list/pass.cpp fills it and scene/list/sort.cpp
// orders it.
//
// Invariants: the storage exists exactly while the list is active. The first
// `numberOfPassedElements` pointers are a permutation of as many first entries.

#include "ravolt/RVELEMENT.h"

#include "ravolt/zlf.h"
#include "scene/entryOrder.h"
#include "scene/renderList.h"

#include <algorithm>
#include <new>

bool RVELEMENT::active = false;
bool RVELEMENT::clipping = false;
float RVELEMENT::clippingRadius = 128.0f;
bool RVELEMENT::stateOrder = false;
unsigned int RVELEMENT::numberOfElements = 0;
unsigned int RVELEMENT::numberOfPassedElements = 0;
unsigned int RVELEMENT::numberOfLights = 0;
unsigned int RVELEMENT::numberOfTransparencies = 0;
RVELEMENT *RVELEMENT::element = nullptr;
RVELEMENT **RVELEMENT::elementPointer = nullptr;

RVELEMENT::RVELEMENT()
    : node(nullptr), auxId(0), distance(0), nearestLight{}, param1(0), countedAsLight(false),
      countedAsTransparent(false) {}

bool RVELEMENT::init(unsigned int count) {
    if (active) {
        zlfLog("   [!] Already active @ RVELEMENT::init\n");
        return false;
    }
    if (count == 0 || count > ravolt::maxRenderListEntries)
        count = ravolt::maxRenderListEntries;

    element = new (std::nothrow) RVELEMENT[count];
    if (!element) {
        zlfLog("   [!] Out of memory @ RVELEMENT::init\n");
        return false;
    }
    elementPointer = static_cast<RVELEMENT **>(zlfMalloc(count * sizeof(RVELEMENT *)));
    if (!elementPointer) {
        zlfLog("   [!] Out of memory @ RVELEMENT::init\n");
        delete[] element;
        element = nullptr;
        return false;
    }
    numberOfElements = count;
    active = true;
    zlfLog("   %d elements allocated\n", static_cast<int>(count));
    return true;
}

bool RVELEMENT::free() {
    if (!active)
        return false;
    delete[] element;
    element = nullptr;
    zlfFree(elementPointer);
    elementPointer = nullptr;
    numberOfElements = 0;
    reset(); // nothing is left for the counters to count
    active = false;
    return true;
}

void RVELEMENT::reset() {
    numberOfPassedElements = 0;
    numberOfLights = 0;
    numberOfTransparencies = 0;
    ravolt::RenderListWalk::listEmptied();
}

RVELEMENT *RVELEMENT::getLight(unsigned int index) {
    return index < numberOfLights ? elementPointer[index] : nullptr;
}

namespace ravolt {

RVELEMENT *RenderList::entry(unsigned int index) { return RVELEMENT::elementPointer[index]; }

bool RenderList::contains(const RVELEMENT *entry) {
    const RVELEMENT *const storage = RVELEMENT::element;
    return entry && storage && entry >= storage &&
           entry < storage + RVELEMENT::numberOfPassedElements;
}

RVELEMENT RenderList::entryOutside(RVNODE *node) {
    RVELEMENT entry;
    entry.node = node;
    return entry;
}

// A node may have been passed several times.
void RenderList::removeNode(const RVNODE &node) {
    for (unsigned int index = RVELEMENT::numberOfPassedElements; index-- > 0;)
        if (RVELEMENT::elementPointer[index]->node == &node)
            removeEntry(index);
}

// The order of the other entries does not change. The last entry of the storage is moved into the
// gap.
void RenderList::removeEntry(unsigned int index) {
    RenderListWalk::entryRemoved(index);
    RVELEMENT **const order = RVELEMENT::elementPointer;
    RVELEMENT *const removed = order[index];
    RVELEMENT::numberOfLights -= removed->countedAsLight;
    RVELEMENT::numberOfTransparencies -= removed->countedAsTransparent;
    std::copy(order + index + 1, order + RVELEMENT::numberOfPassedElements, order + index);
    --RVELEMENT::numberOfPassedElements;
    RVELEMENT *const last = RVELEMENT::element + RVELEMENT::numberOfPassedElements;
    if (removed == last)
        return;
    *removed = *last;
    *std::find(order, order + RVELEMENT::numberOfPassedElements, last) = removed;
}

RenderListWalk *RenderListWalk::innermost = nullptr;

RenderListWalk::RenderListWalk(unsigned int first)
    : position(first), removed(true), outer(innermost) {
    innermost = this;
}

RenderListWalk::~RenderListWalk() { innermost = outer; }

RVELEMENT *RenderListWalk::next() {
    removed = position >= RVELEMENT::getNumberOfPassedElements();
    return removed ? nullptr : RenderList::entry(position++);
}

RVELEMENT *RenderListWalk::current() const {
    return removed || position > RVELEMENT::getNumberOfPassedElements()
               ? nullptr
               : RenderList::entry(position - 1);
}

void RenderListWalk::entryRemoved(unsigned int index) {
    for (RenderListWalk *walk = innermost; walk; walk = walk->outer) {
        if (index >= walk->position)
            continue;
        --walk->position;
        if (index == walk->position)
            walk->removed = true;
    }
}

void RenderListWalk::listEmptied() {
    for (RenderListWalk *walk = innermost; walk; walk = walk->outer)
        walk->removed = true;
}

} // namespace ravolt
