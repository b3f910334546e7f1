// Small files of each format, cut at every length and with every byte changed: the engine loads
// them, or refuses them, as their inspection says. Loaders that are wrapped (loadVerdicts.cpp)
// compare by themselves; scenes and clips are compared likewise where their own tests change them.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/zlf.h"
#include "tests/effects/terrainScene.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tools/common/failure.h"
#include "tools/inspect/files.h"
#include "tools/writers/rvaWriter.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

using namespace ravolt;
using namespace ravolt::test;
using namespace ravolt::tool::inspect;

namespace {

bool accepts(const std::string &file, FileKind kind) {
    try {
        return !inspectFile(file, {kind, {}}).hasErrors();
    } catch (const tool::Failure &) {
        return false;
    }
}

struct Verdicts {
    unsigned int loaded = 0, refused = 0;
};

class VerdictTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        zlfSetConsoleEcho(false);
        RVTEXTURE::setPath(nullptr);
    }
    void TearDown() override {
        zlfSetConsoleEcho(true);
        SilentEngineTest::TearDown();
    }

    // Writes each variant of the file and loads it. Where a load takes long, with fewer values.
    static Verdicts forEachDamage(const std::string &name, const Bytes &whole,
                                  const std::function<bool()> &load, bool isSlow = false) {
        Verdicts verdicts;
        const auto tryBytes = [&](const Bytes &bytes) {
            writeFile(name, bytes);
            ++(load() ? verdicts.loaded : verdicts.refused);
        };
        tryBytes(whole);
        EXPECT_EQ(verdicts.loaded, 1u) << name;
        for (std::size_t size = 0; size < whole.size() && !HasFailure(); ++size) {
            SCOPED_TRACE(testing::Message() << name << " cut to " << size);
            tryBytes(Bytes(whole.begin(), whole.begin() + static_cast<long>(size)));
        }
        for (std::size_t at = 0; at < whole.size() && !HasFailure(); ++at)
            for (const int value :
                 isSlow ? std::vector<int>{255, whole[at] ^ 1}
                        : std::vector<int>{0, 1, 127, 128, 255, whole[at] ^ 1, whole[at] ^ 4}) {
                SCOPED_TRACE(testing::Message() << name << ", byte " << at << " = " << value);
                Bytes bytes = whole;
                bytes[at] = static_cast<unsigned char>(value);
                tryBytes(bytes);
            }
        return verdicts;
    }

    static void expectBoth(const Verdicts &verdicts, unsigned int least) {
        EXPECT_GE(verdicts.loaded, least);
        EXPECT_GE(verdicts.refused, least);
    }
};

Bytes bytesOf(const std::string &text) { return {text.begin(), text.end()}; }

TEST_F(VerdictTest, OfScenes) {
    RveScene scene{{materialNamed("m")}, rootOver({skinnedSquare("s", {"b"}), emptyMesh("b")})};
    expectBoth(forEachDamage(
                   "scene.rve", test::bytesOf(scene),
                   [] {
                       const bool loaded = RAVOLT::load("scene.rve");
                       RVNODE::cleanUp();
                       RVMATERIAL::cleanUp();
                       return loaded;
                   },
                   true),
               300);
}

TEST_F(VerdictTest, OfClips) {
    RvaClip clip;
    clip.bones = {"left", "right"};
    clip.frames.assign(2, std::vector<RvaEntry>(2));
    const WrittenBytes written = encodeRva(clip);
    ASSERT_EQ(written.error, "");
    auto anim = std::make_unique<RVANIM>();
    expectBoth(forEachDamage("clip.rva", written.bytes, [&] { return anim->load("clip.rva"); }),
               100);
}

TEST_F(VerdictTest, OfTextures) {
    Bytes pixels(5 * 3 * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i < 24 ? 7 : i);
    auto *texture = new RVTEXTURE;
    for (const TgaEncoding encoding : {TgaEncoding::uncompressed, TgaEncoding::runLength})
        for (const unsigned int channels : {3u, 4u})
            expectBoth(forEachDamage("picture.tga",
                                     encodeTga({5, 3, channels, true, pixels.data()}, encoding),
                                     [&] { return texture->load("picture.tga"); }),
                       40);
    delete texture;
}

TEST_F(VerdictTest, OfEmitters) {
    const Bytes whole = bytesOf("<?xml version='1.0'?>\n<!-- fire -->\n<emitter>\n<type value='1'/>"
                                "<emitterSize x='1' y=\"2\"/><center x='1' y='2' z='3'/>\n"
                                "<texture value='a&amp;b.tga'/></emitter>\n");
    auto *emitter = new RVEMITTER;
    expectBoth(forEachDamage("fire.xml", whole, [&] { return emitter->load("fire.xml"); }), 300);
}

TEST_F(VerdictTest, OfInterfaces) {
    const Bytes whole = bytesOf("<?xml version='1.0'?>\n<root>\n<font><name value='f'/></font>"
                                "<window><title value='&lt;A'/><usefont ref='f'/>"
                                "<size width='9' height='8'/></window>\n</root>\n");
    expectBoth(forEachDamage("gui.xml", whole,
                             [] {
                                 const bool loaded = RAVOLT::loadXML("gui.xml");
                                 RVNODE::cleanUp();
                                 RVFONT::cleanUp();
                                 return loaded;
                             }),
               300);
}

// Loads the inputs that fuzzing has kept: as they are, without the bytes at the end by which a
// target chooses how to draw, and without as many at the start.
void loadFuzzed(
    const char *target, const char *name, const std::function<void()> &load,
    const std::function<Bytes(Bytes)> &fileOf = [](Bytes input) { return input; }) {
    const auto corpus = std::filesystem::path(RAVOLT_SOURCE "/fuzz/corpus") / target;
    unsigned int number = 0;
    for (const auto &entry : std::filesystem::directory_iterator(corpus)) {
        const Bytes whole = readFile(entry.path().string());
        const auto length = static_cast<long>(whole.size());
        const auto loadPart = [&](long from, long to) {
            SCOPED_TRACE(testing::Message() << entry.path() << " from " << from << " to " << to);
            writeFile(name, fileOf(Bytes(whole.begin() + from, whole.begin() + to)));
            load();
            ++number;
        };
        loadPart(0, length);
        for (long missing = 1; missing <= std::min(2l, length); ++missing) {
            loadPart(0, length - missing);
            loadPart(missing, length);
        }
    }
    EXPECT_GT(number, 4u);
}

TEST_F(VerdictTest, OfFuzzedFiles) {
    loadFuzzed("rve", "fuzzed.rve", [] {
        RAVOLT::load("fuzzed.rve");
        RVNODE::cleanUp();
        RVMATERIAL::cleanUp();
    });
    loadFuzzed("rva", "fuzzed.rva", [] { RVANIM().load("fuzzed.rva"); });
    auto *const texture = new RVTEXTURE;
    loadFuzzed("tga", "fuzzed.tga", [=] { texture->load("fuzzed.tga"); });
    delete texture;
    loadFuzzed("emitter", "fuzzed.xml", [] {
        (new RVEMITTER)->load("fuzzed.xml");
        RVNODE::cleanUp();
    });
    loadFuzzed("interface", "fuzzed.xml", [] {
        RAVOLT::loadXML("fuzzed.xml");
        RVNODE::cleanUp();
        RVFONT::cleanUp();
    });
    auto *const font = new RVFONT;
    loadFuzzed("kerning", "fuzzed.txt", [=] { font->loadKerning("fuzzed.txt"); });
    delete font;
    loadFuzzed("settings", "fuzzed.cfg", [] { RVSETTINGS().load("fuzzed.cfg"); });
    auto *const video = new RVVIDEO;
    loadFuzzed("video", "fuzzed.m2v", [=] {
        video->load("fuzzed.m2v");
        video->load(nullptr); // closes the file
    });
    delete video;
}

// Terrains are deleted after each load, with their skies, their water and the water's textures.
class TerrainVerdictTest : public VerdictTest {
  protected:
    void SetUp() override {
        VerdictTest::SetUp();
        writeTerrainTextures();
        textures = RVTEXTURE::getNumberOfTextures();
    }

    bool load() const {
        auto *terrain = new RVTERRAIN;
        const bool loaded = terrain->load("land.xml");
        RVNODE::cleanUp();
        RVMATERIAL::cleanUp();
        RVTEXTURE *texture = RVTEXTURE::getFirst();
        for (unsigned int kept = 0; kept < textures; ++kept) // those of the engine are first
            texture = texture->getNext();
        while (texture) {
            RVTEXTURE *const next = texture->getNext();
            delete texture;
            texture = next;
        }
        return loaded;
    }

    unsigned int textures = 0;
};

TEST_F(TerrainVerdictTest, OfConfigurations) {
    TerrainFile({.side = 3, .levels = 2}).write();
    const Bytes whole =
        bytesOf("<LAND>\n" + geometryXml + "\n" + waterXml + skyXml + lodXml({"1"}) + "</LAND>\n");
    expectBoth(forEachDamage("land.xml", whole, [this] { return load(); }), 50);
}

TEST_F(TerrainVerdictTest, OfLayers) {
    TerrainFile({.side = 3, .levels = 2}).write();
    const Bytes whole = bytesOf("<LAND>" + layersXml("<SHADER_TYPE>X</SHADER_TYPE>") + "</LAND>");
    expectBoth(forEachDamage("land.xml", whole, [this] { return load(); }), 300);
}

TEST_F(TerrainVerdictTest, OfGeometries) {
    writeTerrainConfig(geometryXml);
    TerrainFile file({.side = 3, .levels = 2});
    expectBoth(forEachDamage(
                   "land.geo", file.bytes, [this] { return load(); }, true),
               300);
}

// In the inputs @ stands for the name of the geometry, and every texture is t.tga.
TEST_F(TerrainVerdictTest, OfFuzzedConfigurations) {
    TerrainFile({.side = 5, .columns = 1, .rows = 2, .levels = 2}).write();
    std::filesystem::copy_file("d1.tga", "t.tga");
    Verdicts verdicts;
    const auto withGeometry = [](Bytes input) {
        Bytes config;
        for (const unsigned char character : input)
            config = config + (character == '@' ? bytesOf("land.geo") : Bytes{character});
        return config;
    };
    loadFuzzed(
        "terrainConfig", "land.xml", [&] { ++(load() ? verdicts.loaded : verdicts.refused); },
        withGeometry);
    expectBoth(verdicts, 3);
}

TEST_F(TerrainVerdictTest, OfFuzzedGeometries) {
    writeTerrainConfig(geometryXml + layersXml() + waterXml + skyXml + lodXml({"9"}));
    Verdicts verdicts;
    loadFuzzed("terrainGeometry", "land.geo",
               [&] { ++(load() ? verdicts.loaded : verdicts.refused); });
    expectBoth(verdicts, 1);
}

TEST_F(VerdictTest, OfKerningFiles) {
    RVFONT font;
    const auto load = [&] {
        const bool loaded = font.loadKerning("kerning.txt");
        EXPECT_EQ(loaded, accepts("kerning.txt", FileKind::kerning));
        return loaded;
    };
    const Verdicts verdicts = forEachDamage(
        "kerning.txt", bytesOf("RAVOLT_kerning_S=4 # S\nRAVOLT_kerning_SPACE=1\r"), load);
    EXPECT_EQ(verdicts.refused, 1u) << "the empty one";
}

// Whatever file there is, the engine takes it as settings and opens it as a video.
TEST_F(VerdictTest, OfSettingsAndVideos) {
    RVSETTINGS read;
    expectBoth(forEachDamage("settings.txt", bytesOf("RAVOLT_windowX=9\nRAVOLT_title=\"A b\"\n"),
                             [&] {
                                 const bool loaded = read.load("settings.txt");
                                 EXPECT_EQ(loaded, accepts("settings.txt", FileKind::settings));
                                 return loaded;
                             }),
               0);
    auto *video = new RVVIDEO;
    const Bytes sequence = {0, 0, 1, 0xb3, 0x01, 0x00, 0x10, 0x13, 0xff, 0xff, 0xe0, 0xa0, 0, 0};
    expectBoth(forEachDamage("video.m2v", sequence, [&] { return video->load("video.m2v"); }), 0);
    EXPECT_FALSE(accepts("none.m2v", FileKind::video));
}

} // namespace
