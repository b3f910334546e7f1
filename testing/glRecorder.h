#pragma once

namespace ravolt::test {

// A function that records and calls `real`, for the names that the engine loads; otherwise `real`.
void *trampolineOf(const char *name, void *real);

} // namespace ravolt::test
