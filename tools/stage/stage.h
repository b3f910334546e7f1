#pragma once

// A scene on a stage: framed by a camera that goes round it, lit by one of several rigs of lights,
// drawn frame by frame. For scenes of any size: planes and distances follow from the scene's own.

#include "tools/convert/algebra.h"

#include <string>
#include <vector>

class RVCAMERA;
class RVHELPER;
class RVLIGHT;
class RVNODE;

namespace ravolt::tool {

struct Sphere {
    Vector center;
    double radius = 0;
};

// Around all vertices of the visible meshes under `root`, in the world. Needs the live engine.
// The radius is 0 when there are none.
Sphere sphereAround(RVNODE *root);

// What the window shows of a larger picture, in pixels from its lower left corner. As it is made:
// the window shows all of the picture.
struct PicturePart {
    int wholeWidth = 0, wholeHeight = 0;
    int left = 0, bottom = 0;
};

class Stage {
  public:
    // Takes the engine's scene `root`. Make it after the engine, and drop it before. The camera
    // stands where something of the scene is to be seen: a surface that would face away is looked
    // at from its front.
    explicit Stage(RVNODE *root);

    // The camera's place: degrees round the scene and above its horizon, and how much nearer than
    // the distance at which the whole scene fits.
    void setYaw(double degrees) { yaw = degrees; }
    double getYaw() const { return yaw; }
    void setPitch(double degrees);
    double getPitch() const { return pitch; }
    void setZoom(double factor);
    double getZoom() const { return zoom; }

    // Rigs of lights, from 0. The last is the scene's own lights, where it has some.
    int numberOfRigs() const;
    void setRig(int index);
    int getRig() const { return rig; }
    static std::string rigName(int index);

    void setWireframe(bool on);
    void setNormals(bool on);
    void setBoxes(bool on); // a bounding box around each mesh

    // For pictures that are larger than a window can be.
    void setPart(const PicturePart &shown) { part = shown; }

    // Whether a pixel is as dark as where nothing is drawn.
    static bool isBackground(int red, int green, int blue);

    // Draws one frame into the window, which is then to be shown by RAVOLT::swap.
    void draw();

    // The window has a new size.
    void resize(int width, int height);

    const Sphere &sphere() const { return around; }

  private:
    struct View; // eye and axes of one frame

    View viewNow() const;
    void aimCamera(const View &view);
    void aimLights(const View &view);
    void project(double distance);
    void lookFromTheFront();
    std::size_t rigLightsNeeded() const;

    RVNODE *scene;
    Sphere around;
    RVCAMERA *camera;
    std::vector<RVLIGHT *> rigLights;   // always as many as an object can have
    std::vector<RVNODE *> sceneLights;  // of the scene itself
    std::vector<RVNODE *> lightParents; // where they belong
    std::vector<RVHELPER *> boxes;
    double yaw = 30, pitch = 20, zoom = 1;
    PicturePart part;
    int rig = 0;
};

} // namespace ravolt::tool
