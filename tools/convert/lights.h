#pragma once

// Lights of a model as those of a scene file.

#include "tools/common/algebra.h"
#include "tools/common/report.h"
#include "tools/convert/import.h"
#include "tools/writers/rveWriter.h"

#include <map>
#include <string>
#include <vector>

namespace ravolt::tool {

// The lights that a scene can store, by the name of their node. The others are reported.
class ModelLights {
  public:
    ModelLights(const Model &model, Report &report);

    // Those of one node, if any.
    std::vector<const aiLight *> of(const std::string &node) const;

    // `light` transformed by `frame`.
    ravolt::RveNode convert(const aiLight &light, const Affine &frame) const;

  private:
    std::multimap<std::string, const aiLight *> byNode;
    bool halfCones;
};

} // namespace ravolt::tool
