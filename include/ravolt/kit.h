#pragma once

// Everything of the kit, in one header. The kit is a second library above the engine: what an
// application needs around it, built on the engine's public headers and SDL's alone. C++17.

#include "ravolt/kit/camera.h"
#include "ravolt/kit/clipPlayer.h"
#include "ravolt/kit/flyCamera.h"
#include "ravolt/kit/frameStatistics.h"
#include "ravolt/kit/input.h"
#include "ravolt/kit/orbitCamera.h"
#include "ravolt/kit/overlay.h"
#include "ravolt/kit/picker.h"
#include "ravolt/kit/screenshot.h"
#include "ravolt/kit/smoothedValue.h"
#include "ravolt/kit/terrainHeights.h"
#include "ravolt/kit/walkCamera.h"
#include "ravolt/kit/window.h"
