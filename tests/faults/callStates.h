#pragma once

// The states of the engine in which a table of functions is called, and what is expected after the
// calls: nothing is left of the objects.

#include "ravolt.h"
#include "tests/engine/resetEffects.h"
#include "tests/faults/calls.h"
#include "tests/faults/world.h"
#include "tests/support/engineFixture.h"

#include <ostream>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace ravolt::test {

enum class EngineState { neverStarted, running, onOldDriver, withoutPrograms, afterFree };

inline const char *nameOf(EngineState state) {
    constexpr const char *names[] = {"NeverStarted", "Running", "OnOldDriver", "WithoutPrograms",
                                     "AfterFree"};
    return names[static_cast<int>(state)];
}
inline void PrintTo(EngineState state, std::ostream *out) { *out << nameOf(state); }

inline std::string classOf(const std::string &function) {
    const std::size_t end = function.find("::");
    return end > function.find('(') ? "functions" : function.substr(0, end);
}

inline std::vector<std::string> classesOf(const std::vector<Row> &rows) {
    std::set<std::string> names;
    for (const Row &row : rows)
        names.insert(classOf(row.name));
    return {names.begin(), names.end()};
}

// A state of the engine, and the class whose functions are called in it.
class CallsInStates : public testing::TestWithParam<std::tuple<EngineState, std::string>> {
  protected:
    void SetUp() override {
        writeWorldFiles();
        zlfSetConsoleEcho(false);
        if (state() == EngineState::onOldDriver)
            recorder.setExtensions("");
        recorder.silent();
        settings.setShaders(state() != EngineState::withoutPrograms);
        if (state() == EngineState::afterFree) {
            RAVOLT::init(&settings);
            RAVOLT::free();
        }
    }
    void TearDown() override {
        resetEffects();
        recorder.reset();
        zlfSetConsoleEcho(true);
    }

    static EngineState state() { return std::get<0>(GetParam()); }
    static bool isTested(const Row &row) { return classOf(row.name) == std::get<1>(GetParam()); }
    static bool runs() {
        return state() != EngineState::neverStarted && state() != EngineState::afterFree;
    }

    void begin() {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        if (runs()) {
            ASSERT_TRUE(RAVOLT::init(&settings));
        }
        allEffectsOn();
    }
    // The destructor of a video does not close its file.
    static void end() {
        for (RVVIDEO *video = RVVIDEO::getFirst(); video; video = video->getNext())
            video->load(nullptr);
        RAVOLT::free();
        deleteObjects();
        zlfOpenLog("ravolt_log.txt"); // where it was closed
        expectNothingLeft();
    }

    // Of an engine that does not run.
    static void deleteObjects() {
        RVFONT::cleanUp();
        RVNODE::cleanUp();
        RVFBO::cleanUp();
        RVSHADER::cleanUp();
        RVMATERIAL::cleanUp();
        RVTEXTURE::cleanUp();
        RVANIM::cleanUp();
        RVVIDEO::cleanUp();
    }

    void call(const Row &row) {
        SCOPED_TRACE(row.name);
        Session session(
            row.name, [this] { begin(); }, end);
        row.run(session);
        EXPECT_TRUE(!row.isMember || session.getObjects()) << "no object to call it of";
    }

    Recorder &recorder = Recorder::instance();
    RVSETTINGS settings = smallSettings();
};

inline std::string nameOfCalls(const testing::TestParamInfo<CallsInStates::ParamType> &test) {
    return std::string(nameOf(std::get<0>(test.param))) + "_" + std::get<1>(test.param);
}

} // namespace ravolt::test
