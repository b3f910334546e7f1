#pragma once

namespace ravolt {

// Reads a kerning file, without OpenGL: text lines of the keys "RAVOLT_kerning_" with a character,
// and of the names SPACE, DIESIS and EQUAL for " ", "#" and "=". Entry i of `kerning` is for the
// character 0x20 + i, up to 0x7E; those that the file does not name do not change. False, with
// the parser's line in the log, for a file that cannot be read.
constexpr unsigned int kerningFileEntries = 95;
bool readKerningFile(const char *path, signed char *kerning);

} // namespace ravolt
