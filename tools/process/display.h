#pragma once

// Where the tool can draw: in a window on the user's display or, without one, off screen by the
// SDL 1.2 library that is made over SDL 2.

#include <string>

namespace ravolt::tool {

struct Verbosity;

// Throws Failure, with advice, when no window can be opened: the classic SDL library would fall
// into a text-mode driver then and garble the terminal.
void requireDisplay();

// Makes sure that pictures can be drawn, off screen where there is no display; for that the program
// may start itself anew with the other library, which is looked for in `libraryFolder` or, when
// that is empty, in its usual places. Throws Failure, with advice, when there is no way.
void requireDisplayOrOffscreen(const std::string &libraryFolder, const Verbosity &verbosity);

} // namespace ravolt::tool
