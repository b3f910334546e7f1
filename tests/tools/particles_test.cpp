// Emitters on a stage.

#include "tests/tools/openStage.h"
#include "tools/stage/particles.h"

#include <cstdlib>
#include <ravolt/RVEMITTER.h>

namespace {

using namespace tool_test;

constexpr WindowSize size = {160, 120};

// An engine with an emitter on its stage; the file has those elements.
struct OpenEmitter {
    explicit OpenEmitter(const std::string &elements)
        : engine(size, "test", false, "ravolt_log.txt"), emitter(load(engine, elements)),
          stage(emitter->getParent()) {
        stage.setSphere(sphereAround(*emitter));
    }
    ~OpenEmitter() { RAVOLT::setFrameDuration(0); }

    static RVEMITTER *load(Engine &engine, const std::string &elements) {
        writeFile("emitter.xml", "<emitter>" + elements + "</emitter>");
        std::srand(1);
        return engine.loadEmitter("emitter.xml");
    }

    Picture shoot() { return ravolt::tool::shoot(stage, size); }

    Engine engine;
    RVEMITTER *emitter;
    Stage stage;
};

constexpr const char *cloud = "<maxParticleSize value='20'/><colorStart x='1' y='1' z='1'/>"
                              "<nbOfParticles value='200'/>";

TEST(ParticlesTest, MoveOnlyWhenTheyAreTold) {
    OpenEmitter open(cloud);
    moveParticles(open.stage, 0.5);
    const Picture first = open.shoot();
    EXPECT_EQ(differences(first, open.shoot()), 0u);
    EXPECT_GT(coverage(first), 0.05);
    moveParticles(open.stage, 0.2);
    EXPECT_GT(differences(first, open.shoot(), 20), 500u);
}

TEST(ParticlesTest, FitIntoThePicture) {
    for (const std::string elements :
         {"<maxVelocity value='300'/>", "<maxVelocity value='2'/><maxParticleSize value='900'/>",
          "<type value='1'/><maxVelocity value='5'/><emitterSize x='3' y='40'/>",
          "<type value='2'/><radius value='70'/><maxVelocity value='9'/>",
          "<center x='500' y='-20' z='0'/>"}) {
        OpenEmitter open(elements + cloud);
        moveParticles(open.stage, fullAfter(*open.emitter));
        const Picture picture = open.shoot();
        int left = picture.getWidth(), right = 0, atTheRim = 0;
        for (int y = 0; y < picture.getHeight(); ++y)
            for (int x = 0; x < picture.getWidth(); ++x) {
                const auto [r, g, b] = colorAt(picture, (x + 0.5) / picture.getWidth(),
                                               (y + 0.5) / picture.getHeight());
                if (Stage::isBackground(r, g, b))
                    continue;
                left = std::min(left, x);
                right = std::max(right, x);
                atTheRim += y == 0 || y == picture.getHeight() - 1;
            }
        EXPECT_GT(right - left, picture.getWidth() / 4) << elements;
        EXPECT_LT(atTheRim, 80) << elements; // of 320: rare particles fly far
    }
}

TEST(ParticlesTest, GroundIsBelowTheFire) {
    OpenEmitter open("<type value='2'/><radius value='1'/><maxVelocity value='3'/>"
                     "<maxEnergy value='100'/><center x='7' y='20' z='-4'/>");
    const Sphere sphere = sphereAround(*open.emitter);
    EXPECT_GT(sphere.radius, 0.5);
    EXPECT_LE(sphere.lowest, 20);
    EXPECT_GT(sphere.lowest, 20 - sphere.radius);
    EXPECT_NEAR(sphere.center.x, 7, sphere.radius / 4);
    EXPECT_NEAR(sphere.center.z, -4, sphere.radius / 4);
    EXPECT_EQ(fullAfter(*open.emitter), 2);
}

} // namespace
