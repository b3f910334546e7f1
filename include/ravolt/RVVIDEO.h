#pragma once

#include "ravolt/api.h"
#include "ravolt/owned.h"

class RVTEXTURE;

// What a video does at the next update.
enum RV_VIDEO_STATUS : unsigned int {
    RV_VIDEO_STOP = 0,
    RV_VIDEO_PLAY = 1,     // at its end it rewinds and stops
    RV_VIDEO_PLAYLOOP = 2, // at its end it rewinds and goes on
    RV_VIDEO_REWIND = 3    // plays to its end, rewinds and stops
};

// The file and the decoder of a video; internal to the library.
struct RVVIDEO_STREAM;

// A video on a texture: an MPEG-1 or MPEG-2 elementary video stream, of which each displayed frame
// is copied into a texture that the application has created. It is no node: whatever shows the
// texture shows the video. There is no clock: the video advances only in `update`, by the number of
// steps that is passed. Videos are in a registry, which owns them: make them with `new`;
// RAVOLT::free or cleanUp deletes those that the application has not deleted. In a library built
// without its decoder no video loads.
class RV_API RVVIDEO {
  public:
    // Registers the video under a fresh identifier and the name "[video ID]"; stopped, without file
    // and texture.
    RVVIDEO();
    // Releases the identifier and leaves the registry. An open file and its decoder are not closed:
    // close them before with load(NULL), which returns false and logs that the file was not found.
    // (A video that has ended is open again, at its start.)
    ~RVVIDEO();

    // A copy has the values of every field, the stream, the identifier and the name included, so
    // that it plays the same video; it is not registered and releases no identifier. The stream
    // exists as long as any object shares it.
    RVVIDEO(const RVVIDEO &other);
    // Copies every field. The position in the registry does not change, and a registered video
    // still releases the identifier that it was created with.
    RVVIDEO &operator=(const RVVIDEO &other);

    // Opens a video and stops it at its start; `filename` is appended to the path of setMPGPath. An
    // open video is closed first, even if this fails. False, with a line in the log, for NULL, no
    // such file, no decoder, or no memory. The contents of the file are not checked yet.
    bool load(const char *filename);

    // Runs `steps` steps of the decoder, unless the status is RV_VIDEO_STOP; a frame takes a
    // varying number of them. Each displayed frame is copied to the origin of the texture, first
    // row at V = 0; the texture must have 24 or 32 bits, be in video memory without mipmaps, and be
    // at least as wide and as high as the picture in pixels. A larger frame is refused, with one
    // line in the log. A texture with room for width and height rounded up to multiples of 16
    // (height of 32 for interlaced MPEG-2) gets whole macroblocks, a smaller one the picture alone.
    // Without a texture the frames are dropped. At the end of the file the video returns to its
    // start: its name is loaded again from the current path, with the log lines of load. A rewind
    // is carried out at the end only. Damaged data are skipped. Needs the engine's context. Always
    // true.
    bool update(unsigned int steps);

    // These set the status and nothing else.
    void play();
    void playLoop();
    void rewind();
    void stop();
    RV_VIDEO_STATUS getStatus() const;

    // The target of the frames; NULL for none. This adds no reference to the texture: without any
    // other, the collector may delete it; the video then has none, and its frames are dropped.
    void setTexture(RVTEXTURE *texture);
    RVTEXTURE *getTexture() const;

    // Additional: copies each frame with its rows bottom up, from the next frame on (default: off).
    // The last row of the picture is then at V = 0, so that the video stands upright on a quad
    // whose V = 0 is its lower edge; its first row ends at V = (picture height) / (texture height).
    // Only the rows of the picture are copied, not those that fill its last macroblocks. Without
    // memory for the flipped rows the frame is dropped, with one line in the log.
    void flipOn();
    void flipOff();
    bool isFlipped() const;

    // The video's own number.
    unsigned int getId() const;
    // The name of the file as given to load, without the path; at most 255 characters are kept.
    char *getName();

    // Deletes all videos; every pointer to one is invalid then. False when there are none.
    static bool cleanUp();

    // The number of videos that exist.
    static unsigned int getNumberOfVideos();
    // The first match in order of creation, or NULL. Case matters.
    static RVVIDEO *findById(unsigned int id);
    static RVVIDEO *findByFilename(const char *filename);
    static RVVIDEO *getFirst();
    // The neighbours in order of creation. A copy has those of its original when it was copied.
    RVVIDEO *getNext() const;
    RVVIDEO *getPrevious() const;

    // The prefix of every file name; no separator is added, and NULL empties it. At most 255
    // characters are kept. A video that is playing opens its file with it again at each end, so do
    // not change it meanwhile. The start of the engine does not set it from the settings: pass
    // RVSETTINGS::getMPGPath yourself.
    static char *getMPGPath();
    static void setMPGPath(const char *path);

  private:
    void copyFields(const RVVIDEO &other);
    bool open(const char *filename);
    void restart();

    unsigned int id;
    char name[256];
    RVTEXTURE *texture;
    RVVIDEO *previous, *next;
    RV_VIDEO_STATUS status;
    RVVIDEO_STREAM *stream;
    struct Registration {
        unsigned int id = 0; // to be released; 0 where all identifiers were used
        bool registered = false;
    };
    ravolt::Owned<Registration> registration; // a copy is not registered
    bool flipped;

    static RVVIDEO *firstVideo, *lastVideo;
    static char mpgPath[256];

    friend struct ravolt::Registry<RVVIDEO>;
};
