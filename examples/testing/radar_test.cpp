// Tests the drawing of an application, radar.h, on a machine without a display and without a GPU: a
// frame of the engine is recorded, and its calls of OpenGL are checked. Any test framework will do;
// this test uses none.

#include "radar.h"

#include <ravolt/testing.h>

#include <cstdio>

using namespace ravolt::test;

namespace {

int failures = 0;

void expect(bool passed, const char *what, const std::string &explanation = "") {
    std::printf("%s: %s\n%s", passed ? "passed" : "FAILED", what, explanation.c_str());
    failures += passed ? 0 : 1;
}

// The calls of one frame with a radar that shows these targets.
Calls frameWith(const std::vector<Radar::Target> &targets) {
    Radar *radar = new Radar(); // owned by the engine
    radar->setPosition(100.0f, 50.0f, 0.0f);
    radar->targets = targets;
    return callsOf([&] {
               RAVOLT::clear(true, true, false);
               RAVOLT::begin2D();
               radar->pass();
               CallRecorder::instance().mark("drawing");
               RAVOLT::end2D();
               RAVOLT::swap();
           })
        .since("drawing");
}

void drawsEachTargetInItsColor() {
    const SilentEngine engine;
    const Calls calls = frameWith({{3, 4}, {30, 40}});
    expect(calls.named({"glBegin", "glColor4f", "glVertex2f", "glEnd"}) ==
               Calls{{"glBegin", GL_POINTS},
                     {"glColor4f", 1, 0, 0, 0.5},
                     {"glVertex2f", 3, 4},
                     {"glColor4f", 1, 1, 0, 0.5},
                     {"glVertex2f", 30, 40},
                     {"glEnd"}},
           "a near target is red, the other one yellow", calls.text());
}

void blendsOnlyWhileItDraws() {
    const SilentEngine engine;
    const CheckResult order = frameWith({{3, 4}}).haveInOrder(
        {{"glEnable", GL_BLEND}, {"glBegin", GL_POINTS}, {"glEnd"}, {"glDisable", GL_BLEND}});
    expect(order.passed, "blending is on while it draws and off afterwards", order.explanation);
}

void noTargetIsNoPoint() {
    const SilentEngine engine;
    expect(!frameWith({}).contains("glVertex2f"), "nothing is drawn without targets");
}

void noWindowIsNoEngine() {
    CallRecorder::instance().failSetVideoMode("no such mode");
    const SilentEngine engine;
    expect(!engine.isActive(), "the engine does not start without a window");
}

} // namespace

int main() {
    zlfSetConsoleEcho(false); // the log is in ravolt_log.txt
    drawsEachTargetInItsColor();
    blendsOnlyWhileItDraws();
    noTargetIsNoPoint();
    noWindowIsNoEngine();
    return failures == 0 ? 0 : 1;
}
