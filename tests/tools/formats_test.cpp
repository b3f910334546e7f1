// The examples in docs/formats.md, loaded and drawn.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"
#include "tests/tools/cli.h"

#include <sstream>

namespace {

using namespace tool_test;
using namespace ravolt::test;
using tool_test::readText;
using tool_test::writeFile;

// The first block of a language in a section.
std::string example(const std::string &section, const std::string &language) {
    const std::string text = readText(RAVOLT_SOURCE "/docs/formats.md"), fence = "\n```";
    const std::size_t heading = text.find("\n## " + section + "\n");
    std::size_t start = text.find(fence + language + "\n", heading);
    const std::size_t next = text.find("\n## ", heading + 1);
    EXPECT_LT(start, next) << section;
    start += fence.size() + language.size() + 1;
    return text.substr(start, text.find(fence, start) + 1 - start);
}

class Formats : public EngineTest {
  protected:
    Formats() {
        settings.setWindowX(320);
        settings.setWindowY(240);
        settings.setMaxAnisotropy(1);
    }

    void SetUp() override {
        EngineTest::SetUp();
        RVTEXTURE::setPath(nullptr);
        RVFONT::setPath(nullptr);
    }

    void TearDown() override {
        RVTEXTURE::setPath(nullptr);
        EngineTest::TearDown();
    }
};

TEST_F(Formats, InterfaceShowsAWholeScreen) {
    ASSERT_EQ(run("font /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf -q -o font.tga").code, 0);
    writeFile("screen.xml", example("Interface files", "xml"));
    const LogMark mark = markLog();
    RVNODE *root = RAVOLT::load("screen.xml");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{});
    EXPECT_LOGGED("   [XML]  The font is made before it is used. ");
    for (const char *name : {"background", "options", "player", "volume", "done", "music"})
        EXPECT_NE(RVNODE::findByName(name), nullptr) << name;
    auto *player = static_cast<RVTEXTFIELD *>(RVNODE::findByName("player"));
    player->clear();
    for (const char key : std::string("Ada"))
        player->manageKey(key);
    RAVOLT::clear(true, true, false);
    drawFrame2D(root);
    EXPECT_PICTURE(readFrame(), "interface_example",
                   Tolerance{.maximum = 48, .mean = 0.3, .reason = "FreeType's versions, lines"});
}

TEST_F(Formats, KerningFileReadsAsWritten) {
    writeFile("font.txt", example("Kerning files", ""));
    auto *font = new RVFONT;
    ASSERT_TRUE(font->loadKerning("font.txt"));
    const std::pair<char, int> rows[] = {{'D', 4},  {'E', 6}, {'S', 6}, {'i', 12}, {'W', -1},
                                         {' ', 11}, {'#', 3}, {'=', 3}, {'A', 0}};
    for (const auto &[c, expected] : rows)
        EXPECT_EQ(static_cast<signed char>(font->getKerning(c)), expected) << c;
}

TEST_F(Formats, EmitterLoads) {
    writeFile("fire.xml", example("Emitter files", "xml"));
    writeTexture("spark_d.tga", 2, Alphas(16, 255));
    auto *emitter = new RVEMITTER;
    const LogMark mark = markLog();
    EXPECT_TRUE(emitter->load("fire.xml"));
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{});
    EXPECT_EQ(emitter->getNumberOfParticles(), 400u);
}

TEST_F(Formats, TerrainLoadsWithItsGeometry) {
    ASSERT_EQ(run("terrain --island 20 --size 129 --texture-size 64 -q -o island").code, 0);
    std::istringstream bytes(example("Terrain geometry", ""));
    std::string header;
    for (unsigned int byte = 0; bytes >> std::hex >> byte;)
        header += static_cast<char>(byte);
    EXPECT_EQ(header.size(), 24u);
    EXPECT_EQ(header, readText("island/terrain.geo").substr(0, 24));
    writeFile("island/terrain.xml", example("Terrain configuration", "xml"));
    RVTEXTURE::setPath("island/");
    auto *terrain = new RVTERRAIN;
    const LogMark mark = markLog();
    EXPECT_TRUE(terrain->load("island/terrain.xml"));
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{});
    EXPECT_EQ(terrain->getNumberOfChunks(), 4u);
}

} // namespace
