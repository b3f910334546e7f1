// A video that is drawn in parts, by several runs: the pictures of the parts are those of the
// whole, byte for byte.

#include "tests/support/limitedDriver.h"
#include "tests/tools/cli.h"

#include <string>

namespace {

using namespace tool_test;

std::string numbered(const std::string &stem, int frame) {
    return stem + std::to_string(frame) + ".png";
}

// Draws frames 0 to 4 in one run, and in runs of two and three.
void draw(const std::string &arguments) {
    const std::string shot = "shot " + arguments + " --size 60x40 ";
    expectSuccess(shot + "--frames 0..4 -o whole%d.png");
    expectSuccess(shot + "--frames 0..1 -o part%d.png");
    expectSuccess(shot + "--frames 2..4 --start-number 2 -o part%d.png");
    for (int frame = 0; frame < 5; ++frame)
        EXPECT_TRUE(areEqual(numbered("whole", frame), numbered("part", frame))) << frame;
}

void expectMotion() { EXPECT_FALSE(areEqual("whole0.png", "whole4.png")); }

TEST(VideoParts, OfAClipAreThoseOfTheWhole) {
    SKIP_ON_LIMITED_DRIVER();
    writeMovingSquare("move.x");
    for (const std::string effects :
         {"", "--shadows --floor", "--bloom --depth-of-field", "--tone-mapping --per-pixel"}) {
        SCOPED_TRACE(effects);
        const std::string shot = "shot move.x --clip rise --two-sided --size 60x40 " + effects;
        expectSuccess(shot + " --frames 0..3 -o whole%d.png");
        expectSuccess(shot + " --frames 0..0 -o part%d.png");
        expectSuccess(shot + " --frames 1.. --start-number 1 -o part%d.png");
        for (int frame = 0; frame < 4; ++frame)
            EXPECT_TRUE(areEqual(numbered("whole", frame), numbered("part", frame))) << frame;
        EXPECT_FALSE(areEqual("whole0.png", "whole3.png"));
    }
}

TEST(VideoParts, OfATurnAreThoseOfTheWhole) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    draw("m.obj --turn 5 --two-sided --tone-mapping --exposure 3");
    expectMotion();
    expectSuccess("shot m.obj --two-sided --frames 5 --size 60x40 -o turn%d.png");
    expectSuccess("shot m.obj --two-sided --frames 3..3 --turn 5 --size 60x40 -o one.png");
    EXPECT_TRUE(areEqual("one.png", "turn3.png"));
}

TEST(VideoParts, OfATerrainAreThoseOfTheWhole) {
    SKIP_ON_LIMITED_DRIVER();
    if (!fs::exists("isle/terrain.xml")) {
        ASSERT_EQ(run("terrain --island 20 -o isle --size 129 --texture-size 64").code, 0);
    }
    draw("isle/terrain.xml --eye 64,30,120 --target 64,0,64"); // the waves move
    expectMotion();
    draw("isle/terrain.xml --turn 40 --boxes --tone-mapping");
    expectMotion();
}

TEST(VideoParts, OfAnEmitterAreThoseOfTheWhole) {
    SKIP_ON_LIMITED_DRIVER();
    writeFile("fire.effect", R"(<emitter>
  <maxEnergy value="90"/><maxVelocity value="5"/><maxParticleSize value="11"/>
  <colorStart x="1" y="0.5" z="0.1"/><colorEnd x="0.6" y="0.1" z="0"/>
  <nbOfParticles value="100"/>
</emitter>)");
    draw("fire.effect");
    expectMotion();
    draw("fire.effect --bloom --turn 90 --warm-up 0.2");
    expectMotion();
}

TEST(VideoParts, OfAnInterfaceAreThoseOfTheWhole) {
    writeFile("panel", R"(<root>
  <box><position x="10" y="20"/><size width="30" height="40"/><color r="1" g="0" b="0" a="1"/></box>
</root>)");
    draw("panel");
    expectFailure("shot panel --frames 3 -o x.png", 2,
                  "--frames 3: an interface is flat; state FIRST..LAST\n");
}

} // namespace
