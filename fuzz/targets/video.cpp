// A video: it is decoded into a texture, over its end and in both directions of the rows.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"

void ravolt::fuzz::video(Bytes bytes) {
    Input input(bytes);
    const std::uint8_t switches = input.byte();
    const SilentRun run;
    writeFile("i.mpg", input.bytes());
    auto *const texture = new RVTEXTURE;
    texture->setFilter(true, false, true);
    texture->create(switches & 1 ? 64 : 20, switches & 2 ? 64 : 18, switches & 4 ? 4 : 3);
    auto *const video = new RVVIDEO;
    RVVIDEO::setMPGPath(folder().c_str());
    if (video->load("i.mpg")) {
        video->setTexture(texture);
        if (switches & 8)
            video->playLoop();
        else
            video->play();
        if (switches & 16)
            video->flipOn();
        for (unsigned int step = 0; step < 40; ++step)
            video->update(8);
    }
    video->load(nullptr); // closes the file
}
