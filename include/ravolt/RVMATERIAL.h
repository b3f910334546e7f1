#pragma once

#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVSHADER;
class RVTEXTURE;

// The surface of what is lit: four colours, shininess, transparency, a texture for each unit, and
// whether it is skinned. Its render turns all this into OpenGL state, once for successive
// objects that share it. Materials are in a registry, which owns them: create them with `new`;
// RAVOLT::free or cleanUp deletes those that the application has not deleted. The count of
// references is for the application and never deletes one.
class RV_API RVMATERIAL {
  public:
    // Registers the material under a fresh identifier and the name "[material ID]"; grey, opaque,
    // without textures.
    RVMATERIAL();
    // Releases the identifier and removes the material from the registry and from its meshes. The
    // textures' references do not change.
    ~RVMATERIAL();
    RVMATERIAL(const RVMATERIAL &) = delete;
    RVMATERIAL &operator=(const RVMATERIAL &) = delete;

    // Applies the material, unless it was the last one applied since reset, even if the light type
    // differs. `data` is NULL or points to the type of the light that will shine, an int of
    // RV_LIGHT_TYPE, which chooses the program with textures, skin and shadows. On purpose these
    // programs compute OpenGL's light 0 alone; one of setShader may use lights 0 to 3 and, in a
    // frame with shadows, the shadow map on unit 1. Without a light the fixed functions draw,
    // unless setShader names a program. Overwrites the alpha of all four
    // colours by the transparency. Units without a texture of the material do not change. Always
    // true.
    bool render(void *data);

    // Makes the next render apply everything: for code that changes OpenGL's state itself.
    static void reset();

    // Sets the texture (NULL for none) of a slot from 0 to 15, which is also its unit, and updates
    // both reference counts. A slot becomes empty when its texture is deleted. False, with a
    // line in the log, for another slot.
    bool setTexture(unsigned int slot, RVTEXTURE *texture);
    // NULL for an empty or bad slot.
    RVTEXTURE *getTexture(unsigned int slot) const;

    // Copies colours, transparency, shininess, textures and shader, and sets the other's name
    // with the own identifier after it. The textures' references are not increased, though
    // setTexture decreases that of a texture it replaces: without another user the collector may
    // delete them, which empties the slots. NULL changes nothing.
    void clone(const RVMATERIAL *source);

    // NULL, or 256 characters and more, changes nothing.
    void setName(const char *name);
    char *getName();

    // Red, green, blue and alpha, from 0 to 1.
    void setAmbient(const Z3MVECTOR4D &color);
    void setAmbient(float red, float green, float blue, float alpha);
    Z3MVECTOR4D getAmbient() const;
    void setDiffuse(const Z3MVECTOR4D &color);
    void setDiffuse(float red, float green, float blue, float alpha);
    Z3MVECTOR4D getDiffuse() const;
    void setSpecular(const Z3MVECTOR4D &color);
    void setSpecular(float red, float green, float blue, float alpha);
    Z3MVECTOR4D getSpecular() const;
    void setEmission(const Z3MVECTOR4D &color);
    void setEmission(float red, float green, float blue, float alpha);
    Z3MVECTOR4D getEmission() const;

    // An opacity: 1 is opaque, and anything else is drawn blended.
    void setTransparency(float transparency);
    float getTransparency() const;
    // OpenGL's exponent, from 0 to 128.
    void setShininess(float shininess);
    float getShininess() const;
    // An explicit program, used instead of any other and also without a light (`render(NULL)`);
    // NULL for none, and when the program was deleted. The material does not own it.
    void setShader(RVSHADER *shader);
    RVSHADER *getShader() const;
    // Whether the programs that skin the mesh are chosen.
    void setSkinning(bool skinned);

    // Whether the transparency is not exactly 1.
    bool isTransparent() const;
    // Whether slot 0 is filled; the other slots do not count.
    bool isTextured() const;
    bool isSkinned() const;

    // Deletes all materials; every pointer to one is invalid then, except that meshes are without
    // material. False when there are none.
    static bool cleanUp();

    // The number of materials that exist.
    static unsigned int getNumberOfMaterials();
    // The first match in order of creation, or NULL. Case counts.
    static RVMATERIAL *findById(unsigned int id);
    static RVMATERIAL *findByName(const char *name);
    static RVMATERIAL *getFirst();
    RVMATERIAL *getNext() const;
    RVMATERIAL *getPrevious() const;

    // The material's own number.
    unsigned int getId() const;
    // RAVOLT::getTimeStamp() at the last render, 0 before.
    int getTimeStamp() const;

    // Users of the material.
    int getReferences() const;
    void incReferences();
    void decReferences();

  private:
    RVSHADER *chooseProgram(const int *lightType) const;
    void applyColors();
    void applyBlending() const;
    void applyTextures() const;

    unsigned int id;
    char name[256];
    int timeStamp;
    int references;
    Z3MVECTOR4D ambient;
    Z3MVECTOR4D diffuse;
    Z3MVECTOR4D specular;
    Z3MVECTOR4D emission;
    float transparency;
    float shininess;
    ravolt::WeakPointer<RVTEXTURE> texture[RV_TEXTURE_UNITS];
    unsigned int usedSlots; // a bit for each slot that has, or had, a texture
    RVSHADER *shader;       // not owned; followed by `render` alone
    bool skinned;
    RVMATERIAL *previous, *next;
    ravolt::WeakPointers<RVMATERIAL> weakPointers;

    static RVMATERIAL *firstMaterial, *lastMaterial;
    static RVMATERIAL *currentMaterial; // the last one applied; compared, never followed

    friend struct ravolt::Registry<RVMATERIAL>;
};
