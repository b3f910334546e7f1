#pragma once

// What a video asks of its decoder. A build without libmpeg2 has one that never starts.

#include "video/stream.h"

namespace ravolt {

// False when there is no decoder to be had.
bool startDecoder(RVVIDEO_STREAM &stream);
void stopDecoder(RVVIDEO_STREAM &stream);

// One step of the parser, for a stream whose decoder has started and whose file is open. Gives the
// frame that is due, which holds until the next step; without pixels when none is.
VideoFrame decodeStep(RVVIDEO_STREAM &stream);

} // namespace ravolt
