#pragma once

// Small glTF 2 files, which tests put together from values.

#include <cstring>
#include <string>
#include <vector>

namespace tool_test {

// A file of one primitive, which all its meshes have, and of one buffer with a view for each
// accessor.
class GltfData {
  public:
    using Floats = std::vector<float>;
    using Shorts = std::vector<unsigned short>;

    std::string nodes, roots = "0"; // the nodes, and the numbers of those of the scene
    std::string primitive;          // its further members, each after a comma
    std::string members;            // those of the file
    int meshes = 1;

    // An accessor of that type; returns its number.
    std::string floats(const std::string &type, std::size_t components, const Floats &values) {
        return add(5126, type, values.size() / components, values);
    }
    std::string scalars(const Floats &values) { return floats("SCALAR", 1, values); }
    std::string vectors(const Floats &values) { return floats("VEC3", 3, values); }
    std::string fours(const Floats &values) { return floats("VEC4", 4, values); }
    // For each joint where it was when the skin was bound.
    std::string bindMatrices(const std::vector<Floats> &positions) {
        Floats values;
        for (const Floats &p : positions)
            values.insert(values.end(),
                          {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -p[0], -p[1], -p[2], 1});
        return floats("MAT4", 16, values);
    }

    void attribute(const std::string &name, const std::string &accessor) {
        attributes += (attributes.empty() ? "\"" : ",\"") + name + "\":" + accessor;
    }
    void positions(const Floats &values) { attribute("POSITION", vectors(values)); }
    void triangle() { positions({0, 0, 0, 1, 0, 0, 0, 1, 0}); }
    // From (0, 0) to (1, 1), facing +z.
    void square() {
        positions({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
        indices({0, 1, 2, 0, 2, 3});
    }
    void indices(const Shorts &values) {
        primitive += ",\"indices\":" + add(5123, "SCALAR", values.size(), values);
    }
    // Each vertex follows one joint, by its number.
    void joints(const Shorts &ofVertices) {
        Shorts numbers;
        Floats weights;
        for (const unsigned short joint : ofVertices) {
            numbers.insert(numbers.end(), {joint, 0, 0, 0});
            weights.insert(weights.end(), {1, 0, 0, 0});
        }
        attribute("JOINTS_0", add(5123, "VEC4", ofVertices.size(), numbers));
        attribute("WEIGHTS_0", fours(weights));
    }

    // States a stride of the last accessor's values.
    void strideOfLast(int bytesApart) {
        views.insert(views.size() - 1, R"(,"byteStride":)" + std::to_string(bytesApart));
    }

    // The file, with its buffer in the text itself.
    std::string text() const {
        return textWith("data:application/octet-stream;base64," + base64());
    }
    // With its buffer in another file, or, without a name, in the same binary one.
    std::string textWith(const std::string &uri) const {
        std::string mesh =
            R"({"primitives":[{"attributes":{)" + attributes + "}" + primitive + "}]}";
        std::string all = mesh;
        for (int i = 1; i < meshes; ++i)
            all += "," + mesh;
        return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" + roots +
               R"(]}],"nodes":[)" + nodes + R"(],"meshes":[)" + all + "]" + members +
               R"(,"accessors":[)" + accessors + R"(],"bufferViews":[)" + views +
               R"(],"buffers":[{"byteLength":)" + std::to_string(bytes.size()) +
               (uri.empty() ? "" : R"(,"uri":")" + uri + '"') + "}]}";
    }
    const std::string &buffer() const { return bytes; }

  private:
    template <class T>
    std::string add(int componentType, const std::string &type, std::size_t count,
                    const std::vector<T> &values) {
        const std::size_t start = bytes.size(), size = values.size() * sizeof(T);
        const std::string comma = number ? "," : "";
        accessors += comma + R"({"bufferView":)" + std::to_string(number) + R"(,"componentType":)" +
                     std::to_string(componentType) + R"(,"count":)" + std::to_string(count) +
                     R"(,"type":")" + type + R"("})";
        views += comma + R"({"buffer":0,"byteOffset":)" + std::to_string(start) +
                 R"(,"byteLength":)" + std::to_string(size) + "}";
        bytes.resize((start + size + 3) / 4 * 4);
        std::memcpy(bytes.data() + start, values.data(), size);
        return std::to_string(number++);
    }

    std::string base64() const {
        const char *const letters =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            unsigned int bits = 0;
            for (std::size_t k = 0; k < 3; ++k)
                bits = bits << 8 |
                       (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
            for (std::size_t k = 0; k < 4; ++k)
                text += i + k > bytes.size() ? '=' : letters[bits >> (18 - 6 * k) & 63];
        }
        return text;
    }

    int number = 0;
    std::string attributes, accessors, views, bytes;
};

// A square at the end of a chain of nodes, 'n0' and so on, each a step along x from the one before.
inline std::string chainOfNodes(int depth) {
    GltfData data;
    data.square();
    for (int i = 0; i < depth; ++i)
        data.nodes +=
            (i ? ",{\"name\":\"n" : "{\"name\":\"n") + std::to_string(i) +
            "\",\"translation\":[1,0,0]," +
            (i + 1 < depth ? "\"children\":[" + std::to_string(i + 1) + "]}" : "\"mesh\":0}");
    return data.text();
}

} // namespace tool_test
