// A settings file: as settings, with which the engine starts, and by the reader of keys itself.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <algorithm>

namespace ravolt::fuzz {
namespace {

void readKeys(const std::string &path) {
    zlfPARSER parser;
    if (!zlfOpenParser(&parser, path.c_str()))
        return;
    char line[256];
    while (zlfReadLine(&parser, line))
        ;
    parser.position = 0;
    zlfRemoveComments(&parser, '#');
    while (zlfReadToken(&parser, line))
        ;
    int integer = 0;
    float real = 0;
    for (const char *key : {"RAVOLT_windowX", "a", "=", ""}) {
        zlfGetInt(&parser, key, &integer);
        zlfGetFloat(&parser, key, &real);
        zlfGetString(&parser, key, line);
    }
    zlfCloseParser(&parser);
}

// Large targets would only take time.
int limited(int size) { return std::min(size, 64); }

void limitSizes(RVSETTINGS &settings) {
    settings.setFBOSizeX(limited(settings.getFBOSizeX()));
    settings.setFBOSizeY(limited(settings.getFBOSizeY()));
    settings.setShadowMapSize(limited(settings.getShadowMapSize()));
    settings.setWaterSize(limited(settings.getWaterSize()));
}

} // namespace

void settings(Bytes bytes) {
    Input input(bytes);
    const bool starts = input.flag();
    const std::string path = writeFile("i.cfg", input.bytes());
    readKeys(path);
    RVSETTINGS loaded;
    if (!loaded.load(path.c_str()) || !starts)
        return;
    limitSizes(loaded);
    const SilentRun run(loaded);
    if (run.isActive())
        drawFrames(nullptr, 1);
}

} // namespace ravolt::fuzz
