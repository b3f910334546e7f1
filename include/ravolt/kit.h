#pragma once

// Everything of the kit, in one header. The kit is a second library above the engine: what an
// application needs around it, built on the engine's public headers and SDL's alone. C++17.

#include "ravolt/kit/clipPlayer.h"
#include "ravolt/kit/input.h"
#include "ravolt/kit/smoothedValue.h"
