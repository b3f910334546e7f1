// Reading: a scene file of 60,000 triangles, and one key of a large settings file.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/zlf.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

long sizeOf(const std::string &path) { return zlfGetFileSize(path.c_str()); }

void sceneByEngine(benchmark::State &state) {
    bench::startEngine(false);
    const std::string path = bench::writeTriangleScene(60000);
    for (auto _ : state) {
        benchmark::DoNotOptimize(RAVOLT::load(path.c_str()));
        state.PauseTiming();
        RVNODE::cleanUp();
        RVMATERIAL::cleanUp();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * sizeOf(path));
    std::remove(path.c_str());
}
BENCHMARK(sceneByEngine)
    ->Name("scene file of 60,000 triangles/ravolt")
    ->Unit(benchmark::kMicrosecond);

void fileByHand(benchmark::State &state) {
    const std::string path = bench::writeTriangleScene(60000);
    const std::size_t size = sizeOf(path);
    for (auto _ : state) {
        const std::unique_ptr<char, decltype(&std::free)> block(
            static_cast<char *>(std::malloc(size)), std::free);
        std::FILE *file = std::fopen(path.c_str(), "rb");
        if (std::fread(block.get(), 1, size, file) != size)
            state.SkipWithError("short read");
        std::fclose(file);
        benchmark::DoNotOptimize(block.get());
    }
    state.SetBytesProcessed(state.iterations() * size);
    std::remove(path.c_str());
}
BENCHMARK(fileByHand)
    ->Name("scene file of 60,000 triangles/baseline")
    ->Unit(benchmark::kMicrosecond);

// 4 MiB of keys; the one that is searched is the last.
std::string writeKeys() {
    const std::string path = "bench_keys.cfg";
    std::FILE *file = std::fopen(path.c_str(), "wb");
    for (int i = 0; i < 100000; ++i)
        std::fprintf(file, "RAVOLT_some_key_%06d = %d   # a comment\n", i, i);
    std::fprintf(file, "RAVOLT_wanted=42\n");
    std::fclose(file);
    return path;
}

void keyByEngine(benchmark::State &state) {
    const std::string path = writeKeys();
    zlfPARSER parser;
    zlfOpenParser(&parser, path.c_str());
    int value = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(zlfGetInt(&parser, "RAVOLT_wanted", &value));
    if (value != 42)
        state.SkipWithError("wrong value");
    state.SetBytesProcessed(state.iterations() * parser.size);
    zlfCloseParser(&parser);
    std::remove(path.c_str());
}
BENCHMARK(keyByEngine)->Name("zlfGetInt over 4 MiB/ravolt")->Unit(benchmark::kMicrosecond);

void keyByHand(benchmark::State &state) {
    const std::string path = writeKeys();
    zlfPARSER parser;
    zlfOpenParser(&parser, path.c_str());
    const char key[] = "RAVOLT_wanted";
    for (auto _ : state) {
        const char *found =
            static_cast<const char *>(memmem(parser.data, parser.size, key, sizeof key - 1));
        benchmark::DoNotOptimize(std::atoi(found + sizeof key));
    }
    state.SetBytesProcessed(state.iterations() * parser.size);
    zlfCloseParser(&parser);
    std::remove(path.c_str());
}
BENCHMARK(keyByHand)->Name("zlfGetInt over 4 MiB/baseline")->Unit(benchmark::kMicrosecond);

} // namespace
