// Making and destroying nodes, and sorting the render list: no picture in it.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVNODE.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int numberOfNodes = 60000;

// A node without an engine: the same size, a name, a number and two links.
struct PlainNode {
    PlainNode *previous = nullptr, *next = nullptr;
    unsigned int id;
    char name[256];
    float transform[sizeof(RVNODE) / sizeof(float) - 70];

    explicit PlainNode(unsigned int number) : id(number), transform{} {
        std::snprintf(name, sizeof name, "[node %u]", number);
    }
};

void nodesByEngine(benchmark::State &state) {
    bench::startEngine(false);
    for (auto _ : state) {
        for (int i = 0; i < numberOfNodes; ++i)
            benchmark::DoNotOptimize(new RVNODE());
        RVNODE::cleanUp();
    }
    state.SetItemsProcessed(state.iterations() * numberOfNodes);
}
BENCHMARK(nodesByEngine)
    ->Name("60,000 nodes made and destroyed/ravolt")
    ->Unit(benchmark::kMillisecond);

void nodesByHand(benchmark::State &state) {
    for (auto _ : state) {
        PlainNode *first = nullptr, *last = nullptr;
        for (int i = 0; i < numberOfNodes; ++i) {
            PlainNode *node = new PlainNode(i + 1);
            node->previous = last;
            (last ? last->next : first) = node;
            last = node;
        }
        while (first) {
            PlainNode *next = first->next;
            delete first;
            first = next;
        }
    }
    state.SetItemsProcessed(state.iterations() * numberOfNodes);
}
BENCHMARK(nodesByHand)
    ->Name("60,000 nodes made and destroyed/baseline")
    ->Unit(benchmark::kMillisecond);

// Linked one by one under one parent, then unlinked from the first to the last.
void childrenByEngine(benchmark::State &state) {
    bench::startEngine(false);
    RVNODE *parent = new RVNODE();
    std::vector<RVNODE *> children(numberOfNodes);
    for (RVNODE *&child : children)
        child = new RVNODE();
    for (auto _ : state) {
        for (RVNODE *child : children)
            child->link(parent);
        for (RVNODE *child : children)
            child->unlink();
    }
    state.SetItemsProcessed(state.iterations() * numberOfNodes);
    RVNODE::cleanUp();
}
BENCHMARK(childrenByEngine)
    ->Name("60,000 children linked and unlinked/ravolt")
    ->Unit(benchmark::kMillisecond);

// The sort alone, of 4,096 entries freshly passed: 8 lights, 512 transparent meshes, the rest
// opaque with 16 textures.
void sortByEngine(benchmark::State &state) {
    bench::startEngine(false);
    bench::Scene scene = bench::makeSortScene();
    for (auto _ : state) {
        state.PauseTiming();
        RAVOLT::begin3D(scene.camera);
        scene.root->pass(true);
        state.ResumeTiming();
        RVELEMENT::sort3D();
    }
    state.SetItemsProcessed(state.iterations() * RVELEMENT::getNumberOfPassedElements());
    bench::destroy(scene);
}
BENCHMARK(sortByEngine)->Name("sort of 4,096 entries/ravolt")->Unit(benchmark::kMicrosecond);

void sortByHand(benchmark::State &state) {
    struct Key {
        unsigned int order; // 0 light, 1 opaque, 2 transparent
        unsigned int texture;
        float depth;
    };
    std::vector<Key> keys(4096);
    std::vector<const Key *> list(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = {i < 8 ? 0u : (i % 8 == 0 ? 2u : 1u), static_cast<unsigned int>(i * 7919 % 16),
                   static_cast<float>(i * 104729 % 4096)};
    for (auto _ : state) {
        state.PauseTiming();
        for (std::size_t i = 0; i < keys.size(); ++i)
            list[i] = &keys[i];
        state.ResumeTiming();
        std::sort(list.begin(), list.end(), [](const Key *a, const Key *b) {
            if (a->order != b->order)
                return a->order < b->order;
            return a->order == 2 ? a->depth < b->depth : a->texture < b->texture;
        });
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * keys.size());
}
BENCHMARK(sortByHand)->Name("sort of 4,096 entries/baseline")->Unit(benchmark::kMicrosecond);

} // namespace
