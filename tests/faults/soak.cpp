// Runs for a long time, and checks that nothing grows.
//
//   soak JOB N [silent]
//
// JOB is one of
//   frames     N frames with everything that there is and all effects
//   starts     N starts and ends of the engine
//   births     N objects, each created and deleted
//   scenes     a scene loaded and deleted N times
//   collector  N frames with twice as many textures as the video memory of 16 MB has room for
//
// With `silent` the driver is the simulated one. From the second tenth to the last one the numbers
// of objects and identifiers are constant, the heap in use grows by no more than 16 KB (with the
// simulated driver), the resident memory by no more than 2 MB (and, in the last job, by the
// textures, which may be loaded or not), and the processor time to no more than twice. The pictures
// of the collector's frames are those without pressure. Prints figures; exits with 1 after a fault.

#include "ravolt.h"
#include "tests/engine/resetEffects.h"
#include "tests/faults/world.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace ravolt::test {
namespace {

std::FILE *report = stdout;
unsigned int faults = 0;

void check(bool good, const std::string &what) {
    if (good)
        return;
    std::fprintf(report, "fault: %s\n", what.c_str());
    ++faults;
}

long residentKilobytes() {
    long pages = 0, resident = 0;
    if (std::FILE *file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(file);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// What must not change between two turns of a job.
struct Figures {
    long heap = static_cast<long>(mallinfo2().uordblks);
    long resident = residentKilobytes();
    std::array<unsigned int, 8> objects = {
        RVNODE::getNumberOfNodes(),         RVTEXTURE::getNumberOfTextures(),
        RVMATERIAL::getNumberOfMaterials(), RVSHADER::getNumberOfShaders(),
        RVFBO::getNumberOfFbos(),           RVFONT::getNumberOfFonts(),
        RVANIM::getNumberOfAnims(),         RVVIDEO::getNumberOfVideos()};
    unsigned int nextId = zlfNewId();
    double processor = static_cast<double>(std::clock()) / CLOCKS_PER_SEC;

    Figures() { releaseId(nextId); }
};

// The largest figures of several turns: what is evicted in one may be loaded again in the next.
struct Window {
    long heap = 0, resident = 0;
    double processor = 0;

    void add(const Figures &figures) {
        heap = std::max(heap, figures.heap);
        resident = std::max(resident, figures.resident);
    }
};

constexpr unsigned long warmUp = 100;

// Calls a turn N times, and compares the second tenth of them with the last one.
// `varying` kilobytes are there or not at any time.
void repeat(unsigned long number, const std::function<void(unsigned long)> &turn, bool real,
            long varying = 0) {
    const unsigned long tenth = std::max(number / 10, 1ul);
    Window second, last;
    Figures before;
    // A real driver needs some turns until it has all of its own memory.
    for (unsigned long index = 0; real && index < warmUp; ++index)
        turn(index);
    for (unsigned long index = 0; index < number; ++index) {
        const bool inSecond = index >= tenth && index < 2 * tenth;
        if (index == tenth)
            before = Figures();
        const double start = Figures().processor;
        turn(index);
        const Figures after;
        if (inSecond)
            second.add(after);
        if (index >= number - tenth)
            last.add(after);
        (inSecond ? second : last).processor +=
            inSecond || index >= number - tenth ? after.processor - start : 0;
    }
    const Figures after;
    std::fprintf(report,
                 "%lu turns: heap %+ld bytes, resident %ld KB (%+ld), processor %.2f ms a turn in "
                 "the second tenth, %.2f ms in the last\n",
                 number, last.heap - second.heap, last.resident, last.resident - second.resident,
                 1000 * second.processor / static_cast<double>(tenth),
                 1000 * last.processor / static_cast<double>(tenth));
    if (!real)
        check(last.heap <= second.heap + 16384, "the heap grows");
    check(last.resident <= second.resident + 2048 + varying, "the resident memory grows");
    check(after.objects == before.objects, "the number of objects changes");
    check(after.nextId == before.nextId, "identifiers are lost");
    check(last.processor <= 2 * second.processor + 0.1, "the rate falls");
}

RVSETTINGS soakSettings() {
    RVSETTINGS settings = smallSettings();
    settings.setShaders(true);
    settings.setMaxAnisotropy(1);
    settings.setVideoMemory(64);
    return settings;
}

bool start(RVSETTINGS settings = soakSettings()) {
    if (RAVOLT::init(&settings))
        return true;
    check(false, "the engine does not start");
    return false;
}

void frames(unsigned long number, bool real) {
    if (!start())
        return;
    const World world = makeWorld();
    allEffectsOn();
    RAVOLT::setFrameDuration(0.02f);
    repeat(
        number,
        [&](unsigned long index) {
            world.camera->setPosition(0, 2, 6);
            world.camera->setRotation(0, static_cast<float>(index % 360));
            drawWorld(world);
            if (index % 16 == 0)
                RAVOLT::select(5, 5);
            world.texture->unload(index % 2);
        },
        real);
    RAVOLT::free();
}

void starts(unsigned long number, bool real) {
    repeat(
        number,
        [](unsigned long) {
            if (!start())
                return;
            drawWorld(makeWorld());
            RAVOLT::free();
        },
        real);
}

template <class T> void createAndDelete() { delete new T; }

void births(unsigned long number, bool real) {
    if (!start())
        return;
    constexpr void (*kinds[])() = {
        createAndDelete<RVNODE>,     createAndDelete<RVLIGHT>,   createAndDelete<RVMESH>,
        createAndDelete<RVCAMERA>,   createAndDelete<RVHELPER>,  createAndDelete<RVBOX>,
        createAndDelete<RVLABEL>,    createAndDelete<RVBUTTON>,  createAndDelete<RVTEXTURE>,
        createAndDelete<RVMATERIAL>, createAndDelete<RVSHADER>,  createAndDelete<RVFONT>,
        createAndDelete<RVANIM>,     createAndDelete<RVVIDEO>,   createAndDelete<RVWATER>,
        createAndDelete<RVTERRAIN>,  createAndDelete<RVSKYDOME>, createAndDelete<RVFBO>};
    repeat(
        number, [&](unsigned long index) { kinds[index % std::size(kinds)](); }, real);
    RAVOLT::free();
}

void deleteTree(RVNODE *node) {
    while (node->getNumberOfChildren()) {
        RVNODE *const child = node->getChild(0);
        child->unlink();
        deleteTree(child);
    }
    delete node;
}

void scenes(unsigned long number, bool real) {
    if (!start())
        return;
    repeat(
        number,
        [](unsigned long) {
            RVNODE *const root = RAVOLT::load("scene.rve");
            if (!root)
                return check(false, "the scene does not load");
            deleteTree(root);
            for (const char *name : {"stone", "glass"})
                if (RVMATERIAL *material = RVMATERIAL::findByName(name)) {
                    delete material->getTexture(0);
                    delete material->getShader();
                    delete material;
                }
        },
        real);
    RAVOLT::free();
}

// --- The collector

constexpr unsigned int side = 1024, pictures = 8; // of 4 MB each

void writePictures() {
    for (unsigned int number = 0; number < pictures; ++number) {
        Bytes pixels(4 * side * side);
        for (std::size_t byte = 0; byte < pixels.size(); ++byte)
            pixels[byte] = static_cast<unsigned char>(byte * (number + 1) / 977);
        TgaPicture picture;
        picture.width = picture.height = side;
        picture.channels = 4;
        picture.pixels = pixels.data();
        check(writeTga(("large" + std::to_string(number) + ".tga"), picture), "no texture");
    }
}

struct Wall {
    RVNODE *root = new RVNODE;
    std::vector<RVTEXTURE *> textures;

    Wall() {
        for (unsigned int number = 0; number < pictures; ++number) {
            auto *const texture = new RVTEXTURE;
            texture->setFilter(true, false, true);
            check(texture->load(("large" + std::to_string(number) + ".tga").c_str()), "no texture");
            textures.push_back(texture);
            auto *const box = new RVBOX;
            box->setSizes(30, 40);
            box->setPosition(static_cast<float>(number % 4 * 32),
                             static_cast<float>(number / 4 * 48));
            box->setColor(1, 1, 1, 1);
            box->setTexture(texture);
            box->link(root);
        }
    }

    Picture draw() const {
        RAVOLT::clear(true, true, true);
        drawFrame2D(root);
        Picture picture = readFrame();
        RAVOLT::swap();
        return picture;
    }
};

void collector(unsigned long number, bool real) {
    writePictures();
    RVSETTINGS settings = soakSettings();
    settings.setShaders(false);
    if (!start(settings))
        return;
    const Picture expected = Wall().draw();
    RAVOLT::free();

    settings.setVideoMemory(16);
    if (!start(settings))
        return;
    const Wall wall;
    unsigned long reloads = 0, different = 0, drawn = 0;
    repeat(
        number,
        [&](unsigned long) {
            ++drawn;
            std::vector<unsigned int> before;
            for (RVTEXTURE *texture : wall.textures)
                before.push_back(texture->getTimeStamp() ? texture->getGLId() : 0);
            different += wall.draw().bytes != expected.bytes;
            for (std::size_t i = 0; i < before.size(); ++i)
                reloads += wall.textures[i]->getGLId() == 0 || before[i] == 0;
        },
        real, pictures * 4096);
    std::fprintf(report,
                 "%lu textures were evicted or loaded again, %.1f a frame, of %u; %lu "
                 "pictures differ\n",
                 reloads, static_cast<double>(reloads) / static_cast<double>(drawn), pictures,
                 different);
    check(different == 0, "a picture differs");
    check(reloads > 0, "there was no pressure");
    RAVOLT::free();
}

int run(const std::string &job, unsigned long number, bool real) {
    const struct {
        const char *name;
        void (*work)(unsigned long, bool);
    } jobs[] = {{"frames", frames},
                {"starts", starts},
                {"births", births},
                {"scenes", scenes},
                {"collector", collector}};
    if (!real)
        Recorder::instance().silent();
    else
        Recorder::instance().suppressUnitErrors();
    zlfSetConsoleEcho(false);
    zlfSetLogLimit(1'000'000);
    writeWorldFiles();
    for (const auto &each : jobs)
        if (job == each.name) {
            std::fprintf(report, "%s, %s: ", each.name, real ? "real driver" : "simulated driver");
            each.work(number, real);
            return faults ? 1 : 0;
        }
    return 2;
}

} // namespace
} // namespace ravolt::test

// Tone mapping prints a line in each frame, which is discarded.
int main(int argc, char **argv) {
    const bool silent = argc == 4 && std::strcmp(argv[3], "silent") == 0;
    const unsigned long number = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
    if ((argc != 3 && !silent) || number < 20) {
        std::fprintf(stderr, "soak JOB N [silent], with N from 20\n");
        return 2;
    }
    ravolt::test::report = fdopen(dup(STDOUT_FILENO), "w");
    if (!ravolt::test::report || !std::freopen("/dev/null", "w", stdout))
        return 2;
    std::setvbuf(ravolt::test::report, nullptr, _IOLBF, 0);
    return ravolt::test::run(argv[1], number, !silent);
}
