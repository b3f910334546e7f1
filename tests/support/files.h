#pragma once

// Files of a test as bytes.

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace ravolt::test {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline void writeFile(const std::string &name, const Bytes &bytes) {
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

// Empty where there is no such file.
inline Bytes readFile(const std::string &name) {
    std::ifstream file(name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

} // namespace ravolt::test
