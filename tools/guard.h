#pragma once

// Readers of model files are many and old, and some crash on what they do not expect. So a
// conversion runs in a process of its own: when that dies, the tool still says so in a line.

#include <functional>
#include <string>

namespace ravolt::tool {

// Runs `job` in a child of this process and waits for it. A Failure of the job comes out here as if
// it had been thrown here; the child's end by a signal becomes a Failure that names `file`. Call it
// before the engine starts: a child must not share a window.
void runGuarded(const std::string &file, const std::function<void()> &job);

} // namespace ravolt::tool
