// Loads the animals, and moves each along its circle as fast as its clips do at their weights.

#include "examples/world/herd.h"

#include "examples/walker.h"

#include <ravolt.h>
#include <ravolt/kit/clipPlayer.h>

#include <cmath>

namespace world {

namespace {

constexpr float walkPace = 0.335f,
                runPace = 1.25f; // metres a second in the clips, so no foot slides
constexpr float walkSpeed = 1.8f, runSpeed = 1.4f;     // of the clips
constexpr float fade = 0.7f, period = 11, running = 5; // seconds

} // namespace

struct Herd::Animal {
    RVNODE *middle = nullptr;    // of its circle
    float radius, angle, offset; // metres, degrees, seconds by which its gait is ahead
    bool runs = false;
    std::unique_ptr<ravolt::kit::ClipPlayer> player;

    void setGait(RVANIM *clip, float speed) {
        ravolt::kit::ClipOptions options;
        options.speed = speed;
        options.fade = fade;
        player->play(clip, options);
    }
};

Herd::Herd() = default;
Herd::~Herd() = default;

bool Herd::load(const std::string &folder, RVNODE *parent) {
    walk = new RVANIM();
    run = new RVANIM();
    walk->setTranslating(true);
    run->setTranslating(true);
    if (!walk->load((folder + "wisent.Wuson_Walk.rva").c_str()) ||
        !run->load((folder + "wisent.Wuson_Run.rva").c_str()))
        return false;
    constexpr float start[][3] = {{4.4f, 150, 0}, {3.2f, 245, 3}, {5.0f, 20, 7}};
    for (const auto &[radius, angle, offset] : start) {
        RVNODE *character = RAVOLT::load((folder + "wisent.rve").c_str());
        if (!character)
            return false;
        animals.push_back(std::make_unique<Animal>());
        Animal &animal = *animals.back();
        animal.radius = radius;
        animal.angle = angle;
        animal.offset = offset;
        animal.middle = new RVNODE();
        animal.middle->setPosition(-1.6f, 0.06f, -1.2f);
        animal.middle->link(parent);
        dressInFur(character);
        character->setPosition(radius, 0.0f, 0.0f);
        character->setRotation(0.0f, 180.0f, 0.0f);
        character->link(animal.middle);
        animal.player = std::make_unique<ravolt::kit::ClipPlayer>(character);
        animal.player->play(walk);
        animal.setGait(walk, walkSpeed);
    }
    advance(0);
    return true;
}

void Herd::advance(float seconds) {
    for (const auto &animal : animals) {
        animal->offset += seconds;
        const bool runs = std::fmod(animal->offset, period) > period - running;
        if (runs != animal->runs)
            runs ? animal->setGait(run, runSpeed) : animal->setGait(walk, walkSpeed);
        animal->runs = runs;
        animal->player->update(seconds);
        const float part = animal->player->getWeight(run);
        const float pace = part * runPace * runSpeed + (1 - part) * walkPace * walkSpeed;
        animal->angle += pace * seconds / animal->radius * 57.29578f;
        animal->middle->setRotation(0.0f, animal->angle, 0.0f);
    }
}

} // namespace world
