#pragma once

// The parameters of a program by slot, unless they are bound to another name.

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace ravolt::test {

inline const std::vector<std::string> parameterNames = [] {
    std::istringstream names("textureSampler0 textureSampler1 width height boneQuat boneTrans "
                             "boneIndex boneWeight textureSampler2 textureSampler3 maxLuminance "
                             "exposure focus range near far textureSampler4 textureSampler5 "
                             "textureSampler6 textureSampler7 textureSampler8 textureSampler9 "
                             "textureSampler10 textureSampler11 textureSampler12 textureSampler13 "
                             "textureSampler14 textureSampler15");
    return std::vector<std::string>(std::istream_iterator<std::string>(names), {});
}();

} // namespace ravolt::test
