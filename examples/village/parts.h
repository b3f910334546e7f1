#pragma once

// What the village is made of. Each writes its objects; units are metres.

#include "examples/village/objWriter.h"

#include <functional>

namespace village {

// A ball that noise has made uneven: a stone, or a crown of leaves.
struct Ball {
    float radius, flatness, unevenness; // its height to its width; the largest bump to its radius
    float frequency;                    // of the bumps
    int rings, sides;
    float around; // how often the texture goes round it
};
void writeBall(ObjWriter &obj, const Point &middle, const Ball &ball, int seed);

// A half-timbered house. Its front, with the door, is towards +Z.
struct House {
    Frame where;
    float width, depth, storey; // of the walls
    int storeys;
    std::string plaster; // its material
};
void writeHouse(ObjWriter &obj, const std::string &name, const House &house);

void writeYard(ObjWriter &obj); // of gravel, with an uneven edge
void writePaving(ObjWriter &obj);
void writeWell(ObjWriter &obj, const Frame &where);
void writeStall(ObjWriter &obj, const std::string &name, const Frame &where);
void writeFence(ObjWriter &obj, const std::string &name, const Point &from, const Point &to);
enum class Detail { near, far }; // from where it is seen
void writeTree(ObjWriter &obj, const std::string &name, const Point &foot, float height, int seed,
               Detail detail = Detail::near);
void writeBush(ObjWriter &obj, const std::string &name, const Point &foot, float size, int seed);
void writeLamp(ObjWriter &obj, const std::string &name, const Point &foot);
void writeScreen(ObjWriter &obj, const Frame &where);
void writeBench(ObjWriter &obj, const std::string &name, const Frame &where);
void writeBarrel(ObjWriter &obj, const std::string &name, const Point &foot);
void writeFirePlace(ObjWriter &obj, const Point &foot);
void writeRock(ObjWriter &obj, const Point &middle, float size, int seed);

// What is about the village, in the units of the island.
class Island;
void writeForest(ObjWriter &obj, const Island &island);
void writeRocks(ObjWriter &obj, const Island &island);
void writeGrass(ObjWriter &obj, const Island &island);
void writeShore(ObjWriter &obj, const Island &island); // jetty, boats and path
void writeSeabed(ObjWriter &obj, const Island &island);
void writeBoat(ObjWriter &obj, const std::string &name, const Frame &where, bool sail);
void writeFish(ObjWriter &obj); // a school that swims round the origin

// The material file, and the pictures of its textures, each of which goes to the sink.
std::string materials();
using PictureSink = std::function<void(const std::string &name, unsigned int side,
                                       const std::vector<unsigned char> &rgb)>;
void makeTextures(unsigned int side, const PictureSink &sink);

} // namespace village
