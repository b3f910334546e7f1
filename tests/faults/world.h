#pragma once

// Objects of every class, made from files in the test's own folder, all of which a frame draws. The
// registries own them.

#include <string>

class RVANIM;
class RVBOX;
class RVBUTTON;
class RVCAMERA;
class RVEMITTER;
class RVFBO;
class RVFONT;
class RVHELPER;
class RVHSCROLLBAR;
class RVLABEL;
class RVLIGHT;
class RVMATERIAL;
class RVMESH;
class RVNODE;
class RVSHADER;
class RVSKYDOME;
class RVTERRAIN;
class RVTEXTFIELD;
class RVTEXTURE;
class RVVIDEO;
class RVVSCROLLBAR;
class RVWATER;
class RVWINDOW;

namespace ravolt {
struct RveScene;
}

namespace ravolt::test {

// A scene file with a skinned mesh, a light, and a transparent mesh with a program of its own.
RveScene sceneOfEverything(const std::string &texture);

// Writes the files: scene.rve with its textures, clip.rva, land.xml and land.geo, smoke.xml,
// kerning.txt, ownVS.glsl and ownPS.glsl, gui.xml.
void writeWorldFiles();

// NULL for what could not be created. `panel` is the root of the widgets.
struct World {
    RVNODE *root = nullptr, *child = nullptr, *panel = nullptr;
    RVCAMERA *camera = nullptr;
    RVLIGHT *light = nullptr;
    RVMESH *mesh = nullptr;
    RVHELPER *helper = nullptr;
    RVEMITTER *emitter = nullptr;
    RVSKYDOME *dome = nullptr;
    RVWATER *water = nullptr;
    RVTERRAIN *terrain = nullptr;
    RVBOX *box = nullptr;
    RVLABEL *label = nullptr;
    RVBUTTON *button = nullptr;
    RVTEXTFIELD *field = nullptr;
    RVHSCROLLBAR *horizontal = nullptr;
    RVVSCROLLBAR *vertical = nullptr;
    RVWINDOW *window = nullptr;
    RVTEXTURE *texture = nullptr;
    RVMATERIAL *material = nullptr;
    RVSHADER *shader = nullptr;
    RVFONT *font = nullptr;
    RVFBO *target = nullptr;
    RVANIM *clip = nullptr;
    RVVIDEO *video = nullptr;
};

// Makes the objects; works without a started engine, too, as far as loading does.
World makeWorld();

// A frame with the trees of `world`, whose roots may have been deleted meanwhile.
void drawWorld(const World &world);

} // namespace ravolt::test
