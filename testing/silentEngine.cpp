#include "ravolt/testing/silentEngine.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/testing/callRecorder.h"

namespace ravolt::test {

SilentEngine::SilentEngine() { start(nullptr); }

SilentEngine::SilentEngine(RVSETTINGS &settings) { start(&settings); }

void SilentEngine::start(RVSETTINGS *settings) {
    CallRecorder::instance().silent();
    active = RAVOLT::init(settings);
}

SilentEngine::~SilentEngine() {
    if (active)
        RAVOLT::free();
    CallRecorder::instance().reset();
}

} // namespace ravolt::test
