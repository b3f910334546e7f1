#pragma once

// Fixtures that start the engine in a small window with small render targets and free it after each
// test. After the test they expect that every registry is empty, that the memory ratio is what it
// was and that no OpenGL error is pending. Create nodes, materials and textures with new, as the
// engine deletes registered objects: a member of a fixture would outlive the engine. Without a
// display such a test fails with instructions.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "tests/support/logReader.h"
#include "tests/support/pictures.h"
#include "tests/support/recorder.h"

#include <gtest/gtest.h>

class RVCAMERA;
class RVNODE;

namespace ravolt::test {

// Settings of a window of 128 by 96, a depth buffer of 24 bits, render targets of 64 by 48, a
// shadow map and a water map of 64, no shaders.
RVSETTINGS smallSettings();

// A pending OpenGL error fails the test. The fixtures let the recorder suppress the known errors of
// the engine (see Recorder::suppressUnitErrors), and call this after its start and before its end.
void expectNoGlErrors();

// No object is registered and no identifier is used.
void expectNothingLeft();

// The pixels of the back buffer, before the swap: the whole window or a part of it.
Picture readFrame();
Picture readArea(int x, int y, int width, int height); // x, y from the top left
Pixel pixelAt(int x, int y);                           // from the top left

// One frame: clear, begin3D, pass of `root` (may be NULL), end3D. No swap, so that it can be read.
void drawFrame(RVCAMERA *camera, RVNODE *root);
// One frame of the two-dimensional block: begin2D, pass, end2D.
void drawFrame2D(RVNODE *root);

// Whether there is a display for a window; the failure says how to start one.
testing::AssertionResult hasDisplay();

class EngineTest : public RecorderTest {
  protected:
    static constexpr int width = 128;
    static constexpr int height = 96;

    // The constructor of a derived fixture may change these, or set overrides of the recorder (once
    // set, the engine's capability flags stay set over a restart).
    RVSETTINGS settings = smallSettings();

    void SetUp() override;
    void TearDown() override;

    // Frees the engine and starts it again, with the current `settings` and overrides.
    bool restart();

    LogMark startMark = 0; // of the engine's start; the current mark is after it

  private:
    int ratioBefore = 0;
};

// As above with the simulated driver: for recorded calls, label `trace`.
class SilentEngineTest : public EngineTest {
  protected:
    void SetUp() override;
};

} // namespace ravolt::test
