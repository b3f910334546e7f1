// Render targets: the registry, what is attached, and which one is drawn into. What is done with
// whole images is in blur.cpp. Only here may the functions of frame buffer objects be called but
// glGenerateMipmapEXT, except for the frame buffers of water, which are no targets; and only here
// the draw and read buffer of a target be changed: both belong to the bound target, so that those
// of the window do not change.
//
// Invariants: OpenGL has currentFbo bound, or the window when it is NULL. A target that was deleted
// while it was current is compared and never followed, and a new one at its address does not count
// as bound.

#include "ravolt/RVFBO.h"

#include "engine/gl/stateCache.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"
#include "resources/textureInternals.h"

using FboRegistry = ravolt::Registry<RVFBO>;

RVFBO *RVFBO::firstFbo = nullptr;
RVFBO *RVFBO::lastFbo = nullptr;
RVFBO *RVFBO::currentFbo = nullptr;
int RVFBO::viewport[4] = {};

bool ravolt::framebuffersWork() {
    return RVOPENGL::useFBO() && RVOPENGL::glGenFramebuffersEXT &&
           RVOPENGL::glDeleteFramebuffersEXT && RVOPENGL::glBindFramebufferEXT &&
           RVOPENGL::glFramebufferTexture2DEXT && RVOPENGL::glGenRenderbuffersEXT &&
           RVOPENGL::glDeleteRenderbuffersEXT && RVOPENGL::glBindRenderbufferEXT &&
           RVOPENGL::glRenderbufferStorageEXT && RVOPENGL::glFramebufferRenderbufferEXT &&
           RVOPENGL::glGenerateMipmapEXT && RVOPENGL::glCheckFramebufferStatusEXT;
}

using ravolt::framebuffersWork;

namespace {

GLint windowFramebuffer = 0;

GLint framebufferBinding() {
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &bound);
    return bound;
}

// Of the bound render buffer.
void allocateDepth(int sizeX, int sizeY) {
    RVOPENGL::glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, sizeX, sizeY);
}

// Of the bound target.
bool isComplete() {
    const GLenum status = RVOPENGL::glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT);
    if (status == GL_FRAMEBUFFER_COMPLETE_EXT)
        return true;
    zlfLog("   [!] FBO not complete (error %d) @ RVFBO::isOk\n", status);
    return false;
}

} // namespace

void ravolt::detectWindowFramebuffer() { windowFramebuffer = framebufferBinding(); }

unsigned int ravolt::boundFramebuffer() {
    const GLint bound = framebufferBinding();
    return bound == windowFramebuffer ? 0 : static_cast<unsigned int>(bound);
}

RVFBO::RVFBO()
    : id(zlfNewId()), previous(nullptr), next(nullptr), sizeX(0), sizeY(0), glId(0),
      renderBuffer(0), attachment(GL_COLOR_ATTACHMENT0_EXT), attachedGlId(0),
      seenReleases(ravolt::TextureInternals::releasedUploads()) {
    ravolt::formatText(name, "[fbo %d]", id);
    if (framebuffersWork())
        RVOPENGL::glGenFramebuffersEXT(1, &glId);
    if (currentFbo == this)
        currentFbo = nullptr;
    FboRegistry::append(firstFbo, lastFbo, this);
}

RVFBO::~RVFBO() {
    releaseId(id);
    if (framebuffersWork()) {
        if (renderBuffer)
            RVOPENGL::glDeleteRenderbuffersEXT(1, &renderBuffer);
        if (glId)
            RVOPENGL::glDeleteFramebuffersEXT(1, &glId);
    }
    RVOPENGL::onTargetDestroyed(this);
    FboRegistry::unlink(firstFbo, lastFbo, this);
}

bool RVFBO::bindTexture(int slot, RVTEXTURE *newTexture) {
    if (!newTexture) {
        zlfLog("   [!] Invalid params @ RVFBO::bindTexture\n");
        return false;
    }
    if (!framebuffersWork())
        return false;
    render(nullptr);
    if (slot != RV_FBO_COLOR && slot != RV_FBO_DEPTH) {
        zlfLog("   [!] Invalid operation @ RVFBO::bindTexture\n");
        return false;
    }
    if (slot == RV_FBO_DEPTH) { // a target with depth alone has no colour to draw or read
        glReadBuffer(GL_NONE);
        glDrawBuffer(GL_NONE);
    }
    attachment = slot == RV_FBO_DEPTH ? GL_DEPTH_ATTACHMENT_EXT : GL_COLOR_ATTACHMENT0_EXT;
    texture.set(newTexture);
    attach();
    sizeX = static_cast<int>(texture->getSizeX());
    sizeY = static_cast<int>(texture->getSizeY());
    return true;
}

bool RVFBO::bindRenderBuffer(int slot, int newSizeX, int newSizeY) {
    if (!framebuffersWork())
        return false;
    render(nullptr);
    if (renderBuffer)
        RVOPENGL::glDeleteRenderbuffersEXT(1, &renderBuffer);
    RVOPENGL::glGenRenderbuffersEXT(1, &renderBuffer);
    RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, renderBuffer);
    if (slot != RV_FBO_DEPTH_BUFFER) {
        // On purpose: an older name of the method, and the new, empty buffer is not deleted.
        zlfLog("   [!] Invalid operation @ RVFBO::bindBuffer\n");
        return false;
    }
    allocateDepth(newSizeX, newSizeY);
    RVOPENGL::glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
                                           GL_RENDERBUFFER_EXT, renderBuffer);
    sizeX = newSizeX;
    sizeY = newSizeY;
    return true;
}

bool RVFBO::isOk() {
    if (!framebuffersWork())
        return false;
    render(nullptr);
    return isComplete();
}

bool RVFBO::render(void *) {
    if (!framebuffersWork())
        return true;
    if (!ravolt::cacheHit(currentFbo == this)) {
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, glId);
        glViewport(0, 0, sizeX, sizeY);
        currentFbo = this;
    }
    if (seenReleases != ravolt::TextureInternals::releasedUploads())
        reattachTexture();
    return true;
}

// The target must be current. A texture that was uploaded again is not attached any more, even if
// OpenGL gave it the same name again; one that was evicted is uploaded again, empty.
void RVFBO::reattachTexture() {
    seenReleases = ravolt::TextureInternals::releasedUploads();
    if (!texture)
        return;
    if (texture->getGLId() != attachedGlId)
        ravolt::TextureInternals::restore(*texture.get());
    attach();
}

bool (*ravolt::RenderTargets::isWaterImage)(const RVTEXTURE *texture) = nullptr;

bool ravolt::RenderTargets::useTexture(const RVTEXTURE *wanted) {
    for (const RVFBO *target = RVFBO::firstFbo; target; target = target->next)
        if (target->texture.get() == wanted)
            return true;
    return isWaterImage && isWaterImage(wanted);
}

bool ravolt::RenderTargets::exists(const RVFBO *target) {
    const RVFBO *each = RVFBO::firstFbo;
    while (each && each != target)
        each = each->next;
    return each != nullptr;
}

void ravolt::RenderTargets::bindDepthPlaceholder(RVFBO &target) {
    const int sizeX = target.sizeX, sizeY = target.sizeY;
    target.bindRenderBuffer(RV_FBO_DEPTH_BUFFER, 1, 1);
    target.sizeX = sizeX;
    target.sizeY = sizeY;
}

void ravolt::RenderTargets::allocateDepthBuffer(const RVFBO &target) {
    if (!framebuffersWork() || !target.renderBuffer)
        return;
    GLint bound = 0;
    glGetIntegerv(GL_RENDERBUFFER_BINDING_EXT, &bound);
    RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, target.renderBuffer);
    allocateDepth(target.sizeX, target.sizeY);
    RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, static_cast<GLuint>(bound));
}

void ravolt::RenderTargets::report(const RVFBO &target) {
    if (!framebuffersWork())
        return;
    const GLuint bound = boundFramebuffer();
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target.glId);
    isComplete();
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, bound);
}

void RVFBO::attach() {
    attachedGlId = texture->getGLId();
    RVOPENGL::glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, attachment, GL_TEXTURE_2D, attachedGlId,
                                        0);
}

void RVFBO::unbind() {
    if (!framebuffersWork() || ravolt::cacheHit(!currentFbo))
        return;
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    currentFbo = nullptr;
}

bool RVFBO::cleanUp() {
    if (!firstFbo)
        return false;
    const unsigned int number = FboRegistry::cleanUp(firstFbo);
    zlfLog("   %d fbo(s) released\n", number);
    return true;
}

unsigned int RVFBO::getNumberOfFbos() { return FboRegistry::count(firstFbo); }

RVFBO *RVFBO::getCurrent() { return currentFbo; }

unsigned int RVFBO::getId() const { return id; }
unsigned int RVFBO::getGLId() const { return glId; }
char *RVFBO::getName() { return name; }
RVTEXTURE *RVFBO::getTexture() const { return texture.get(); }
int RVFBO::getSizeX() const { return sizeX; }
int RVFBO::getSizeY() const { return sizeY; }
