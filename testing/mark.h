#pragma once

namespace ravolt::test {

// A mark is an entry among the calls with this name, followed by its own.
inline constexpr const char *markName = "mark: ";

} // namespace ravolt::test
