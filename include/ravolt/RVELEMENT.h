#pragma once

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

class RVMESH;
class RVNODE;

namespace ravolt {
struct RenderList;
}

// One entry of the render list: a node and the eye-space matrix that it had when it was passed.
// The static members are the list. RAVOLT's begin functions empty it, RVNODE::pass fills it, its
// end functions sort it and call each node's `render` with the entry. It is valid until the next
// begin; the entries of a node that is deleted are removed. The storage is allocated once by
// `init`, and no frame allocates anything.
class RV_API RVELEMENT {
  public:
    RVELEMENT();

    // Allocates `count` entries; 0, and more than 4096, mean 4096. False with a log line when the
    // list is active already or memory runs out.
    static bool init(unsigned int count);

    // Releases the storage; false, without a log line, when there is none.
    static bool free();

    // Whether the storage is allocated.
    static bool isActive() { return active; }

    // Empties the list. The fields of an entry do not change until a pass fills it again, and
    // `param1` and the nearest lights not even then. The skeleton cache and the clipping do not
    // change.
    static void reset();

    // Distance clipping, off by default: meshes and helpers take no entry when their origin is
    // farther from the eye than the clipping radius plus twice their own radius (RVMESH::getRadius,
    // RVHELPER::setRadius, which is not computed from the helper's box). Each of them logs a line
    // in each frame. Their children are tested separately; other nodes are never clipped.
    static void clippingOn() { clipping = true; }
    static void clippingOff() { clipping = false; }

    // In the units of the scene, 128 by default; any number, effective from the next pass.
    static void setClippingRadius(float radius) { clippingRadius = radius; }
    static float getClippingRadius() { return clippingRadius; }

    // Capacity; entries in use; lights among them.
    static unsigned int getNumberOfElements() { return numberOfElements; }
    static unsigned int getNumberOfPassedElements() { return numberOfPassedElements; }
    static unsigned int getNumberOfLights() { return numberOfLights; }

    // The entry of a light, in the current order; NULL when `index` is out of range. Valid after
    // sort3D, which puts the lights first.
    static RVELEMENT *getLight(unsigned int index);

    // Records `node` and all below it, beginning with OpenGL's modelview matrix. False with a
    // log line for NULL and when the list is full; the nodes below it are then left out.
    // Plain nodes and hidden or clipped meshes take no entry. The flag has no effect.
    static bool pass(RVNODE *node, bool flag);

    // Walks the tree from `node` down, beginning with the current modelview matrix, and stores the
    // matrix of each bone of `mesh` in the next free entry of the skeleton cache. For `pass`, which
    // calls it with the parent of a skinned mesh. False, with a log line, for NULL alone: a skinned
    // mesh without a parent is then drawn with the former bone matrices of its entry. The result is
    // true however many bones were found, and also when the cache is full.
    static bool passSkeleton(RVNODE *node, RVMESH *mesh);

    // Orders of drawing; false when there is nothing to sort. sort2D puts boxes in the order of
    // their stamps (RVBOX::setForemost), and nodes that are no boxes, in the order of the pass,
    // below all of them. sort3D puts lights first, then opaque entries (by texture
    // and material), then transparent ones from back to front, by the eye-space z of their origin
    // minus their radius: one sort per node, not per triangle, so that large transparent meshes
    // that overlap in depth may be drawn in the wrong order. Helpers count as transparent. Without
    // lights and transparent entries the order of the pass does not change.
    static bool sort2D();
    static bool sort3D();

    // Additional: whether sort3D orders opaque meshes by what OpenGL must be given for them, in
    // every scene: by program, texture, material, and vertices, so that copies of a mesh follow one
    // another. Off by default. Opaque entries that are no meshes come first, in the order of the
    // pass. Worth it where thousands of meshes with few materials are passed in turns.
    static void stateOrderOn() { stateOrder = true; }
    static void stateOrderOff() { stateOrder = false; }
    static bool isStateOrdered() { return stateOrder; }

    // Pointer and keys for the widgets of the last 2D block; call it once a frame after end2D, with
    // the pointer in pixels of that block, 0 for a button that is released, and the character typed
    // or 0. `eventId`, unless NULL, receives the id of the button that was used, or 0. True when
    // the pointer is over a widget or holds one, so that the application does not use it itself.
    // The foremost box under the pointer that is checked and shown (RVBOX) is pressed, held until
    // the button is released, and dragged unless it is static; the text field that was pressed last
    // gets the keys. Nodes that are no boxes are ignored. The right button is ignored on purpose.
    static bool manageGUIEvents(char key, int x, int y, int left, int right, unsigned int *eventId);

    // Orders the lights alone: exclusive ones first, then by distance from `point` in eye space.
    static bool sortLights(const Z3MVECTOR3D &point);

    // The node of the entry, and its modelview matrix in this frame. Not owned.
    RVNODE *getNode() const { return node; }
    Z3MMATRIX *getMatrix() { return &matrix; }
    const Z3MMATRIX *getMatrix() const { return &matrix; }

    // Distance of a light from the point of the last sortLights, in the units of the scene.
    // Meaningless for other entries and before that sort.
    float getDistance() const { return distance; }

    // The node's auxiliary id at the time of the pass.
    unsigned int getAuxId() const { return auxId; }

    // For a skinned mesh: its index in the skeleton cache, 256 when that was full. For a light: the
    // number of its OpenGL light. Otherwise a value of an earlier frame.
    unsigned int getParam1() const { return param1; }
    void setParam1(unsigned int value) { param1 = value; }

    // Lights chosen for this entry by RVLIGHT::activateNearest; `index` is 0 to 3. Another one
    // changes nothing, and gives NULL. Elements that were not chosen have the values of earlier
    // frames.
    void setNearestLight(unsigned int index, RVELEMENT *light) {
        if (index < 4)
            nearestLight[index] = light;
    }
    RVELEMENT *getNearestLight(unsigned int index) const {
        return index < 4 ? nearestLight[index] : nullptr;
    }

  private:
    friend struct ravolt::RenderList;

    RVNODE *node; // not owned
    Z3MMATRIX matrix;
    unsigned int auxId;
    float distance;
    RVELEMENT *nearestLight[4];
    unsigned int param1;
    bool countedAsLight; // in numberOfLights
    bool countedAsTransparent;

    static bool active;
    static bool clipping;
    static float clippingRadius;
    static bool stateOrder;
    static unsigned int numberOfElements;
    static unsigned int numberOfPassedElements;
    static unsigned int numberOfLights;
    static unsigned int numberOfTransparencies;
    static RVELEMENT *element;         // the storage, in the order of the pass
    static RVELEMENT **elementPointer; // the order of drawing
};
