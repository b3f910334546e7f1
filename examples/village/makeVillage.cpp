// makeVillage FOLDER [SIDE]: writes the village of the demo into the folder, as village.obj with
// its materials and textures of SIDE pixels a side (256 without it); what is about it on the island
// and below the water, as nature.obj; and a school of fish, as fish.obj. The units are metres, and
// Y is up. The origin is the middle of the square in village.obj, that of the island's terrain in
// nature.obj, and that of the school in fish.obj.

#include "examples/village/island.h"
#include "examples/village/parts.h"

#include "kit/files/pngWriter.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

using namespace village;

namespace {

void writeHouses(ObjWriter &obj) {
    const House houses[] = {
        {{{-8.5f, 0, 14.2f}, 150}, 6.4f, 5.2f, 2.7f, 2, "cream"},
        {{{0.5f, 0, 16.0f}, 182}, 7.0f, 5.4f, 2.7f, 2, "ochre"},
        {{{9.4f, 0, 13.0f}, 215}, 6.0f, 5.0f, 2.8f, 1, "pale"},
        {{{15.2f, 0, 4.4f}, 253}, 6.6f, 5.2f, 2.7f, 2, "rose"},
        {{{15.6f, 0, -5.0f}, 285}, 5.6f, 4.8f, 2.8f, 1, "cream"},
        {{{-16.2f, 0, 7.6f}, 112}, 5.6f, 4.8f, 2.8f, 1, "ochre"},
    };
    int number = 1;
    for (const House &house : houses)
        writeHouse(obj, "house" + std::to_string(number++), house);
}

void writeGreen(ObjWriter &obj) {
    const Point trees[] = {{-13.6f, 0, 13.2f}, {-3.6f, 0, 20.5f}, {5.2f, 0, 20.2f},
                           {14.6f, 0, 10.4f},  {19.8f, 0, -0.4f}, {-15.4f, 0, 0.4f},
                           {13.0f, 0, -10.6f}};
    int number = 1;
    for (const Point &foot : trees) {
        writeTree(obj, "tree" + std::to_string(number), foot,
                  5.6f + 0.9f * static_cast<float>(number * 5 % 4), 100 + 20 * number);
        ++number;
    }
    const Point bushes[] = {{-4.6f, 0, 13.6f}, {5.0f, 0, 13.4f},  {11.9f, 0, 8.6f},
                            {12.6f, 0, -0.6f}, {-12.8f, 0, 9.6f}, {-13.4f, 0, -3.0f},
                            {11.0f, 0, -7.8f}};
    for (const Point &foot : bushes) {
        writeBush(obj, "bush" + std::to_string(number), foot, 1.3f, 300 + number);
        ++number;
    }
}

void writeSquare(ObjWriter &obj) {
    writeYard(obj);
    writePaving(obj);
    writeWell(obj, {{1.0f, 0.06f, 6.6f}, 30});
    writeStall(obj, "stall1", {{-8.6f, 0.06f, 5.6f}, 118});
    writeStall(obj, "stall2", {{-10.0f, 0.06f, 1.6f}, 98});
    writeScreen(obj, {{9.6f, 0.06f, 1.2f}, 262});
    writeBench(obj, "bench1", {{-2.6f, 0.06f, 9.6f}, 170});
    writeBench(obj, "bench2", {{10.2f, 0.06f, -4.4f}, 290});
    for (const auto &[x, z] : {std::array{5.6f, 10.0f}, {6.3f, 9.6f}, {5.9f, 9.1f}})
        writeBarrel(obj, "barrel" + std::to_string(static_cast<int>(x * 10)), {x, 0.06f, z});
    const Point lamps[] = {{-5.4f, 0.06f, 9.2f}, {6.6f, 0.06f, 7.0f}, {-6.6f, 0.06f, -5.6f}};
    int number = 1;
    for (const Point &foot : lamps)
        writeLamp(obj, "lamp" + std::to_string(number++), foot);
    writeFence(obj, "fence1", {-18.5f, 0, -1.6f}, {-13.2f, 0, -6.0f});
    writeFence(obj, "fence2", {12.6f, 0, -8.6f}, {9.2f, 0, -12.0f});
    writeFence(obj, "fence3", {-12.6f, 0, 12.2f}, {-11.2f, 0, 14.4f});
    writeFirePlace(obj, {2, 0, -14.5f});
}

bool writeScene(const std::string &file, const std::function<void(ObjWriter &)> &write) {
    std::ofstream stream(file);
    stream << "mtllib village.mtl\n";
    ObjWriter obj(stream);
    write(obj);
    stream.close();
    return static_cast<bool>(stream);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: %s FOLDER [SIDE]\n", argv[0]);
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    const Island island;
    const bool written = writeScene(folder + "village.obj",
                                    [](ObjWriter &obj) {
                                        writeSquare(obj);
                                        writeHouses(obj);
                                        writeGreen(obj);
                                    }) &&
                         writeScene(folder + "nature.obj",
                                    [&](ObjWriter &obj) {
                                        writeForest(obj, island);
                                        writeRocks(obj, island);
                                        writeGrass(obj, island);
                                        writeShore(obj, island);
                                        writeSeabed(obj, island);
                                    }) &&
                         writeScene(folder + "fish.obj", writeFish);
    std::string error;
    makeTextures(
        argc == 3 ? static_cast<unsigned int>(std::atoi(argv[2])) : 256,
        [&](const std::string &name, unsigned int side, const auto &rgb) {
            const int size = static_cast<int>(side);
            error += ravolt::writePng(folder + name + ".png", {size, size, 3, true, rgb.data()});
        });
    std::ofstream material(folder + "village.mtl");
    material << materials();
    material.close();
    if (!written || !material || !error.empty()) {
        std::fprintf(stderr, "%s: the village could not be written %s\n", argv[0], error.c_str());
        return 1;
    }
    return 0;
}
