#pragma once

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"
#include "ravolt/owned.h"

namespace ravolt {
struct NodeInternals;
} // namespace ravolt

// Kind of a node; RVNODE::typeName holds the names.
enum RV_NODE_TYPE : int {
    RV_NODE_TYPE_NODE = 0,
    RV_NODE_TYPE_ROOT = 1,
    RV_NODE_TYPE_LIGHT = 2,
    RV_NODE_TYPE_MESH = 3,
    RV_NODE_TYPE_CAMERA = 4,
    RV_NODE_TYPE_EMITTER = 5,
    RV_NODE_TYPE_SKYDOME = 6,
    RV_NODE_TYPE_WATER = 7,
    RV_NODE_TYPE_TERRAIN = 8,
    RV_NODE_TYPE_HELPER = 9,
    RV_NODE_TYPE_SOUND = 10,
    RV_NODE_TYPE_BOX = 11,
    RV_NODE_TYPE_LABEL = 12,
    RV_NODE_TYPE_BUTTON = 13,
    RV_NODE_TYPE_WINDOW = 14,
    RV_NODE_TYPE_TEXTFIELD = 15,
    RV_NODE_TYPE_HSCROLLBAR = 16,
    RV_NODE_TYPE_VSCROLLBAR = 17,
    RV_NODE_TYPE_CUSTOM = 18
};

// Where a node's local transform comes from; with any other value there is no transform.
enum RV_NODE_POSITIONING : int {
    RV_NODE_POSITIONING_VECTORS = 0, // position, origin and rotation
    RV_NODE_POSITIONING_MATRIX = 1   // matrix
};

// Base of all objects of a scene. A node has an identity, a local transform, a parent and children,
// and is in the registry of all live nodes. The registry owns its nodes: create them with `new`,
// while the log is open; cleanUp, which RAVOLT::free calls, deletes those that are left. The tree
// owns nothing: unlink a node before you delete it. `pass` records a tree in the render list, from
// which each node's `render` is called. Subclasses of an application set `type` to
// RV_NODE_TYPE_CUSTOM in their constructor and override `render`. Use from the rendering thread.
class RV_API RVNODE {
  public:
    RVNODE();

    // The same, except that the shared status is not initialised; the argument is ignored.
    explicit RVNODE(bool);

    virtual ~RVNODE();

    // Draws the node; `element` is its RVELEMENT. A plain node draws nothing and returns false.
    virtual bool render(void *element);

    // A copy has the values of every field, id, name, type, links and children included, but is not
    // registered, and releases nothing of the original when it is destroyed. Its links are invalid
    // after the next link, unlink or remove of the original, and after its end. A copy with
    // children takes no more of them; one without has an array of its own for its children.
    RVNODE(const RVNODE &) = default;

    // Copies every field into a node that is not registered; the children of its own array have no
    // parent then. In a registered one the links of
    // the registry, the parent and the children do not change, and it still releases the id that it
    // was created with.
    RVNODE &operator=(const RVNODE &other);

    // The registry, in order of creation.
    static RVNODE *getFirstNode() { return firstNode; }
    RVNODE *getNextNode() const { return next; }
    RVNODE *getPreviousNode() const { return previous; }
    static unsigned int getNumberOfNodes();

    // The oldest node of that name (case counts) or id; NULL for none, or for a NULL name.
    static RVNODE *findByName(const char *name);
    static RVNODE *findById(unsigned int id);

    // Deletes all nodes and logs how many; false when there are none.
    static bool cleanUp();

    // Engine-wide number, 1 to 65535.
    unsigned int getId() const { return id; }

    // A number of the application's own; unless it is 0 it replaces the id in picking.
    unsigned int getAuxId() const { return auxId; }
    void setAuxId(unsigned int value) { auxId = value; }

    // Names need not be unique. NULL or 256 characters and more change nothing.
    char *getName() { return name; }
    const char *getName() const { return name; }
    void setName(const char *text);

    // The kind of node, and the kind in words.
    RV_NODE_TYPE getType() const { return type; }
    char *getTypeName() const;

    // Stamp of the frame in which the node was last passed, also if it was hidden or clipped.
    int getTimeStamp() const { return timeStamp; }

    // A pointer and a flag for the application; the engine only stores them.
    void *getData() const { return data; }
    void setData(void *value) { data = value; }
    bool isShared() const { return shared != 0; }
    void setSharedStatus(bool value) { shared = value; }

    // The local transform by vectors: translation by position plus origin, then rotation about X,
    // Y and Z in this order, in degrees. With two numbers z does not change.
    void setPosition(float x, float y) { position = Z3MVECTOR3D(x, y, position.z); }
    void setPosition(float x, float y, float z) { position = Z3MVECTOR3D(x, y, z); }
    void setPosition(const Z3MVECTOR3D &value) { position = value; }
    Z3MVECTOR3D getPosition() const { return position; }
    void setRotation(float x, float y) { rotation = Z3MVECTOR3D(x, y, rotation.z); }
    void setRotation(float x, float y, float z) { rotation = Z3MVECTOR3D(x, y, z); }
    void setRotation(const Z3MVECTOR3D &value) { rotation = value; }
    Z3MVECTOR3D getRotation() const { return rotation; }
    void setOrigin(float x, float y) { origin = Z3MVECTOR3D(x, y, origin.z); }
    void setOrigin(float x, float y, float z) { origin = Z3MVECTOR3D(x, y, z); }
    void setOrigin(const Z3MVECTOR3D &value) { origin = value; }
    Z3MVECTOR3D getOrigin() const { return origin; }

    // Add to position and rotation. Neither changes the positioning.
    void move(float x, float y) { setPosition(position.x + x, position.y + y); }
    void move(float x, float y, float z) {
        setPosition(position.x + x, position.y + y, position.z + z);
    }
    void move(const Z3MVECTOR3D &value) { move(value.x, value.y, value.z); }
    void rotate(float x, float y) { setRotation(rotation.x + x, rotation.y + y); }
    void rotate(float x, float y, float z) {
        setRotation(rotation.x + x, rotation.y + y, rotation.z + z);
    }
    void rotate(const Z3MVECTOR3D &value) { rotate(value.x, value.y, value.z); }

    // Where a light shines; also the last step of RVCAMERA::moveDoom.
    void setDirection(float x, float y) { direction = Z3MVECTOR3D(x, y, direction.z); }
    void setDirection(float x, float y, float z) { direction = Z3MVECTOR3D(x, y, z); }
    void setDirection(const Z3MVECTOR3D &value) { direction = value; }
    Z3MVECTOR3D getDirection() const { return direction; }

    // Aim of cameras and lights. Target node NULL (the default): no aim; the node itself: the point
    // `target`; another node: that node. It is not owned, and the pointer is not weak: set NULL
    // before you delete that node.
    void setTarget(float x, float y) { target = Z3MVECTOR3D(x, y, target.z); }
    void setTarget(float x, float y, float z) { target = Z3MVECTOR3D(x, y, z); }
    void setTarget(const Z3MVECTOR3D &value) { target = value; }
    Z3MVECTOR3D getTarget() const { return target; }
    RVNODE *getTargetNode() const { return targetNode; }
    void setTargetNode(RVNODE *node) { targetNode = node; }

    // How the position is meant; see RV_NODE_POSITIONING.
    RV_NODE_POSITIONING getPositioning() const { return positioning; }
    void setPositioning(RV_NODE_POSITIONING value) { positioning = value; }

    // The local transform by matrix, used with RV_NODE_POSITIONING_MATRIX only; setting it does not
    // change the positioning.
    void setMatrix(const Z3MMATRIX &value) { matrix = value; }
    Z3MMATRIX getMatrix() const { return matrix; }

    // The node's own eye-space matrix of the last pass in which it was added to the render list;
    // out of date when it was hidden or clipped since.
    Z3MMATRIX *getCachedMatrix() { return &cachedMatrix; }

    // The transform from the node to the world, or to the space around its nearest ancestor of that
    // name (whose own transform is included). The node's own name is not compared: it never ends
    // the search. A name that no ancestor has counts as NULL. Computed as OpenGL's matrix stack
    // does. At most 63 ancestors; beyond that an identity and a log line.
    Z3MMATRIX getFinalMatrix(const char *stopName);

    // The place in the tree; a root has no parent (NULL).
    RVNODE *getParent() const { return parent; }
    unsigned int getNumberOfChildren() const { return numberOfChildren; }
    bool isRoot() const { return !parent; }

    // NULL and a log line when out of range.
    RVNODE *getChild(unsigned int index) const;

    // Makes the node the last child of `newParent`. False with a log line for NULL, for the node
    // itself, for a copy with children in its original's array, when there is a parent
    // already, and when memory runs out. Cycles are not detected: a walk through one never ends.
    bool link(RVNODE *newParent);

    // Removes the node, with its own children, from its parent. False with a log line for a root.
    bool unlink();

    // Removes the node without its children, which are appended to those of its parent. Nothing is
    // deleted. False with a log line for a root, and when memory runs out: then nothing changes.
    bool remove();

    // Depth first, this node included; NULL for none.
    RVNODE *findByNameInHierarchy(const char *wanted);
    RVNODE *findByIdInHierarchy(unsigned int wanted);

    // Logs the tree under `node`. False with a log line for NULL.
    static bool displayTree(RVNODE *node);

    // Logs a line for each node, `depth` blanks deep and two more a level. Returns NULL.
    static RVNODE *displayTreeRecursive(RVNODE *node, int depth);

    // Stamps the node and records it and all below it in the render list, between the begin and
    // the end of a block. Always true; the flag has no effect.
    bool pass(bool flag = true);

    // Reads a plain node of a scene file at `buffer + *cursor` and moves the cursor to its end; its
    // children are empty (NULL) entries, as many as it has. The size of the buffer is unknown here:
    // the caller must have checked its contents. NULL with a log line when memory runs out or the
    // name is not valid.
    static RVNODE *load(const char *buffer, long *cursor);

    // Names of the types, as "mesh".
    static char typeName[19][256];

  protected:
    // Sets the type, the class that the engine casts the object to, and the type's default name, as
    // "[mesh 12]". For constructors of the type's own class.
    void initType(RV_NODE_TYPE newType);

    // Sets the class alone. For copy constructors of that class.
    void setDynamicClass(RV_NODE_TYPE ownClass) { registration->dynamicClass = ownClass; }

    // False for a copy, which must release nothing of its original.
    bool isRegistered() const { return registration->registered; }

    // The head of the registry.
    static RVNODE *firstNode;

  private:
    friend struct ravolt::Registry<RVNODE>;
    friend struct ravolt::NodeInternals;

    // The object's entry in the registry, and what else is not copied with its fields.
    struct Registration {
        bool registered;           // false for a copy
        unsigned int id;           // to be released; `id` may come from another object
        RV_NODE_TYPE dynamicClass; // its class; `type` may come from another object
        int listStamp;             // of the frame in which it was last added to the render list
        RVNODE **storage;          // the array that `children` is a part of, owned; NULL for none
        unsigned int capacity;     // its entries
        unsigned int slot;         // where its parent's storage had the node when it was linked
    };

    unsigned int id;
    unsigned int auxId;
    char name[256];

  protected:
    // The kind, set by the constructors.
    RV_NODE_TYPE type;

  private:
    int timeStamp;
    unsigned char shared; // may be uninitialised, and copying such a bool is undefined
    void *data;
    RV_NODE_POSITIONING positioning;
    Z3MVECTOR3D position;
    Z3MVECTOR3D rotation;
    Z3MVECTOR3D origin;
    Z3MVECTOR3D direction;
    Z3MVECTOR3D target;
    RVNODE *targetNode;
    Z3MMATRIX matrix;
    Z3MMATRIX cachedMatrix;
    RVNODE *previous;
    RVNODE *next;
    unsigned int numberOfChildren;
    RVNODE *parent;
    RVNODE **children; // numberOfChildren entries; NULL without children
    ravolt::Owned<Registration> registration;

    static RVNODE *lastNode;
};
