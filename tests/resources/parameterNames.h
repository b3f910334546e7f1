#pragma once

// The parameters of a program by slot, as they stand without another name.

#include "ravolt/RVSHADER.h"

namespace ravolt::test {

inline constexpr const char *parameterNames[RVSHADER::parameters] = {"textureSampler0",
                                                                     "textureSampler1",
                                                                     "width",
                                                                     "height",
                                                                     "boneQuat",
                                                                     "boneTrans",
                                                                     "boneIndex",
                                                                     "boneWeight",
                                                                     "textureSampler2",
                                                                     "textureSampler3",
                                                                     "maxLuminance",
                                                                     "exposure",
                                                                     "focus",
                                                                     "range",
                                                                     "near",
                                                                     "far",
                                                                     "textureSampler4",
                                                                     "textureSampler5",
                                                                     "textureSampler6",
                                                                     "textureSampler7",
                                                                     "textureSampler8",
                                                                     "textureSampler9",
                                                                     "textureSampler10",
                                                                     "textureSampler11",
                                                                     "textureSampler12",
                                                                     "textureSampler13",
                                                                     "textureSampler14",
                                                                     "textureSampler15"};

} // namespace ravolt::test
