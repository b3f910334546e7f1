// Invariants: a node is in the registry from its constructor to its destructor, unless it is a
// copy. `children` has `numberOfChildren` entries in use and is NULL for none; an entry is NULL
// only between reserveChildren and setChild. The entries are a part of `registration->storage`,
// which may have free ones before and after them. A child's parent has it in its array, as long as
// nobody deletes a linked node.

#include "ravolt/RVNODE.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/zlf.h"
#include "scene/localTransform.h"
#include "scene/nodeInternals.h"
#include "scene/renderList.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <new>

using ravolt::NodeInternals;
using Nodes = ravolt::Registry<RVNODE>;

namespace {

constexpr const char *defaultName[] = {
#define RV_NODE_KIND(type, name, defaultName, ...) defaultName,
#include "scene/nodeKinds.inc"
};

// Row of a type in the tables; numbers of an application's own count as custom.
unsigned int rowOf(RV_NODE_TYPE type) {
    return std::min<unsigned int>(static_cast<unsigned int>(type), RV_NODE_TYPE_CUSTOM);
}

using ChildList = std::unique_ptr<RVNODE *[]>;

constexpr unsigned int maxAncestors = 64;

// The ancestors of a node from its parent upward.
struct Ancestry {
    RVNODE *node[maxAncestors];
    unsigned int depth = 0;

    // Walks up to the root, or to the first ancestor called `stopName`, which is included. False
    // when the table is full.
    bool collect(RVNODE *parent, const char *stopName) {
        for (depth = 0; parent; parent = parent->getParent()) {
            node[depth++] = parent;
            if (depth == maxAncestors)
                return false;
            if (stopName && std::strcmp(parent->getName(), stopName) == 0)
                break;
        }
        return true;
    }
};

// Depth first, `node` included; NULL for none.
template <class Test> RVNODE *findInHierarchy(RVNODE &node, const Test &matches) {
    if (matches(node))
        return &node;
    for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
        if (RVNODE *child = node.getChild(index))
            if (RVNODE *found = findInHierarchy(*child, matches))
                return found;
    return nullptr;
}

// The log takes 1023 bytes at a time, with the end of the line.
void logTreeLine(const RVNODE &node, int depth) {
    char line[1023];
    const int indent = std::clamp(depth, 0, static_cast<int>(sizeof line) - 1);
    std::memset(line, ' ', static_cast<std::size_t>(indent));
    ravolt::formatText(line + indent, sizeof line - static_cast<std::size_t>(indent),
                       "+ %s [id: %d]", node.getName(), static_cast<int>(node.getId()));
    zlfLog("%s\n", line);
}

} // namespace

RVNODE *RVNODE::firstNode = nullptr;
RVNODE *RVNODE::lastNode = nullptr;

char RVNODE::typeName[19][256] = {
#define RV_NODE_KIND(type, name, ...) name,
#include "scene/nodeKinds.inc"
};

// --- Identity and registry

RVNODE::RVNODE() : RVNODE(false) { shared = false; }

// On purpose: `shared` is not initialised here.
RVNODE::RVNODE(bool)
    : id(zlfNewId()), auxId(0), timeStamp(0), data(nullptr),
      positioning(RV_NODE_POSITIONING_VECTORS), targetNode(nullptr), previous(nullptr),
      next(nullptr), numberOfChildren(0), parent(nullptr), children(nullptr) {
    initType(RV_NODE_TYPE_NODE);
    registration->id = id;
    registration->registered = true;
    Nodes::append(firstNode, lastNode, this);
}

// Nothing of the engine may point to a deleted node.
RVNODE::~RVNODE() {
    if (RAVOLT::getSkybox() == this)
        RAVOLT::setSkybox(nullptr);
    if (registration->listStamp == RAVOLT::getTimeStamp())
        ravolt::RenderList::removeNode(*this);
    NodeInternals::releaseChildren(*this);
    if (!isRegistered())
        return;
    releaseId(registration->id);
    Nodes::unlink(firstNode, lastNode, this);
}

RVNODE &RVNODE::operator=(const RVNODE &other) {
    if (this == &other)
        return *this;
    id = other.id;
    auxId = other.auxId;
    std::memcpy(name, other.name, sizeof name);
    type = other.type;
    timeStamp = other.timeStamp;
    shared = other.shared;
    data = other.data;
    positioning = other.positioning;
    position = other.position;
    rotation = other.rotation;
    origin = other.origin;
    direction = other.direction;
    target = other.target;
    targetNode = other.targetNode;
    matrix = other.matrix;
    cachedMatrix = other.cachedMatrix;
    if (isRegistered())
        return *this;
    if (children != other.children)
        NodeInternals::detachChildren(*this);
    previous = other.previous;
    next = other.next;
    numberOfChildren = other.numberOfChildren;
    parent = other.parent;
    children = other.children;
    return *this;
}

void RVNODE::initType(RV_NODE_TYPE newType) {
    type = newType;
    setDynamicClass(newType);
    ravolt::formatText(name, defaultName[rowOf(newType)], static_cast<int>(id));
}

bool RVNODE::render(void *) { return false; }

unsigned int RVNODE::getNumberOfNodes() { return Nodes::count(firstNode); }

RVNODE *RVNODE::findByName(const char *name) {
    return Nodes::findByText(firstNode, &RVNODE::name, name);
}

RVNODE *RVNODE::findById(unsigned int id) { return Nodes::findById(firstNode, id); }

bool RVNODE::cleanUp() {
    if (!firstNode)
        return false;
    // All are unlinked first: a destructor may look at its node's parent or children.
    for (RVNODE *node = firstNode; node; node = node->next) {
        NodeInternals::releaseChildren(*node);
        node->parent = nullptr;
    }
    const unsigned int released = Nodes::cleanUp(firstNode);
    zlfLog("   %d node(s) released @ RVNODE::cleanUp\n", static_cast<int>(released));
    return true;
}

void RVNODE::setName(const char *text) {
    if (text && strnlen(text, sizeof name) < sizeof name)
        ravolt::copyText(name, text);
}

char *RVNODE::getTypeName() const { return typeName[rowOf(type)]; }

// --- Transform

void ravolt::applyLocalTransform(const RVNODE &node, Z3MMATRIX &matrix) {
    switch (node.getPositioning()) {
    case RV_NODE_POSITIONING_VECTORS: {
        const Z3MVECTOR3D position = node.getPosition() + node.getOrigin();
        float *const e = matrix.e;
        for (unsigned int row = 0; row < 4; ++row)
            e[12 + row] = e[row] * position.x + e[4 + row] * position.y + e[8 + row] * position.z +
                          e[12 + row];
        ravolt::applyRotation(node.getRotation(), matrix);
        break;
    }
    case RV_NODE_POSITIONING_MATRIX:
        matrix = node.getMatrix() * matrix;
        break;
    }
}

Z3MMATRIX RVNODE::getFinalMatrix(const char *stopName) {
    static Ancestry ancestry;
    Z3MMATRIX result;
    if (!ancestry.collect(parent, stopName)) {
        zlfLog("   [!] Depth overflow @ RVNODE::getFinalMatrix()\n");
        return result;
    }
    for (unsigned int level = ancestry.depth; level-- > 0;)
        ravolt::applyLocalTransform(*ancestry.node[level], result);
    ravolt::applyLocalTransform(*this, result);
    return result;
}

// --- Tree

RVNODE *RVNODE::getChild(unsigned int index) const {
    if (index < numberOfChildren)
        return children[index];
    zlfLog("   [!] Invalid params @ RVNODE::getChild\n");
    return nullptr;
}

bool RVNODE::link(RVNODE *newParent) {
    if (!NodeInternals::mayLink(*this, newParent))
        return false;
    if (!NodeInternals::reserveEntries(*newParent, 1)) {
        zlfLog("   [!] Out of memory @ RVNODE::link\n");
        return false;
    }
    NodeInternals::append(*this, *newParent);
    return true;
}

// Whether the children are in an array that is not the node's own, as those of a copy are.
bool NodeInternals::sharesChildren(const RVNODE &node) {
    RVNODE **const storage = node.registration->storage, **const begin = node.children;
    if (!begin || !storage)
        return begin != nullptr;
    const std::less<> isBefore;
    return isBefore(begin, storage) ||
           isBefore(storage + node.registration->capacity, begin + node.numberOfChildren);
}

bool NodeInternals::mayLink(const RVNODE &node, const RVNODE *parent) {
    if (!parent || parent == &node || sharesChildren(*parent)) {
        zlfLog("   [!] Invalid param @ RVNODE::link\n");
        return false;
    }
    if (node.parent) {
        zlfLog("   [!] Node %s has already a parent @ RVNODE::link\n", node.name);
        return false;
    }
    return true;
}

// Entries of the parent's own storage before the first child.
unsigned int NodeInternals::firstSlot(const RVNODE &parent) {
    return parent.children && !sharesChildren(parent)
               ? static_cast<unsigned int>(parent.children - parent.registration->storage)
               : 0;
}

// Grows by halves, so that linking takes constant time on average. Entries that were freed at the
// front are used again once they are half as many as the children.
bool NodeInternals::reserveEntries(RVNODE &parent, unsigned int more) {
    if (sharesChildren(parent))
        return true; // mayLink refuses them all
    RVNODE **&storage = parent.registration->storage;
    const unsigned int used = parent.numberOfChildren, first = firstSlot(parent);
    const unsigned int capacity = parent.registration->capacity;
    if (first + used + more <= capacity)
        return true;
    if (used + more <= capacity && first >= used / 2) {
        parent.children = std::copy_n(parent.children, used, storage) - used;
        return true;
    }
    const unsigned int grown = used + std::max(more, used / 2);
    RVNODE **const replacement = new (std::nothrow) RVNODE *[grown];
    if (!replacement)
        return false;
    std::copy_n(parent.children, used, replacement);
    delete[] storage;
    storage = replacement;
    parent.registration->capacity = grown;
    parent.children = used ? replacement : nullptr;
    return true;
}

void NodeInternals::append(RVNODE &node, RVNODE &parent) {
    if (parent.numberOfChildren == 0)
        parent.children = parent.registration->storage;
    RVNODE **const entry = parent.children + parent.numberOfChildren++;
    *entry = &node;
    node.parent = &parent;
    node.registration->slot = static_cast<unsigned int>(entry - parent.registration->storage);
}

// The entry of `node` among the children of its parent; NULL for none. The entries may have been
// moved since it was linked.
RVNODE **NodeInternals::findEntry(const RVNODE &node) {
    const RVNODE &parent = *node.parent;
    RVNODE **const begin = parent.children, **const end = begin + parent.numberOfChildren;
    const unsigned int linked = node.registration->slot - firstSlot(parent);
    if (linked < parent.numberOfChildren && begin[linked] == &node)
        return begin + linked;
    RVNODE **const found = std::find(begin, end, &node);
    return found == end ? nullptr : found;
}

// The shorter side of the array closes the gap.
void NodeInternals::removeEntry(RVNODE &parent, RVNODE **entry) {
    RVNODE **const end = parent.children + parent.numberOfChildren--;
    if (entry - parent.children < end - entry)
        std::move_backward(parent.children++, entry, entry + 1);
    else
        std::move(entry + 1, end, entry);
}

void NodeInternals::detachChildren(RVNODE &copy) {
    if (sharesChildren(copy))
        return;
    for (unsigned int index = 0; index < copy.numberOfChildren; ++index)
        if (copy.children[index])
            copy.children[index]->parent = nullptr;
}

void NodeInternals::releaseChildren(RVNODE &node) {
    delete[] node.registration->storage;
    node.registration->storage = nullptr;
    node.registration->capacity = 0;
    node.children = nullptr;
    node.numberOfChildren = 0;
}

bool RVNODE::unlink() {
    if (!parent) {
        zlfLog("   [!] Node %s is already unlinked @ RVNODE::unlink\n", name);
        return false;
    }
    // On purpose: an only child is not compared with this node.
    if (parent->numberOfChildren != 1) {
        RVNODE **const entry = NodeInternals::findEntry(*this);
        if (!entry) {
            zlfLog("   [!] Consistency problem with %s @ RVNODE::unlink\n", name);
            return false;
        }
        NodeInternals::removeEntry(*parent, entry);
    } else {
        NodeInternals::releaseChildren(*parent);
    }
    parent = nullptr;
    return true;
}

// All memory is allocated first: the tree does not change when it runs out.
bool RVNODE::remove() {
    if (!parent) {
        zlfLog("   [!] Node %s already unlinked @ RVNODE::remove\n", name);
        return false;
    }
    const unsigned int number = numberOfChildren;
    const ChildList orphans(new (std::nothrow) RVNODE *[number]);
    if (!orphans || !NodeInternals::reserveEntries(*parent, number)) {
        zlfLog("   [!] Out of memory @ RVNODE::remove\n");
        return false;
    }
    std::copy_n(children, number, orphans.get());
    for (unsigned int index = 0; index < number; ++index) {
        RVNODE *const orphan = orphans[index];
        if (!orphan)
            continue;
        orphan->unlink();
        if (NodeInternals::mayLink(*orphan, parent))
            NodeInternals::append(*orphan, *parent);
    }
    return unlink();
}

RVNODE *RVNODE::findByNameInHierarchy(const char *wanted) {
    return findInHierarchy(*this, [wanted](const RVNODE &node) {
        return wanted && !std::strcmp(node.getName(), wanted);
    });
}

RVNODE *RVNODE::findByIdInHierarchy(unsigned int wanted) {
    return findInHierarchy(*this, [wanted](const RVNODE &node) { return node.getId() == wanted; });
}

bool RVNODE::displayTree(RVNODE *node) {
    if (!node) {
        zlfLog("   [!] Invalid params @ RVNODE::displayTree\n");
        return false;
    }
    zlfLog("   Tree for %s:\n", node->name);
    if (node->numberOfChildren == 0)
        zlfLog("   empty\n");
    else
        displayTreeRecursive(node, 3);
    zlfLog("\n");
    return true;
}

RVNODE *RVNODE::displayTreeRecursive(RVNODE *node, int depth) {
    if (!node)
        return nullptr;
    logTreeLine(*node, depth);
    const int deeper = depth <= INT_MAX - 2 ? depth + 2 : depth;
    for (unsigned int index = 0; index < node->numberOfChildren; ++index)
        displayTreeRecursive(node->children[index], deeper);
    return nullptr;
}

// --- Access for the library

bool NodeInternals::isObjectOf(const RVNODE &node, RV_NODE_TYPE type) {
    return node.type == type && node.registration->dynamicClass == type;
}

void NodeInternals::setTimeStamp(RVNODE &node, int stamp) { node.timeStamp = stamp; }

void NodeInternals::setListStamp(RVNODE &node, int stamp) { node.registration->listStamp = stamp; }

bool NodeInternals::reserveChildren(RVNODE &parent, unsigned int count) {
    if (count == 0)
        return true;
    if (!reserveEntries(parent, count))
        return false;
    parent.children = parent.registration->storage;
    parent.numberOfChildren = count;
    std::fill_n(parent.children, count, nullptr);
    return true;
}

void NodeInternals::setChild(RVNODE &parent, unsigned int index, RVNODE &child) {
    parent.children[index] = &child;
    child.parent = &parent;
    child.registration->slot = index;
}
