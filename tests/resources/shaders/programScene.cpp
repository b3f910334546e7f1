// A software rasterizer that computes the expected colours of the programs.

#include "tests/resources/shaders/programScene.h"

#include <optional>
#include <random>

namespace ravolt::test {
namespace {

// The parts of the corners in a pixel, with perspective; negative ones beside the triangle.
Vec partsAt(const VertexResult (&corners)[3], int column, int row) {
    const double x = (column + 0.5) / targetSize * 2 - 1;
    const double y = (row + 0.5) / targetSize * 2 - 1;
    const Vec a = {corners[0].position.x - x * corners[0].position.w,
                   corners[1].position.x - x * corners[1].position.w,
                   corners[2].position.x - x * corners[2].position.w, 0};
    const Vec b = {corners[0].position.y - y * corners[0].position.w,
                   corners[1].position.y - y * corners[1].position.w,
                   corners[2].position.y - y * corners[2].position.w, 0};
    const Vec parts = cross(a, b); // orthogonal to both
    return parts * (1 / (parts.x + parts.y + parts.z));
}

// Nothing where a corner or an edge is so near that the pixel may be on either side.
std::optional<bool> isInside(Vec parts) {
    constexpr double edge = 0.01;
    const double smallest = std::min({parts.x, parts.y, parts.z});
    if (std::abs(smallest) < edge)
        return std::nullopt;
    return smallest > 0;
}

Varyings interpolate(const VertexResult (&corners)[3], Vec parts) {
    Varyings varyings;
    for (const auto &[name, value] : corners[0].varyings)
        varyings[name] = value * parts.x + corners[1].varyings.at(name) * parts.y +
                         corners[2].varyings.at(name) * parts.z;
    return varyings;
}

bool isClipped(const ProgramScene &scene, const Varyings &varyings, Trace &trace) {
    if (dot(scene.clipPlane, scene.clipPlane) == 0)
        return false;
    const Vec place = varyings.at("clipVertex");
    const double side = dot(scene.clipPlane, place) + scene.clipPlane.w * place.w;
    if (std::abs(side) < 0.05) // the edge falls between pixels
        trace.unsure = true;
    return !trace.above(side, 0, "beside the plane");
}

double difference(Vec expected, const float *found) {
    const double wanted[] = {expected.x, expected.y, expected.z, expected.w};
    double largest = 0;
    for (int i = 0; i < 4; ++i) {
        const double off = std::abs(wanted[i] - found[i]) / std::max(1.0, std::abs(wanted[i]));
        largest = std::isnan(off) ? 1e9 : std::max(largest, off);
    }
    return largest;
}

} // namespace

Image Image::random(int width, int height, unsigned int seed, double low, double high) {
    Image image{width, height, {}};
    std::mt19937 engine(seed);
    const auto next = [&] { return low + (high - low) * (engine() % 1025) / 1024.0; };
    for (int i = 0; i < width * height; ++i) {
        Vec texel;
        for (double *part : {&texel.x, &texel.y, &texel.z, &texel.w})
            *part = next();
        image.texels.push_back(texel);
    }
    return image;
}

bool Trace::above(double a, double b, const char *name) {
    if (std::abs(a - b) < 1e-4)
        unsure = true;
    visited.insert((a > b ? "" : "not ") + std::string(name));
    return a > b;
}

namespace {

// The texel that a coordinate falls on, repeated.
std::size_t texelAt(Trace &trace, double coordinate, int texels) {
    const double place = coordinate * texels;
    if (std::abs(place - std::round(place)) < 1e-3)
        trace.unsure = true;
    const int index = static_cast<int>(std::floor(place)) % texels;
    return static_cast<std::size_t>(index < 0 ? index + texels : index);
}

} // namespace

Vec ProgramScene::sample(Trace &trace, int unit, double s, double t) const {
    const Image &image = images.at(unit);
    const std::size_t row = texelAt(trace, t, image.height);
    return image
        .texels[row * static_cast<std::size_t>(image.width) + texelAt(trace, s, image.width)];
}

double ProgramScene::compare(Trace &trace, Vec coord) const {
    const std::size_t row = texelAt(trace, coord.y / coord.w, shadowMap.height);
    const double depth = shadowMap.depths[row * static_cast<std::size_t>(shadowMap.width) +
                                          texelAt(trace, coord.x / coord.w, shadowMap.width)];
    const double wanted = std::clamp(coord.z / coord.w, 0.0, 1.0);
    return trace.above(wanted, depth, "in shadow") ? 0 : 1;
}

double ProgramScene::lightReaching(Trace &trace, Vec coord) const {
    const double offsets[][2] = {{-1.5, 0.5}, {0.5, 0.5}, {-1.5, -1.5}, {0.5, -1.5}};
    double sum = 0;
    for (const auto &offset : offsets)
        sum += compare(trace, {coord.x + offset[0] / number("width") * coord.w,
                               coord.y + offset[1] / number("height") * coord.w, coord.z, coord.w});
    return sum * 0.25;
}

void ProgramScene::addShadowMap() {
    shadowMap = {16, 12, {}};
    std::mt19937 engine(1);
    for (int texel = 0; texel < shadowMap.width * shadowMap.height; ++texel)
        shadowMap.depths.push_back((engine() % 1001) / 1000.0);
    floats["width"] = shadowMap.width;
    floats["height"] = shadowMap.height;
    const Matrix perspective = {Vec{0.9, 0.05, 0, 0}, Vec{-0.1, 0.9, 0, 0}, Vec{0, 0, 0, -1},
                                Vec{0, 0, 1, 0}};
    textureMatrix1 = translation(0.5, 0.5, 0.5) * scale(0.5, 0.5, 0.5) * perspective;
}

Matrix ProgramScene::skinning(const Vertex &vertex) const {
    const double indices[] = {vertex.boneIndex.x, vertex.boneIndex.y, vertex.boneIndex.z,
                              vertex.boneIndex.w};
    const double weights[] = {vertex.boneWeight.x, vertex.boneWeight.y, vertex.boneWeight.z,
                              vertex.boneWeight.w};
    Matrix sum{};
    for (int i = 0; i < 4; ++i) {
        const auto bone = static_cast<std::size_t>(indices[i]);
        sum = sum + boneMatrix(boneQuat[bone], boneTrans[bone]) * weights[i];
    }
    return sum;
}

void ProgramTest::place(ProgramScene &scene) {
    constexpr double nearPlane = 1, farPlane = 20;
    scene.projection = identity;
    scene.projection[2] = {0, 0, -(farPlane + nearPlane) / (farPlane - nearPlane), -1};
    scene.projection[3] = {0, 0, -2 * farPlane * nearPlane / (farPlane - nearPlane), 0};
    const Matrix back = affineInverse(scene.modelview);
    const Vec eyes[] = {{-4, -4, -4, 1}, {6, -6, -6, 1}, {-2.5, 5, -5, 1}};
    for (int i = 0; i < 3; ++i) {
        Vertex &corner = scene.corners[i];
        corner.position = back * eyes[i];
        if (!scene.boneQuat.empty())
            corner.position = affineInverse(scene.skinning(corner)) * corner.position;
    }
}

Comparison ProgramTest::compare(const std::string &vertexLabel, const std::string &pixelLabel,
                                const ProgramScene &scene, const VertexReference &vertexReference,
                                const PixelReference &pixelReference) {
    Comparison comparison;
    const Program program(vertexLabel.c_str(), pixelLabel.c_str());
    EXPECT_EQ(program.messages, "");
    if (!program.linked) {
        ADD_FAILURE() << "the program does not link";
        return comparison;
    }
    const std::vector<float> picture = drawScene(program, scene);

    const VertexResult corners[] = {vertexReference(scene, scene.corners[0]),
                                    vertexReference(scene, scene.corners[1]),
                                    vertexReference(scene, scene.corners[2])};
    int shown = 0;
    for (int pixel = 0; pixel < targetSize * targetSize; ++pixel) {
        const int column = pixel % targetSize, row = pixel / targetSize;
        const Vec parts = partsAt(corners, column, row);
        const std::optional<bool> inside = isInside(parts);
        Trace trace;
        Vec expected{backgroundValue, backgroundValue, backgroundValue, backgroundValue};
        if (inside && *inside) {
            const Varyings varyings = interpolate(corners, parts);
            if (!isClipped(scene, varyings, trace))
                expected = pixelReference(scene, varyings, trace);
        }
        if (!inside || trace.unsure)
            continue;
        ++(*inside ? comparison.compared : comparison.background);
        comparison.visited.merge(trace.visited);
        const float *found = &picture[static_cast<std::size_t>(pixel) * 4];
        if (difference(expected, found) > singlePrecision && ++shown <= 3)
            ADD_FAILURE() << vertexLabel << " at " << column << ", " << row << ": expected "
                          << expected.x << ", " << expected.y << ", " << expected.z << ", "
                          << expected.w << ", found " << found[0] << ", " << found[1] << ", "
                          << found[2] << ", " << found[3];
    }
    EXPECT_GT(comparison.compared, 200);
    EXPECT_GT(comparison.background, 200);
    return comparison;
}

Comparison ProgramTest::compareCut(const std::string &vertexLabel, const std::string &pixelLabel,
                                   ProgramScene scene, const VertexReference &vertexReference,
                                   const PixelReference &pixelReference) {
    scene.clipPlane = {1, 0.5, 0, 0.25};
    const Comparison cut = compare(vertexLabel, pixelLabel, scene, vertexReference, pixelReference);
    EXPECT_EQ(cut.visited.count("beside the plane"), 1u);
    EXPECT_EQ(cut.visited.count("not beside the plane"), 1u);
    return cut;
}

} // namespace ravolt::test
