#pragma once

// A scene on a stage: framed by a camera that goes round it, lit by one of several rigs of lights,
// drawn frame by frame with the effects that are on. For scenes of any size: planes and distances
// follow from the scene's own.

#include "tools/stage/drawable.h"
#include "tools/stage/effects.h"
#include "tools/stage/lights.h"
#include "tools/stage/sphere.h"

#include <string>
#include <vector>

class RVCAMERA;
class RVHELPER;
class RVNODE;

namespace ravolt::tool {

class Stage : public Drawable {
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
    int numberOfRigs() const { return lights.numberOfRigs(); }
    void setRig(int index) { lights.setRig(index); }
    int getRig() const { return lights.getRig(); }
    static std::string rigName(int index) { return Lights::rigName(index); }

    void setEffects(const Effects &wanted) override;
    const Effects &getEffects() const override { return effects; }

    void setWireframe(bool on); // without bloom and depth of field
    void setNormals(bool on);
    void setBoxes(bool on); // a bounding box around each mesh

    void setPart(const PicturePart &shown) override { part = shown; }

    // Whether a pixel is as dark as where nothing is drawn.
    static bool isBackground(int red, int green, int blue);

    void draw() override;

    // What the camera goes round and keeps in view; initially the scene as loaded.
    const Sphere &sphere() const { return around; }
    void setSphere(const Sphere &wanted);

  private:
    View viewNow() const;
    void aimCamera(const View &view);
    void projectFrom(double distance);
    void focus(double distance);
    void applyEffects(double distance);
    void lookFromFront();

    RVNODE *scene;
    Sphere around;
    RVCAMERA *camera;
    Lights lights;
    RVNODE *floor = nullptr; // made when it is first wanted
    Effects effects;
    bool skinnedByPrograms = false; // whether a mesh has bones that programs apply
    std::vector<RVHELPER *> boxes;
    double yaw = 30, pitch = 20, zoom = 1;
    PicturePart part;
};

} // namespace ravolt::tool
