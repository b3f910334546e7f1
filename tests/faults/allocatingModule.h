#pragma once

// Which shared object or program of a process allocates.

namespace ravolt::test {

// Reads the loaded objects. `names` are the beginnings of file names, separated by colons; those
// that begin so are the tested ones. Call it before any other thread runs.
void setTestedModules(const char *names);

// Whether the calling code belongs to a tested module: the nearest function on the stack that is
// not one of the runtime libraries (libc, libm, libstdc++, libgcc and the dynamic loader) or of
// this one decides, so that a string or a container is counted for whoever uses it. False for code
// without unwind information, and for objects that were loaded after `setTestedModules`.
bool calledByTestedModule();

} // namespace ravolt::test
