#pragma once

// The engine's front door: static members only, never instantiated. It brings the engine up and
// down, opens and closes each frame, keeps the frame clock and stamp and the video-memory ledger,
// and holds the wishes for effects that the frame reads.
//
// All of it runs on the one thread that called `init` and so owns the OpenGL context. A frame is
// `clear`, `begin3D`, `pass` on the 3D roots, `end3D`, `begin2D`, `pass` on the 2D nodes, `end2D`,
// `swap`; the order is the application's duty, nothing checks it. Events stay with the application.

#include "ravolt/api.h"

class RVCAMERA;
class RVNODE;
class RVSETTINGS;

class RV_API RAVOLT {
  public:
    // Opens the window and starts every class; `settings` is read during the call and not kept, and
    // NULL stands for a default RVSETTINGS. False with a `[!]` line when the engine is up already
    // or a step failed; what was started is then undone. The effect switches and the stamp stay as
    // a former run left them.
    static bool init(RVSETTINGS *settings);

    // Destroys every node, render target, program, material and texture that still lives, whoever
    // made it, and closes the window. False, without a word, when the engine is not up.
    static bool free();

    // True from the end of `init` to the end of `free`.
    static bool isActive();

    // First call of a frame: chooses what the frame draws into, which is render target 0 where the
    // settings or an effect ask for it and else what is bound, and clears the chosen buffers of it.
    // Always true.
    static bool clear(bool color, bool depth, bool stencil);

    // Starts the 3D block: advances clock and stamp, empties the render list and loads the
    // camera's view. NULL stands for a default camera. Always true.
    static bool begin3D(RVCAMERA *camera);

    // Sorts and draws what was passed since `begin3D`, with the effects. `blit` brings a picture
    // drawn into render target 0 to the window, unless the settings keep it there; without it the
    // target stays bound. It has no effect on a picture drawn into the window. Always true.
    static bool end3D(bool blit);

    // The same for the 2D block, whose coordinates are pixels of the current viewport with the
    // origin at the top left. Always true.
    static bool begin2D();
    static bool end2D();

    // Ends the frame: waits for the card and shows the picture, when a window is open. Always true.
    static bool swap();

    // Advances the frame clock, once in a frame; `begin3D` and `begin2D` do so too. A log line
    // while the engine is down.
    static void updateTimer();

    // Frames a second, and the length of a frame in seconds, both of the last full frame; -1 and a
    // log line while the engine is down.
    static float getFPS();
    static float getFPSfactor();

    // Number of the 3D frame. It starts at 65536 and rises by 1 in each `begin3D`.
    static long getTimeStamp();

    // Id of the mesh or custom node under the pixel (x, y) of the window, counted from its top
    // left; 0 for none. In landscape mode the pixel is (height of the window - y, x). A node with
    // an auxiliary id is reported by that instead. Ids are read back from colours: at a colour
    // depth of 16 bits (RVSETTINGS::getSDLColorDepth) their low 16 bits, at 24 their low 24, at 32
    // all; at other depths the colour is taken as it is read, and an id may lose bits anywhere.
    // Draws the last 3D block again, so call it between `end3D` and `begin2D`. The depth of the
    // pixel is lost. While bloom or depth of field is on, or the settings force target 0, the pixel
    // is one of target 0, and that target is bound on return: call RVFBO::unbind before a 2D block
    // that is meant for the window.
    static unsigned int select(int x, int y);

    // Loads a scene file (RVE), found under the RVE path, and returns its root, or NULL with a
    // log line. The node registry owns the tree. The textures that the file names are loaded
    // with it, from the texture path, and the programs NAMEVS.glsl and NAMEPS.glsl, from the shader
    // path. A texture NAME_d.tga is joined by the normal map NAME_n.tga when a file of that name is
    // there without the path (it is then read from the texture path). What cannot be read is
    // logged, and the scene is loaded all the same. Clips are not loaded: see RVANIM. A material
    // whose name is registered already stays as it is and serves the meshes of the file, so give
    // the materials of different scenes different names.
    static RVNODE *load(const char *fileName);

    // Additional: whether scene files are confined to the paths of their kinds (off at first);
    // advised for files from untrusted sources. While it is on, the name of a texture or a program
    // in a scene file that is absolute or has a component ".." is refused with a log line, and the
    // material goes without it. A slash and a backslash separate components, and a drive letter
    // makes a name absolute, on every system. Symbolic links are followed: a link below a path that
    // points elsewhere is not detected. What the application itself names, as in `load`, is not
    // confined.
    static void confineFilesOn();
    static void confineFilesOff();
    static bool isConfiningFiles();

    // Video memory in bytes: what there is, what is charged, and the difference, which wraps
    // below zero.
    static unsigned int getVideoMemory();
    static unsigned int getUsedVideoMemory();
    static unsigned int getFreeVideoMemory();

    // Charge and discharge `bytes`; both return the new charge. Nothing is checked: the sum wraps.
    static unsigned int pushVideoMemory(unsigned int bytes);
    static unsigned int popVideoMemory(unsigned int bytes);

    // Polygons as lines, without culling, from the next `end3D` to the next `begin2D`. While bloom
    // or depth of field is on, the quad that copies the picture to the window is drawn as lines,
    // too, so that hardly anything of the picture is seen: switch these effects off for wireframes.
    static void wireframeOn();
    static void wireframeOff();
    static bool isWireframed();

    // Shadows of one spot light per frame: the last one in the render list that casts shadows (see
    // RVLIGHT::castShadows). A frame without one is drawn without shadows and logs a line.
    // `shadowingOn` is ignored where the shadow programs are missing.
    static void shadowingOn();
    static void shadowingOff();
    static bool isShadowed();

    // The next frame that has shadows keeps the last shadow map.
    static void skipShadowsGeneration();

    // Additional: polygon offset (as in glPolygonOffset) of what is drawn into the shadow map; 0
    // and 0 at first, which leaves OpenGL's offset as it is. The map is drawn from back faces, and
    // where the faces of a model are doubled, as those of two-sided materials are, a lit face
    // shadows itself in stripes. (4, 8) removes them.
    static void setShadowOffset(float factor, float units);
    static float getShadowOffsetFactor();
    static float getShadowOffsetUnits();

    // Bloom, and the alpha of its overlay (1 at first). A wish: it may be on where the display
    // cannot do it.
    static void bloomingOn();
    static void bloomingOff();
    static bool isBlooming();
    static void setBloomingIntensity(float intensity);
    static float getBloomingIntensity();

    // Tone mapping, which acts only together with bloom, and its exposure (1 at first). Each frame
    // with tone mapping prints the line "luminance: VALUE" to standard output.
    static void HDROn();
    static void HDROff();
    static bool isHDR();
    static void setHDRExposure(float exposure);
    static float getHDRExposure();

    // Depth of field. A depth is coded as (distance from the eye + near plane) / far plane. `focus`
    // (1 at first) is the code that is sharp; the blur is complete where the code is 1 / `range`
    // away from it (range is 2 at first).
    // Depths are coded before lights are picked: a mesh that has met no light yet, as in the first
    // frame, counts as far away.
    static void DOFOn();
    static void DOFOff();
    static void setDOFFocus(float focus);
    static void setDOFRange(float range);
    static float getDOFFocus();
    static float getDOFRange();

    // Does nothing; the application advances its videos itself.
    static void updateVideo();

    // Text put in front of the names of scene files; NULL empties it, the 256th byte and what
    // follows are cut off. The getter hands out the engine's own buffer.
    static void setRVEPath(const char *path);
    static char *getRVEPath();

    // Node whose first child is drawn as the sky: it turns with the camera and never moves. NULL
    // for none. The engine does not own it.
    static void setSkybox(RVNODE *node);
    static RVNODE *getSkybox();

  private:
    struct Lifecycle; // the steps of `init` and `free`
    struct Frame;     // the steps of a frame
    static RVNODE *recursiveLoad(char *buffer, long *cursor, RVNODE *parent);
    static bool recursiveInitBones(RVNODE *root, RVNODE *node);

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
    static int timer; // slot of the foundation's timers; keeps its value after `free`
    static int timeStamp;
    static float bloomingIntensity;
    static float HDRExposure;
    static float HDRCurrentLuminance; // adapted from frame to frame
    static float DOFFocus;
    static float DOFRange;
};
