#pragma once

// The decoder of a video. A build without libmpeg2 has one that never starts.

#include "video/stream.h"

namespace ravolt {

// False when the decoder cannot be created.
bool startDecoder(RVVIDEO_STREAM &stream);
void stopDecoder(RVVIDEO_STREAM &stream);

// One step of the parser, for a stream whose decoder has started and whose file is open. Returns
// the frame to display, which is valid until the next step; without pixels when there is none.
VideoFrame decodeStep(RVVIDEO_STREAM &stream);

} // namespace ravolt
