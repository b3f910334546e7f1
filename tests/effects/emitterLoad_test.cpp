// Emitter files: the effect of each element on an emitter, and its texture.

#include "tests/effects/emitterAccess.h"
#include "tests/resources/tgaFiles.h"

#include "ravolt/RVTEXTURE.h"

#include <string>

using namespace ravolt::test;

namespace {

class EmitterLoad : public EmitterTest {
  protected:
    void SetUp() override {
        EmitterTest::SetUp();
        writeFile("spark_d.tga", plainTga(4, 2));
        RVTEXTURE::setPath("");
    }
    void TearDown() override {
        RVTEXTURE::setPath("");
        EmitterTest::TearDown();
    }

    bool load(const std::string &elements) {
        writeFile("emitter.xml", "<?xml version=\"1.0\"?>\n<emitter>" + elements + "</emitter>\n");
        return emitter->load("emitter.xml");
    }
};

TEST_F(EmitterLoad, EveryElementHasItsEffect) {
    emitter->setCenter(Z3MVECTOR3D(9, 9, 9));
    ASSERT_TRUE(
        load("<type value='2'/><texture value='spark_d.tga'/><maxEnergy value='321'/>"
             "<maxVelocity value='12'/><maxAngle value='1.5'/><emitterSize x='2.5' y='3.5'/>"
             "<radius value='4.5'/><maxParticleSize value='34'/><maxSpin value='56'/>"
             "<spinning value='7.5'/><center x='1' y='2' z='3'/><gravity x='4' y='5' z='6'/>"
             "<rotation x='10' y='20' z='30'/><upVector x='0.5' y='-1' z='2'/>"
             "<colorStart x='0.25' y='0.5' z='1'/><colorEnd x='1' y='0.5' z='0.25'/>"
             "<blendingSrc value='1'/><blendingDst value='769'/>"
             "<nbOfParticles value='11'/>"));
    EXPECT_EQ(emitter->getNumberOfParticles(), 11u);
    EXPECT_EQ(numbersOf(*emitter), numbers(2, 321, 12, 34, 56, 1, 769, 1.5, 7.5, 2.5, 3.5, 4.5));
    EXPECT_TRUE(emitter->getPosition() == Z3MVECTOR3D(1, 2, 3)) << "the node's";
    EXPECT_TRUE(emitter->getCenter() == Z3MVECTOR3D(9, 9, 9));
    EXPECT_TRUE(emitter->getGravity() == Z3MVECTOR3D(4, 5, 6));
    EXPECT_TRUE(emitter->getRotation() == Z3MVECTOR3D(10, 20, 30));
    EXPECT_TRUE(emitter->getUpVector() == Z3MVECTOR3D(0.5, -1, 2));
    EXPECT_TRUE(emitter->getColorStart() == Z3MVECTOR3D(0.25, 0.5, 1));
    EXPECT_TRUE(emitter->getColorEnd() == Z3MVECTOR3D(1, 0.5, 0.25));

    RVTEXTURE *texture = emitter->getTexture();
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->getSizeX(), 4u);
    EXPECT_STREQ(texture->getFilename(), "spark_d.tga");
    EXPECT_EQ(texture->getReferences(), 0);
    EXPECT_FALSE(texture->isLoaded());
    recordRender();
    EXPECT_TRUE(texture->isLoaded()) << "uploaded when it is drawn";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EmitterLoad, ParticlesAreBornWithTheValuesReadSoFar) {
    ASSERT_TRUE(load("<maxEnergy value='1'/><nbOfParticles value='2'/><maxEnergy value='500'/>"
                     "<nbOfParticles value='300'/>"));
    EXPECT_EQ(particleOf(*emitter, 0).energy, 0);
    EXPECT_EQ(particleOf(*emitter, 1).energy, 0);
    float highest = 0;
    for (unsigned int index = 2; index < 300; ++index)
        highest = std::max(highest, particleOf(*emitter, index).energy);
    EXPECT_GT(highest, 1.0f);
}

TEST_F(EmitterLoad, ColorsAreFollowedByTheirDifference) {
    recorder.stopClock();
    ASSERT_TRUE(load("<colorStart x='1' y='1' z='1'/><colorEnd x='0' y='0' z='0'/>"
                     "<nbOfParticles value='1'/>"));
    particleOf(*emitter, 0).startEnergy = 4;
    particleOf(*emitter, 0).energy = 1;
    emitter->setTexture(nullptr);
    recordRender();
    EXPECT_EQ(colorBytes()[0], 63);
}

TEST_F(EmitterLoad, FileWithoutBlendingSetsTheConstructors) {
    emitter->setBlendingSrc(GL_ONE);
    emitter->setBlendingDst(GL_ONE);
    ASSERT_TRUE(load("<blendingSrc value='0'/>"));
    EXPECT_EQ(emitter->getBlendingSrc(), unsigned(GL_ZERO));
    EXPECT_EQ(emitter->getBlendingDst(), unsigned(GL_ONE_MINUS_SRC_ALPHA));
    ASSERT_TRUE(load(""));
    EXPECT_EQ(emitter->getBlendingSrc(), unsigned(GL_SRC_ALPHA));
}

TEST_F(EmitterLoad, LimitsOfZeroAreStoredAndCountAsOne) {
    ASSERT_TRUE(load("<maxEnergy value='0'/><maxVelocity value='0'/><maxParticleSize value='0'/>"
                     "<maxSpin value='0'/><nbOfParticles value='2'/>"));
    EXPECT_EQ(numbersOf(*emitter),
              numbers(0, 0, 0, 0, 0, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, 0, 0, 10, 10, 10));
    const RVPARTICLE &p = particleOf(*emitter, 1);
    EXPECT_EQ(p.energy, 0);
    EXPECT_EQ(p.size, 0);
    EXPECT_TRUE(p.velocity == Z3MVECTOR3D());
    EXPECT_LOGGED_EXACTLY(
        "   [!] Maximum energy for particles too low @ RVEMITTER::initialize()\n");
}

TEST_F(EmitterLoad, NegativeAndHugeNumbersAreHarmless) {
    recorder.stopClock();
    ASSERT_TRUE(load("<maxEnergy value='-7'/><maxVelocity value='99999999999999999999'/>"
                     "<maxParticleSize value='-1'/><maxSpin value='-1'/><radius value='1e999'/>"
                     "<type value='2'/><nbOfParticles value='-5'/><nbOfParticles value='20'/>"));
    EXPECT_EQ(emitter->getNumberOfParticles(), 20u);
    emitter->setTexture(nullptr);
    recordRender();
}

TEST_F(EmitterLoad, AnyFormerTextureIsReplaced) {
    emitter->setTexture(new RVTEXTURE);
    ASSERT_TRUE(load(""));
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 15u) << "14 of the render targets, and a new one";
    const unsigned int first = emitter->getTexture()->getId();
    ASSERT_TRUE(load(""));
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 15u);
    EXPECT_EQ(emitter->getTexture()->getId(), first) << "of the deleted one";
}

TEST_F(EmitterLoad, TextureIsFoundInItsPath) {
    RVTEXTURE::setPath("./");
    ASSERT_TRUE(load("<texture value='spark_d.tga'/>"));
    EXPECT_EQ(emitter->getTexture()->getSizeY(), 2u);
    RVTEXTURE::setPath("elsewhere/");
    ASSERT_TRUE(load("<texture value='spark_d.tga'/>")) << "a failure is not reported";
    EXPECT_LOGGED_EXACTLY("   spark_d.tga unloaded\n   [!] Unable to open file "
                          "elsewhere/spark_d.tga @ RVTEXTURE::loadTGA\n");
}

TEST_F(EmitterLoad, RefusedFilesHaveNoParticlesAndANewTexture) {
    std::string deep;
    for (int level = 0; level < 100000; ++level)
        deep += "<a>";
    writeFile("deep.xml", "<emitter>" + deep);
    writeFile("other.xml", "<root><emitter/></root>");
    for (const std::string name : {"none.xml", "other.xml", "deep.xml"}) {
        emitter->setNumberOfParticles(5);
        emitter->setBlendingSrc(GL_ONE);
        EXPECT_FALSE(emitter->load(name.c_str()));
        EXPECT_LOGGED_EXACTLY("   [!] Error while loading XML file: " + name +
                              " @ RVEMITTER::load\n");
        EXPECT_EQ(emitter->getNumberOfParticles(), 0u);
        EXPECT_NE(emitter->getTexture(), nullptr);
        EXPECT_EQ(emitter->getBlendingSrc(), unsigned(GL_ONE));
    }
}

TEST_F(EmitterLoad, NullOrNoMemoryForTheTextureIsRefused) {
    emitter->setNumberOfParticles(5);
    EXPECT_FALSE(emitter->load(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVEMITTER::load\n");
    EXPECT_EQ(emitter->getNumberOfParticles(), 5u);
    EXPECT_EQ(emitter->getTexture(), nullptr);
    recorder.failAllocation(sizeof(RVTEXTURE), 0, 1);
    EXPECT_FALSE(emitter->load("emitter.xml"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVEMITTER::load\n");
    EXPECT_EQ(emitter->getTexture(), nullptr);
}

TEST_F(EmitterLoad, DocumentedExampleLoads) {
    const std::string text = readText(RAVOLT_SOURCE "/docs/formats.md");
    const std::size_t start = text.find("```xml\n<?xml version=\"1.0\"?>\n<emitter>");
    ASSERT_NE(start, std::string::npos);
    writeFile("example.xml", text.substr(start + 7, text.find("```", start + 3) - start - 7));
    ASSERT_TRUE(emitter->load("example.xml"));
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(emitter->getNumberOfParticles(), 400u);
    EXPECT_EQ(emitter->getEmitterType(), 2);
    EXPECT_EQ(emitter->getBlendingDst(), unsigned(GL_ONE));
}

} // namespace
