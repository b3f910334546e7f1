#pragma once

#include <string>
#include <vector>

namespace terrain_test {

// A grey PNG picture of 8 or 16 bits, stored without compression; rows from the top down.
std::string pngOf(unsigned int width, unsigned int bits, const std::vector<unsigned int> &values);

} // namespace terrain_test
