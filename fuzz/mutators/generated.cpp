// The mutator of binary formats: now and then it replaces the input by a small valid file, and else
// mutates its bytes. Compiled for each of these formats, whose generator is RAVOLT_FUZZ_GENERATOR.

#include "fuzz/support/randomFiles.h"

#include <algorithm>
#include <cstddef>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
    constexpr unsigned int period = 8;
    if (seed % period != 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    const auto file = ravolt::fuzz::RAVOLT_FUZZ_GENERATOR(seed / period);
    if (file.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::copy(file.begin(), file.end(), data);
    return seed % (2 * period) ? LLVMFuzzerMutate(data, file.size(), maxSize) : file.size();
}
