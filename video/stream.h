#pragma once

// The file and the decoder of a video, without the headers of libmpeg2.

#include <cstddef>
#include <cstdio>

struct mpeg2dec_s;
struct mpeg2_info_s;
struct mpeg2_sequence_s;
class RVTEXTURE;

namespace ravolt {

// A frame in the decoder's memory: R G B, eight bits each, rows of `width` pixels without gaps
// between them. Width and height are whole macroblocks; the picture fills the first part of each.
struct VideoFrame {
    const unsigned char *pixels; // NULL for no frame
    unsigned int width, height;
    unsigned int pictureWidth, pictureHeight;
};

constexpr std::size_t blockBytes = 4096; // bytes read at a time
constexpr std::size_t decoderFrames = 3; // its frame buffers

} // namespace ravolt

struct RVVIDEO_STREAM {
    unsigned char buffer[ravolt::blockBytes];
    mpeg2dec_s *decoder;
    const mpeg2_info_s *info;
    const mpeg2_sequence_s *sequence;
    int state;       // mpeg2_state_t, the last result of the parser
    int size;        // of the last block read; -1 after load, 0 at the end of the file
    std::FILE *file; // NULL when none is open

    ravolt::VideoFrame decoded[ravolt::decoderFrames]; // the decoded frames of the sequence
    unsigned int users;                                // videos that share the stream
    unsigned char *rows;                               // owned: a frame with its rows bottom up
    std::size_t rowsSize;                              // bytes
    const RVTEXTURE *refusedBy; // compared, never followed: this texture has its line in the log
};
