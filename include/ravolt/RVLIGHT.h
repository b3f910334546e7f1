#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"

class RVELEMENT;

// How a light shines.
enum RV_LIGHT_TYPE : int {
    RV_LIGHT_TYPE_OMNI = 0,
    RV_LIGHT_TYPE_DIRECTIONAL = 1,
    RV_LIGHT_TYPE_SPOT = 2
};

// A source of light. A scene may have any number: when an object is drawn, activateNearest sets
// OpenGL's lights 0 to 3 to the four nearest to it. On purpose the built-in programs compute light
// 0 alone, the nearest or an exclusive one. A light shines along `direction` in its own frame, or
// at its target; see RVNODE. Its own `rotation` turns the direction twice: leave it at 0 and set
// `direction`, or rotate a parent. The direction to a target is computed from the light's own
// position, without those of its parents, so it is wrong below a moved parent; a target at that
// very position gives the direction (0, 0, 0). Each set-up also draws a small pyramid at the
// position of the light, unless markersOff was called. On purpose: OpenGL's lights are not switched
// off, so a light that is no longer passed still shines where fewer than four are passed; set its
// colours to 0 instead. Needs the live OpenGL context to be rendered.
class RV_API RVLIGHT : public RVNODE {
  public:
    RVLIGHT();
    ~RVLIGHT() override;

    // Programs the OpenGL light whose number is in the entry's param1. False with a log line for
    // NULL.
    bool render(void *element) override;

    RVLIGHT(const RVLIGHT &other);
    RVLIGHT &operator=(const RVLIGHT &) = default;

    // Sorts the lights of the render list for `element`, renders the first four and stores them in
    // the element. Further OpenGL lights do not change. False with lighting off, and with a log
    // line for NULL or a list whose first entries are not its lights.
    static bool activateNearest(RVELEMENT *element);

    // Reads a light of a scene file at `buffer + *cursor` and moves the cursor to its end; its
    // children are empty (NULL) entries, as many as it has. The size of the buffer is unknown here:
    // the caller must have checked its contents. NULL with a log line when memory runs out or the
    // name is not valid.
    static RVNODE *load(const char *buffer, long *cursor);

    // OpenGL's lighting as a cached switch: a call that changes nothing is not passed on.
    static void lightingOn();
    static void lightingOff();
    static bool getLighting() { return lighting; }

    // Additional: whether set-ups draw the pyramids that mark the lights. They do by default; the
    // setting outlasts RAVOLT::free.
    static void markersOn() { markers = true; }
    static void markersOff() { markers = false; }
    static bool isShowingMarkers() { return markers; }

    // RV_LIGHT_TYPE_OMNI by default. Any other number than the three types counts as an omni light
    // and logs a line at each render.
    void setLightType(RV_LIGHT_TYPE value) { lightType = value; }
    RV_LIGHT_TYPE getLightType() const { return lightType; }

    // Colours: red, green, blue and alpha, 0 to 1 each, effective from the next render
    // on. By default (0.2, 0.2, 0.2, 1), (0.7, 0.7, 0.7, 1) and (0.2, 0.2, 0.2, 1).
    void setAmbient(const Z3MVECTOR4D &color) { ambient = color; }
    void setAmbient(float r, float g, float b, float a) { ambient = Z3MVECTOR4D(r, g, b, a); }
    Z3MVECTOR4D getAmbient() const { return ambient; }
    void setDiffuse(const Z3MVECTOR4D &color) { diffuse = color; }
    void setDiffuse(float r, float g, float b, float a) { diffuse = Z3MVECTOR4D(r, g, b, a); }
    Z3MVECTOR4D getDiffuse() const { return diffuse; }
    void setSpecular(const Z3MVECTOR4D &color) { specular = color; }
    void setSpecular(float r, float g, float b, float a) { specular = Z3MVECTOR4D(r, g, b, a); }
    Z3MVECTOR4D getSpecular() const { return specular; }

    // Constant, linear and quadratic attenuation, 0 or more each: at a distance d in units of the
    // scene, the light is divided by constant + linear * d + quadratic * d * d. By default
    // (1, 0, 0): the same at any distance. A directional light has none.
    void setAttenuation(float constant, float linear, float quadratic) {
        attenuation = Z3MVECTOR3D(constant, linear, quadratic);
    }
    Z3MVECTOR3D getAttenuation() const { return attenuation; }

    // Half of a spot's cone in degrees, 0 to 90, or 180 (the default) for all around; and how
    // strongly the light is concentrated in the middle, from 0 (evenly, the default) to 128.
    void setCutOff(float degrees) { cutOff = degrees; }
    float getCutOff() const { return cutOff; }
    void setExponent(float value) { exponent = value; }
    float getExponent() const { return exponent; }

    // An exclusive light is chosen before all others, whatever its distance.
    void setExclusive(bool value) { exclusive = value; }
    bool isExclusive() const { return exclusive; }

    // Shadows of a spot light (none by default), with RAVOLT::shadowingOn; one light casts in a
    // frame. The near and far plane of the shadow map, as distances from the light in units of the
    // scene and above 0: 1 and 1024 by default. The cut-off must be below 90. A light that shines
    // exactly along the world's Y casts no usable shadow: tilt it a little.
    void castShadows(bool value) { shadowCaster = value; }
    bool isShadowCaster() const { return shadowCaster; }
    void setShadowNearPlane(float distance) { shadowNearPlane = distance; }
    float getShadowNearPlane() const { return shadowNearPlane; }
    void setShadowFarPlane(float distance) { shadowFarPlane = distance; }
    float getShadowFarPlane() const { return shadowFarPlane; }

  private:
    RV_LIGHT_TYPE lightType;
    Z3MVECTOR4D ambient;
    Z3MVECTOR4D diffuse;
    Z3MVECTOR4D specular;
    Z3MVECTOR3D attenuation;
    float cutOff;
    float exponent;
    bool exclusive;
    bool shadowCaster;
    float shadowNearPlane;
    float shadowFarPlane;

    static bool lighting;
    static bool markers;
};
