#include "ravolt/version.h"

const char *ravoltVersion() { return RAVOLT_VERSION_STRING; }
