#pragma once

namespace ravolt {

// Ends the interaction of RVELEMENT::manageGUIEvents: no widget is pressed or has the focus, and
// the pointer is as before the first call. For the start and the end of the engine.
void resetInteraction();

} // namespace ravolt
