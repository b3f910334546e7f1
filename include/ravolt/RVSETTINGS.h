#pragma once

// Start-up settings, and the view of the settings in force.
//
// An object is a plain record: build it at any time, fill it by setters or from a file, hand it to
// RAVOLT::init, which reads it and does not keep it. The static members (getSDL..., isSDL...,
// getZLA...) tell what the running engine uses: zeros before the first start, and the last values
// after RAVOLT::free.
//
// Text setters take texts of up to 255 characters and silently drop a longer one or NULL; numbers
// are taken as they come. Getters of texts hand out the object's own buffer.

#include "ravolt/api.h"

class RAVOLT;

class RV_API RVSETTINGS {
  public:
    RVSETTINGS();

    // Reads the keys RAVOLT_... of a settings file (one `key=value` a line, texts in double quotes,
    // # opens a comment); a key that is absent leaves its field alone. False with a log line when
    // `filename` is NULL or no such file is there, true in every other case. Blanks and tabs are
    // dropped, in quoted texts too. Reading a flag overwrites the flags declared behind it. The
    // keys are listed in formats.md, which is installed in the documentation folder
    // (share/doc/ravolt).
    bool load(const char *filename);

    // Whether SDL can open such a window. Opens nothing. Before RAVOLT::init call
    // SDL_Init(SDL_INIT_VIDEO): without it the result is false.
    bool isOk();

    // Window caption; empty for a window without frame. The engine's banner at first.
    void setTitle(const char *text);
    char *getTitle();

    // Size of the window in pixels (640 by 480).
    void setWindowX(int pixels);
    int getWindowX() const;
    void setWindowY(int pixels);
    int getWindowY() const;

    // Bits asked for: of a pixel (16), of its depth (16), of its stencil (0). A colour depth of 32
    // asks for alpha.
    void setColorDepth(int bits);
    int getColorDepth() const;
    void setZetaDepth(int bits);
    int getZetaDepth() const;
    void setStencilDepth(int bits);
    int getStencilDepth() const;

    // Flags, all off at first. A full screen is never resizable. Landscape turns the display by
    // 90 degrees. A CAVE splash stands on the left half of a window kept on top.
    void setFullScreen(bool on);
    bool isFullScreen() const;
    void setResizable(bool on);
    bool isResizable() const;
    void setLandscape(bool on);
    bool isLandscape() const;
    void setCAVESplashScreen(bool on);
    bool isCAVESplashScreen() const;

    // Carried and logged only (16, 32, 128).
    void setAudioChannels(int number);
    int getAudioChannels() const;
    void setAudioBuffers(int number);
    int getAudioBuffers() const;
    void setAudioElements(int number);
    int getAudioElements() const;

    // Most nodes drawn in one block (0); 0 and what is above 4096 mean 4096.
    void setRenderingElements(int number);
    int getRenderingElements() const;

    // Asks for GLSL programs (off).
    void setShaders(bool on);
    bool getShaders() const;

    // Side of the square shadow map (1024), size of the full-size render targets (1024 by 768),
    // side of the square water map (256), in pixels.
    void setShadowMapSize(int pixels);
    int getShadowMapSize() const;
    void setFBOSizeX(int pixels);
    int getFBOSizeX() const;
    void setFBOSizeY(int pixels);
    int getFBOSizeY() const;
    void setWaterSize(int pixels);
    int getWaterSize() const;

    // Draws always into render target 0 (off). No key of the settings file sets it.
    void setForceFBO(bool on);
    bool getForceFBO() const;

    // Additional: budget of the video memory in megabytes of 1,048,576 bytes (0); more than 2047
    // means 2047. 0 and less leave it at what SDL reports, or at 16 MB where SDL reports nothing.
    void setVideoMemory(int megabytes);
    int getVideoMemory() const;

    // Texts put in front of file names: scenes, animations, videos, textures, shaders, fonts. All
    // empty at first. At its start the engine passes on all but the video path, which the
    // application passes on itself: RVVIDEO::setMPGPath(settings.getMPGPath()).
    void setRVEPath(const char *path);
    char *getRVEPath();
    void setRVAPath(const char *path);
    char *getRVAPath();
    void setMPGPath(const char *path); // not passed on: see RVVIDEO::setMPGPath
    char *getMPGPath();
    void setTexturePath(const char *path);
    char *getTexturePath();
    void setShaderPath(const char *path);
    char *getShaderPath();
    void setFontPath(const char *path);
    char *getFontPath();

    // Whether a window is open, from the start of the engine to its end.
    static bool isActive();

    // Call on a resize event: gives window and viewport the new size in pixels, (x, y) being the
    // viewport's corner counted from the window's top left. The context and its objects live on;
    // render targets keep their sizes. A size below 1 is logged and changes no window, but the size
    // in force and the projection take it all the same, so that nothing sensible is drawn until the
    // next good size: skip such events. Always true.
    static bool resize(int x, int y, int sizeX, int sizeY);

    // Change what getSDLShaders says of the running engine.
    static void forceShadersOff();
    static void forceShadersOn();

    // The settings in force. Depths are those obtained: the colour depth is the sum of the red,
    // green, blue and alpha bits.
    static char *getSDLTitle();
    static int getSDLWindowX();
    static int getSDLWindowY();
    static int getSDLColorDepth();
    static int getSDLZetaDepth();
    static int getSDLStencilDepth();
    static bool isSDLFullScreen();
    static bool isSDLResizable();
    static bool isSDLLandscape();
    static bool getSDLShaders();
    static int getSDLShadowMapSize();
    static int getSDLFBOSizeX();
    static int getSDLFBOSizeY();
    static int getSDLWaterSize();
    static bool getSDLForceFBO();

    // The window system's handle: on X11 the window's number, cast. NULL where there is none.
    static void *getSDLWindow();

    // 0 whatever was asked for.
    static int getZLAAudioChannels();
    static int getZLAAudioBuffers();
    static int getZLAAudioElements();

  private:
    friend class RAVOLT;

    bool init();
    static bool free();

    void recordObtainedMode();

    // The order is part of the settings file's format: see `load`.
    char title[256];
    int windowX;
    int windowY;
    int colorDepth;
    int zetaDepth;
    int stencilDepth;
    bool fullScreen;
    bool resizable;
    bool landscape;
    bool CAVESplashScreen;
    int audioChannels;
    int audioBuffers;
    int audioElements;
    int renderingElements;
    bool useShaders;
    int shadowMapSize;
    int FBOSizeX;
    int FBOSizeY;
    int waterSize;
    bool forceFBO;
    char rvePath[256];
    char rvaPath[256];
    char mpgPath[256];
    char texturePath[256];
    char shaderPath[256];
    char fontPath[256];
    int videoMemory; // megabytes; 0 for what SDL reports

    struct Applied {
        bool active;
        char title[256];
        int windowX;
        int windowY;
        int colorDepth;
        int zetaDepth;
        int stencilDepth;
        bool fullScreen;
        bool resizable;
        bool landscape;
        bool useShaders;
        bool forceFBO;
        int shadowMapSize;
        int FBOSizeX;
        int FBOSizeY;
        int waterSize;
        void *window;
        int audioChannels;
        int audioBuffers;
        int audioElements;
        int renderingElements;
    };
    static Applied applied;
};
