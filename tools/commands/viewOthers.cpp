// On a terrain one walks and flies; an interface is operated, and names what is clicked.

#include "tools/commands/viewOthers.h"

#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"
#include "tools/stage/vectors.h"

#include <SDL.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ravolt/RVNODE.h>
#include <ravolt/kit/flyCamera.h>
#include <ravolt/kit/terrainHeights.h>
#include <ravolt/kit/walkCamera.h>

namespace ravolt::tool {

namespace {

constexpr double eyeHeight = 1.7;                   // of who walks, above the ground as it is drawn
constexpr double walkingPace = 12, flyingPace = 60; // units a second
constexpr double steepest = 75;                     // degrees of a slope that is walked on
constexpr double longestStep = 0.2;                 // seconds; the rest of a slow frame is left out

class TerrainViewer : public ViewLoop {
  public:
    // Throws Failure for a geometry without heights.
    TerrainViewer(ViewSession &common, const ShowOptions &options, Landscape &shown,
                  const TerrainFiles &files)
        : ViewLoop(common, options.input.filename().string()), landscape(shown),
          walker([this](double x, double z) { return heights.drawnAt(x, z); }, eyeHeight) {
        if (!heights.load(files.geometry.string().c_str()))
            throw Failure(files.geometry.string(), "has no heights of a terrain");
        walker.setSpeed(walkingPace);
        walker.setMaxSlope(steepest);
        flyer.setSpeed(flyingPace);
        flyer.setLevel(true);
        const Vector ahead = landscape.getTarget() - landscape.getEye();
        focus = length(ahead);
        flyer.setAngles(std::atan2(-ahead.x, -ahead.z) / degree,
                        std::asin(ahead.y / focus) / degree);
        flyer.setPosition(
            Z3MVECTOR3D(landscape.getEye().x, landscape.getEye().y, landscape.getEye().z));
    }

    static const std::vector<ViewKey<TerrainViewer>> &keys();

  private:
    bool isWalking() const { return camera == &walker; }
    bool press(int key) override { return pressOf(keys(), key, *this); }

    TextRows help() const override {
        TextRows rows = terrainKeys();
        for (const auto &row : rowsOf(commonKeys()))
            rows.push_back(row);
        return rows;
    }

    TextRows information() const override {
        const Z3MVECTOR3D eye = camera->getPosition();
        char text[80];
        std::snprintf(text, sizeof text, "%.1f, %.1f, %.1f", double(eye.x), double(eye.y),
                      double(eye.z));
        return {{"camera", isWalking() ? "walking" : "flying"},
                {"eye", text},
                {"", landscape.chunkCounts()}};
    }

    bool advance(double passed) override {
        camera->handle(session.input);
        camera->update(std::min(passed, longestStep));
        return true;
    }

    void draw() override {
        const Z3MVECTOR3D at = camera->getPosition(), ahead = camera->getForward();
        const Vector eye = {double(at.x), double(at.y), double(at.z)};
        landscape.setEye(eye);
        landscape.lookAt(eye + Vector(double(ahead.x), double(ahead.y), double(ahead.z)) * focus);
        landscape.draw();
    }

    bool shift(const PicturePart &part) override {
        landscape.setPart(part);
        return true;
    }

    void toggleTriangles() { landscape.setWireframe(!landscape.isWireframe()); }

    void toggleChunks() {
        landscape.setChunks(!landscape.isShowingChunks());
        if (landscape.isShowingChunks())
            sayLine(landscape.chunkCounts());
    }

    // Who lands stands on the ground at once.
    void changeCamera() {
        kit::Camera &next = isWalking() ? static_cast<kit::Camera &>(flyer) : walker;
        next.place(*camera);
        camera = &next;
        if (isWalking())
            walker.setOnGround(double(walker.getPosition().x), double(walker.getPosition().z));
        sayLine(isWalking() ? "walking" : "flying");
    }

    Landscape &landscape;
    kit::TerrainHeights heights;
    kit::WalkCamera walker;
    kit::FlyCamera flyer;
    kit::Camera *camera = &flyer;
    double focus = 1; // from the eye to what it looks at
};

const std::vector<ViewKey<TerrainViewer>> &TerrainViewer::keys() {
    using Viewer = TerrainViewer;
    static const std::vector<ViewKey<Viewer>> all = {
        {0, "drag", "look around", nullptr},
        {0, "w s a d", "move; the arrows too", nullptr},
        {0, "Space, c", "rise and sink, when flying", nullptr},
        {0, "Shift", "hurry", nullptr},
        {SDLK_g, "g", "walk on the ground, or fly", &Viewer::changeCamera},
        {SDLK_t, "t", "triangles", &Viewer::toggleTriangles},
        {SDLK_b, "b", "the chunks in the colours of their levels", &Viewer::toggleChunks},
    };
    return all;
}

class InterfaceViewer : public ViewLoop {
  public:
    InterfaceViewer(ViewSession &common, const ShowOptions &options, Panel &shown, RVNODE *root)
        : ViewLoop(common, options.input.filename().string()), panel(shown), widgets(root),
          title(titleOf(options.input)) {}

  private:
    bool advance(double) override { return true; }
    void draw() override {
        panel.draw();
        if (const unsigned int used = session.input.manageGUI())
            name(used);
    }

    // What is typed is for the widgets.
    bool hasLetterKeys() const override { return false; }
    TextRows help() const override { return rowsOf(commonKeys()); }

    void name(unsigned int id) const {
        RVNODE *node = widgets->findByIdInHierarchy(id);
        const std::string event =
            "event " + std::to_string(id) + (node ? std::string(": ") + node->getName() : "");
        sayLine(event);
        SDL_WM_SetCaption((title + " - " + event).c_str(), nullptr);
    }

    Panel &panel;
    RVNODE *widgets;
    std::string title;
};

} // namespace

Ending viewTerrain(ViewSession &session, const ShowOptions &options) {
    const TerrainFiles files = findTerrain(options.input);
    Landscape landscape(session.open(options, options.size), files);
    arrange(landscape, options);
    removeBrokenTextures(options.verbosity);
    return TerrainViewer(session, options, landscape, files).run();
}

Ending viewInterface(ViewSession &session, const ShowOptions &options) {
    const bool fits = options.sizeIsGiven || session.isOpen();
    const WindowSize size = fits ? options.size : sizeOfInterface(options);
    RVNODE *root = session.open(options, size).loadInterface(options.input);
    Panel panel(root);
    removeBrokenTextures(options.verbosity);
    return InterfaceViewer(session, options, panel, root).run();
}

TextRows terrainKeys() { return rowsOf(TerrainViewer::keys()); }

} // namespace ravolt::tool
