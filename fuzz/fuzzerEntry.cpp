// The entry point of libFuzzer, compiled for each target, whose name is RAVOLT_FUZZ_TARGET.

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    ravolt::fuzz::RAVOLT_FUZZ_TARGET({data, size});
    return 0;
}
