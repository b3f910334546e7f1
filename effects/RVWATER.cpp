// Water: its surface, its two images with their frame buffers, and its drawing. The frame buffers
// are bound by direct calls, without RVFBO. Afterwards RVFBO's current target is none, or it is
// bound again.
//
// Invariants: the names in `owned` are this object's and no other object deletes them; those that
// it draws with may be another's. attachedReflection and attachedRefraction are the number of
// texture uploads that had been deleted when a frame buffer's image was attached.

#include "ravolt/RVWATER.h"

#include "effects/litShadowMap.h"
#include "effects/textureFiles.h"
#include "engine/gl/entryPoint.h"
#include "foundation/registry.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"
#include "resources/textureInternals.h"
#include "scene/shadowCaster.h"

#include <algorithm>
#include <new>
#include <vector>

namespace {

// Slots of the material, which are also units and samplers. The second is the shadow map's.
constexpr unsigned int reflectionSlot = 0, refractionSlot = 2, bumpSlot = 3, dudvSlot = 4;

constexpr unsigned int repeatParameter = 20; // of both programs
constexpr int shadowMapTarget = 2;

bool canCreateFrameBuffers() {
    return RVOPENGL::glGenFramebuffersEXT && RVOPENGL::glBindFramebufferEXT &&
           RVOPENGL::glFramebufferRenderbufferEXT && RVOPENGL::glGenRenderbuffersEXT &&
           RVOPENGL::glBindRenderbufferEXT && RVOPENGL::glRenderbufferStorageEXT &&
           RVOPENGL::glFramebufferTexture2DEXT;
}

bool createImage(RVTEXTURE *image) {
    const unsigned int size = static_cast<unsigned int>(RVSETTINGS::getSDLWaterSize());
    return image && image->create(size, size, RV_TEXTURE_RGB);
}

void attachImage(unsigned int image) {
    RVOPENGL::glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D,
                                        image, 0);
}

void createFrameBuffer(GLuint &fbo, GLuint &renderBuffer, unsigned int image) {
    const int size = RVSETTINGS::getSDLWaterSize();
    RVOPENGL::glGenFramebuffersEXT(1, &fbo);
    RVOPENGL::glGenRenderbuffersEXT(1, &renderBuffer);
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbo);
    attachImage(image);
    RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, renderBuffer);
    RVOPENGL::glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, size, size);
    RVOPENGL::glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
                                           GL_RENDERBUFFER_EXT, renderBuffer);
}

// Texture uploads that were deleted so far, modulo 2^32.
unsigned int deletedUploads() {
    return static_cast<unsigned int>(ravolt::TextureInternals::releasedUploads());
}

// An image that the application has unloaded is uploaded again, black until it is drawn into. One
// that was uploaded again may have the same name as before.
void restoreImage(RVTEXTURE *image, unsigned int fbo, unsigned int &attached) {
    if (!image || !fbo || attached == deletedUploads())
        return;
    attached = deletedUploads();
    ravolt::TextureInternals::restore(*image);
    const unsigned int bound = ravolt::boundFramebuffer();
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbo);
    attachImage(image->getGLId());
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, bound);
}

// OpenGL's name of the shadow map that the frame draws; 0 when no light casts shadows.
unsigned int frameShadowMap() {
    if (!ravolt::findShadowCaster())
        return 0;
    const RVFBO *target = RVOPENGL::getFbo(shadowMapTarget);
    return target && target->getTexture() ? target->getTexture()->getGLId() : 0;
}

// A material that was applied with the other program is applied again.
void chooseProgram(RVMATERIAL &material, RVSHADER *program) {
    if (material.getShader() == program)
        return;
    material.setShader(program);
    RVMATERIAL::reset();
}

void emitCorner(float u, float v, float x, float z) {
    if (RVOPENGL::glMultiTexCoord2fARB)
        RVOPENGL::glMultiTexCoord2fARB(GL_TEXTURE0, u, v);
    else
        glTexCoord2f(u, v);
    glVertex3f(x, 0, z);
}

// Those that have made images, whatever their class is.
std::vector<const RVWATER *> watersWithImages;

// Without memory the collector may evict the images.
void addToWatersWithImages(const RVWATER *water) {
    if (std::find(watersWithImages.begin(), watersWithImages.end(), water) !=
        watersWithImages.end())
        return;
    try {
        watersWithImages.push_back(water);
    } catch (const std::bad_alloc &) {
        return;
    }
}

} // namespace

RVWATER::RVWATER()
    : speed(0.005f), time(0.0f), reflectionFbo(0), refractionFbo(0), reflectionRenderBuffer(0),
      refractionRenderBuffer(0), surfaceList(0), repeat(1), sizeZ(1024.0f), sizeX(1024.0f),
      attachedReflection(0), attachedRefraction(0), failureReported(false) {
    initType(RV_NODE_TYPE_WATER);
}

RVWATER::RVWATER(const RVWATER &other) : RVNODE(other) {
    copyFields(other);
    setDynamicClass(RV_NODE_TYPE_WATER);
}

RVWATER::~RVWATER() {
    std::erase(watersWithImages, this);
    releaseFrameBuffers();
    if (owned->surfaceList)
        glDeleteLists(owned->surfaceList, 1);
    ravolt::deleteLitShadowMap(owned->litMap);
}

RVWATER &RVWATER::operator=(const RVWATER &other) {
    RVNODE::operator=(other);
    if (this != &other)
        copyFields(other);
    return *this;
}

// All fields except those of the node and the owned names.
void RVWATER::copyFields(const RVWATER &other) {
    speed = other.speed;
    time = other.time;
    reflectionFbo = other.reflectionFbo;
    refractionFbo = other.refractionFbo;
    reflectionRenderBuffer = other.reflectionRenderBuffer;
    refractionRenderBuffer = other.refractionRenderBuffer;
    surfaceList = other.surfaceList;
    material.set(other.material.get());
    reflectionTexture.set(other.reflectionTexture.get());
    refractionTexture.set(other.refractionTexture.get());
    bumpTexture.set(other.bumpTexture.get());
    dudvTexture.set(other.dudvTexture.get());
    repeat = other.repeat;
    sizeZ = other.sizeZ;
    sizeX = other.sizeX;
    attachedReflection = other.attachedReflection;
    attachedRefraction = other.attachedRefraction;
    failureReported = other.failureReported;
}

// On purpose: the two tests in the middle are crossed. With all four names everything is deleted.
void RVWATER::releaseFrameBuffers() {
    using ravolt::callIfPresent;
    if (owned->reflectionFbo)
        callIfPresent<RVOPENGL::glDeleteFramebuffersEXT>(1, &owned->reflectionFbo);
    if (owned->refractionFbo)
        callIfPresent<RVOPENGL::glDeleteRenderbuffersEXT>(1, &owned->reflectionRenderBuffer);
    if (owned->reflectionRenderBuffer)
        callIfPresent<RVOPENGL::glDeleteFramebuffersEXT>(1, &owned->refractionFbo);
    if (owned->refractionRenderBuffer)
        callIfPresent<RVOPENGL::glDeleteRenderbuffersEXT>(1, &owned->refractionRenderBuffer);
    owned->reflectionFbo = owned->refractionFbo = 0;
    owned->reflectionRenderBuffer = owned->refractionRenderBuffer = 0;
}

void RVWATER::init(float newSizeZ, float newSizeX) {
    sizeZ = newSizeZ;
    sizeX = newSizeX;
    createSurface();
}

// Four corners are enough: the program computes the waves per pixel.
void RVWATER::createSurface() {
    if (!owned->surfaceList)
        owned->surfaceList = glGenLists(1);
    surfaceList = owned->surfaceList;
    if (!surfaceList)
        return;
    glNewList(surfaceList, GL_COMPILE);
    glBegin(GL_QUADS);
    emitCorner(0, 0, 0, 0);
    emitCorner(0, 1, 0, sizeZ);
    emitCorner(1, 1, sizeX, sizeZ);
    emitCorner(1, 0, sizeX, 0);
    glEnd();
    glEndList();
}

bool RVWATER::loadTextures(const char *bumpFile, const char *dudvFile, int newRepeat) {
    if (!bumpFile || !dudvFile) {
        zlfLog("   [!] Invalid params @ RVWATER::loadTextures\n");
        return false;
    }
    repeat = newRepeat;
    bool loaded = true;
    bumpTexture.set(ravolt::findOrLoadTexture(bumpFile, false, loaded));
    dudvTexture.set(ravolt::findOrLoadTexture(dudvFile, false, loaded));
    if (!loaded) {
        // On purpose: the log names another method.
        zlfLog("   [!] Invalid params @ RVWATER::loadTexture\n");
        return false;
    }
    RVMATERIAL *const made = new (std::nothrow) RVMATERIAL;
    if (!made) {
        zlfLog("   [!] Out of memory @ RVWATER::loadTextures\n");
        return false;
    }
    material.set(made);
    // References first: creating the images may evict unreferenced textures.
    material->setTexture(bumpSlot, bumpTexture.get());
    material->setTexture(dudvSlot, dudvTexture.get());
    createTexture();
    if (RVSHADER::useWater())
        material->setShader(RVSHADER::water);
    failureReported = false;
    return true;
}

bool RVWATER::isImage(const RVTEXTURE *texture) {
    return std::any_of(watersWithImages.begin(), watersWithImages.end(), [=](const RVWATER *water) {
        return water->reflectionTexture.get() == texture ||
               water->refractionTexture.get() == texture;
    });
}

// Where the images cannot be made the material has the two maps alone.
void RVWATER::createTexture() {
    releaseFrameBuffers();
    reflectionTexture.set(new (std::nothrow) RVTEXTURE);
    refractionTexture.set(new (std::nothrow) RVTEXTURE);
    if (!reflectionTexture || !refractionTexture)
        zlfLog("   [!] Out of memory @ RVWATER::createTexture\n");
    const bool created = canCreateFrameBuffers() && createImage(reflectionTexture.get()) &&
                         createImage(refractionTexture.get());
    if (created) {
        // In this order each image is uploaded twice, first with mipmaps.
        reflectionTexture->setFilter(true, false, true);
        refractionTexture->setFilter(true, false, true);
        material->setTexture(reflectionSlot, reflectionTexture.get());
        material->setTexture(refractionSlot, refractionTexture.get());
        attachedReflection = attachedRefraction = deletedUploads();
        addToWatersWithImages(this);
        ravolt::RenderTargets::isWaterImage = isImage;

        RVFBO::unbind(); // so that RVFBO's record is correct at the end
        createFrameBuffer(owned->reflectionFbo, owned->reflectionRenderBuffer,
                          reflectionTexture->getGLId());
        createFrameBuffer(owned->refractionFbo, owned->refractionRenderBuffer,
                          refractionTexture->getGLId());
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
    }
    reflectionFbo = owned->reflectionFbo;
    refractionFbo = owned->refractionFbo;
    reflectionRenderBuffer = owned->reflectionRenderBuffer;
    refractionRenderBuffer = owned->refractionRenderBuffer;
}

void RVWATER::setSpeed(float newSpeed) { speed = newSpeed; }

void RVWATER::getReflectionBuffer(unsigned int &fbo, unsigned int &renderBuffer) const {
    fbo = reflectionFbo;
    renderBuffer = reflectionRenderBuffer;
}

void RVWATER::getRefractionBuffer(unsigned int &fbo, unsigned int &renderBuffer) const {
    fbo = refractionFbo;
    renderBuffer = refractionRenderBuffer;
}

bool RVWATER::render(void *element) {
    if (!material) {
        if (!failureReported)
            zlfLog("   [!] No material: textures are not loaded @ RVWATER::render\n");
        failureReported = true;
        return false;
    }
    if (element) {
        RVELEMENT &entry = *static_cast<RVELEMENT *>(element);
        RVLIGHT::activateNearest(&entry);
        glLoadMatrixf(entry.getMatrix()->e);
    }
    if (!surfaceList)
        createSurface();
    restoreImages();
    const bool shadowed = RAVOLT::isShadowed();
    const RVSHADER *program = nullptr;
    if (RVSHADER::useWater()) {
        RVSHADER *const chosen = shadowed ? RVSHADER::waterS : RVSHADER::water;
        chooseProgram(*material.get(), chosen);
        program = chosen;
    }
    material->render(nullptr);
    if (program && program->isOperative())
        applyParameters(*program, shadowed);

    time += RAVOLT::getFPSfactor();
    glPushAttrib(GL_CURRENT_BIT); // the next object must not have the colour of the clock
    glColor3f(time * speed, 0, 0);
    glCallList(surfaceList);
    glPopAttrib();
    return true;
}

void RVWATER::restoreImages() {
    restoreImage(reflectionTexture.get(), reflectionFbo, attachedReflection);
    restoreImage(refractionTexture.get(), refractionFbo, attachedRefraction);
}

// Requires that the program is in use. Each of its samplers has the unit of its number since
// linking.
void RVWATER::applyParameters(const RVSHADER &program, bool shadowed) {
    if (shadowed) {
        const int size = RVSETTINGS::getSDLShadowMapSize();
        RVSHADER::bindSizes(size, size);
        bindShadowMap();
    }
    ravolt::callIfPresent<RVOPENGL::glUniform1iARB>(
        static_cast<GLint>(program.getParam(repeatParameter)), repeat);
}

// The unit may have a texture of another material, or the map of an earlier frame.
void RVWATER::bindShadowMap() {
    unsigned int map = frameShadowMap();
    if (!map) {
        if (!owned->litMap)
            owned->litMap = ravolt::createLitShadowMap();
        map = owned->litMap;
    }
    ravolt::bindShadowMapUnit(map);
    RVSHADER::bindTexture(1);
}
