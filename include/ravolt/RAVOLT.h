#pragma once

// The entry point of the engine: static members only, never instantiated. It starts and stops the
// engine, begins and ends each frame, owns the frame clock, the frame stamp and the count of the
// video memory, and has the switches of the effects that the frame reads.
//
// All of it runs on the thread that called `init`, which owns the OpenGL context. A frame is
// `clear`, `begin3D`, `pass` on the 3D roots, `end3D`, `begin2D`, `pass` on the 2D nodes, `end2D`,
// `swap`. The application must call them in this order; it is not checked. Events are the
// application's as well.

#include "ravolt/api.h"

class RVCAMERA;
class RVNODE;
class RVSETTINGS;

class RV_API RAVOLT {
  public:
    // Opens the window and starts every class. `settings` is read during the call only; NULL means
    // a default RVSETTINGS. False with a `[!]` line when the engine is already running or a step
    // fails; what was started is then stopped. The effect switches and the stamp are those that the
    // last run left.
    static bool init(RVSETTINGS *settings);

    // Destroys every node, render target, program, material, texture, clip and video that still
    // exists, also those that the application made, and closes the window. False, without a log
    // line, when the engine is not running.
    static bool free();

    // True from the end of `init` to the end of `free`.
    static bool isActive();

    // First call of a frame. Binds render target 0 when the settings or an effect require it; else
    // the frame is drawn into what is bound. Then clears the given buffers. Always true.
    static bool clear(bool color, bool depth, bool stencil);

    // Starts the 3D block: advances clock and stamp, empties the render list and loads the
    // camera's view. NULL means a default camera. Always true.
    static bool begin3D(RVCAMERA *camera);

    // Sorts and draws what was passed since `begin3D`, with the effects. A picture in render target
    // 0 is copied to the window when `blit` is true and the settings do not force target 0; else
    // the target remains bound. `blit` has no effect on a picture drawn into the window. Always
    // true.
    static bool end3D(bool blit);

    // The same for the 2D block, whose coordinates are pixels of the current viewport with the
    // origin at the top left. Always true.
    static bool begin2D();
    static bool end2D();

    // Ends the frame: waits for the GPU and shows the picture, when a window is open. Always true.
    static bool swap();

    // Advances the frame clock, once per frame; `begin3D` and `begin2D` do so, too. A log line
    // while the engine is not running.
    static void updateTimer();

    // Frames per second, and the duration of a frame in seconds, both of the last complete frame;
    // -1 and a log line while the engine is not running.
    static float getFPS();
    static float getFPSfactor();

    // Additional: the duration in seconds that every frame counts as, so that particles, waves,
    // adaptation and the blinking of cursors are the same in each run; 0, the default, and less for
    // the measured one. While it is set, the two functions above return it and its inverse. Births
    // of particles use the standard library's rand: call std::srand, too.
    static void setFrameDuration(float seconds);
    static float getFrameDuration();

    // Number of the 3D frame. It starts at 65536; each `begin3D` adds 1.
    static long getTimeStamp();

    // Id of the mesh or custom node under the pixel (x, y) of the window, counted from its top
    // left; 0 for none. In landscape mode the pixel is (height of the window - y, x). A node with
    // an auxiliary id gives that id instead. On purpose the pixel that is read is the one above,
    // (x, y - 1), and that of the highest row is outside of the window: kit::Picker is right there,
    // too. Ids are read back from colours: at a colour depth of
    // 16 bits (RVSETTINGS::getSDLColorDepth) their low 16 bits, at 24 their low 24, at 32 all of
    // them; at other depths any bit of an id may be lost. Draws the last 3D block again, so call it
    // between `end3D` and `begin2D`. The depth of the pixel is lost. While bloom or depth of field
    // is on, or the settings force target 0, the pixel is one of target 0, and that target is bound
    // on return: call RVFBO::unbind before a 2D block for the window.
    static unsigned int select(int x, int y);

    // Loads a scene file (RVE) from the RVE path and returns its root, or NULL with a log line. The
    // node registry owns the tree. The textures that the file names are loaded with it, from the
    // texture path, and the programs NAMEVS.glsl and NAMEPS.glsl, from the shader path. For a
    // texture NAME_d.tga the normal map NAME_n.tga is loaded, too, when a file of that name exists
    // without the path (it is then read from the texture path). What cannot be read is logged, and
    // the scene is loaded all the same. Clips are not loaded: see RVANIM. A material whose name is
    // registered already is not changed and is used by the meshes of the file, so give the
    // materials of different scenes different names.
    // A name that contains ".xml" or ".XML" is that of an interface, which loadXML loads.
    static RVNODE *load(const char *fileName);

    // Builds the widgets that an XML file describes, linked below a new plain node, which is
    // returned, or NULL with a log line. The file name is used without a path; the paths of
    // RVTEXTURE::setPath and RVFONT::setPath are prepended to those of textures and kerning files.
    // The registries own the nodes, fonts and textures; objects created before a failure remain.
    static RVNODE *loadXML(const char *fileName);

    // Additional: whether the files that a scene file, an interface, an emitter or a terrain names
    // are confined to the paths of their kinds (off by default). Recommended for files from
    // untrusted sources. While it is on, the name of a texture, a program, a kerning file or a
    // geometry in such a file that is absolute or has a component ".." is refused with a log line,
    // as if the file were missing. A slash and a backslash separate components, and a drive letter
    // makes a name absolute, on every system. Symbolic links are followed: a link below a path that
    // points elsewhere is not detected. Names that the application itself passes, as to `load`, are
    // not confined. The geometry of a terrain has no path in front of its name, which may be
    // absolute if the file is in the working directory.
    static void confineFilesOn();
    static void confineFilesOff();
    static bool isConfiningFiles();

    // Video memory in bytes: the total, what is charged, and the difference, which wraps below
    // zero.
    static unsigned int getVideoMemory();
    static unsigned int getUsedVideoMemory();
    static unsigned int getFreeVideoMemory();

    // Add `bytes` to what is charged and subtract them; both return the new sum, which is not
    // checked and wraps.
    static unsigned int pushVideoMemory(unsigned int bytes);
    static unsigned int popVideoMemory(unsigned int bytes);

    // Polygons as lines, without culling, from the next `end3D` to the next `begin2D`. While bloom
    // or depth of field is on, the quad that copies the picture to the window is drawn as lines,
    // too, and hardly shows anything of the picture: switch these effects off for wireframes.
    static void wireframeOn();
    static void wireframeOff();
    static bool isWireframed();

    // Shadows of one spot light per frame: the last one in the render list that casts shadows (see
    // RVLIGHT::castShadows). A frame without such a light is drawn without shadows and logs a line.
    // On purpose transparent nodes are blended twice in a frame with shadows, and so look denser.
    // `shadowingOn` is ignored when the shadow programs are missing.
    static void shadowingOn();
    static void shadowingOff();
    static bool isShadowed();

    // The next frame with shadows uses the shadow map of the last one.
    static void skipShadowsGeneration();

    // Additional: polygon offset (as in glPolygonOffset) of what is drawn into the shadow map; 0
    // and 0 by default, which do not change OpenGL's offset. Only back faces are drawn into the
    // map. Where the faces of a model are doubled, as those of two-sided materials are, a lit face
    // casts stripes of shadow on itself. (4, 8) removes them.
    static void setShadowOffset(float factor, float units);
    static float getShadowOffsetFactor();
    static float getShadowOffsetUnits();

    // Bloom, and the alpha of its overlay (1 by default). The switch is a request: it may be on
    // where bloom is not supported.
    static void bloomingOn();
    static void bloomingOff();
    static bool isBlooming();
    static void setBloomingIntensity(float intensity);
    static float getBloomingIntensity();

    // Tone mapping, which has an effect only together with bloom, and its exposure (1 by default).
    // Each frame with tone mapping prints the line "luminance: VALUE" to standard output. The eye
    // adapts to the mean luminance within some frames; on purpose it overshoots in a frame of more
    // than a second.
    static void HDROn();
    static void HDROff();
    static bool isHDR();
    static void setHDRExposure(float exposure);
    static float getHDRExposure();

    // Depth of field. A depth is coded as (distance from the eye + near plane) / far plane. `focus`
    // (1 by default) is the code that is sharp; the blur is complete where the code differs from it
    // by 1 / `range` (range is 2 by default).
    // Depths are coded before the lights of the frame are chosen: a mesh that has not been lit
    // before, as in the first frame, counts as far away.
    static void DOFOn();
    static void DOFOff();
    static void setDOFFocus(float focus);
    static void setDOFRange(float range);
    static float getDOFFocus();
    static float getDOFRange();

    // Does nothing; the application advances its videos itself.
    static void updateVideo();

    // Prefix of the names of scene files. NULL makes it empty; it is cut to 255 characters. The
    // getter returns the engine's own buffer.
    static void setRVEPath(const char *path);
    static char *getRVEPath();

    // Node whose first child is drawn as the sky: it rotates with the camera and is never
    // translated. NULL for none. The engine does not own it.
    static void setSkybox(RVNODE *node);
    static RVNODE *getSkybox();

  private:
    struct Lifecycle; // the steps of `init` and `free`
    struct Frame;     // the steps of a frame
    static RVNODE *recursiveLoad(char *buffer, long *cursor, RVNODE *parent);
    static bool recursiveInitBones(RVNODE *root, RVNODE *node);
    static RVNODE *recursiveLoadXML(RVNODE *parent, void *xmlNode); // a TiXmlNode

    static bool active;
    static bool wireframe;
    static bool shadowing;
    static bool blooming;
    static unsigned int videoMemoryTotal;
    static unsigned int videoMemoryUsed;
    static bool HDR;
    static bool DOF;
    static bool skipShadows;
    static bool renderingOnFbo; // this frame draws into render target 0, not into the window
    static char rvePath[256];
    static RVNODE *skybox;
    static int timer; // slot of the foundation's timers; not reset by `free`
    static int timeStamp;
    static float bloomingIntensity;
    static float HDRExposure;
    static float HDRCurrentLuminance; // adapted from frame to frame
    static float DOFFocus;
    static float DOFRange;
};
