// No splash picture, which takes most of the time of a start. The programs are linked with --wrap
// for its function.

#include "engine/app/splash.h"

// The name that the linker gives it.
std::unique_ptr<unsigned char[]> withoutSplash() asm("__wrap__ZN6ravolt13splashPictureEv");

std::unique_ptr<unsigned char[]> withoutSplash() { return nullptr; }
