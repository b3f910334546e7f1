// The requested settings with their file, and the getters of the applied ones, which
// engine/app/window.cpp records.

#include "ravolt/RVSETTINGS.h"

#include "engine/state/version.h"
#include "foundation/text.h"
#include "ravolt/zlf.h"

#include <cstring>

RVSETTINGS::Applied RVSETTINGS::applied = {};

namespace {

void replaceText(char (&target)[256], const char *text) {
    if (text && std::strlen(text) < sizeof target)
        ravolt::copyText(target, text);
}

// The parser of `load`, closed by the destructor.
// On purpose: a file that could not be opened is read as one without keys, and closing it logs that
// there is nothing to close.
class SettingsFile {
  public:
    explicit SettingsFile(const char *filename) {
        if (!zlfOpenParser(&parser, filename))
            parser = {}; // a failure may leave it half set
        zlfRemoveComments(&parser, '#');
    }
    SettingsFile(const SettingsFile &) = delete;
    SettingsFile &operator=(const SettingsFile &) = delete;
    ~SettingsFile() { zlfCloseParser(&parser); }

    bool read(const char *key, int *value) { return zlfGetInt(&parser, key, value); }
    void read(const char *key, char *text) { zlfGetString(&parser, key, text); }

  private:
    zlfPARSER parser = {};
};

// The fields that a flag of a settings file may overwrite, in their order in memory.
struct FlagCells {
    bool *flags[4];
    int &audioChannels;
};

// On purpose: the number of a flag in the file is stored, with all its four bytes, over the fields
// from `flag` on, in their order in memory: fullScreen 0, resizable 1, landscape 2,
// CAVESplashScreen 3, then the bytes of audioChannels, lowest first. A flag is on when its byte is
// not zero.
void storeOverFlags(const FlagCells &cells, int flag, unsigned int value) {
    constexpr int numberOfFlags = 4;
    for (int cell = flag; cell < flag + 4; ++cell, value >>= 8) {
        const unsigned int byte = value & 0xFFu;
        if (cell < numberOfFlags) {
            *cells.flags[cell] = byte != 0;
            continue;
        }
        const int shift = 8 * (cell - numberOfFlags);
        const unsigned int others =
            static_cast<unsigned int>(cells.audioChannels) & ~(0xFFu << shift);
        cells.audioChannels = static_cast<int>(others | byte << shift);
    }
}

} // namespace

RVSETTINGS::RVSETTINGS()
    : title(), windowX(640), windowY(480), colorDepth(16), zetaDepth(16), stencilDepth(0),
      fullScreen(false), resizable(false), landscape(false), CAVESplashScreen(false),
      audioChannels(16), audioBuffers(32), audioElements(128), renderingElements(0),
      useShaders(false), shadowMapSize(1024), FBOSizeX(1024), FBOSizeY(768), waterSize(256),
      forceFBO(false), rvePath(), rvaPath(), mpgPath(), texturePath(), shaderPath(), fontPath(),
      videoMemory(0), maxAnisotropy(0), multisampling(0) {
    ravolt::copyText(title, ravolt::banner);
}

// The keys are read in the order of the rows, which is part of the format: a stored flag overwrites
// the fields after it, which later rows set again.
bool RVSETTINGS::load(const char *filename) {
    constexpr int plain = -1; // a number
    constexpr int alone = -2; // a flag followed by padding only
    struct NumberRow {
        const char *key;
        int RVSETTINGS::*field;
        int flag;
    };
    static constexpr NumberRow numbers[] = {
#define RV_SETTING_NUMBER(field) {"RAVOLT_" #field, &RVSETTINGS::field, plain},
#define RV_SETTING_FLAG(field, flag) {"RAVOLT_" #field, nullptr, flag},
#define RV_SETTING_TEXT(field)
#include "engine/state/settingsKeys.inc"
    };
    struct TextRow {
        const char *key;
        char (RVSETTINGS::*field)[256];
    };
    static constexpr TextRow texts[] = {
#define RV_SETTING_NUMBER(field)
#define RV_SETTING_FLAG(field, flag)
#define RV_SETTING_TEXT(field) {"RAVOLT_" #field, &RVSETTINGS::field},
#include "engine/state/settingsKeys.inc"
    };

    if (!filename) {
        zlfLog("   [!] Invalid params @ RVSETTINGS::load\n");
        return false;
    }
    if (!zlfFileExists(filename)) {
        zlfLog("   [!] File not found (%s) @ RVSETTINGS::load\n", filename);
        return false;
    }
    SettingsFile file(filename);
    const FlagCells cells = {{&fullScreen, &resizable, &landscape, &CAVESplashScreen},
                             audioChannels};
    for (const NumberRow &row : numbers) {
        int value = 0;
        if (!file.read(row.key, &value))
            continue;
        if (row.field)
            this->*row.field = value;
        else if (row.flag == alone)
            useShaders = (value & 0xFF) != 0;
        else
            storeOverFlags(cells, row.flag, static_cast<unsigned int>(value));
    }
    for (const TextRow &row : texts)
        file.read(row.key, this->*row.field);
    return true; // On purpose: also when the file could not be read, which the parser has logged.
}

void RVSETTINGS::setTitle(const char *text) { replaceText(title, text); }

char *RVSETTINGS::getTitle() { return title; }

void RVSETTINGS::setWindowX(int pixels) { windowX = pixels; }

int RVSETTINGS::getWindowX() const { return windowX; }

void RVSETTINGS::setWindowY(int pixels) { windowY = pixels; }

int RVSETTINGS::getWindowY() const { return windowY; }

void RVSETTINGS::setColorDepth(int bits) { colorDepth = bits; }

int RVSETTINGS::getColorDepth() const { return colorDepth; }

void RVSETTINGS::setZetaDepth(int bits) { zetaDepth = bits; }

int RVSETTINGS::getZetaDepth() const { return zetaDepth; }

void RVSETTINGS::setStencilDepth(int bits) { stencilDepth = bits; }

int RVSETTINGS::getStencilDepth() const { return stencilDepth; }

void RVSETTINGS::setFullScreen(bool on) { fullScreen = on; }

bool RVSETTINGS::isFullScreen() const { return fullScreen; }

void RVSETTINGS::setResizable(bool on) { resizable = on; }

bool RVSETTINGS::isResizable() const { return resizable; }

void RVSETTINGS::setLandscape(bool on) { landscape = on; }

bool RVSETTINGS::isLandscape() const { return landscape; }

void RVSETTINGS::setCAVESplashScreen(bool on) { CAVESplashScreen = on; }

bool RVSETTINGS::isCAVESplashScreen() const { return CAVESplashScreen; }

void RVSETTINGS::setAudioChannels(int number) { audioChannels = number; }

int RVSETTINGS::getAudioChannels() const { return audioChannels; }

void RVSETTINGS::setAudioBuffers(int number) { audioBuffers = number; }

int RVSETTINGS::getAudioBuffers() const { return audioBuffers; }

void RVSETTINGS::setAudioElements(int number) { audioElements = number; }

int RVSETTINGS::getAudioElements() const { return audioElements; }

void RVSETTINGS::setRenderingElements(int number) { renderingElements = number; }

int RVSETTINGS::getRenderingElements() const { return renderingElements; }

void RVSETTINGS::setShaders(bool on) { useShaders = on; }

bool RVSETTINGS::getShaders() const { return useShaders; }

void RVSETTINGS::setShadowMapSize(int pixels) { shadowMapSize = pixels; }

int RVSETTINGS::getShadowMapSize() const { return shadowMapSize; }

void RVSETTINGS::setFBOSizeX(int pixels) { FBOSizeX = pixels; }

int RVSETTINGS::getFBOSizeX() const { return FBOSizeX; }

void RVSETTINGS::setFBOSizeY(int pixels) { FBOSizeY = pixels; }

int RVSETTINGS::getFBOSizeY() const { return FBOSizeY; }

void RVSETTINGS::setWaterSize(int pixels) { waterSize = pixels; }

int RVSETTINGS::getWaterSize() const { return waterSize; }

void RVSETTINGS::setVideoMemory(int megabytes) { videoMemory = megabytes; }

int RVSETTINGS::getVideoMemory() const { return videoMemory; }

void RVSETTINGS::setMaxAnisotropy(int level) { maxAnisotropy = level; }

int RVSETTINGS::getMaxAnisotropy() const { return maxAnisotropy; }

void RVSETTINGS::setMultisampling(int samples) { multisampling = samples; }

int RVSETTINGS::getMultisampling() const { return multisampling; }

void RVSETTINGS::setForceFBO(bool on) { forceFBO = on; }

bool RVSETTINGS::getForceFBO() const { return forceFBO; }

void RVSETTINGS::setRVEPath(const char *path) { replaceText(rvePath, path); }

char *RVSETTINGS::getRVEPath() { return rvePath; }

void RVSETTINGS::setRVAPath(const char *path) { replaceText(rvaPath, path); }

char *RVSETTINGS::getRVAPath() { return rvaPath; }

void RVSETTINGS::setMPGPath(const char *path) { replaceText(mpgPath, path); }

char *RVSETTINGS::getMPGPath() { return mpgPath; }

void RVSETTINGS::setTexturePath(const char *path) { replaceText(texturePath, path); }

char *RVSETTINGS::getTexturePath() { return texturePath; }

void RVSETTINGS::setShaderPath(const char *path) { replaceText(shaderPath, path); }

char *RVSETTINGS::getShaderPath() { return shaderPath; }

void RVSETTINGS::setFontPath(const char *path) { replaceText(fontPath, path); }

char *RVSETTINGS::getFontPath() { return fontPath; }

bool RVSETTINGS::isActive() { return applied.active; }

void RVSETTINGS::forceShadersOff() { applied.useShaders = false; }

void RVSETTINGS::forceShadersOn() { applied.useShaders = true; }

char *RVSETTINGS::getSDLTitle() { return applied.title; }

int RVSETTINGS::getSDLWindowX() { return applied.windowX; }

int RVSETTINGS::getSDLWindowY() { return applied.windowY; }

int RVSETTINGS::getSDLColorDepth() { return applied.colorDepth; }

int RVSETTINGS::getSDLZetaDepth() { return applied.zetaDepth; }

int RVSETTINGS::getSDLStencilDepth() { return applied.stencilDepth; }

bool RVSETTINGS::isSDLFullScreen() { return applied.fullScreen; }

bool RVSETTINGS::isSDLResizable() { return applied.resizable; }

bool RVSETTINGS::isSDLLandscape() { return applied.landscape; }

bool RVSETTINGS::getSDLShaders() { return applied.useShaders; }

int RVSETTINGS::getSDLShadowMapSize() { return applied.shadowMapSize; }

int RVSETTINGS::getSDLFBOSizeX() { return applied.FBOSizeX; }

int RVSETTINGS::getSDLFBOSizeY() { return applied.FBOSizeY; }

int RVSETTINGS::getSDLWaterSize() { return applied.waterSize; }

int RVSETTINGS::getSDLMaxAnisotropy() { return applied.maxAnisotropy; }

int RVSETTINGS::getSDLMultisampling() { return applied.multisampling; }

bool RVSETTINGS::getSDLForceFBO() { return applied.forceFBO; }

void *RVSETTINGS::getSDLWindow() { return applied.window; }

int RVSETTINGS::getZLAAudioChannels() { return applied.audioChannels; }

int RVSETTINGS::getZLAAudioBuffers() { return applied.audioBuffers; }

int RVSETTINGS::getZLAAudioElements() { return applied.audioElements; }
