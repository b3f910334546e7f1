#pragma once

// Files of a test, as bytes or as text.

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace ravolt::test {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline void writeFile(const std::string &name, std::string_view text) {
    std::ofstream(name, std::ios::binary) << text;
}

inline void writeFile(const std::string &name, const Bytes &bytes) {
    writeFile(name, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
}

// Empty where there is no such file.
inline Bytes readFile(const std::string &name) {
    std::ifstream file(name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline std::string readText(const std::string &name) {
    const Bytes bytes = readFile(name);
    return {bytes.begin(), bytes.end()};
}

} // namespace ravolt::test
