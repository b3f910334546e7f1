// An emitter file: its particles are drawn, by the processor or by the simulated program.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RVEMITTER.h"

void ravolt::fuzz::emitter(Bytes bytes) {
    Input input(bytes);
    const std::uint8_t switches = input.byte();
    const SilentRun run(switches & 1);
    const std::string path = writeFile("i.xml", input.bytes());
    auto *const emitter = new RVEMITTER;
    emitter->load(path.c_str());
    if (switches & 2)
        emitter->load(path.c_str());
    drawFrames(emitter, 2);
}
