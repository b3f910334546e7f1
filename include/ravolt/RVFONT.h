#pragma once

#include "ravolt/api.h"
#include "ravolt/owned.h"
#include "ravolt/weakPointer.h"

#include <cstddef>

class RVTEXTURE;

// Glyphs that are drawn by one call.
constexpr unsigned int RV_FONT_GLYPHS = 1024;

// A bitmap font: a texture of 16 by 16 cells, the blank in the first cell of the top row, and for
// each character how much less than a cell it advances. Strings are drawn in the 2D block, one draw
// call each, in white until a colour tag. Inline tags, of six characters each, in either case:
//
//   ^cRGBA  the colour from here on, each a digit from 0 to 8; on purpose a 9 wraps around to dark
//   ^xNNNN  moves the pen by NNNN pixels in X, a number as for atoi: "^x-010" moves it to the left
//   ^yNNNN  likewise in Y
//
// A `^` before any other character is an ordinary one. Bytes below 0x20 and from 0x80 on are drawn,
// and measured, as blanks of a whole cell. All fonts are in a registry, which owns them: create
// them with `new`; RAVOLT::free or cleanUp deletes those that the application has not deleted.
// Widgets without their font draw no text.
class RV_API RVFONT {
  public:
    // Registers the font under a fresh identifier and the name "[font ID]"; cells of 16 by 16
    // pixels, no texture, all corrections 0.
    RVFONT();
    // Releases the texture's reference and the identifier, and removes the font from the registry.
    ~RVFONT();

    // A copy has the values of every field, but is not registered, owns nothing and releases
    // nothing. Assignment likewise; a registered font stays where it is in the registry and still
    // releases the identifier that it was created with. The texture's references do not change.
    RVFONT(const RVFONT &other);
    RVFONT &operator=(const RVFONT &other);

    // For RAVOLT::init and RAVOLT::free: the memory of the glyphs. init is false, with a line in
    // the log, without memory.
    static bool init();
    static bool free();
    // Discards glyphs that a truncated tag has left; begin2D calls it.
    static void reset();

    // Deletes all fonts. False when there are none.
    static bool cleanUp();
    static RVFONT *getFirst() { return firstFont; }
    static unsigned int getNumberOfFonts();
    // The first match in order of creation, or NULL. Case counts.
    static RVFONT *findById(unsigned int id);
    static RVFONT *findByName(const char *name);
    RVFONT *getNext() const { return next; }
    RVFONT *getPrevious() const { return previous; }

    // The prefix of kerning files, without an added separator; NULL empties it. At most 255
    // characters are stored.
    static void setPath(const char *path);
    static char *getPath();

    // The font's own number, and its name.
    unsigned int getId() const { return id; }
    char *getName() { return name; }
    // NULL, or 256 characters and more, changes nothing.
    void setName(const char *name);

    // Takes a reference to the texture and releases that of the one before. Row 0 of the cells lies
    // at V = 1. False, with a line in the log, for NULL.
    bool setTexture(RVTEXTURE *texture);

    // Cell on the screen in pixels; Y is also the distance of lines. On purpose X is also the
    // number of cells that the engine skips for a row of the texture: with another width than 16,
    // glyph i of row r is taken from column i - X * r.
    void setCharSizeX(unsigned int pixels) { charSizeX = pixels; }
    unsigned int getCharSizeX() const { return charSizeX; }
    void setCharSizeY(unsigned int pixels) { charSizeY = pixels; }
    unsigned int getCharSizeY() const { return charSizeY; }

    // Reads the corrections from a kerning file, to whose name the path of setPath is prepended;
    // those of characters that it does not name are not changed. False, with a line in the log, for
    // NULL and for a file that cannot be read.
    bool loadKerning(const char *filename);
    // Pixels, signed, that a character advances less than a cell; for characters from 0x20 to 0x7F.
    // setKerning is false, with a line in the log, for others, and getKerning 0.
    bool setKerning(char c, char value);
    char getKerning(char c) const;

    // Stores a glyph at (x, y), its top left corner, for the next putString; or, `immediate`, draws
    // it at once. False for an immediate glyph without a texture, and without init.
    bool putChar(int x, int y, char c, bool immediate);

    // printf at (x, y). At most 4,095 bytes; what is longer is cut, with a line in the log. False
    // without a texture, for a truncated tag, where nothing is drawn, and, with a line in the log,
    // for NULL.
    [[gnu::format(printf, 4, 5)]] bool putString(int x, int y, const char *format, ...);

    // Width in pixels of a text of one line; a truncated tag ends it. 0, with a line in the log,
    // for NULL.
    unsigned int stringLength(const char *text) const;

    // Breaks a text into lines of at most `maxWidth` pixels, at blanks where there are any, else
    // within the word, and returns the height of the lines after the first one. On purpose a line
    // that follows a break of the text itself counts as one cell longer. `maxHeight` is ignored on
    // purpose. `destination` has room for the source and one character for each break
    // within a word: twice the source's length is always enough. 0, with a line in the log, for
    // NULL.
    int format(const char *source, char *destination, unsigned int maxWidth,
               unsigned int maxHeight) const;

    // Additional: the same into `size` bytes; what is longer is cut, with a line in the log.
    int formatInto(const char *source, char *destination, std::size_t size,
                   unsigned int maxWidth) const;

    // Additional: draws a text as it is, without printf; false for NULL, and otherwise as
    // putString. Widgets expand "%%" alone.
    bool putText(int x, int y, const char *text);

  private:
    static constexpr unsigned int kerningEntries = 96; // from 0x20 to 0x7F

    // The object's entry in the registry; none for a copy.
    struct Registration {
        bool registered;
        unsigned int id; // to be released; `id` may come from another object
    };

    unsigned int advanceOf(char c) const;
    void storeGlyph(int x, int y, char c) const;
    const char *addGlyphs(int &x, int y, const char *text) const;
    const char *addKnownGlyphs(int &x, int y, const char *text) const;
    static void countGlyphs(unsigned int number);
    bool storeText(int x, int y, const char *text);
    void bindAtlas() const;
    static void setPointers(unsigned int firstGlyph);
    static void drawFullCache();
    static bool hasCache();

    unsigned int id;
    ravolt::WeakPointer<RVTEXTURE> texture;
    signed char kerning[kerningEntries];
    unsigned int charSizeX, charSizeY;
    char name[256];
    RVFONT *previous, *next;
    ravolt::Owned<Registration> registration;
    ravolt::WeakPointers<RVFONT> weakPointers;

    static RVFONT *firstFont, *lastFont;
    static char fontPath[256];
    // RV_FONT_GLYPHS glyphs of six vertices; NULL while the engine is not started.
    static float *fontCachedVertex;
    static float *fontCachedTexCoord;
    static unsigned char *fontCachedColor;
    static unsigned short *fontCachedIndex;
    static unsigned int fontCachedCurrent;         // glyphs in use
    static unsigned char fontCachedBlockColor[24]; // of the next glyph
    static bool fontCacheFlushed;                  // drawn because it was full

    friend struct ravolt::Registry<RVFONT>;
};
