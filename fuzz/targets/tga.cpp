// A texture: it is loaded, uploaded, drawn with, evicted and loaded again.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RVTEXTURE.h"

void ravolt::fuzz::tga(Bytes bytes) {
    Input input(bytes);
    const std::uint8_t switches = input.byte();
    const SilentRun run;
    writeFile("i.tga", input.bytes());
    auto *const texture = new RVTEXTURE;
    texture->setFilter(switches & 1, switches & 2, switches & 4);
    if (!texture->load("i.tga"))
        return;
    texture->update();
    texture->setFilter(switches & 8, switches & 16, switches & 32);
    texture->render(nullptr);
    texture->unload(switches & 64);
    texture->reload();
    texture->render(nullptr);
    if (texture->getBitmap())
        texture->modify(reinterpret_cast<const char *>(texture->getBitmap()), switches & 128);
}
