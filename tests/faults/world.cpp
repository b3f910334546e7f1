// Files and objects for the tests of faults.

#include "tests/faults/world.h"

#include "ravolt.h"
#include "tests/effects/terrainScene.h"
#include "tests/models/modelScenes.h"
#include "tests/support/create.h"
#include "tests/support/files.h"
#include "tools/writers/rvaWriter.h"

#include <string>

namespace ravolt::test {

RveScene sceneOfEverything(const std::string &texture) {
    RveNode skinned = skinnedSquare("skinned", {"bone"}, 4, "stone");
    RveNode light = placed(nodeNamed("lamp"), {0, 2, 3});
    light.kind = RveKind::light;
    light.light.type = RveLightType::spot;
    RveScene scene{{materialNamed("stone"), materialNamed("glass", 0.5f)},
                   rootOver({nodeNamed("group", {skinned, light}), emptyMesh("bone"),
                             squareMesh("pane", "glass")})};
    scene.materials[0].texture = texture;
    scene.materials[1].shader = "own";
    return scene;
}

namespace {

constexpr const char *smokeXml = "<?xml version=\"1.0\"?>\n<emitter><texture "
                                 "value=\"d2.tga\"/><nbOfParticles value=\"40\"/></emitter>";

constexpr const char *guiXml = R"(<root>
<font><name value="file"/><texture value="d3.tga"/><kerning value="kerning.txt"/></font>
<window><title value="title"/><size width="96" height="20"/><usefont ref="file"/>
<write value="more than the lines of the window"/>
<button><title value="caption"/><kind value="switch"/><usefont ref="file"/></button>
<label><usefont ref="file"/><write value="100%%"/></label></window></root>)";

template <class Widget> Widget *add(RVNODE *parent) {
    auto *const widget = create<Widget>();
    widget->link(parent);
    return widget;
}

void addWidgets(World &world) {
    world.font = create<RVFONT>();
    world.font->setTexture(world.texture);
    world.font->loadKerning("kerning.txt");
    world.panel = create<RVNODE>();
    world.box = add<RVBOX>(world.panel);
    world.box->setTexture(world.texture);
    world.window = add<RVWINDOW>(world.panel);
    world.window->setFont(world.font);
    world.window->write("%s", "a text of some words in several lines, taller than the window");
    world.window->setSizes(60, 20);
    world.window->format();
    world.button = add<RVBUTTON>(world.window);
    world.button->setFont(world.font);
    world.label = add<RVLABEL>(world.window);
    world.label->setFont(world.font);
    world.label->write("%s", "100%% ^c8008red");
    world.field = add<RVTEXTFIELD>(world.panel);
    world.field->setFont(world.font);
    world.horizontal = add<RVHSCROLLBAR>(world.panel);
    world.vertical = add<RVVSCROLLBAR>(world.window);
}

void addScenery(World &world) {
    world.dome = add<RVSKYDOME>(world.root);
    world.dome->loadTexture("sky.tga");
    world.water = add<RVWATER>(world.root);
    world.water->loadTextures("bump.tga", "dudv.tga", 2);
    world.terrain = add<RVTERRAIN>(world.root);
    world.terrain->load("land.xml");
    world.emitter = add<RVEMITTER>(world.root);
    world.emitter->load("smoke.xml");
    world.emitter->setNumberOfParticles(20);
}

void addResources(World &world) {
    world.texture = create<RVTEXTURE>();
    world.texture->load("d4.tga");
    world.texture->incReferences();
    world.shader = create<RVSHADER>();
    world.shader->load("ownVS.glsl", "ownPS.glsl", false);
    world.material = create<RVMATERIAL>();
    world.material->setTexture(0, world.texture);
    world.material->setShader(world.shader);
    auto *const image = create<RVTEXTURE>();
    image->incReferences();
    image->create(8, 8, RV_TEXTURE_RGBA);
    world.target = create<RVFBO>();
    world.target->bindTexture(RV_FBO_COLOR, image);
    RVFBO::unbind();
    world.clip = create<RVANIM>();
    world.clip->load("clip.rva");
    world.video = create<RVVIDEO>();
    world.video->setTexture(world.texture);
}

bool isAlive(const RVNODE *wanted) {
    const RVNODE *node = RVNODE::getFirstNode();
    while (node && node != wanted)
        node = node->getNextNode();
    return node;
}

} // namespace

void writeWorldFiles() {
    writeTerrainTextures();
    writeFile("scene.rve", bytesOf(sceneOfEverything("d1.tga")));
    RvaClip clip;
    clip.bones = {"bone"};
    clip.frames.resize(2);
    for (auto &frame : clip.frames)
        frame.resize(1);
    writeRva("clip.rva", clip);
    TerrainFile().write();
    writeTerrainConfig(geometryXml + layersXml() + waterXml + skyXml + lodXml({"9", "20"}));
    writeFile("smoke.xml", smokeXml);
    writeFile("gui.xml", guiXml);
    writeFile("kerning.txt", "RAVOLT_kerning_i=5\nRAVOLT_kerning_SPACE=7\n");
    writeFile("ownVS.glsl", " ");
    writeFile("ownPS.glsl", " ");
}

World makeWorld() {
    World world;
    world.root = RAVOLT::load("scene.rve");
    if (!world.root)
        world.root = create<RVNODE>();
    world.child = add<RVNODE>(world.root);
    world.camera = add<RVCAMERA>(world.root);
    world.light = static_cast<RVLIGHT *>(RVNODE::findByName("lamp"));
    if (!world.light)
        world.light = add<RVLIGHT>(world.root);
    world.light->castShadows(true);
    world.mesh = static_cast<RVMESH *>(RVNODE::findByName("skinned"));
    if (!world.mesh)
        world.mesh = add<RVMESH>(world.root);
    world.helper = add<RVHELPER>(world.root);
    addResources(world);
    addScenery(world);
    addWidgets(world);
    return world;
}

void drawWorld(const World &world) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(isAlive(world.camera) ? world.camera : nullptr);
    if (isAlive(world.root))
        world.root->pass();
    RAVOLT::end3D(true);
    RAVOLT::begin2D();
    if (isAlive(world.panel))
        world.panel->pass();
    RAVOLT::end2D();
    unsigned int event;
    RVELEMENT::manageGUIEvents('a', 10, 25, 1, 0, &event);
    RVELEMENT::manageGUIEvents(0, 10, 25, 0, 0, &event);
    RAVOLT::swap();
}

} // namespace ravolt::test
