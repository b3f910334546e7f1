#pragma once

// The recorder of ravolt/testing/callRecorder.h, with failures of the heap and a simulated clock,
// which need the engine's objects in the test program, and fixtures that reset it after each test.
//
//     EXPECT_EQ(callsOf(RVOPENGL::blendingOn), (Calls{{"glEnable", GL_BLEND}}));

#include "ravolt/testing/callRecorder.h"

#include <cstddef>

#include <gtest/gtest.h>

namespace ravolt::test {

class Recorder : public CallRecorder {
  public:
    static Recorder &instance();

    // Ends these failures and the simulated clock, too.
    void reset();

    // Simulated failures of the heap: malloc, calloc, realloc and nothrow new, called from the
    // program's own code, return NULL (and plain new throws) for requests of at least `bytes`
    // bytes, after the first `after` of them. Ends with allocationsWork() or reset().
    void failAllocation(std::size_t bytes, unsigned int after = 0, unsigned int times = ~0u);
    void allocationsWork();
    // Number of allocations (malloc family and new) of the program's own code since the start of
    // the process; the recorder's own are counted too, so count while it does not record.
    unsigned long allocations() const;

    // A simulated clock, which only advanceClock() advances. Frames of no length count as a second.
    // Ends with reset().
    void stopClock();
    void advanceClock(double seconds);

  private:
    Recorder() = default;
};

// Resets the recorder after each test.
class RecorderTest : public testing::Test {
  protected:
    Recorder &recorder = Recorder::instance();
    void TearDown() override { recorder.reset(); }
};

// As above, for tests that need no display: no real function is called.
class SilentTest : public RecorderTest {
  protected:
    void SetUp() override { recorder.silent(); }
};

} // namespace ravolt::test
