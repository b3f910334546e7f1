// A character that walks: a clip moves its bones, the GPU skins its mesh, and it casts a shadow.

#include "common.h"
#include "stage.h"
#include "walker.h"

#include <ravolt.h>

int main(int argc, char **argv) {
    Example example(argc, argv, {"STAGE.rve", "CHARACTER.rve", "CLIP.rva"});
    if (!openStage("Ravolt: character", example.files[0], example.width))
        return 1;
    RVNODE *stage = loadStage(example.files[0]);
    Walker walker(example.files[1], example.files[2]);
    if (!stage || !walker.isReady()) {
        RAVOLT::free();
        return 1;
    }
    RVLIGHT *spot = makeSpot();
    RVCAMERA *camera = makeCamera();
    RAVOLT::shadowingOn();

    do {
        walker.advance(example.seconds());
        drawFrame(camera, {spot, stage, walker.getNode()});
    } while (example.next());

    RAVOLT::free();
    return 0;
}
