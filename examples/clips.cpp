// Clips by time: a character walks, fades into a run after a second, and comes to rest; its tail
// has a clip of its own, and its steps are events.

#include "common.h"
#include "stage.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <string>

int main(int argc, char **argv) {
    Example example(argc, argv, {"STAGE.rve", "CHARACTER.rve", "WALK.rva", "RUN.rva"});
    if (!openStage("Ravolt: clips", example.files[0], example.width))
        return 1;
    RVNODE *stage = loadStage(example.files[0]), *character = RAVOLT::load(example.files[1]);
    RVANIM *walk = new RVANIM(), *run = new RVANIM();
    if (!stage || !character || !walk->load(example.files[2]) || !run->load(example.files[3])) {
        RAVOLT::free();
        return 1;
    }
    walk->setTranslating(true); // the bones' positions too, not only their rotations
    run->setTranslating(true);
    RVLIGHT *spot = makeSpot();
    RVCAMERA *camera = makeCamera();
    camera->setPosition(4.0f, 2.2f, 4.0f);
    RAVOLT::shadowingOn();

    ravolt::kit::ClipPlayer player(character);
    RVNODE *tail = character->findByNameInHierarchy("Tail01");
    const std::size_t tailLayer = player.addLayer(ravolt::kit::ClipPlayer::bonesFrom(tail));
    int steps = 0;
    for (RVANIM *clip : {walk, run})
        for (const float seconds : {0.2f, 0.7f}) // of the clip
            player.addEvent(clip, seconds, "step");
    player.setEventHandler([&steps](const std::string &) { ++steps; });
    player.play(walk);
    player.play(run, {30, -0.5f}, tailLayer); // backwards, at half the speed
    ravolt::kit::Overlay overlay;

    float seconds = 0;
    do {
        if (seconds > 1 && player.getClip() == walk)
            player.play(run, {30, 1, true, 0.5f}); // within half a second
        if (seconds > 4 && player.getWeight(run) == 1)
            player.stop(1);
        player.update(example.seconds());
        seconds += example.seconds();
        drawFrame(camera, {spot, stage, character},
                  [&] { overlay.text(10, 10, std::to_string(steps) + " steps"); });
    } while (example.next());
    RAVOLT::free();
    return 0;
}
