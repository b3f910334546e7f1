// Input for 1,000 boxes: the search for the one under the pointer.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVBOX.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVNODE.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

constexpr int boxes = 1000, columns = 40, boxSize = 14, pitch = 16;

int placeX(int number) { return number % columns * pitch; }
int placeY(int number) { return number / columns * pitch; }

// The pointer's way over all boxes.
struct Pointer {
    int x = 0, y = 0;
    void move() {
        x = (x + 7) % bench::windowWidth;
        y = (y + 3) % bench::windowHeight;
    }
};

void dispatchByEngine(benchmark::State &state) {
    bench::stopEngine();
    bench::startEngine(false);
    RVNODE *root = new RVNODE;
    for (int i = 0; i < boxes; ++i) {
        RVBOX *box = new RVBOX;
        box->setCheckStatus(true);
        box->setSizes(boxSize, boxSize);
        box->setPosition(static_cast<float>(placeX(i)), static_cast<float>(placeY(i)));
        box->link(root);
    }
    RAVOLT::begin2D();
    root->pass();
    RAVOLT::end2D();
    Pointer pointer;
    long hits = 0;
    for (auto _ : state) {
        pointer.move();
        unsigned int event = 0;
        hits += RVELEMENT::manageGUIEvents(0, pointer.x, pointer.y, 0, 0, &event);
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits) / state.iterations());
    bench::stopEngine();
}
BENCHMARK(dispatchByEngine)
    ->Name("dispatch over 1,000 boxes/ravolt")
    ->Unit(benchmark::kMicrosecond);

// What the search needs of a box, at its distance in memory.
struct PlainBox {
    float x, y, width, height;
    long stamp;
    bool shown, checked;
    char otherFields[sizeof(RVBOX) - 32];
};

void dispatchByHand(benchmark::State &state) {
    std::vector<std::unique_ptr<PlainBox>> list;
    for (int i = 0; i < boxes; ++i)
        list.push_back(std::unique_ptr<PlainBox>(new PlainBox{static_cast<float>(placeX(i)),
                                                              static_cast<float>(placeY(i)),
                                                              boxSize,
                                                              boxSize,
                                                              i + 1,
                                                              true,
                                                              true,
                                                              {}}));
    Pointer pointer;
    long hits = 0;
    for (auto _ : state) {
        pointer.move();
        const float x = static_cast<float>(pointer.x), y = static_cast<float>(pointer.y);
        const PlainBox *hit = nullptr;
        for (const auto &box : list)
            if (box->shown && box->checked && box->x <= x && x <= box->x + box->width &&
                box->y <= y && y <= box->y + box->height && (!hit || box->stamp > hit->stamp))
                hit = box.get();
        hits += hit != nullptr;
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits) / state.iterations());
}
BENCHMARK(dispatchByHand)
    ->Name("dispatch over 1,000 boxes/baseline")
    ->Unit(benchmark::kMicrosecond);

} // namespace
