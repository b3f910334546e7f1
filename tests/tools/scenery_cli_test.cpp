// `ravolt shot` of terrains, emitters and interfaces.

#include "tests/support/limitedDriver.h"
#include "tests/tools/cli.h"
#include "tools/convert/images.h"

#include <array>

namespace {

using namespace tool_test;

constexpr const char *emitterText = R"(<emitter>
  <maxEnergy value="90"/><maxVelocity value="5"/><maxParticleSize value="11"/>
  <colorStart x="1" y="0.5" z="0.1"/><colorEnd x="0.6" y="0.1" z="0"/>
  <nbOfParticles value="100"/>
</emitter>)";

// Two boxes at known pixels.
constexpr const char *interfaceText = R"(<root>
  <box><position x="10" y="20"/><size width="30" height="40"/><color r="1" g="0" b="0" a="1"/></box>
  <box><position x="150" y="20"/><size width="50" height="80"/><color r="0" g="0" b="1" a="1"/></box>
</root>)";

std::array<int, 3> colorAt(const Image &image, unsigned int x, unsigned int y) {
    const unsigned char *pixel = &image.pixels[std::size_t(4) * (std::size_t(y) * image.width + x)];
    return {pixel[0], pixel[1], pixel[2]};
}

Image pictureIn(const std::string &file) {
    std::string reason;
    Image image = decodeFile(file, reason);
    EXPECT_EQ(reason, "");
    return image;
}

class Scenery : public testing::Test {
  protected:
    void SetUp() override {
        fs::remove("x.png");
        if (!fs::exists("isle/terrain.xml")) {
            ASSERT_EQ(run("terrain --island 20 -o isle --size 129 --texture-size 64").code, 0);
        }
        writeFile("fire.effect", emitterText);
        writeFile("panel", interfaceText);
    }

    // As bytes of the picture.
    static std::string shot(const std::string &arguments, const std::string &err = "") {
        expectSuccess("shot " + arguments + " -o x.png --size 120x80", err);
        return readText("x.png");
    }

    // A copy of the terrain whose configuration or files a test changes.
    static void copyTerrain() {
        fs::remove_all("other");
        fs::copy("isle", "other");
        std::string config = readText("isle/terrain.xml");
        config.replace(config.find("isle/"), 5, "");
        writeFile("other/terrain.xml", config);
    }
};

TEST_F(Scenery, TerrainsShowLandWaterAndSky) {
    SKIP_ON_LIMITED_DRIVER();
    shot("isle/terrain.xml --yaw 0 --pitch 20");
    const Image picture = pictureIn("x.png");
    const auto [skyRed, skyGreen, skyBlue] = colorAt(picture, 60, 4);
    EXPECT_GT(skyBlue, 180);
    EXPECT_GE(skyBlue, skyRed);
    const auto [landRed, landGreen, landBlue] = colorAt(picture, 60, 42);
    EXPECT_LT(landBlue, 150);
    EXPECT_NE(landRed + landGreen, skyRed + skyGreen);
}

TEST_F(Scenery, TerrainsOfAnAbsoluteFolderAreThoseOfARelativeOne) {
    const std::string folder = (fs::current_path() / "whole").string();
    ASSERT_EQ(run("terrain --island 20 -o " + folder + " --size 129 --texture-size 64 -q").code, 0);
    EXPECT_EQ(shot(folder + "/terrain.xml"), shot("isle/terrain.xml"));
}

TEST_F(Scenery, TerrainsArePicturesOfTheSameBytesWhereverTheToolIsStarted) {
    SKIP_ON_LIMITED_DRIVER();
    const std::string picture = shot("isle/terrain.xml --bloom --tone-mapping");
    EXPECT_EQ(shot("isle/terrain.xml --bloom --tone-mapping"), picture);
    const fs::path folder = fs::current_path();
    fs::current_path("isle");
    EXPECT_EQ(run("shot terrain.xml --bloom --tone-mapping -o ../y.png --size 120x80").code, 0);
    fs::current_path(folder);
    EXPECT_EQ(readText("y.png"), picture);
}

TEST_F(Scenery, TerrainsAreSeenFromTheGivenEye) {
    SKIP_ON_LIMITED_DRIVER();
    const std::string whole = shot("isle/terrain.xml");
    const std::string near = shot("isle/terrain.xml --eye 64,40,120 --target 64,5,64");
    EXPECT_NE(near, whole);
    EXPECT_EQ(shot("isle/terrain.xml --eye 64,40,120 --target 64,5,64"), near);
    EXPECT_NE(shot("isle/terrain.xml --eye 64,40,120 --target 64,5,64 --wireframe"), near);
    EXPECT_NE(shot("isle/terrain.xml --eye 64,40,120 --target 64,5,64 --boxes"), near);
    EXPECT_NE(shot("isle/terrain.xml --eye 64,90,64 --target 64,5,64"), near); // straight down
}

TEST_F(Scenery, TurntablesGoRoundATerrain) {
    SKIP_ON_LIMITED_DRIVER();
    expectSuccess("shot isle/terrain.xml -o turn.png --frames 3 --size 60x40");
    EXPECT_TRUE(isPng("turn_000.png"));
    EXPECT_TRUE(isPng("turn_002.png"));
    EXPECT_FALSE(areEqual("turn_000.png", "turn_001.png"));
}

TEST_F(Scenery, TerrainsWithoutAGroundsTextureAreDrawnWithAWarning) {
    copyTerrain();
    fs::remove("other/grass_d.tga");
    const Outcome result = run("shot other/terrain.xml -o x.png --size 60x40");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(has(result.err, "grass_d.tga: drawn without\n")) << result.err;
    EXPECT_EQ(lines(result.err), 1u);
}

TEST_F(Scenery, BrokenTerrainsAreReportedInOneLine) {
    copyTerrain();
    const std::string shot = "shot other/terrain.xml -o x.png", config = "other/terrain.xml";
    const std::string text = readText(config), geometry = readText("other/terrain.geo");
    fs::remove("other/water_n.tga");
    expectFailure(shot, 1, config + ": Unable to open file ");
    fs::copy("isle/water_n.tga", "other/water_n.tga");
    writeFile("other/terrain.geo", geometry.substr(0, 1000));
    expectFailure(shot, 1, config + ": Corrupted file terrain.geo: ");
    writeFile("other/terrain.geo", "short");
    expectFailure(shot, 1,
                  (fs::current_path() / "other/terrain.geo").string() +
                      ": is no geometry of a terrain\n");
    fs::remove("other/terrain.geo");
    expectFailure(shot, 1, config + ": its geometry terrain.geo is neither below its folder, ");
    writeFile("other/terrain.geo", geometry);
    std::string without = text;
    without.replace(without.find("<LEVEL>"), 7, "<LEVEL></LEVEL><LEVEL>");
    writeFile(config, without);
    expectFailure(shot, 1, config + ": Invalid params in LOD.LEVEL\n");
    writeFile(config, "<a><TERRAIN/></a>");
    expectFailure(shot, 1, config + ": names no geometry\n");
    const std::string absolute = fs::absolute("isle/terrain.geo").string();
    writeFile(config, "<a><GEOMETRY>" + absolute + "</GEOMETRY></a>");
    expectFailure(shot, 1, config + ": File name " + absolute + " leaves its path: refused\n");
}

TEST_F(Scenery, EmittersArePicturesOfTheSameBytesForOneSeed) {
    const std::string picture = shot("fire.effect");
    EXPECT_EQ(shot("fire.effect"), picture);
    EXPECT_EQ(shot("fire.effect --seed 1"), picture);
    EXPECT_NE(shot("fire.effect --seed 2"), picture);
    EXPECT_NE(shot("fire.effect --warm-up 0.3"), picture);
}

TEST_F(Scenery, BrokenEmittersAndInterfacesAreReportedInOneLine) {
    writeFile("fire.effect", "<emitter><type value='1'/>");
    expectFailure("shot fire.effect -o x.png", 1, "fire.effect: Error while loading XML file");
    writeFile("panel", "<root><box></root>");
    expectFailure("shot panel -o x.png", 1, "panel: Unable to open file panel\n");
    writeFile("other.xml", "<a><b/></a>");
    expectFailure("shot other.xml -o x.png", 1, "other.xml: ");
}

TEST_F(Scenery, InterfacesAreDrawnPixelByPixelInAPictureThatFits) {
    expectSuccess("shot panel -o x.png");
    const Image picture = pictureIn("x.png");
    EXPECT_EQ(picture.width, 216u);
    EXPECT_EQ(picture.height, 116u);
    EXPECT_EQ(colorAt(picture, 25, 40), (std::array<int, 3>{255, 0, 0}));
    EXPECT_EQ(colorAt(picture, 175, 60), (std::array<int, 3>{0, 0, 255}));
    EXPECT_EQ(colorAt(picture, 100, 60), colorAt(picture, 2, 2));
    expectSuccess("shot panel -o x.png --size 1300x900");
    const Image large = pictureIn("x.png");
    EXPECT_EQ(large.width, 1300u);
    EXPECT_EQ(colorAt(large, 175, 60), (std::array<int, 3>{0, 0, 255}));
}

TEST_F(Scenery, OnX11ViewersShowEmittersTerrainsAndInterfaces) {
    for (const char *file : {"fire.effect", "isle/terrain.xml", "panel"}) {
        const Outcome shown = run(std::string("view ") + file + " --seconds 0.5 --size 160x120");
        EXPECT_EQ(shown.code, 0) << file;
        EXPECT_EQ(shown.out + shown.err, "") << file;
    }
}

TEST_F(Scenery, OptionsWithoutAMeaningAreRefused) {
    const std::string of = ": has no meaning for ";
    for (const auto &[arguments, start] : std::vector<std::pair<std::string, std::string>>{
             {"isle/terrain.xml --rig 1", "--rig" + of + "a terrain, which isle/terrain.xml is\n"},
             {"isle/terrain.xml --shadows", "--shadows" + of + "a terrain, "},
             {"isle/terrain.xml --seed 1", "--seed" + of + "a terrain, "},
             {"fire.effect --eye 1,2,3", "--eye" + of + "an emitter, which fire.effect is\n"},
             {"fire.effect --boxes", "--boxes" + of + "an emitter, "},
             {"panel --yaw 3", "--yaw" + of + "an interface, which panel is\n"},
             {"panel --bloom", "--bloom" + of + "an interface, "},
             {"isle/terrain.xml --size 5000x10",
              "--size 5000x10: at most 4096 pixels in each direction\n"},
             {"isle/terrain.xml --eye 1,2", "--eye 1,2: expected X,Y,Z, three numbers\n"},
             {"isle/terrain.xml --target 1,2,nan", "--target 1,2,nan: expected X,Y,Z, "},
             {"fire.effect --warm-up 700", ""}})
        expectFailure("shot " + arguments + " -o x.png", 2, start);
}

} // namespace
