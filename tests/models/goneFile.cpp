#include "tests/models/goneFile.h"

namespace ravolt::test {
bool everyFileExists = false;
}

extern "C" {

bool __real__Z13zlfFileExistsPKc(const char *filename);

bool __wrap__Z13zlfFileExistsPKc(const char *filename) {
    return ravolt::test::everyFileExists || __real__Z13zlfFileExistsPKc(filename);
}
}
