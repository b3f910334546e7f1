#pragma once

// The viewer of what is shown on a stage: models, scenes and emitters.

#include "tools/commands/viewLoop.h"

namespace ravolt::tool {

// What the user switches remains in the options, for the next file.
Ending viewModel(ViewSession &session, ViewOptions &options);

// Its keys, without the common ones.
TextRows modelKeys();

} // namespace ravolt::tool
