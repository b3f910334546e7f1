// The sky: its two buffers, its texture and its drawing.
//
// Invariant: the buffers that this object has filled are in `owned`, and no other object releases
// them; those that it draws from may be another's.

#include "ravolt/RVSKYDOME.h"

#include "effects/domeGeometry.h"
#include "effects/textureFiles.h"
#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <cstddef>
#include <new>

static_assert(sizeof(RVSKYDOME_VERTEX) == 20 && offsetof(RVSKYDOME_VERTEX, texCoord) == 12,
              "the vertex buffer's format");

RVSKYDOME::RVSKYDOME()
    : speed(0.0f), time(0.0f), radius(RVOPENGL::getFarPlane() - RVOPENGL::getFarPlane() / 10.0f),
      dtheta(15.0f), dphi(15.0f), vertexBuffer(0), indexBuffer(0), numberOfIndices(0),
      failureReported(false) {
    initType(RV_NODE_TYPE_SKYDOME);
    createDome();
}

RVSKYDOME::RVSKYDOME(const RVSKYDOME &other) : RVNODE(other) {
    copyFields(other);
    setDynamicClass(RV_NODE_TYPE_SKYDOME);
}

RVSKYDOME::~RVSKYDOME() {
    ravolt::deleteBuffer(owned->vertex);
    ravolt::deleteBuffer(owned->index);
}

RVSKYDOME &RVSKYDOME::operator=(const RVSKYDOME &other) {
    RVNODE::operator=(other);
    if (this != &other)
        copyFields(other);
    return *this;
}

// All fields except those of the node and the owned buffers.
void RVSKYDOME::copyFields(const RVSKYDOME &other) {
    speed = other.speed;
    time = other.time;
    radius = other.radius;
    dtheta = other.dtheta;
    dphi = other.dphi;
    vertexBuffer = other.vertexBuffer;
    indexBuffer = other.indexBuffer;
    numberOfIndices = other.numberOfIndices;
    texture.set(other.texture.get());
    material.set(other.material.get());
    failureReported = other.failureReported;
}

void RVSKYDOME::init(float newRadius, float latitudeStep, float longitudeStep) {
    radius = newRadius;
    dtheta = latitudeStep;
    dphi = longitudeStep;
}

// Without memory the sky is without buffers, which render reports, too.
void RVSKYDOME::createDome() try {
    if (!ravolt::canCreateBuffers())
        return;
    const ravolt::DomeGeometry dome = ravolt::makeDome(radius, dtheta, dphi);
    owned->vertex = ravolt::createBuffer(GL_ARRAY_BUFFER_ARB, dome.vertices.data(),
                                         dome.vertices.size() * sizeof(RVSKYDOME_VERTEX));
    owned->index = ravolt::createBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, dome.indices.data(),
                                        dome.indices.size() * sizeof(unsigned short));
    ravolt::unbindBuffers();
    vertexBuffer = owned->vertex;
    indexBuffer = owned->index;
    numberOfIndices = static_cast<unsigned short>(dome.indices.size());
} catch (const std::bad_alloc &) {
    zlfLog("   [!] Out of memory @ RVSKYDOME::RVSKYDOME\n");
}

// On purpose: after a failed load the new texture remains, without pixels, and so does the
// material.
bool RVSKYDOME::loadTexture(const char *filename) {
    if (!filename) {
        zlfLog("   [!] Invalid params @ RVSKYDOME::loadTexture\n");
        return false;
    }
    if (!material)
        material.set(new (std::nothrow) RVMATERIAL);
    bool loaded = true;
    texture.set(ravolt::findOrLoadTexture(filename, true, loaded));
    if (!loaded) {
        zlfLog("   [!] Invalid params @ RVSKYDOME::loadTexture\n");
        return false;
    }
    if (!material) {
        zlfLog("   [!] Out of memory @ RVSKYDOME::loadTexture\n");
        return false;
    }
    material->setTexture(0, texture.get());
    if (RVSHADER::useSkydome())
        material->setShader(RVSHADER::skydome);
    failureReported = false;
    return true;
}

void RVSKYDOME::setSpeed(float newSpeed) { speed = newSpeed; }

bool RVSKYDOME::render(void *element) {
    if (!canRender())
        return false;
    if (element)
        glLoadMatrixf(static_cast<const RVELEMENT *>(element)->getMatrix()->e);
    RVOPENGL::indexArrayOn();
    RVOPENGL::vertexArrayOn();
    RVOPENGL::textureArrayOn();
    // Arrays of an earlier object may be shorter than the dome.
    RVOPENGL::normalArrayOff();
    RVOPENGL::colorArrayOff();
    RVLIGHT::lightingOff();
    glColor4f(1, 1, 1, 1); // the fixed functions multiply the texture by it
    material->render(nullptr);

    const RVCAMERA *camera = RVCAMERA::getThisPassCamera();
    const Z3MVECTOR3D centre = camera ? camera->getPosition() : RVCAMERA::getCameraPosition();
    glTranslatef(centre.x, centre.y, centre.z);
    glRotatef(getRotation().y, 0, 1, 0);
    drawStrip();

    RVOPENGL::indexArrayOff();
    RVOPENGL::vertexArrayOff();
    RVOPENGL::textureArrayOff();
    RVLIGHT::lightingOn();
    ravolt::unbindBuffers();
    return true;
}

bool RVSKYDOME::canRender() {
    if (material && material->isTextured() && vertexBuffer && indexBuffer &&
        ravolt::canBindBuffers())
        return true;
    if (!failureReported)
        zlfLog("   [!] No texture or no vertex buffers @ RVSKYDOME::render\n");
    failureReported = true;
    return false;
}

// The index array has no pointer: glIndexPointer does not accept unsigned shorts and would only
// raise an OpenGL error, which an application's own check would find.
void RVSKYDOME::drawStrip() const {
    constexpr GLsizei stride = sizeof(RVSKYDOME_VERTEX);
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, vertexBuffer);
    glVertexPointer(3, GL_FLOAT, stride, nullptr);
    glTexCoordPointer(2, GL_FLOAT, stride,
                      reinterpret_cast<const void *>(offsetof(RVSKYDOME_VERTEX, texCoord)));
    ravolt::bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, indexBuffer);
    glDrawElements(GL_TRIANGLE_STRIP, numberOfIndices, GL_UNSIGNED_SHORT, nullptr);
}
