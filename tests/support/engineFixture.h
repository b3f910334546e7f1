#pragma once

// Fixtures that start the engine in a small window with small render targets and free it after each
// test. After the test they expect that every registry is empty, that the memory ratio is what it
// was and that no OpenGL error was left. A node, material or texture that is a member of a fixture
// outlives that end: make it with new instead, as the engine deletes what is registered. Without a
// display such a test fails and says what to do.

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

// Any OpenGL error that is waiting fails the test. Those that the engine is known to leave do not
// get here: the fixtures let the recorder swallow them (see Recorder::forgiveUnits). Called by the
// fixture after the start and before the end.
void drainKnownErrors();

// The drawing surface, as it stands before the swap: the window's size, or a part of it.
Picture readFrame();
Picture readArea(int x, int y, int width, int height); // x, y from the top left
Pixel pixelAt(int x, int y);                           // from the top left

// One frame: clear, begin3D, pass of `root` (may be NULL), end3D. No swap, so that it can be read.
void drawFrame(RVCAMERA *camera, RVNODE *root);
// One frame of the two-dimensional block: begin2D, pass, end2D.
void drawFrame2D(RVNODE *root);

// Whether a window can be opened here; if not, why not and what to do about it.
testing::AssertionResult displayIsThere();

class EngineTest : public RecorderTest {
  protected:
    static constexpr int width = 128;
    static constexpr int height = 96;

    // To change what the engine starts with, or to tell lies about it (the engine's capability
    // flags once set stay set over a restart): in the constructor of the derived fixture.
    RVSETTINGS settings = smallSettings();

    void SetUp() override;
    void TearDown() override;

    // Frees the engine and starts it anew, with `settings` as they stand now (and the lies told by
    // then).
    bool restart();

    LogMark startMark = 0; // the log before the engine's start; the current mark is behind it

  private:
    int ratioBefore = 0;
};

// As above with no driver behind: for recorded calls, label `trace`.
class SilentEngineTest : public EngineTest {
  protected:
    void SetUp() override;
};

} // namespace ravolt::test
