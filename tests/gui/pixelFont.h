#pragma once

// A font of a few characters, for pictures: "Ravolt", "[...]", digits 0 to 3 and the cursor.

class RVFONT;

namespace ravolt::test {

// Writes the atlas and loads it, unfiltered, into a new font; kerning of 4 pixels but for the
// cursor.
RVFONT *makePixelFont();

} // namespace ravolt::test
