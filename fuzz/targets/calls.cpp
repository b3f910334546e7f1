// A sequence of calls over nodes and resources: each byte, from the end of the input on, is a call
// or its argument. The rules of the headers are kept: no cycles, a node is unlinked from all others
// before it is deleted, and what follows no weak pointer is reset before.

#include "fuzz/support/input.h"
#include "fuzz/support/randomFiles.h"
#include "fuzz/support/silentRun.h"
#include "ravolt.h"

#include <algorithm>
#include <vector>

namespace ravolt::fuzz {
namespace {

constexpr std::size_t maxObjects = 24;
constexpr unsigned int maxFrames = 6;

class Session {
  public:
    explicit Session(Input &bytes) : input(bytes) {}

    void run() {
        for (unsigned int call = 0; call < 400 && !input.empty(); ++call)
            step();
    }

  private:
    using Step = void (Session::*)();

    void step() {
        static constexpr Step steps[] = {
            &Session::createNode,    &Session::createWidget, &Session::createTexture,
            &Session::createOther,   &Session::link,         &Session::unlink,
            &Session::removeNode,    &Session::deleteNode,   &Session::moveNode,
            &Session::aimNode,       &Session::copyNode,     &Session::setMaterial,
            &Session::setTexture,    &Session::useTexture,   &Session::deleteResource,
            &Session::collect,       &Session::setFont,      &Session::write,
            &Session::setUpWidget,   &Session::setUpLight,   &Session::setUpEmitter,
            &Session::switchEffects, &Session::loadScene,    &Session::drawFrame,
            &Session::drawFrame2D,   &Session::handleInput,  &Session::find,
            &Session::resize,        &Session::useTarget};
        const Step chosen = steps[input.below(std::size(steps))];
        (this->*chosen)();
    }

    // --- The objects

    template <class T> T *choose(std::vector<T *> &objects) {
        return objects.empty() ? nullptr
                               : objects[input.below(static_cast<unsigned int>(objects.size()))];
    }
    RVNODE *chooseNode() { return choose(nodes); }

    template <class T> T *chooseOfType(RV_NODE_TYPE type) {
        RVNODE *const node = chooseNode();
        return node && node->getType() == type ? static_cast<T *>(node) : nullptr;
    }

    RVBOX *chooseBox() {
        RVNODE *const node = chooseNode();
        return node && node->getType() >= RV_NODE_TYPE_BOX && node->getType() < RV_NODE_TYPE_CUSTOM
                   ? static_cast<RVBOX *>(node)
                   : nullptr;
    }

    // The collector may have deleted textures.
    template <class T> void dropDeleted(std::vector<T *> &objects) {
        std::erase_if(objects, [](T *object) {
            const T *each = T::getFirst();
            while (each && each != object)
                each = each->getNext();
            return !each;
        });
    }

    void createNode() {
        if (nodes.size() >= maxObjects)
            return;
        switch (input.below(9)) {
        case 0:
            return nodes.push_back(new RVNODE);
        case 1:
            return nodes.push_back(new RVLIGHT);
        case 2:
            return nodes.push_back(new RVMESH);
        case 3:
            return nodes.push_back(new RVCAMERA);
        case 4:
            return nodes.push_back(new RVHELPER);
        case 5:
            return nodes.push_back(new RVSKYDOME);
        case 6:
            return nodes.push_back(new RVWATER);
        case 7:
            return nodes.push_back(new RVTERRAIN);
        default:
            return nodes.push_back(new RVEMITTER);
        }
    }

    void createWidget() {
        if (nodes.size() >= maxObjects)
            return;
        switch (input.below(7)) {
        case 0:
            return nodes.push_back(new RVBOX);
        case 1:
            return nodes.push_back(new RVBUTTON);
        case 2:
            return nodes.push_back(new RVLABEL);
        case 3:
            return nodes.push_back(new RVTEXTFIELD);
        case 4:
            return nodes.push_back(new RVHSCROLLBAR);
        case 5:
            return nodes.push_back(new RVVSCROLLBAR);
        default:
            return nodes.push_back(new RVWINDOW);
        }
    }

    void createTexture() {
        if (textures.size() >= maxObjects)
            return;
        auto *const texture = new RVTEXTURE;
        textures.push_back(texture);
        if (input.flag())
            texture->load("t.tga");
        else
            texture->create(input.below(40), input.below(40), input.below(8));
    }

    void createOther() {
        if (materials.size() + fonts.size() >= maxObjects)
            return;
        if (input.flag())
            materials.push_back(new RVMATERIAL);
        else
            fonts.push_back(new RVFONT);
    }

    // --- The tree

    static bool isBelow(const RVNODE *node, const RVNODE *ancestor) {
        while (node && node != ancestor)
            node = node->getParent();
        return node;
    }

    void link() {
        RVNODE *const node = chooseNode(), *const parent = chooseNode();
        if (node && parent && !isBelow(parent, node))
            node->link(parent);
    }
    void unlink() {
        if (RVNODE *node = chooseNode())
            node->unlink();
    }
    void removeNode() {
        if (RVNODE *node = chooseNode())
            node->remove();
    }

    // Of a widget that is made of others its parts are deleted by the engine's end alone.
    void deleteNode() {
        RVNODE *const node = chooseNode();
        if (!node || node->getType() == RV_NODE_TYPE_WINDOW ||
            node->getType() == RV_NODE_TYPE_HSCROLLBAR ||
            node->getType() == RV_NODE_TYPE_VSCROLLBAR)
            return;
        while (node->getNumberOfChildren())
            node->getChild(0)->unlink();
        if (node->getParent())
            node->unlink();
        for (RVNODE *other = RVNODE::getFirstNode(); other; other = other->getNextNode())
            if (other->getTargetNode() == node)
                other->setTargetNode(nullptr);
        if (RAVOLT::getSkybox() == node)
            RAVOLT::setSkybox(nullptr);
        std::erase(nodes, node);
        delete node;
    }

    void moveNode() {
        RVNODE *const node = chooseNode();
        if (!node)
            return;
        node->setPosition(input.real(), input.real(), input.real());
        node->rotate(input.real(), input.real(), input.real());
        node->setOrigin(input.real(), input.real());
        node->setDirection(input.real(), input.real(), input.real());
        if (input.flag())
            node->setPositioning(static_cast<RV_NODE_POSITIONING>(input.below(3)));
        node->getFinalMatrix(input.flag() ? "a" : nullptr);
    }

    void aimNode() {
        RVNODE *const node = chooseNode();
        if (!node)
            return;
        node->setTargetNode(input.flag() ? chooseNode() : nullptr);
        node->setTarget(input.real(), input.real(), input.real());
        if (input.flag())
            RAVOLT::setSkybox(chooseNode());
    }

    // A copy lives shorter than its original.
    void copyNode() {
        const RVNODE *const node = chooseNode();
        if (!node)
            return;
        const RVNODE copy(*node);
        copy.getNumberOfChildren();
        RVNODE assigned;
        assigned = *node;
    }

    // --- Resources

    void setMaterial() {
        RVMATERIAL *const material = choose(materials);
        if (!material)
            return;
        material->setTransparency(input.real());
        material->setShininess(input.real());
        material->setSkinning(input.flag());
        if (auto *mesh = chooseOfType<RVMESH>(RV_NODE_TYPE_MESH))
            mesh->setMaterial(material);
        material->clone(choose(materials));
        material->render(nullptr);
    }

    void setTexture() {
        RVTEXTURE *const texture = choose(textures);
        if (RVMATERIAL *material = choose(materials))
            material->setTexture(input.below(18), texture);
        if (RVBOX *box = chooseBox())
            box->setTexture(texture);
        if (auto *emitter = chooseOfType<RVEMITTER>(RV_NODE_TYPE_EMITTER))
            emitter->setTexture(texture);
        if (RVFONT *font = choose(fonts))
            font->setTexture(texture);
    }

    void useTexture() {
        RVTEXTURE *const texture = choose(textures);
        if (!texture)
            return;
        unsigned int unit = input.below(18);
        texture->setFilter(input.flag(), input.flag(), input.flag());
        texture->render(&unit);
        if (input.flag())
            texture->unload(input.flag());
        if (input.flag())
            texture->reload();
        if (input.flag())
            texture->update();
    }

    template <class T> void deleteOne(std::vector<T *> &objects) {
        T *const object = choose(objects);
        std::erase(objects, object);
        delete object;
    }

    void deleteResource() {
        switch (input.below(3)) {
        case 0:
            return deleteOne(textures);
        case 1:
            return deleteOne(materials);
        default:
            return deleteOne(fonts);
        }
    }

    void collect() {
        RVTEXTURE::garbageCollect(input.below(4) * 1000u);
        dropDeleted(textures);
    }

    void setFont() {
        RVFONT *const font = choose(fonts);
        RVNODE *const node = chooseNode();
        if (!node)
            return;
        if (node->getType() == RV_NODE_TYPE_BUTTON)
            static_cast<RVBUTTON *>(node)->setFont(font);
        if (node->getType() == RV_NODE_TYPE_LABEL)
            static_cast<RVLABEL *>(node)->setFont(font);
        if (node->getType() == RV_NODE_TYPE_WINDOW)
            static_cast<RVWINDOW *>(node)->setFont(font);
        if (font) {
            font->setCharSizeX(input.below(40));
            font->setCharSizeY(input.below(40));
        }
    }

    void write() {
        static constexpr const char *texts[] = {"",         "a b",  "^c8888x", "%",
                                                "%%^x-010", "\n\n", "^y"};
        const char *const text = texts[input.below(std::size(texts))];
        if (auto *label = chooseOfType<RVLABEL>(RV_NODE_TYPE_LABEL))
            label->write("%s", text);
        if (auto *window = chooseOfType<RVWINDOW>(RV_NODE_TYPE_WINDOW))
            window->write("%s", text);
        if (auto *button = chooseOfType<RVBUTTON>(RV_NODE_TYPE_BUTTON))
            button->setCaption(text);
    }

    // --- What nodes have

    void setUpWidget() {
        RVBOX *const box = chooseBox();
        if (!box)
            return;
        box->setSizes(input.integer(), input.integer());
        box->setPosition(input.real(), input.real());
        box->setThickness(static_cast<unsigned int>(input.integer()));
        box->setLimits(input.integer(), input.integer(), input.integer(), input.integer());
        box->setLimitStatus(input.flag());
        box->setScissorStatus(input.flag());
        box->setColor(input.real(), input.real(), input.real(), input.real());
        box->setStaticStatus(input.flag());
        if (box->getType() == RV_NODE_TYPE_WINDOW) {
            auto *const window = static_cast<RVWINDOW *>(box);
            window->setScrollLine(input.integer());
            if (input.flag())
                window->minmaximize();
            window->updateScroll();
        }
    }

    void setUpLight() {
        auto *const light = chooseOfType<RVLIGHT>(RV_NODE_TYPE_LIGHT);
        if (!light)
            return;
        light->setLightType(static_cast<RV_LIGHT_TYPE>(input.below(3)));
        light->castShadows(input.flag());
        light->setCutOff(input.real());
        light->setShadowFarPlane(input.real());
        light->setExclusive(input.flag());
    }

    void setUpEmitter() {
        auto *const emitter = chooseOfType<RVEMITTER>(RV_NODE_TYPE_EMITTER);
        if (!emitter)
            return;
        emitter->setEmitterType(input.integer());
        emitter->setMaximumEnergy(input.integer());
        emitter->setMaximumVelocity(input.integer());
        emitter->setRadius(input.real());
        emitter->setNumberOfParticles(input.integer());
    }

    void switchEffects() {
        (input.flag() ? RAVOLT::shadowingOn : RAVOLT::shadowingOff)();
        (input.flag() ? RAVOLT::bloomingOn : RAVOLT::bloomingOff)();
        (input.flag() ? RAVOLT::DOFOn : RAVOLT::DOFOff)();
        (input.flag() ? RAVOLT::wireframeOn : RAVOLT::wireframeOff)();
        (input.flag() ? RVMESH::showNormals : RVMESH::hideNormals)();
        (input.flag() ? RVLIGHT::markersOn : RVLIGHT::markersOff)();
    }

    void loadScene() {
        if (nodes.size() >= maxObjects)
            return;
        writeFile("s.rve", randomScene(input.byte()));
        if (RVNODE *root = RAVOLT::load("s.rve"))
            nodes.push_back(root);
    }

    // --- Frames

    void drawFrame() {
        if (++frames > maxFrames)
            return;
        RAVOLT::clear(input.flag(), true, true);
        RAVOLT::begin3D(chooseOfType<RVCAMERA>(RV_NODE_TYPE_CAMERA));
        for (unsigned int root = input.below(4); root > 0; --root)
            if (RVNODE *node = chooseNode())
                node->pass();
        RAVOLT::end3D(input.flag());
        if (input.flag())
            RAVOLT::select(input.integer(), input.integer());
        RAVOLT::swap();
    }

    void drawFrame2D() {
        if (++frames > maxFrames)
            return;
        RAVOLT::begin2D();
        for (unsigned int root = input.below(4); root > 0; --root)
            if (RVNODE *node = chooseNode())
                node->pass();
        RAVOLT::end2D();
    }

    void handleInput() {
        if (auto *field = chooseOfType<RVTEXTFIELD>(RV_NODE_TYPE_TEXTFIELD))
            field->manageKey(static_cast<char>(input.byte()));
        RVNODE *const node = chooseNode();
        if (node && node->getType() == RV_NODE_TYPE_WINDOW)
            static_cast<RVWINDOW *>(node)->clear();
    }

    void find() {
        if (RVNODE *node = chooseNode()) {
            node->setName(input.flag() ? "a" : "b");
            node->findByNameInHierarchy("b");
            node->findByIdInHierarchy(input.byte());
            RVNODE::displayTree(node);
        }
        RVNODE::findById(input.byte());
        RVNODE::findByName("a");
    }

    void resize() {
        RVSETTINGS::resize(input.integer(), input.integer(), input.integer(), input.integer());
    }

    // A target is deleted at the engine's end.
    void useTarget() {
        RVTEXTURE *const texture = choose(textures);
        if (!texture || ++targets > 4)
            return;
        auto *const target = new RVFBO;
        if (texture->getGLId())
            target->bindTexture(static_cast<int>(input.below(3)), texture);
        target->bindRenderBuffer(static_cast<int>(input.below(4)), 16, 16);
        target->isOk();
        target->render(nullptr);
        RVFBO::unbind();
    }

    Input &input;
    std::vector<RVNODE *> nodes;
    std::vector<RVTEXTURE *> textures;
    std::vector<RVMATERIAL *> materials;
    std::vector<RVFONT *> fonts;
    unsigned int frames = 0, targets = 0;
};

} // namespace

void calls(Bytes bytes) {
    Input input(bytes);
    const SilentRun run(input.flag());
    Session(input).run();
}

} // namespace ravolt::fuzz
