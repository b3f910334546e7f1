// A small game on the kit: one walks over an island with w, a, s, d and the mouse, an animal runs
// beside, a click names what is under the pointer, P takes a screenshot, and Alt and Enter switch
// to the full screen and back. It runs in a folder with game.xml, font.tga, font.txt, island/ (from
// `ravolt terrain --island 7`), and truck.rve, wisent.rve and its clips (from `ravolt convert`).
// With a number as its argument it ends after so many frames.

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using namespace ravolt::kit;
using Point = Z3MVECTOR3D;
const Point start(162.7f, 6.53f, 105), truckAt(163.6f, 6.53f, 115.7f), sunAt(60, 260, 20);

// Terrain, sky, water and sun. What is made with new is owned by the engine.
struct Land {
    RVTERRAIN *terrain = new RVTERRAIN();
    RVLIGHT *sun = new RVLIGHT();
    TerrainHeights heights;

    bool load() {
        RVLIGHT::markersOff();
        sun->setPosition(sunAt);
        sun->setDiffuse(1, 0.96f, 0.85f, 1);
        sun->setAmbient(0.12f, 0.14f, 0.18f, 1);
        return terrain->load("island/terrain.xml") && heights.load("island/terrain.geo");
    }
};

// Follows a point on the ground. Its walk fades into a run, and the run into a walk, by its speed.
struct Animal {
    bool load() {
        node = RAVOLT::load("wisent.rve");
        walk->setTranslating(true);
        run->setTranslating(true);
        player = std::make_unique<ClipPlayer>(node);
        return node && walk->load("wisent.Wuson_Walk.rva") && run->load("wisent.Wuson_Run.rva");
    }

    void follow(const Point &goal, const TerrainHeights &heights, float seconds) {
        const float dx = goal.x - at.x, dz = goal.z - at.z, distance = std::hypot(dx, dz) + 0.01f;
        speed.setTarget(std::clamp(1.2 * (distance - 1), 0.0, 6.0)); // units per second
        const float part = static_cast<float>(speed.advance(seconds)) / distance;
        at += Point(dx * part, 0, dz * part);
        at.y = static_cast<float>(heights.drawnAt(at.x, at.z));
        node->setPosition(at);
        if (distance > 1)
            node->setRotation(0, std::atan2(dx, dz) * 57.29578f, 0);
        animate(static_cast<float>(speed.getValue()), seconds);
    }

    void animate(float unitsPerSecond, float seconds) {
        RVANIM *const gait = unitsPerSecond < 1.5f ? walk : run;
        ClipOptions fading;
        fading.fade = 0.4f; // seconds
        if (player->getClip() != gait)
            player->play(gait, fading);
        player->setSpeed(gait == run ? 1 : unitsPerSecond / 0.34f); // so that no foot slides
        player->update(seconds);
    }

    RVNODE *node = nullptr;
    RVANIM *walk = new RVANIM(), *run = new RVANIM();
    std::unique_ptr<ClipPlayer> player;
    Point at = start + Point(2, 0, 3);
    SmoothedValue speed{0, 3};
};

// Names what was clicked in the window of game.xml.
void describe(const Pick &pick, RVWINDOW *panel, const RVNODE *truck) {
    const char *name = pick.isGround ? "The ground" : pick.node ? "The wisent" : "The sky";
    for (const RVNODE *node = pick.node; node; node = node->getParent())
        if (node == truck)
            name = "The truck";
    panel->clear();
    panel->write("%s\n%.1f m away", name, static_cast<double>(pick.distance));
    panel->format();
    std::fprintf(stderr, "clicked: %s\n", name);
}

} // namespace

int main(int argc, char **argv) {
    RVSETTINGS settings;
    settings.setTitle("Ravolt: game");
    settings.setColorDepth(32);
    settings.setVideoMemory(256); // megabytes for textures
    settings.setMaxAnisotropy(1); // more is slow without a graphics card
    if (!RAVOLT::init(&settings))
        return 1;
    RVOPENGL::setFarPlane(900); // the sky reaches nine tenths as far
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    Land land;
    Animal animal;
    RVNODE *truck = RAVOLT::load("truck.rve"), *interface = RAVOLT::loadXML("game.xml");
    RVTEXTURE::setPath("island/");
    if (!truck || !interface || !animal.load() || !land.load())
        return RAVOLT::free() ? 2 : 1; // the log says why
    truck->setPosition(truckAt);
    auto *panel = static_cast<RVWINDOW *>(interface->findByNameInHierarchy("panel"));
    const auto ground = [&land](double x, double z) { return land.heights.drawnAt(x, z); };
    RVCAMERA *camera = new RVCAMERA();
    WalkCamera walker(ground);
    walker.setOnGround(start.x, start.z);
    walker.setAngles(180, 0);
    Picker picker;
    picker.setGround(ground);
    Input input;
    Window window;
    const auto toWindow = [&window](const SDL_Event &event) { return window.handle(event); };
    int frames = argc > 1 ? std::atoi(argv[1]) : -1;

    while (input.poll(toWindow) && !input.wasKeyPressed(SDLK_ESCAPE) && frames--) {
        const float seconds = RAVOLT::getFPSfactor();
        walker.handle(input);
        walker.update(seconds);
        walker.apply(*camera);
        const Point ahead = walker.getForward() * 4, right = ahead ^ Point(0, 0.5f, 0);
        animal.follow(walker.getPosition() + ahead + right, land.heights, seconds);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        land.sun->pass(true);
        land.terrain->pass(true);
        truck->pass(true);
        animal.node->pass(true);
        RAVOLT::end3D(true);
        const Pixel pointer = input.getWindowPointer();
        if (input.wasButtonPressed() && !input.isOnWidget())
            describe(picker.pick(pointer.x, pointer.y), panel, truck);

        RAVOLT::begin2D();
        interface->pass(true);
        RAVOLT::end2D();
        input.manageGUI();
        Screenshot picture;
        if (input.wasKeyPressed(SDLK_p) && picture.take())
            picture.save("game.png");
        RAVOLT::swap();
    }
    return RAVOLT::free() ? 0 : 1;
}
