#pragma once

// How the engine treats each kind of node: one row a kind, in scene/nodeKinds.inc. The pass and the
// sort of the render list, the frame, the shadow map, picking and the loader of scene files read it
// instead of asking for types.

class RVNODE;

namespace ravolt {

// How a scene file stores nodes of a kind.
struct NodeReader {
    unsigned char kind; // the byte before a node's record

    // Makes the node of the record at `buffer + *cursor`, which has passed the check of
    // models/rveFile.h, and moves the cursor to its end. NULL with a log line when memory runs out.
    RVNODE *(*load)(char *buffer, long *cursor, bool obsolete);
};

// The position of an entry in the drawing order of the 3D list.
enum class DrawOrder { light, opaque, transparent, byMaterial };

struct NodeTraits {
    bool listed;  // takes an entry of the render list; else it is a transform alone
    bool clipped; // by its distance from the eye
    DrawOrder order;
    bool inBlock2D;                      // drawn by end2D
    bool casts;                          // drawn into the shadow map
    bool pickable;                       // drawn by RAVOLT::select
    float (*radius)(const RVNODE &node); // of an object of the kind's own class; NULL for 0
    const NodeReader *reader;            // NULL if no scene file has the kind
};

// The row of the node's type. A type beyond the last kind is drawn as a custom node is, and not
// picked.
const NodeTraits &traitsOf(const RVNODE &node);

// The radius by which a node is clipped and sorted, in the units of the scene; 0 also for a node
// that is no object of its type's class.
float radiusOf(const RVNODE &node);

// Whether the node is drawn after the opaque ones, from back to front.
bool isTransparent(const RVNODE &node);

// The reader of a kind byte of scene files; NULL for an unknown one.
const NodeReader *readerOf(unsigned char kind);

} // namespace ravolt
