#pragma once

namespace ravolt::test {

// A recording function in front of `real`, for the names that the engine loads; otherwise `real`.
void *trampolineOf(const char *name, void *real);

} // namespace ravolt::test
