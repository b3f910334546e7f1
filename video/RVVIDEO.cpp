// Videos: the registry, the file, the status and the copying of frames to the texture.
//
// Invariants: a stream has a file exactly when it has a decoder. A stream lives as long as a video,
// or a copy of one, points to it.

#include "ravolt/RVVIDEO.h"

#include "foundation/platform.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/textureInternals.h"
#include "video/decoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

using ravolt::VideoFrame;
using VideoRegistry = ravolt::Registry<RVVIDEO>;

RVVIDEO *RVVIDEO::firstVideo = nullptr;
RVVIDEO *RVVIDEO::lastVideo = nullptr;
char RVVIDEO::mpgPath[256] = "";

namespace {

// NULL when memory runs out; no file can be opened then.
RVVIDEO_STREAM *makeStream() {
    auto *stream = static_cast<RVVIDEO_STREAM *>(zlfMalloc(sizeof(RVVIDEO_STREAM)));
    if (stream) {
        std::memset(static_cast<void *>(stream), 0, sizeof *stream);
        stream->users = 1;
    }
    return stream;
}

// Replaces the stream of a video; a stream without users is deleted.
void setStream(RVVIDEO_STREAM *&stream, RVVIDEO_STREAM *other) {
    if (other)
        ++other->users;
    if (stream && --stream->users == 0) {
        delete[] stream->rows;
        zlfFree(stream);
    }
    stream = other;
}

void closeFile(RVVIDEO_STREAM &stream) {
    if (!stream.file)
        return;
    std::fclose(stream.file);
    stream.file = nullptr;
    ravolt::stopDecoder(stream);
}

// The collector deletes textures without references, and another one may be created at the same
// address. Copies of videos, which are not in the registry, still point to it.
void detachTexture(const RVTEXTURE &texture) {
    for (RVVIDEO *video = RVVIDEO::getFirst(); video; video = video->getNext())
        if (video->getTexture() == &texture)
            video->setTexture(nullptr);
}

// The texture of a copy of a video may have been deleted; see detachTexture.
bool isRegistered(const RVTEXTURE *texture) {
    const RVTEXTURE *each = RVTEXTURE::getFirst();
    while (each && each != texture)
        each = each->getNext();
    return each;
}

// A texture is refused with one line in the log.
bool isFirstRefusal(RVVIDEO_STREAM &stream, const RVTEXTURE *texture) {
    return std::exchange(stream.refusedBy, texture) != texture;
}

// Allocates room for a flipped frame, which the next frames use too. False when memory runs out.
bool reserveRows(RVVIDEO_STREAM &stream, std::size_t bytes) {
    if (stream.rowsSize >= bytes)
        return true;
    delete[] stream.rows;
    stream.rows = new (std::nothrow) unsigned char[bytes];
    stream.rowsSize = stream.rows ? bytes : 0;
    return stream.rows;
}

// A copy of the picture with its rows bottom up; without pixels when memory runs out. The frame
// itself is not changed, since the decoder may show it twice.
VideoFrame flip(RVVIDEO_STREAM &stream, const VideoFrame &frame) {
    const std::size_t rowBytes = std::size_t(frame.width) * 3;
    if (!reserveRows(stream, rowBytes * frame.pictureHeight))
        return {};
    unsigned char *target = stream.rows;
    for (unsigned int row = frame.pictureHeight; row-- > 0; target += rowBytes)
        std::memcpy(target, frame.pixels + row * rowBytes, rowBytes);
    VideoFrame flipped = frame;
    flipped.pixels = stream.rows;
    flipped.height = frame.pictureHeight;
    return flipped;
}

// A texture with room for the picture but not for the whole macroblocks gets the picture alone.
void show(const VideoFrame &frame, const RVVIDEO &video, RVVIDEO_STREAM &stream) {
    RVTEXTURE *const texture = video.getTexture();
    if (!texture || !isRegistered(texture) || !texture->getGLId())
        return;
    const unsigned int sizeX = texture->getSizeX(), sizeY = texture->getSizeY();
    if (frame.pictureWidth > sizeX || frame.pictureHeight > sizeY) {
        if (isFirstRefusal(stream, texture))
            zlfLog("   [!] Frame larger than its texture @ RVVIDEO::update\n");
        return;
    }
    const VideoFrame copied = video.isFlipped() ? flip(stream, frame) : frame;
    if (!copied.pixels) {
        if (isFirstRefusal(stream, texture))
            zlfLog("   [!] Out of memory @ RVVIDEO::update\n");
        return;
    }
    ravolt::TextureInternals::replacePixels(*texture, std::min(copied.width, sizeX),
                                            std::min(copied.height, sizeY), copied.width,
                                            copied.pixels);
    RVMATERIAL::reset(); // another texture is bound now
}

} // namespace

RVVIDEO::RVVIDEO()
    : id(zlfNewId()), texture(nullptr), status(RV_VIDEO_STOP), stream(makeStream()),
      registration(Registration{id, true}), flipped(false) {
    ravolt::formatText(name, "[video %d]", id);
    VideoRegistry::append(firstVideo, lastVideo, this);
}

RVVIDEO::RVVIDEO(const RVVIDEO &other)
    : previous(other.previous), next(other.next), stream(nullptr) {
    copyFields(other);
}

// On purpose: an open file and its decoder stay open.
RVVIDEO::~RVVIDEO() {
    setStream(stream, nullptr);
    if (!registration->registered)
        return;
    releaseId(registration->id);
    VideoRegistry::unlink(firstVideo, lastVideo, this);
}

RVVIDEO &RVVIDEO::operator=(const RVVIDEO &other) {
    if (this == &other)
        return *this;
    copyFields(other);
    if (registration->registered)
        return *this;
    previous = other.previous;
    next = other.next;
    return *this;
}

// All fields but the links of the registry.
void RVVIDEO::copyFields(const RVVIDEO &other) {
    id = other.id;
    std::memcpy(name, other.name, sizeof name);
    texture = other.texture;
    status = other.status;
    flipped = other.flipped;
    setStream(stream, other.stream);
}

bool RVVIDEO::load(const char *filename) {
    if (stream)
        stream->refusedBy = nullptr; // another video, another line in the log
    return open(filename);
}

bool RVVIDEO::open(const char *filename) try {
    if (stream && stream->file) {
        closeFile(*stream);
        status = RV_VIDEO_STOP;
    }
    const std::string path = filename ? std::string(mpgPath) + filename : "";
    if (!zlfFileExists(path.c_str())) {
        zlfLog("   [!] Invalid params or file not found @ RVVIDEO::load\n");
        return false;
    }
    zlfLog("\n");
    zlfLog("   Loading MPG file '%s'...\n", filename);
    ravolt::File file = ravolt::platform::openForReading(path.c_str());
    if (!file) {
        zlfLog("   [!] Unable to open file %s @ RVVOLT::load\n", path.c_str());
        return false;
    }
    if (!stream || !ravolt::startDecoder(*stream)) {
        zlfLog("   [!] Decoder failed to initialize @ RVVIDEO::load\n");
        return false;
    }
    stream->file = file.release();
    stream->size = -1;
    ravolt::copyText(name, filename); // which may be the name itself
    status = RV_VIDEO_STOP;
    return true;
} catch (const std::bad_alloc &) {
    zlfLog("   [!] Out of memory for file %s%s @ RVVIDEO::load\n", mpgPath, filename);
    return false;
}

// On purpose: a rewind waits for the end of the video.
bool RVVIDEO::update(unsigned int steps) {
    if (!stream)
        return true;
    if (status == RV_VIDEO_REWIND && stream->size == 0) {
        restart();
        return true;
    }
    for (; steps && status != RV_VIDEO_STOP && stream->file; --steps) {
        const VideoFrame frame = ravolt::decodeStep(*stream);
        if (frame.width)
            show(frame, *this, *stream);
        if (stream->size == 0)
            restart();
    }
    return true;
}

void RVVIDEO::restart() {
    const bool wasLooping = status == RV_VIDEO_PLAYLOOP;
    closeFile(*stream);
    open(name);
    if (wasLooping)
        status = RV_VIDEO_PLAYLOOP;
}

void RVVIDEO::play() { status = RV_VIDEO_PLAY; }
void RVVIDEO::playLoop() { status = RV_VIDEO_PLAYLOOP; }
void RVVIDEO::rewind() { status = RV_VIDEO_REWIND; }
void RVVIDEO::stop() { status = RV_VIDEO_STOP; }
RV_VIDEO_STATUS RVVIDEO::getStatus() const { return status; }

void RVVIDEO::setTexture(RVTEXTURE *newTexture) {
    ravolt::TextureInternals::onDestruction = detachTexture;
    if (stream && !newTexture)
        stream->refusedBy = nullptr; // the next texture may be at its address
    texture = newTexture;
}
RVTEXTURE *RVVIDEO::getTexture() const { return texture; }

void RVVIDEO::flipOn() { flipped = true; }
void RVVIDEO::flipOff() { flipped = false; }
bool RVVIDEO::isFlipped() const { return flipped; }

unsigned int RVVIDEO::getId() const { return id; }
char *RVVIDEO::getName() { return name; }

bool RVVIDEO::cleanUp() { return VideoRegistry::cleanUp(firstVideo) != 0; }

unsigned int RVVIDEO::getNumberOfVideos() { return VideoRegistry::count(firstVideo); }

RVVIDEO *RVVIDEO::findById(unsigned int id) { return VideoRegistry::findById(firstVideo, id); }

RVVIDEO *RVVIDEO::findByFilename(const char *filename) {
    return VideoRegistry::findByText(firstVideo, &RVVIDEO::name, filename);
}

RVVIDEO *RVVIDEO::getFirst() { return firstVideo; }
RVVIDEO *RVVIDEO::getNext() const { return next; }
RVVIDEO *RVVIDEO::getPrevious() const { return previous; }

char *RVVIDEO::getMPGPath() { return mpgPath; }
void RVVIDEO::setMPGPath(const char *path) { ravolt::copyText(mpgPath, path); }
