#include "gui/kerningFile.h"

#include "foundation/text.h"
#include "ravolt/zlf.h"

namespace ravolt {

namespace {

constexpr char firstCharacter = ' ';

void readEntry(zlfPARSER &parser, const char *key, char c, signed char *kerning) {
    int value = 0;
    if (zlfGetInt(&parser, key, &value))
        kerning[c - firstCharacter] = static_cast<signed char>(value);
}

} // namespace

// On purpose: a key is found anywhere in a line, so that the line of SPACE, if it comes first, is
// that of the letter S, too.
bool readKerningFile(const char *path, signed char *kerning) {
    zlfPARSER parser;
    if (!zlfOpenParser(&parser, path))
        return false;
    zlfRemoveComments(&parser, '#');
    for (unsigned int i = 0; i < kerningFileEntries; ++i) {
        char key[32];
        const char c = static_cast<char>(firstCharacter + i);
        formatText(key, "RAVOLT_kerning_%c", c);
        readEntry(parser, key, c, kerning);
    }
    readEntry(parser, "RAVOLT_kerning_SPACE", ' ', kerning);
    readEntry(parser, "RAVOLT_kerning_DIESIS", '#', kerning);
    readEntry(parser, "RAVOLT_kerning_EQUAL", '=', kerning);
    return zlfCloseParser(&parser);
}

} // namespace ravolt
