#pragma once

// Requested settings (objects), and the settings that the engine applied (static members).
//
// An object is a plain record: create it at any time, fill it by setters or from a file, and pass
// it to RAVOLT::init, which only reads it. The static getters (getSDL..., isSDL..., getZLA...)
// return what the running engine uses: zeros before the first start, and the last values after
// RAVOLT::free.
//
// Setters of texts accept up to 255 characters and silently ignore a longer text or NULL; numbers
// are not checked. Getters of texts return the object's own buffer.

#include "ravolt/api.h"

class RAVOLT;

class RV_API RVSETTINGS {
  public:
    RVSETTINGS();

    // Reads the keys RAVOLT_... of a settings file (one `key=value` per line, texts in double
    // quotes, # begins a comment). An absent key does not change its field. False with a log line
    // when `filename` is NULL or the file does not exist, else true. Blanks and tabs are removed,
    // in quoted texts, too. Reading a flag overwrites the flags that are declared after it. The
    // keys are listed in formats.md, which is installed in the documentation folder
    // (share/doc/ravolt).
    bool load(const char *filename);

    // Whether SDL can open such a window; none is opened. Before RAVOLT::init call
    // SDL_Init(SDL_INIT_VIDEO): without it the result is false.
    bool isOk();

    // Window caption; empty for a window without frame. By default the engine's name and version.
    void setTitle(const char *text);
    char *getTitle();

    // Size of the window in pixels (640 by 480).
    void setWindowX(int pixels);
    int getWindowX() const;
    void setWindowY(int pixels);
    int getWindowY() const;

    // Requested bits of a pixel (16), of its depth (16), of its stencil (0). A colour depth of 32
    // requests alpha.
    void setColorDepth(int bits);
    int getColorDepth() const;
    void setZetaDepth(int bits);
    int getZetaDepth() const;
    void setStencilDepth(int bits);
    int getStencilDepth() const;

    // Flags, all off by default. A full-screen window is never resizable. Landscape turns the
    // display by 90 degrees. With the CAVE splash the window stays on top, and the splash is in its
    // left half.
    void setFullScreen(bool on);
    bool isFullScreen() const;
    void setResizable(bool on);
    bool isResizable() const;
    void setLandscape(bool on);
    bool isLandscape() const;
    void setCAVESplashScreen(bool on);
    bool isCAVESplashScreen() const;

    // Stored and logged, without effect (16, 32, 128).
    void setAudioChannels(int number);
    int getAudioChannels() const;
    void setAudioBuffers(int number);
    int getAudioBuffers() const;
    void setAudioElements(int number);
    int getAudioElements() const;

    // Maximum number of nodes drawn in one block (0); 0 and values above 4096 mean 4096.
    void setRenderingElements(int number);
    int getRenderingElements() const;

    // Requests GLSL programs (off).
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

    // Always draws into render target 0 (off). No key of the settings file sets it.
    void setForceFBO(bool on);
    bool getForceFBO() const;

    // Additional: budget of the video memory in megabytes of 1,048,576 bytes (0); more than 2047
    // means 2047. 0 and less mean what SDL reports, or 16 MB where SDL reports nothing.
    void setVideoMemory(int megabytes);
    int getVideoMemory() const;

    // Additional: the largest anisotropy of the textures' filter; 0, the default, and less mean the
    // driver's, which it never exceeds. 1 is fastest. On Mesa's software driver 16 makes frames
    // several times slower, and where a surface is seen from its very edge they may never end.
    void setMaxAnisotropy(int level);
    int getMaxAnisotropy() const;

    // Additional: samples of each pixel of the window, for smooth edges in frames that are drawn
    // straight into it (0); 0 and less mean none. Frames with bloom, depth of field or
    // setForceFBO are drawn into a render target, which has no more samples. Where the driver
    // refuses, a log line says so and the window has none; getSDLMultisampling is what was
    // obtained. An application that reads such a window's pixels calls the function that
    // SDL_GL_GetProcAddress("glReadPixels") returns: SDL 1.2's interface on SDL 2 draws into a
    // frame buffer of its own, which no other function reads.
    void setMultisampling(int samples);
    int getMultisampling() const;

    // Prefixes of file names: scenes, animations, videos, textures, shaders, fonts. No separator is
    // added. All empty by default. RAVOLT::init passes all but the video path to their classes; the
    // application passes that one itself: RVVIDEO::setMPGPath(settings.getMPGPath()).
    void setRVEPath(const char *path);
    char *getRVEPath();
    void setRVAPath(const char *path);
    char *getRVAPath();
    void setMPGPath(const char *path); // not applied by init: see RVVIDEO::setMPGPath
    char *getMPGPath();
    void setTexturePath(const char *path);
    char *getTexturePath();
    void setShaderPath(const char *path);
    char *getShaderPath();
    void setFontPath(const char *path);
    char *getFontPath();

    // True from RAVOLT::init, once the window is open, to RAVOLT::free.
    static bool isActive();

    // Call it on a resize event: sets the size of window and viewport in pixels. (x, y) is the
    // viewport's corner, counted from the window's top left. The context and its objects remain;
    // render targets are not resized. A size below 1 is logged and changes no window, but the
    // applied size and the projection take it all the same, so that nothing sensible is drawn until
    // the next valid size: skip such events. Always true.
    static bool resize(int x, int y, int sizeX, int sizeY);

    // Change the result of getSDLShaders.
    static void forceShadersOff();
    static void forceShadersOn();

    // The applied settings. Depths are those obtained: the colour depth is the sum of the red,
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
    static int getSDLMaxAnisotropy(); // additional
    static int getSDLMultisampling(); // additional: samples of a pixel, 0 without multisampling

    // The window system's handle: on X11 the window's number, cast. NULL where there is none.
    static void *getSDLWindow();

    // Always 0, whatever was requested.
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
    int videoMemory;   // megabytes; 0 for what SDL reports
    int maxAnisotropy; // 0 for the driver's
    int multisampling; // samples of a pixel of the window

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
        int maxAnisotropy;
        int multisampling;
        void *window;
        int audioChannels;
        int audioBuffers;
        int audioElements;
        int renderingElements;
    };
    static Applied applied;
};
