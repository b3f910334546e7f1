#pragma once

// What the call tests of sky and water share.

#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/resources/programNames.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

#include <string>

namespace ravolt::test {

class SceneryCalls : public SilentEngineTest {
  protected:
    // Resets the caches as the begin of a frame does.
    static void startFrame() {
        RVSHADER::reset();
        RVMATERIAL::reset();
        RVLIGHT::lightingOff();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    }

    // The engine on a driver that lacks this entry point alone.
    void restartWithout(const std::string &entryPoint) {
        recorder.reset();
        recorder.silent();
        recorder.nullEntryPoint(entryPoint);
        ASSERT_TRUE(restart());
    }
};

} // namespace ravolt::test
