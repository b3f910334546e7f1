#pragma once

// An OBJ file that is written part by part: quads, boxes, and surfaces of rows of points.

#include <array>
#include <ostream>
#include <string>
#include <vector>

namespace village {

using Point = std::array<float, 3>;
using Uv = std::array<float, 2>;

Point operator+(const Point &a, const Point &b);
Point operator-(const Point &a, const Point &b);
Point operator*(const Point &a, float factor);
Point cross(const Point &a, const Point &b);
Point normalized(const Point &a);

// Where a part of the village is: turned about Y by `degrees` and moved to a point of the ground.
struct Frame {
    Point origin = {0, 0, 0};
    float degrees = 0;

    Point operator()(const Point &local) const;
    Point turned(const Point &local) const; // for normals
};

class ObjWriter {
  public:
    explicit ObjWriter(std::ostream &stream) : out(stream) {}

    // Starts an object of one material; its texture repeats every `tileSize` metres.
    void begin(const std::string &name, const std::string &material, const Frame &where = {},
               float tileSize = 1);

    // A flat quad, counter-clockwise as seen from its front; without corners of the texture it is
    // tiled by its size.
    void quad(const Point &a, const Point &b, const Point &c, const Point &d);
    void picture(const Point &a, const Point &b, const Point &c, const Point &d, const Uv &low,
                 const Uv &high);
    void ground(const Point (&corners)[4], float tileSize); // its texture continues over the ground
    void triangle(const Point &a, const Point &b, const Point &c);

    // All six sides; `middle` is the middle of the lower side.
    void box(const Point &middle, const Point &size);

    // A beam of square section between two points.
    void beam(const Point &from, const Point &to, float thickness);

    // A smooth surface through rows of points, each of which closes on itself; rows from the top.
    // The texture goes `around` times round each row.
    void rings(const std::vector<std::vector<Point>> &rows, float around);

    // A surface of rotation about the vertical through `foot`: radii at heights, from the top.
    void turnedBody(const Point &foot, const std::vector<std::array<float, 2>> &radiusAndHeight,
                    int sides, float around);

  private:
    void vertex(const Point &place, const Uv &uv, const Point &normal);
    void face(std::initializer_list<int> backwards);

    std::ostream &out;
    Frame frame;
    float tile = 1;
    int count = 0; // vertices so far, each with its own coordinates and normal
};

} // namespace village
