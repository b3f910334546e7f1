// Counts the calls of OpenGL in one frame of the effects' scene, in front of a driver that draws
// nothing: the numbers are the same on every machine.
//
//   countedCalls        a table: kinds of functions, and a column for each of bench::effects
//   countedCalls all    each function, in a frame with that effect
//
// With RAVOLT_BENCH_DRIVER set, the calls go on to the real driver.

#include "benchScene.h"

#include "tests/support/recorder.h"
#include "tools/process/scopedSilentLog.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

using ravolt::test::Call;
using ravolt::test::Calls;
using ravolt::test::Recorder;

// A function belongs to the first kind with a beginning of its name.
struct Kind {
    const char *name;
    const char *beginnings[12];
};
constexpr Kind kinds[] = {
    {"draws of meshes", {"glDrawElements"}},
    {"lines and quads (glBegin to glEnd)", {"glBegin"}},
    {"their points", {"glEnd", "glVertex3", "glVertex2", "glTexCoord2", "glColor4"}},
    {"arrays and buffers",
     {"glVertexPointer", "glNormalPointer", "glTexCoordPointer", "glColorPointer", "glBindBuffer",
      "glEnableClientState", "glDisableClientState", "glClientActive", "glEnableVertexAttrib",
      "glDisableVertexAttrib", "glVertexAttrib"}},
    {"lights and materials", {"glLight", "glMaterial"}},
    {"matrices",
     {"glMatrixMode", "glPushMatrix", "glPopMatrix", "glLoad", "glMult", "glTranslate", "glRotate",
      "glScale", "glOrtho", "glFrustum"}},
    {"programs and their values", {"glUseProgram", "glUniform"}},
    {"textures",
     {"glBindTexture", "glActiveTexture", "glTexParameter", "glCopyTex", "glGenerateMipmap"}},
    {"targets", {"glBindFramebuffer", "glViewport", "glClear", "glReadBuffer"}},
    {"read back", {"glGet", "glReadPixels", "glIs"}},
    {"switches and other state", {"gl"}},
};

std::size_t kindOf(const std::string &function) {
    std::size_t kind = 0;
    for (const Kind &each : kinds) {
        for (const char *beginning : each.beginnings)
            if (beginning && function.rfind(beginning, 0) == 0)
                return kind;
        ++kind;
    }
    return kind; // none of OpenGL's
}

// By function.
std::map<std::string, int> countFrame(const bench::Scene &scene) {
    std::map<std::string, int> counts;
    Recorder::instance().start();
    bench::drawByEngine(scene);
    for (const Call &call : Recorder::instance().stop())
        ++counts[call.name];
    counts.erase("glFinish"); // the benchmark's own
    return counts;
}

std::map<std::string, int> countFrameWith(const bench::Effects &effects) {
    const ravolt::tool::ScopedSilentLog silence;
    bench::Scene scene = bench::makeEffectScene();
    bench::use(effects);
    for (int frame = 0; frame < 3; ++frame)
        bench::drawByEngine(scene);
    const auto counts = countFrame(scene);
    const bool same = counts == countFrame(scene);
    bench::destroy(scene);
    if (!same) {
        std::fprintf(stderr, "%s: two frames differ\n", effects.name);
        std::exit(1);
    }
    return counts;
}

void printTable() {
    constexpr std::size_t columns = std::size(bench::effects), rows = std::size(kinds);
    int table[columns][rows + 1] = {}, total[columns] = {};
    std::printf("| Calls in a frame |");
    for (std::size_t column = 0; column < columns; ++column) {
        std::printf(" %s |", bench::effects[column].name);
        for (const auto &[function, count] : countFrameWith(bench::effects[column])) {
            table[column][kindOf(function)] += count;
            total[column] += count;
        }
    }
    std::printf("\n|---|");
    for (std::size_t column = 0; column < columns; ++column)
        std::printf("---:|");
    for (std::size_t row = 0; row < rows; ++row) {
        std::printf("\n| %s |", kinds[row].name);
        for (const auto &counts : table)
            std::printf(" %d |", counts[row]);
    }
    std::printf("\n| **together** |");
    for (int sum : total)
        std::printf(" **%d** |", sum);
    std::printf("\n");
}

bool printFunctions(const char *key) {
    for (const bench::Effects &effects : bench::effects) {
        if (std::strcmp(effects.key, key) != 0)
            continue;
        for (const auto &[function, count] : countFrameWith(effects))
            std::printf("%7d  %-28s %s\n", count, function.c_str(), kinds[kindOf(function)].name);
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char **argv) {
    if (!std::getenv("RAVOLT_BENCH_DRIVER"))
        Recorder::instance().silent();
    bench::startEngine(true);
    bool known = true;
    if (argc == 1)
        printTable();
    else
        known = argc == 2 && printFunctions(argv[1]);
    bench::stopEngine();
    if (!known)
        std::fprintf(stderr, "usage: countedCalls [EFFECT]\n");
    return known ? 0 : 2;
}
