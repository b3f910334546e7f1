#pragma once

// Textures in front of a silent driver: what the tests of their calls share.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace ravolt::test {

class TextureCalls : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        usedBefore = RVTEXTURE::getUsedMemory();
    }
    void TearDown() override {
        RAVOLT::popVideoMemory(charged);
        SilentEngineTest::TearDown();
    }

    // A texture from a file of its own, with a reference, of one level.
    RVTEXTURE *makeTexture(const std::string &name, unsigned int size = 4) {
        writeFile(name, plainTga(size, size));
        RVTEXTURE *texture = new RVTEXTURE;
        EXPECT_TRUE(texture->load(name.c_str()));
        texture->setFilter(true, false, false);
        texture->incReferences();
        return texture;
    }

    Calls renderCalls(RVTEXTURE *texture, unsigned int unit = 0) {
        return callsOf([&] { EXPECT_TRUE(texture->render(&unit)); });
    }

    void renderAt(RVTEXTURE *texture, long stamp) {
        while (RAVOLT::getTimeStamp() < stamp)
            RAVOLT::begin3D(nullptr);
        EXPECT_TRUE(texture->render(nullptr));
    }

    // Charges the video memory until so many bytes are free.
    void leaveFree(unsigned int bytes) {
        const unsigned int charge = RAVOLT::getFreeVideoMemory() - bytes;
        RAVOLT::pushVideoMemory(charge);
        charged += charge;
    }

    // Ends the simulated failure, and corrects the number of live blocks, which counts the failed
    // call.
    void allocationsWork() {
        recorder.allocationsWork();
        zlfFree(nullptr);
    }

    int usedMain() const { return RVTEXTURE::getUsedMemory() - usedBefore; }

    int usedBefore = 0;
    unsigned int charged = 0;
};

} // namespace ravolt::test
