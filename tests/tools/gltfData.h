#pragma once

// The data of small glTF 2 files, which tests write as text.

#include <cstring>
#include <string>
#include <vector>

namespace tool_test {

// Collects accessors, each with a view of its own into one buffer that the text itself holds.
class GltfData {
  public:
    // Each returns the number of the accessor.
    int floats(const std::string &type, std::size_t components, const std::vector<float> &values) {
        return add(5126, type, values.size() / components, values);
    }
    int scalars(const std::vector<float> &values) { return floats("SCALAR", 1, values); }
    int points(const std::vector<float> &values) { return floats("VEC3", 3, values); }
    int fours(const std::vector<float> &values) { return floats("VEC4", 4, values); }
    int indices(const std::vector<unsigned short> &values) {
        return add(5123, "SCALAR", values.size(), values);
    }
    // Four to a vertex.
    int joints(const std::vector<unsigned short> &values) {
        return add(5123, "VEC4", values.size() / 4, values);
    }
    // For each joint the place from where it stood when the skin was bound.
    int bindPlaces(const std::vector<std::vector<float>> &places) {
        std::vector<float> values;
        for (const std::vector<float> &p : places)
            values.insert(values.end(),
                          {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -p[0], -p[1], -p[2], 1});
        return floats("MAT4", 16, values);
    }

    // States a stride of the last one's values.
    void strideOfLast(int bytesApart) {
        views.insert(views.size() - 1, R"(,"byteStride":)" + std::to_string(bytesApart));
    }

    // The members of the file that hold all of it.
    std::string members() const {
        return tables(R"(,"uri":"data:application/octet-stream;base64,)" + base64() + '"');
    }
    // Those of a binary file, which has the buffer itself elsewhere.
    std::string membersOfBinary() const { return tables(""); }
    // Those of a file whose buffer is that other file.
    std::string membersWith(const std::string &uri) const {
        return tables(R"(,"uri":")" + uri + '"');
    }
    const std::string &buffer() const { return bytes; }

  private:
    std::string tables(const std::string &source) const {
        return R"("accessors":[)" + accessors + R"(],"bufferViews":[)" + views +
               R"(],"buffers":[{"byteLength":)" + std::to_string(bytes.size()) + source + "}]";
    }

    template <class T>
    int add(int componentType, const std::string &type, std::size_t count,
            const std::vector<T> &values) {
        const std::size_t size = values.size() * sizeof(T);
        const std::string comma = number ? "," : "";
        accessors += comma + R"({"bufferView":)" + std::to_string(number) + R"(,"componentType":)" +
                     std::to_string(componentType) + R"(,"count":)" + std::to_string(count) +
                     R"(,"type":")" + type + R"("})";
        views += comma + R"({"buffer":0,"byteOffset":)" + std::to_string(bytes.size()) +
                 R"(,"byteLength":)" + std::to_string(size) + "}";
        const std::size_t start = bytes.size();
        bytes.resize((start + size + 3) / 4 * 4);
        std::memcpy(bytes.data() + start, values.data(), size);
        return number++;
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
    std::string accessors, views, bytes;
};

} // namespace tool_test
