// Loads the character and its clip, and advances both along a circle.

#include "walker.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <cmath>
#include <random>

namespace {

constexpr float radius = 3.65f; // metres
constexpr float pace = 0.335f;  // metres per second, so that no foot slides
constexpr float start = 135, turn = pace / radius * 180 / 3.1415927f; // degrees, per second

// Brown hair that hangs down: strands of different tones and lengths, darker in some patches.
RVTEXTURE *makeFur() {
    constexpr unsigned int size = 256;
    RVTEXTURE *fur = new RVTEXTURE();
    fur->create(size, size, 3);
    std::minstd_rand dice(1);
    const auto roll = [&] { return static_cast<float>(dice() % 1000) / 1000; };
    for (unsigned int x = 0; x < size; ++x) {
        float tone = 0.6f, goal = 0.6f;
        for (unsigned int y = 0; y < size; ++y) {
            if (roll() < 0.4f) // the next strand
                goal = 0.46f + 0.3f * roll();
            tone += 0.5f * (goal - tone);
            const float patch = 0.9f + 0.1f * std::sin(0.049f * static_cast<float>(x)) *
                                           std::sin(0.0737f * static_cast<float>(y));
            unsigned char *pixel = fur->getBitmap() + 3 * (y * size + x);
            pixel[0] = static_cast<unsigned char>(148 * tone * patch);
            pixel[1] = static_cast<unsigned char>(104 * tone * patch);
            pixel[2] = static_cast<unsigned char>(70 * tone * patch);
        }
    }
    fur->update();
    return fur;
}

void dressWith(RVNODE *node, RVTEXTURE *fur) {
    RVMESH *mesh = node->getType() == RV_NODE_TYPE_MESH ? static_cast<RVMESH *>(node) : nullptr;
    if (mesh && mesh->getMaterial() && !mesh->getMaterial()->isTextured()) {
        mesh->getMaterial()->setTexture(0, fur);
        mesh->getMaterial()->setAmbient(1.0f, 1.0f, 1.0f, 1.0f);
        mesh->getMaterial()->setDiffuse(1.0f, 1.0f, 1.0f, 1.0f);
        mesh->getMaterial()->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    }
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        dressWith(node->getChild(i), fur);
}

} // namespace

void dressInFur(RVNODE *character) { dressWith(character, makeFur()); }

Walker::Walker(const char *scene, const char *clipFile)
    : middle(new RVNODE()), character(RAVOLT::load(scene)) {
    RVANIM *clip = new RVANIM();
    clip->setTranslating(true); // the bones' positions too, not only their rotations
    if (!clip->load(clipFile) || !character)
        return;
    dressInFur(character);
    character->setPosition(radius, 0.0f, 0.0f);
    character->setRotation(0.0f, 180.0f, 0.0f);
    character->link(middle);
    middle->setPosition(0.6f, 0.0f, -0.4f);
    player = std::make_unique<ravolt::kit::ClipPlayer>(character);
    player->play(clip);
    advance(0);
}

Walker::~Walker() = default;

bool Walker::isReady() const { return player != nullptr; }

void Walker::advance(float seconds) {
    time += seconds;
    player->update(seconds);
    middle->setRotation(0.0f, start + turn * time, 0.0f);
}
