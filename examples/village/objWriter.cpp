// Writes quads, boxes, beams and smooth surfaces with their texture coordinates and normals.

#include "examples/village/objWriter.h"

#include <algorithm>
#include <cmath>

namespace village {

namespace {

constexpr float pi = 3.1415927f;

float length(const Point &a) { return std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]); }

} // namespace

Point operator+(const Point &a, const Point &b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Point operator-(const Point &a, const Point &b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Point operator*(const Point &a, float factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}
Point cross(const Point &a, const Point &b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
Point normalized(const Point &a) { return a * (1 / std::max(length(a), 1e-6f)); }

Point Frame::turned(const Point &local) const {
    const float c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
    return {c * local[0] + s * local[2], local[1], -s * local[0] + c * local[2]};
}

Point Frame::operator()(const Point &local) const { return turned(local) + origin; }

void ObjWriter::begin(const std::string &name, const std::string &material, const Frame &where,
                      float tileSize) {
    out << "o " << name << "\nusemtl " << material << "\n";
    frame = where;
    tile = tileSize;
}

void ObjWriter::vertex(const Point &place, const Uv &uv, const Point &normal) {
    const Point v = frame(place), n = frame.turned(normal);
    out << "v " << v[0] << " " << v[1] << " " << v[2] << "\nvt " << uv[0] << " " << uv[1] << "\nvn "
        << n[0] << " " << n[1] << " " << n[2] << "\n";
    ++count;
}

// The corners are numbered backwards from the last vertex, which is 0.
void ObjWriter::face(std::initializer_list<int> backwards) {
    out << "f";
    for (const int corner : backwards) {
        const int index = count - corner;
        out << " " << index << "/" << index << "/" << index;
    }
    out << "\n";
}

void ObjWriter::quad(const Point &a, const Point &b, const Point &c, const Point &d) {
    picture(a, b, c, d, {0, 0}, {length(b - a) / tile, length(d - a) / tile});
}

void ObjWriter::picture(const Point &a, const Point &b, const Point &c, const Point &d,
                        const Uv &low, const Uv &high) {
    const Point normal = normalized(cross(b - a, d - a));
    vertex(a, low, normal);
    vertex(b, {high[0], low[1]}, normal);
    vertex(c, high, normal);
    vertex(d, {low[0], high[1]}, normal);
    face({3, 2, 1, 0});
}

void ObjWriter::ground(const Point (&corners)[4], float tileSize) {
    for (const Point &corner : corners)
        vertex(corner, {corner[0] / tileSize, -corner[2] / tileSize}, {0, 1, 0});
    face({3, 2, 1, 0});
}

void ObjWriter::triangle(const Point &a, const Point &b, const Point &c) {
    const Point normal = normalized(cross(b - a, c - a));
    const float width = length(b - a) / tile;
    vertex(a, {0, 0}, normal);
    vertex(b, {width, 0}, normal);
    vertex(c, {width / 2, length(c - (a + b) * 0.5f) / tile}, normal);
    face({2, 1, 0});
}

void ObjWriter::box(const Point &middle, const Point &size) {
    const float x = size[0] / 2, y = size[1], z = size[2] / 2;
    const auto at = [&](float i, float j, float k) { return middle + Point{i * x, j * y, k * z}; };
    quad(at(-1, 0, 1), at(1, 0, 1), at(1, 1, 1), at(-1, 1, 1));
    quad(at(1, 0, -1), at(-1, 0, -1), at(-1, 1, -1), at(1, 1, -1));
    quad(at(1, 0, 1), at(1, 0, -1), at(1, 1, -1), at(1, 1, 1));
    quad(at(-1, 0, -1), at(-1, 0, 1), at(-1, 1, 1), at(-1, 1, -1));
    quad(at(-1, 1, 1), at(1, 1, 1), at(1, 1, -1), at(-1, 1, -1));
    quad(at(-1, 0, -1), at(1, 0, -1), at(1, 0, 1), at(-1, 0, 1));
}

void ObjWriter::beam(const Point &from, const Point &to, float thickness) {
    const Point along = normalized(to - from);
    const Point helper = std::fabs(along[1]) > 0.9f ? Point{1, 0, 0} : Point{0, 1, 0};
    const Point right = normalized(cross(along, helper)) * (thickness / 2);
    const Point up = normalized(cross(right, along)) * (thickness / 2);
    const auto at = [&](const Point &end, float i, float j) { return end + right * i + up * j; };
    constexpr float corner[5][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
    for (int i = 0; i < 4; ++i) {
        const float *one = corner[i], *two = corner[i + 1];
        quad(at(from, two[0], two[1]), at(from, one[0], one[1]), at(to, one[0], one[1]),
             at(to, two[0], two[1]));
    }
    quad(at(to, -1, -1), at(to, -1, 1), at(to, 1, 1), at(to, 1, -1));
    quad(at(from, -1, -1), at(from, 1, -1), at(from, 1, 1), at(from, -1, 1));
}

void ObjWriter::rings(const std::vector<std::vector<Point>> &rows, float around) {
    const int sides = static_cast<int>(rows[0].size()), last = static_cast<int>(rows.size()) - 1;
    for (int row = 0; row <= last; ++row)
        for (int i = 0; i <= sides; ++i) {
            const auto &line = rows[static_cast<std::size_t>(row)];
            const auto at = [&](const std::vector<Point> &points, int k) {
                return points[static_cast<std::size_t>((k + sides) % sides)];
            };
            const auto &above = rows[static_cast<std::size_t>(std::max(row - 1, 0))];
            const auto &below = rows[static_cast<std::size_t>(std::min(row + 1, last))];
            Point normal = cross(at(above, i) - at(below, i), at(line, i - 1) - at(line, i + 1));
            if (length(normal) < 1e-6f) // a row of one point
                normal = {0, row == 0 ? 1.0f : -1.0f, 0};
            const float v = static_cast<float>(last - row) / static_cast<float>(last);
            vertex(at(line, i),
                   {around * static_cast<float>(i) / static_cast<float>(sides), v * around},
                   normalized(normal));
        }
    const int stride = sides + 1;
    for (int row = 0; row < last; ++row)
        for (int i = 0; i < sides; ++i) {
            const int upper = (last - row + 1) * stride - 1 - i, lower = upper - stride;
            face({upper, lower, lower - 1, upper - 1});
        }
}

void ObjWriter::turnedBody(const Point &foot,
                           const std::vector<std::array<float, 2>> &radiusAndHeight, int sides,
                           float around) {
    std::vector<std::vector<Point>> rows;
    for (const auto &[radius, height] : radiusAndHeight) {
        std::vector<Point> row;
        for (int i = 0; i < sides; ++i) {
            const float angle = 2 * pi * static_cast<float>(i) / static_cast<float>(sides);
            row.push_back(foot + Point{radius * std::sin(angle), height, radius * std::cos(angle)});
        }
        rows.push_back(row);
    }
    rings(rows, around);
}

} // namespace village
