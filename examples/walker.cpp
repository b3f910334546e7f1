#include "walker.h"

#include <ravolt.h>

namespace {

constexpr float framesPerSecond = 30; // as the converter samples clips
constexpr float radius = 3.65f;       // metres
constexpr float pace = 0.335f;        // metres per second, so that no foot slides
constexpr float start = 135, turn = pace / radius * 180 / 3.1415927f; // degrees, per second

} // namespace

Walker::Walker(const char *scene, const char *clipFile)
    : middle(new RVNODE()), character(RAVOLT::load(scene)), clip(new RVANIM()) {
    hasClip = clip->load(clipFile) && clip->getNumberOfFrames() > 0;
    clip->setTranslating(true); // the bones' places too, not their rotations alone
    if (!isReady())
        return;
    character->setPosition(radius, 0.0f, 0.0f);
    character->setRotation(0.0f, 180.0f, 0.0f);
    character->link(middle);
    middle->setPosition(0.6f, 0.0f, -0.4f);
    advance(0);
}

bool Walker::isReady() const { return character && hasClip; }

// The clip loops: its last frame equals the first one and would be shown twice.
unsigned int Walker::period() const {
    const unsigned int frames = clip->getNumberOfFrames();
    return frames > 1 ? frames - 1 : 1;
}

// A clip has no clock: the frame is the application's choice.
void Walker::advance(float seconds) {
    time += seconds;
    clip->apply(static_cast<unsigned int>(time * framesPerSecond) % period(), character);
    middle->setRotation(0.0f, start + turn * time, 0.0f);
}
