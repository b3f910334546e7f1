#pragma once

// Selects where the tool draws: in a window on the user's display or, without one, off screen by
// the SDL 1.2 library on top of SDL 2.

#include <string>

namespace ravolt::tool {

struct Verbosity;

// Throws Failure, with advice, when no window can be opened: the classic SDL library would
// fall back to a text-mode driver and garble the terminal.
void requireDisplay();

// Makes sure that pictures can be drawn, off screen where there is no display; for that the program
// may restart itself with the other library, which is looked for in `libraryFolder` or, when
// that is empty, in its usual folders. Throws Failure, with advice, if that is impossible.
void requireDisplayOrOffscreen(const std::string &libraryFolder, const Verbosity &verbosity);

} // namespace ravolt::tool
