#pragma once

// Additional: the version of the engine, of the headers at compile time and of the library at run
// time. Libraries with the same major version are compatible: a program runs with each one that is
// not older than its headers.

#include "ravolt/api.h"

// The version of the headers.
#define RAVOLT_VERSION_MAJOR 1
#define RAVOLT_VERSION_MINOR 6
#define RAVOLT_VERSION_PATCH 6
#define RAVOLT_VERSION_STRING "1.6.6"

// RAVOLT_VERSION_STRING of the library that the program runs with.
RV_API const char *ravoltVersion();
