#pragma once

class RVSHADER;

namespace ravolt {

// Sets the public pointer to a built-in program to NULL, since `program` is being deleted. Any
// other program changes nothing. Defined in resources/builtinPrograms.cpp.
void onProgramDestroyed(const RVSHADER *program);

} // namespace ravolt
