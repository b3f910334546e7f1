// The entry and the storage of the list; scene/list/pass.cpp fills it and scene/list/sort.cpp
// orders it.
//
// Invariants: the storage exists exactly while the list is active. The first
// `numberOfPassedElements` pointers are a permutation of as many first entries.

#include "ravolt/RVELEMENT.h"

#include "ravolt/zlf.h"
#include "scene/entryOrder.h"

#include <algorithm>
#include <new>

bool RVELEMENT::active = false;
bool RVELEMENT::clipping = false;
float RVELEMENT::clippingRadius = 128.0f;
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
    if (count == 0 || count > ravolt::largestRenderList)
        count = ravolt::largestRenderList;

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
}

// A node that is gone leaves the list, however often it was passed.
void RVELEMENT::removeNode(const RVNODE &node) {
    for (unsigned int place = numberOfPassedElements; place-- > 0;)
        if (elementPointer[place]->node == &node)
            removeEntry(place);
}

// The order of the others stays, and the last entry of the storage fills the gap there.
void RVELEMENT::removeEntry(unsigned int place) {
    RVELEMENT *const gone = elementPointer[place];
    numberOfLights -= gone->countedAsLight;
    numberOfTransparencies -= gone->countedAsTransparent;
    std::copy(elementPointer + place + 1, elementPointer + numberOfPassedElements,
              elementPointer + place);
    --numberOfPassedElements;
    RVELEMENT *const last = element + numberOfPassedElements;
    if (gone == last)
        return;
    *gone = *last;
    *std::find(elementPointer, elementPointer + numberOfPassedElements, last) = gone;
}

RVELEMENT *RVELEMENT::getLight(unsigned int index) {
    return index < numberOfLights ? elementPointer[index] : nullptr;
}
