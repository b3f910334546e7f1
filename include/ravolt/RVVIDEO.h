#pragma once

#include "ravolt/api.h"
#include "ravolt/owned.h"

class RVTEXTURE;
namespace ravolt {
struct VideoFrame;
}

// What a video does at the next update.
enum RV_VIDEO_STATUS {
    RV_VIDEO_STOP = 0,
    RV_VIDEO_PLAY = 1,     // at its end it rewinds and stops
    RV_VIDEO_PLAYLOOP = 2, // at its end it rewinds and goes on
    RV_VIDEO_REWIND = 3    // plays to its end, rewinds and stops
};

// The file and the decoder of a video; the inside of the library alone knows it.
struct RVVIDEO_STREAM;

// A video on a texture: an MPEG-1 or MPEG-2 elementary video stream, of which each displayed frame
// is copied into a texture that the application has made. It is no node: whatever shows the texture
// shows the video. There is no clock: the video advances in `update` alone, by as many steps as are
// asked for. Videos stand in a registry, which owns them: make them with `new`; RAVOLT::free or
// cleanUp deletes those that the application has not deleted. A library built without its decoder
// has the class all the same, but no video loads.
class RV_API RVVIDEO {
  public:
    // Registers the video under a fresh identifier and the name "[video ID]"; stopped, without file
    // and texture.
    RVVIDEO();
    // Gives the identifier back and leaves the registry. A file and a decoder that are open stay
    // so: close them before with load(NULL), which gives false and logs its line for a file that
    // was not found. (At its end a video is open again, at its start.)
    ~RVVIDEO();

    // A copy has the values of every field, the stream, the identifier and the name included, so
    // that it goes on with the same video; it is not registered and gives no identifier back. The
    // stream stays as long as anything shares it.
    RVVIDEO(const RVVIDEO &other);
    // Copies every field. A registered video keeps its place in the registry and still gives back
    // the identifier that it was created with.
    RVVIDEO &operator=(const RVVIDEO &other);

    // Opens a video and stops it at its start; `filename` is taken behind the path of setMPGPath. A
    // video that is open is closed first, whatever comes then. False, with a line in the log, for
    // NULL, no such file, no decoder, or no memory. What the file holds is not looked at yet.
    bool load(const char *filename);

    // Takes `steps` steps of the decoder, of which a frame needs a varying number, in any status
    // but RV_VIDEO_STOP. Each frame that is due is copied to the origin of the texture, first row
    // at V = 0; the picture needs a texture of 24 or 32 bits, in video memory, without
    // mipmaps and at least as wide and as high as the picture in pixels. A larger frame is refused,
    // with one line in the log. Of width and height rounded up to multiples of 16 (height of 32 for
    // interlaced MPEG-2) the texture has room for the whole macroblocks, else it gets the picture
    // alone. Without a texture the frames are dropped. The end of the file takes the video back to
    // its start, by another load of its name behind the path of that moment, with the lines that
    // load logs. A rewind is carried out at the end only. Broken data are passed over. Needs the
    // engine's context. Always true.
    bool update(unsigned int steps);

    // These set the status and nothing else.
    void play();
    void playLoop();
    void rewind();
    void stop();
    RV_VIDEO_STATUS getStatus() const;

    // Where the frames go; NULL for nowhere. The texture's references are not counted: see that
    // something else holds one, or the collector may delete it, and the video then goes nowhere.
    void setTexture(RVTEXTURE *texture);
    RVTEXTURE *getTexture() const;

    // Additional: copies each frame with its rows bottom up, from the next frame on (off at first).
    // The last row of the picture is then at V = 0, so that the video stands upright on a quad
    // whose V = 0 is its lower edge; its first row ends at V = (picture height) / (texture height).
    // Only the rows of the picture are copied, not those that fill its last macroblocks. A frame
    // that there is no memory to turn is dropped, with one line in the log.
    void flipOn();
    void flipOff();
    bool isFlipped() const;

    unsigned int getId() const;
    // The name of the file as given to load, without the path; at most 255 characters are kept.
    char *getName();

    // Deletes all videos; every pointer to one is invalid then. False when there are none.
    static bool cleanUp();

    static unsigned int getNumberOfVideos();
    // The first match in order of creation, or NULL. Letters count as they stand.
    static RVVIDEO *findById(unsigned int id);
    static RVVIDEO *findByFilename(const char *filename);
    static RVVIDEO *getFirst();
    // The neighbours in order of creation. A copy has those that its original had then.
    RVVIDEO *getNext() const;
    RVVIDEO *getPrevious() const;

    // What is put before every file name, with no separator added; NULL empties it. At most 255
    // characters are kept. A video that is played looks for its file behind it again at each end,
    // so do not change it meanwhile. The engine's start does not take it from the settings: pass on
    // RVSETTINGS::getMPGPath yourself.
    static char *getMPGPath();
    static void setMPGPath(const char *path);

  private:
    void copyFields(const RVVIDEO &other);
    void share(RVVIDEO_STREAM *other);
    bool open(const char *filename);
    void close();
    void step();
    void startAgain();
    void show(const ravolt::VideoFrame &frame);

    unsigned int id;
    char name[256];
    RVTEXTURE *texture;
    RVVIDEO *previous, *next;
    RV_VIDEO_STATUS status;
    RVVIDEO_STREAM *stream;
    ravolt::Owned<unsigned int> ownId; // to be released; 0 for a copy, which is not registered
    bool flipped;

    static RVVIDEO *firstVideo, *lastVideo;
    static char mpgPath[256];

    friend struct ravolt::Registry<RVVIDEO>;
};
