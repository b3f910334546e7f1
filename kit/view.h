#pragma once

// Points of the window and of the eye's space: the projection and the camera of the frame.

namespace ravolt::kit {

struct Point {
    double x = 0, y = 0, z = 0;
};

inline Point operator+(const Point &a, const Point &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Point operator-(const Point &a, const Point &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Point operator*(const Point &a, double s) { return {a.x * s, a.y * s, a.z * s}; }
inline double dot(const Point &a, const Point &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Point cross(const Point &a, const Point &b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double length(const Point &a);

// Sixteen numbers in OpenGL's order.
struct Transform {
    double e[16];

    static Transform from(const float *elements);
    // False, and unchanged, if there is no inverse.
    bool invert();
    // With the division by w.
    Point apply(const Point &point) const;
};

// The matrix that applies `first` and then `second`.
Transform operator*(const Transform &first, const Transform &second);

// A face and a line from `origin`: where along `direction` it is hit, in units of its length;
// negative for no hit. Both sides of the face count.
double intersect(const Point (&face)[3], const Point &origin, const Point &direction);

} // namespace ravolt::kit
