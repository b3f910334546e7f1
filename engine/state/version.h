#pragma once

namespace ravolt {

// Name and version, as the log and the default window title show them.
inline constexpr char banner[] = "Ravolt 3D Graphics Engine for PC v1.6.6a (debug)";

} // namespace ravolt
