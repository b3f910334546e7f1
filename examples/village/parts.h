#pragma once

// What the village is made of. Each writes its objects; units are metres.

#include "examples/village/objWriter.h"

#include <functional>

namespace village {

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
void writeTree(ObjWriter &obj, const std::string &name, const Point &foot, float height, int seed);
void writeBush(ObjWriter &obj, const std::string &name, const Point &foot, float size, int seed);
void writeLamp(ObjWriter &obj, const std::string &name, const Point &foot);
void writeScreen(ObjWriter &obj, const Frame &where);
void writeBench(ObjWriter &obj, const std::string &name, const Frame &where);
void writeBarrel(ObjWriter &obj, const std::string &name, const Point &foot);
void writeFirePlace(ObjWriter &obj, const Point &foot);

// The material file, and the pictures of its textures, each of which goes to the sink.
std::string materials();
using PictureSink = std::function<void(const std::string &name, unsigned int side,
                                       const std::vector<unsigned char> &rgb)>;
void makeTextures(unsigned int side, const PictureSink &sink);

} // namespace village
