#pragma once

// Everything that a test of an application needs beside ravolt.h, in one header.

#include "ravolt/testing/callRecorder.h"
#include "ravolt/testing/calls.h"
#include "ravolt/testing/silentEngine.h"
