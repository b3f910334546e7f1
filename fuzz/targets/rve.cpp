// A scene file: its tree is loaded, drawn and picked. The last byte chooses the engine's switches.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVNODE.h"

void ravolt::fuzz::rve(Bytes bytes) {
    Input input(bytes);
    const std::uint8_t switches = input.byte();
    const bool buffers = switches % 16 != 1;
    const SilentRun run(switches & 2, buffers ? nullptr : "GL_ARB_vertex_buffer_object");
    (switches & 4 ? RAVOLT::shadowingOn : RAVOLT::shadowingOff)();
    (switches & 8 ? RAVOLT::confineFilesOn : RAVOLT::confineFilesOff)();
    (switches & 16 ? RAVOLT::bloomingOn : RAVOLT::bloomingOff)();
    writeFile("i.rve", input.bytes());
    if (RVNODE *root = RAVOLT::load("i.rve")) {
        drawFrames(root, 2);
        RAVOLT::select(20, 20);
    }
}
