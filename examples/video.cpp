// A video on a screen: MPEG-1 or MPEG-2 video, decoded into the texture of a mesh.

#include "cinema.h"
#include "common.h"
#include "stage.h"

#include <ravolt.h>

int main(int argc, char **argv) {
    Example example(argc, argv, {"STAGE.rve", "VIDEO.m2v"});
    if (!openStage("Ravolt: video", example.files[0], example.width))
        return 1;
    RVNODE *stage = loadStage(example.files[0]);
    if (!stage) {
        RAVOLT::free();
        return 1;
    }
    Cinema cinema(example.files[1]);
    cinema.showOn(stage, "screen");
    RVLIGHT *spot = makeSpot();
    RVCAMERA *camera = makeCamera();

    do {
        cinema.advance(example.seconds());
        drawFrame(camera, {spot, stage});
    } while (example.next());

    RAVOLT::free();
    return 0;
}
