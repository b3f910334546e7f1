#pragma once

// Values of files as JSON and in messages.

#include "foundation/bytes.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "tools/inspect/inspection.h"
#include "tools/inspect/names.h"

namespace ravolt::tool::inspect {

// A file as its bytes. Throws Failure.
void readBytes(const Inspection &inspection, FileBytes &bytes);

// Numbers that JSON has no form for are null.
Json number(float value);
Json vector(const Z3MVECTOR3D &value);
Json vector(const Z3MVECTOR4D &value);

bool isFinite(const Z3MVECTOR3D &value);
bool isFinite(const Z3MVECTOR4D &value);

} // namespace ravolt::tool::inspect
