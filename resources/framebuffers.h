#pragma once

namespace ravolt {

// Whether frame buffer objects can be used: RVOPENGL::useFBO(), and the driver has handed out each
// of their functions. Asked in place of the flag wherever one of the functions would be called.
bool framebuffersWork();

} // namespace ravolt
