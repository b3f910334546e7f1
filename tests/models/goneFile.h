#pragma once

// A file that goes between the question whether it is there and its opening.

namespace ravolt::test {

// While it is set, zlfFileExists says that every file is there. The test program is linked with
// --wrap for it.
extern bool everyFileExists;

} // namespace ravolt::test
