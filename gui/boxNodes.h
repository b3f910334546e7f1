#pragma once

// Nodes as widgets. The list of the 2D block, and the children of a box, may have other nodes too.
// Defined in gui/widgetCasts.cpp.

class RVBOX;
class RVBUTTON;
class RVLABEL;
class RVNODE;
class RVTEXTFIELD;
class RVWINDOW;
class Z3MVECTOR2D;

namespace ravolt {

// The node as an object of the class, RVBOX for any widget; NULL for NULL and for other nodes. A
// button is one of RVBUTTON itself.
RVBOX *asBox(RVNODE *node);
RVBUTTON *asButton(RVNODE *node);
RVLABEL *asLabel(RVNODE *node);
RVTEXTFIELD *asTextField(RVNODE *node);
RVWINDOW *asWindow(RVNODE *node);

// The first window among `node` and the nodes above it, as a box; NULL for none.
RVBOX *findWindow(RVNODE &node);

// RVWINDOW::enableScissor of a box that findWindow has found.
void enableWindowScissor(RVBOX &window);

// The sum of the positions of all nodes above `node`, in pixels.
Z3MVECTOR2D parentsPosition(const RVNODE &node);

// Truncates towards zero; beyond the range of numbers the nearest one, and 0 for NaN.
int truncated(double value);

} // namespace ravolt
