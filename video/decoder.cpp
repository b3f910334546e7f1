// The decoder of videos: the only source of the library that calls functions of libmpeg2.
//
// Invariant: `decoded` has an entry for each of the decoder's frame buffers that contains a frame
// of the current sequence, with the size of that frame. The decoder still reports a buffer after
// its sequence has ended and the buffer has been freed, and it reports a new size before there is a
// frame of it; a buffer without an entry is therefore never returned.
//
// Memory: of a damaged stream libmpeg2 shows what its memory contained before. ClearedMemory clears
// all of it, by a hook that is one for the whole process.

#include "video/decoder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

extern "C" { // missing in its headers
#include <mpeg2.h>

#include <mpeg2convert.h>
}

namespace {

using ravolt::VideoFrame;

// Clears the memory that libmpeg2 allocates, also for an application that uses it, too. The memory
// itself is still that of libmpeg2, so that blocks from before the hook, with it and after it are
// released in the same way. The hook is set when the engine is loaded, before the application's own
// code: hooks that the application sets later replace it, and then nothing clears the memory.
class ClearedMemory {
  public:
    ClearedMemory() {
        if (!hasOtherHook())
            mpeg2_malloc_hooks(allocate, nullptr);
    }
    ~ClearedMemory() {
        called = false;
        if (!hasOtherHook() && called)
            mpeg2_malloc_hooks(nullptr, nullptr);
    }
    ClearedMemory(const ClearedMemory &) = delete;
    ClearedMemory &operator=(const ClearedMemory &) = delete;

  private:
    // libmpeg2 allocates larger blocks by itself; its own arithmetic overflows for the largest.
    static constexpr unsigned int maxBytes = 1u << 30;

    // NULL lets libmpeg2 allocate by itself, which the call within does. Also when memory runs out.
    static void *allocate(unsigned int bytes, mpeg2_alloc_t reason) {
        called = true;
        if (active || bytes > maxBytes)
            return nullptr;
        active = true;
        void *const block = mpeg2_malloc(bytes, reason);
        active = false;
        return block ? std::memset(block, 0, bytes) : nullptr;
    }

    // An application that loads the engine late may have hooks by then, and only these release what
    // they allocate. libmpeg2 itself allocates no block of zero bytes.
    static bool hasOtherHook() {
        void *const block = mpeg2_malloc(0, MPEG2_ALLOC_CONVERT_ID);
        if (block)
            mpeg2_free(block);
        return block;
    }

    static thread_local inline bool active = false, called = false;
};
const ClearedMemory clearedMemory;

// No texture is larger. For larger sizes the decoder would allocate gigabytes without checking the
// result.
constexpr unsigned int maxSize = 4096;

// A field of a lower picture is lower than a macroblock of the decoder, which would write past it.
constexpr unsigned int minHeightOfFields = 32;

void readBlock(RVVIDEO_STREAM &stream) {
    stream.size = static_cast<int>(std::fread(stream.buffer, 1, sizeof stream.buffer, stream.file));
    mpeg2_buffer(stream.decoder, stream.buffer, stream.buffer + stream.size);
}

void clearFrames(RVVIDEO_STREAM &stream) {
    std::fill(std::begin(stream.decoded), std::end(stream.decoded), VideoFrame{});
}

VideoFrame frameOf(const mpeg2_sequence_t &sequence, const unsigned char *pixels) {
    return {pixels, sequence.width, sequence.height, sequence.picture_width,
            sequence.picture_height};
}

// Returns the size of a sequence that is too large, without pixels; the decoder then skips
// everything until the next sequence.
VideoFrame startSequence(RVVIDEO_STREAM &stream) {
    clearFrames(stream);
    const VideoFrame size = frameOf(*stream.sequence, nullptr);
    if (size.width > maxSize || size.height > maxSize) {
        mpeg2_reset(stream.decoder, 1);
        stream.sequence = nullptr;
        return size;
    }
    mpeg2_convert(stream.decoder, mpeg2convert_rgb24, nullptr);
    return {};
}

void startPicture(RVVIDEO_STREAM &stream) {
    const bool isField = stream.info->current_picture->nb_fields == 1;
    mpeg2_skip(stream.decoder, isField && stream.sequence->height < minHeightOfFields);
}

// `pixels` NULL finds an empty entry.
VideoFrame *entryOf(RVVIDEO_STREAM &stream, const unsigned char *pixels) {
    VideoFrame *const end = std::end(stream.decoded);
    VideoFrame *const found =
        std::find_if(std::begin(stream.decoded), end,
                     [=](const VideoFrame &frame) { return frame.pixels == pixels; });
    return found == end ? nullptr : found;
}

// A picture has been decoded into its buffer, unless it was skipped.
void addPicture(RVVIDEO_STREAM &stream) {
    const mpeg2_info_t &info = *stream.info;
    if (!info.sequence || !info.current_fbuf || !info.current_fbuf->buf[0] ||
        (info.current_picture->flags & PIC_FLAG_SKIP))
        return;
    const unsigned char *const pixels = info.current_fbuf->buf[0];
    VideoFrame *const known = entryOf(stream, pixels);
    if (VideoFrame *const entry = known ? known : entryOf(stream, nullptr))
        *entry = frameOf(*info.sequence, pixels);
}

VideoFrame displayFrame(RVVIDEO_STREAM &stream) {
    const mpeg2_fbuf_t *const buffer = stream.info->display_fbuf;
    const VideoFrame *const entry =
        buffer && buffer->buf[0] ? entryOf(stream, buffer->buf[0]) : nullptr;
    return entry ? *entry : VideoFrame{};
}

} // namespace

bool ravolt::startDecoder(RVVIDEO_STREAM &stream) {
    stream.decoder = mpeg2_init();
    if (!stream.decoder)
        return false;
    stream.info = mpeg2_info(stream.decoder);
    stream.sequence = nullptr;
    clearFrames(stream);
    return true;
}

void ravolt::stopDecoder(RVVIDEO_STREAM &stream) {
    mpeg2_close(stream.decoder);
    stream.decoder = nullptr;
}

ravolt::VideoFrame ravolt::decodeStep(RVVIDEO_STREAM &stream) {
    stream.state = mpeg2_parse(stream.decoder);
    stream.sequence = stream.info->sequence;
    switch (stream.state) {
    case STATE_BUFFER:
        readBlock(stream);
        return {};
    case STATE_SEQUENCE:
        return startSequence(stream);
    case STATE_PICTURE:
        startPicture(stream);
        return {};
    case STATE_SLICE:
        addPicture(stream);
        return displayFrame(stream);
    case STATE_END:
    case STATE_INVALID_END: {
        const VideoFrame last = displayFrame(stream);
        clearFrames(stream);
        return last;
    }
    default: // On purpose: damaged data are skipped without a message.
        return {};
    }
}
