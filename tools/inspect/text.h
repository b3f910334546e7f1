#pragma once

#include "tools/inspect/inspection.h"

#include <string>

namespace ravolt::tool::inspect {

// What a file holds, in lines.
std::string textOf(const Json &content);

// "FILE:OFFSET: error: reason" or "FILE:LINE:COLUMN: warning: reason".
std::string textOf(const std::filesystem::path &file, const Finding &finding);

// The same as JSON; docs/ravolt-info.schema.json and docs/ravolt-check.schema.json describe it.
Json infoOf(const Inspection &inspection);
Json checkOf(const Inspection &inspection);

} // namespace ravolt::tool::inspect
