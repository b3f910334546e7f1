// Fonts: the registry, the atlas and the corrections. The glyphs are in gui/fontGlyphs.cpp, the
// texts in gui/fontText.cpp.

#include "ravolt/RVFONT.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "gui/fontCharacters.h"
#include "gui/kerningFile.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using ravolt::firstCharacter, ravolt::isCharacter;
using FontRegistry = ravolt::Registry<RVFONT>;

RVFONT *RVFONT::firstFont = nullptr;
RVFONT *RVFONT::lastFont = nullptr;
char RVFONT::fontPath[256] = "";

RVFONT::RVFONT()
    : id(zlfNewId()), kerning{}, charSizeX(16), charSizeY(16), previous(nullptr), next(nullptr),
      registration(Registration{true, id}) {
    ravolt::formatText(name, "[font %d]", id);
    FontRegistry::append(firstFont, lastFont, this);
}

RVFONT::~RVFONT() {
    if (!registration->registered)
        return;
    if (texture)
        texture->decReferences();
    releaseId(registration->id);
    FontRegistry::unlink(firstFont, lastFont, this);
}

RVFONT::RVFONT(const RVFONT &other) : previous(nullptr), next(nullptr) { *this = other; }

RVFONT &RVFONT::operator=(const RVFONT &other) {
    id = other.id;
    texture.set(other.texture.get());
    std::copy(std::begin(other.kerning), std::end(other.kerning), kerning);
    charSizeX = other.charSizeX;
    charSizeY = other.charSizeY;
    ravolt::copyText(name, other.name);
    return *this;
}

bool RVFONT::cleanUp() {
    if (!firstFont)
        return false;
    const unsigned int number = FontRegistry::cleanUp(firstFont);
    zlfLog("   %d font(s) released\n", number);
    return true;
}

unsigned int RVFONT::getNumberOfFonts() { return FontRegistry::count(firstFont); }
RVFONT *RVFONT::findById(unsigned int wanted) { return FontRegistry::findById(firstFont, wanted); }
RVFONT *RVFONT::findByName(const char *wanted) {
    return FontRegistry::findByText(firstFont, &RVFONT::name, wanted);
}

void RVFONT::setPath(const char *path) { ravolt::copyText(fontPath, path); }
char *RVFONT::getPath() { return fontPath; }

void RVFONT::setName(const char *newName) {
    if (newName && std::strlen(newName) < sizeof name)
        ravolt::copyText(name, newName);
}

bool RVFONT::setTexture(RVTEXTURE *newTexture) {
    if (!newTexture) {
        zlfLog("   [!] Invalid params @ RVFONT::setTexture\n");
        return false;
    }
    if (texture)
        texture->decReferences();
    texture.set(newTexture);
    texture->incReferences();
    return true;
}

bool RVFONT::loadKerning(const char *filename) {
    if (!filename) {
        zlfLog("   [!] Invalid params @ RVFONT::loadKerning\n");
        return false;
    }
    const ravolt::FilePath path(fontPath, filename);
    if (!zlfFileExists(path.get())) {
        zlfLog("   [!] File not found (%s) @ RVFONT::loadKerning\n", filename);
        return false;
    }
    return ravolt::readKerningFile(path.get(), kerning);
}

bool RVFONT::setKerning(char c, char value) {
    if (!isCharacter(c)) {
        zlfLog("   [!] Invalid params @ RVFONT::setKerning\n");
        return false;
    }
    kerning[c - firstCharacter] = static_cast<signed char>(value);
    return true;
}

char RVFONT::getKerning(char c) const {
    return isCharacter(c) ? static_cast<char>(kerning[c - firstCharacter]) : '\0';
}

// Wraps around where the character moves the pen to the left.
unsigned int RVFONT::advanceOf(char c) const {
    return charSizeX - static_cast<unsigned int>(static_cast<signed char>(getKerning(c)));
}
