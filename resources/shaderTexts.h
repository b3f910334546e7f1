#pragma once

// The GLSL of the built-in programs: one source for each stage of a family, from which the variants
// are made by a prefix of definitions. The sources are resources/shaders/*.glsl; the build puts
// them into the library, so that no file is read at run time.

namespace ravolt {

// The whole text of a stage by its label, as "pplVSspotTSA.glsl"; NULL for a label that no built-in
// program has. The text lives as long as the library. Allocates nothing.
const char *shaderText(const char *label);

} // namespace ravolt
