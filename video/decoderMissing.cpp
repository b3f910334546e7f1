// The decoder of a build without libmpeg2 (RAVOLT_VIDEO=OFF): it never starts.

#include "video/decoder.h"

bool ravolt::startDecoder(RVVIDEO_STREAM &) { return false; }
void ravolt::stopDecoder(RVVIDEO_STREAM &) {}
ravolt::VideoFrame ravolt::decodeStep(RVVIDEO_STREAM &) { return {}; }
