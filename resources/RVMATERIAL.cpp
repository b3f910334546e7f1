// Materials: the registry, and what a surface is to OpenGL. Only here may glMaterial be called; the
// debug shapes, which have no material, do it too.
//
// Invariant: while currentMaterial names a material, OpenGL has its program, its colours, its
// blending and its textures, unless somebody has changed them without a call of reset.

#include "ravolt/RVMATERIAL.h"

#include "engine/gl/stateCache.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/programUsers.h"

#include <bit>
#include <cstring>
#include <iterator>

using MaterialRegistry = ravolt::Registry<RVMATERIAL>;

RVMATERIAL *RVMATERIAL::firstMaterial = nullptr;
RVMATERIAL *RVMATERIAL::lastMaterial = nullptr;
RVMATERIAL *RVMATERIAL::currentMaterial = nullptr;

namespace {

// The program for what is lit, by the type of the light (0 omni, 1 directional, 2 spot), textured,
// skinned, shadowed.
RVSHADER **const litPrograms[3][2][2][2] = {
    {{{&RVSHADER::pplOmni, &RVSHADER::pplOmni}, {&RVSHADER::pplOmniA, &RVSHADER::pplOmniA}},
     {{&RVSHADER::pplOmniT, &RVSHADER::pplOmniT}, {&RVSHADER::pplOmniTA, &RVSHADER::pplOmniTA}}},
    {{{&RVSHADER::pplDirect, &RVSHADER::pplDirect}, {&RVSHADER::pplDirectA, &RVSHADER::pplDirectA}},
     {{&RVSHADER::pplDirectT, &RVSHADER::pplDirectT},
      {&RVSHADER::pplDirectTA, &RVSHADER::pplDirectTA}}},
    {{{&RVSHADER::pplSpot, &RVSHADER::pplSpotS}, {&RVSHADER::pplSpotA, &RVSHADER::pplSpotSA}},
     {{&RVSHADER::pplSpotT, &RVSHADER::pplSpotTS}, {&RVSHADER::pplSpotTA, &RVSHADER::pplSpotTSA}}},
};

constexpr unsigned int shadowMapUnit = 1;

// Whether the program is one of those that read the shadow map.
bool readsShadowMap(const RVSHADER *program) {
    return program == RVSHADER::pplSpotS || program == RVSHADER::pplSpotSA ||
           program == RVSHADER::pplSpotTS || program == RVSHADER::pplSpotTSA;
}

void applyProgram(RVSHADER *program) {
    if (!program || !program->isOperative()) {
        RVSHADER::disable();
        return;
    }
    program->render(nullptr);
    if (!readsShadowMap(program))
        return;
    const int size = RVSETTINGS::getSDLShadowMapSize();
    RVSHADER::bindSizes(size, size);
    RVSHADER::bindTexture(shadowMapUnit);
}

// The colours that were last passed to OpenGL.
struct AppliedColors {
    unsigned int period; // of KnownState
    Z3MVECTOR4D emission, ambient, diffuse, specular;
    float shininess;
};
AppliedColors appliedColors = {};

void applyColor(GLenum name, Z3MVECTOR4D &applied, const Z3MVECTOR4D &color) {
    if (ravolt::KnownState::hit(appliedColors.period, applied == color))
        return;
    applied = color;
    glMaterialfv(GL_FRONT_AND_BACK, name, applied);
}

} // namespace

RVMATERIAL::RVMATERIAL()
    : id(zlfNewId()), timeStamp(0), references(0), ambient(0.2f, 0.2f, 0.2f, 1.0f),
      diffuse(0.6f, 0.6f, 0.6f, 1.0f), specular(0.2f, 0.2f, 0.2f, 1.0f),
      emission(0.0f, 0.0f, 0.0f, 1.0f), transparency(1.0f), shininess(0.0f), usedSlots(0),
      shader(nullptr), skinned(false) {
    ravolt::formatText(name, "[material %d]", id);
    MaterialRegistry::append(firstMaterial, lastMaterial, this);
}

RVMATERIAL::~RVMATERIAL() {
    // A new material at this address must not count as applied.
    if (currentMaterial == this)
        reset();
    releaseId(id);
    MaterialRegistry::unlink(firstMaterial, lastMaterial, this);
}

bool RVMATERIAL::render(void *data) {
    timeStamp = static_cast<int>(RAVOLT::getTimeStamp());
    if (ravolt::cacheHit(currentMaterial == this))
        return true;
    applyProgram(chooseProgram(static_cast<const int *>(data)));
    applyColors();
    applyBlending();
    applyTextures();
    currentMaterial = this;
    return true;
}

// NULL for the fixed functions. An explicit program needs no light and no requested shaders.
RVSHADER *RVMATERIAL::chooseProgram(const int *lightType) const {
    if (shader || !RVSETTINGS::getSDLShaders() || !lightType)
        return shader;
    if (*lightType < 0 || *lightType >= static_cast<int>(std::size(litPrograms)))
        return nullptr;
    return *litPrograms[*lightType][isTextured()][isSkinned()][RAVOLT::isShadowed()];
}

// On purpose: the alpha that was set in a colour is lost. Colours that OpenGL is known to have are
// not set again.
void RVMATERIAL::applyColors() {
    emission.w = specular.w = diffuse.w = ambient.w = transparency;
    AppliedColors &applied = appliedColors;
    applyColor(GL_EMISSION, applied.emission, emission);
    applyColor(GL_AMBIENT, applied.ambient, ambient);
    applyColor(GL_DIFFUSE, applied.diffuse, diffuse);
    applyColor(GL_SPECULAR, applied.specular, specular);
    if (!ravolt::KnownState::hit(applied.period, applied.shininess == shininess))
        glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
    applied.shininess = shininess;
    applied.period = ravolt::KnownState::period();
}

void RVMATERIAL::applyBlending() const {
    if (!isTransparent()) {
        RVOPENGL::blendingOff();
        return;
    }
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    RVOPENGL::blendingOn();
}

// On purpose: units of an earlier material are not switched off, unless this one has no texture.
void RVMATERIAL::applyTextures() const {
    unsigned int applied = 0;
    for (unsigned int slots = usedSlots; slots; slots &= slots - 1) {
        unsigned int slot = static_cast<unsigned int>(std::countr_zero(slots));
        if (!texture[slot])
            continue;
        texture[slot]->render(&slot);
        applied |= 1u << slot;
    }
    // A texture that came back in a later slot was uploaded through unit 0.
    if (texture[0] && applied != 1)
        texture[0]->render(nullptr);
    if (!applied)
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

void RVMATERIAL::reset() { currentMaterial = nullptr; }

bool RVMATERIAL::setTexture(unsigned int slot, RVTEXTURE *newTexture) {
    if (slot >= RV_TEXTURE_UNITS) {
        zlfLog("   [!] Invalid params @ RVMATERIAL::setTexture\n");
        return false;
    }
    if (texture[slot])
        texture[slot]->decReferences();
    texture[slot].set(newTexture);
    usedSlots |= 1u << slot;
    if (newTexture)
        newTexture->incReferences();
    return true;
}

RVTEXTURE *RVMATERIAL::getTexture(unsigned int slot) const {
    return slot < RV_TEXTURE_UNITS ? texture[slot].get() : nullptr;
}

// On purpose: the slots are no counted references, and skinned does not change.
void RVMATERIAL::clone(const RVMATERIAL *source) {
    if (!source)
        return;
    char base[sizeof name]; // the source may be this material
    ravolt::copyText(base, source->name);
    ravolt::formatText(name, "%s%d", base, id);
    ambient = source->ambient;
    diffuse = source->diffuse;
    specular = source->specular;
    emission = source->emission;
    transparency = source->transparency;
    shininess = source->shininess;
    for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot)
        texture[slot].set(source->texture[slot].get());
    usedSlots = source->usedSlots;
    shader = source->shader;
}

void RVMATERIAL::setName(const char *newName) {
    if (newName && std::strlen(newName) < sizeof(name))
        std::memmove(name, newName, std::strlen(newName) + 1);
}

char *RVMATERIAL::getName() { return name; }

void RVMATERIAL::setAmbient(const Z3MVECTOR4D &color) { ambient = color; }
void RVMATERIAL::setAmbient(float red, float green, float blue, float alpha) {
    ambient = Z3MVECTOR4D(red, green, blue, alpha);
}
Z3MVECTOR4D RVMATERIAL::getAmbient() const { return ambient; }

void RVMATERIAL::setDiffuse(const Z3MVECTOR4D &color) { diffuse = color; }
void RVMATERIAL::setDiffuse(float red, float green, float blue, float alpha) {
    diffuse = Z3MVECTOR4D(red, green, blue, alpha);
}
Z3MVECTOR4D RVMATERIAL::getDiffuse() const { return diffuse; }

void RVMATERIAL::setSpecular(const Z3MVECTOR4D &color) { specular = color; }
void RVMATERIAL::setSpecular(float red, float green, float blue, float alpha) {
    specular = Z3MVECTOR4D(red, green, blue, alpha);
}
Z3MVECTOR4D RVMATERIAL::getSpecular() const { return specular; }

void RVMATERIAL::setEmission(const Z3MVECTOR4D &color) { emission = color; }
void RVMATERIAL::setEmission(float red, float green, float blue, float alpha) {
    emission = Z3MVECTOR4D(red, green, blue, alpha);
}
Z3MVECTOR4D RVMATERIAL::getEmission() const { return emission; }

void RVMATERIAL::setTransparency(float newTransparency) { transparency = newTransparency; }
float RVMATERIAL::getTransparency() const { return transparency; }
void RVMATERIAL::setShininess(float newShininess) { shininess = newShininess; }
float RVMATERIAL::getShininess() const { return shininess; }
// Programs are few, so that a walk through the materials is cheaper than a chain through each.
void ravolt::detachFromMaterials(const RVSHADER *program) {
    for (RVMATERIAL *each = RVMATERIAL::getFirst(); each; each = each->getNext())
        if (each->getShader() == program)
            each->setShader(nullptr);
}

void RVMATERIAL::setShader(RVSHADER *newShader) { shader = newShader; }
RVSHADER *RVMATERIAL::getShader() const { return shader; }
void RVMATERIAL::setSkinning(bool newSkinned) { skinned = newSkinned; }

bool RVMATERIAL::isTransparent() const { return transparency != 1.0f; }
bool RVMATERIAL::isTextured() const { return texture[0].get() != nullptr; }
bool RVMATERIAL::isSkinned() const { return skinned; }

bool RVMATERIAL::cleanUp() {
    if (!firstMaterial)
        return false;
    const unsigned int number = MaterialRegistry::cleanUp(firstMaterial);
    zlfLog("   %d material(s) released\n", number);
    return true;
}

unsigned int RVMATERIAL::getNumberOfMaterials() { return MaterialRegistry::count(firstMaterial); }

RVMATERIAL *RVMATERIAL::findById(unsigned int id) {
    return MaterialRegistry::findById(firstMaterial, id);
}

RVMATERIAL *RVMATERIAL::findByName(const char *name) {
    return MaterialRegistry::findByText(firstMaterial, &RVMATERIAL::name, name);
}

RVMATERIAL *RVMATERIAL::getFirst() { return firstMaterial; }
RVMATERIAL *RVMATERIAL::getNext() const { return next; }
RVMATERIAL *RVMATERIAL::getPrevious() const { return previous; }

unsigned int RVMATERIAL::getId() const { return id; }
int RVMATERIAL::getTimeStamp() const { return timeStamp; }
int RVMATERIAL::getReferences() const { return references; }
void RVMATERIAL::incReferences() { ++references; }
void RVMATERIAL::decReferences() { --references; }
