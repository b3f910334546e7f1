// Drawing of meshes. Of OpenGL's state only what the cached switches of RVOPENGL and KnownState
// record is assumed between two meshes. Front faces are culled only in the first half of a
// transparent mesh: everywhere else it is GL_BACK.

#include "ravolt/RVMESH.h"

#include "engine/gl/bindings.h"
#include "engine/gl/stateCache.h"
#include "foundation/registry.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "scene/nodeInternals.h"
#include "scene/renderList.h"

#include <cmath>
#include <new>

namespace {

// Where one of OpenGL's arrays was last set to be.
struct ArraySource {
    unsigned int period; // of KnownState
    GLuint buffer;
    const void *pointer;
};
ArraySource vertexSource = {}, normalSource = {}, coordinateSource = {};

// Whether OpenGL must be given the pointer of an array. If so, its buffer is bound.
bool mustSet(ArraySource &recorded, GLuint buffer, const void *pointer) {
    if (ravolt::KnownState::hit(recorded.period,
                                recorded.buffer == buffer && recorded.pointer == pointer))
        return false;
    recorded = {ravolt::KnownState::period(), buffer, pointer};
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, buffer);
    return true;
}

// The identifier as a colour, so that RAVOLT::select can read it back from a pixel.
void setPickingColor(unsigned int id) {
    if (RVSETTINGS::getSDLColorDepth() == 16) {
        glColor4f((id >> 11 & 31) / 31.0f, (id >> 5 & 63) / 63.0f, (id & 31) / 31.0f, 0.0f);
        return;
    }
    glColor4f((id & 255) / 255.0f, (id >> 8 & 255) / 255.0f, (id >> 16 & 255) / 255.0f,
              (id >> 24) / 255.0f);
}

// While one exists, a material that is shared with skinned meshes selects the programs for rigid
// ones: the programs for skinned meshes would move a rigid mesh with the bones of the last one.
class ScopedUnskinned {
  public:
    ScopedUnskinned(RVMATERIAL &shared, bool rigid)
        : material(shared), changed(rigid && shared.isSkinned()) {
        if (changed)
            setSkinning(false);
    }
    ~ScopedUnskinned() {
        if (changed)
            setSkinning(true);
    }
    ScopedUnskinned(const ScopedUnskinned &) = delete;
    ScopedUnskinned &operator=(const ScopedUnskinned &) = delete;

  private:
    void setSkinning(bool skinned) const {
        material.setSkinning(skinned);
        RVMATERIAL::reset(); // the material must be applied again
    }

    RVMATERIAL &material;
    const bool changed;
};

// Lights and material of the normal pass. Returns whether the mesh is drawn as a transparent one.
bool shade(const RVMESH &mesh, RVELEMENT &entry) {
    RVLIGHT::activateNearest(&entry);
    RVMATERIAL *const material = mesh.getMaterial();
    if (!material)
        return false;
    const ScopedUnskinned use(*material, !mesh.isSkinned());
    // On purpose: without lighting a transparent mesh is drawn once, like an opaque one.
    if (!RVLIGHT::getLighting()) {
        material->render(nullptr);
        return false;
    }
    // An entry without a light in this frame still has the pointer of an earlier frame.
    const RVELEMENT *nearest = entry.getNearestLight(0);
    const RVNODE *node = ravolt::RenderList::contains(nearest) ? nearest->getNode() : nullptr;
    if (node && ravolt::NodeInternals::isObjectOf(*node, RV_NODE_TYPE_LIGHT)) {
        int lightType = static_cast<const RVLIGHT *>(node)->getLightType();
        material->render(&lightType);
    } else {
        material->render(nullptr);
    }
    return material->isTransparent();
}

// The colour, or the depth, of the passes that use neither lights nor material.
void shadeFlat(const RVMESH &mesh, const RVELEMENT &entry) {
    RVLIGHT::lightingOff();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOff();
    RVOPENGL::colorArrayOff(); // 2D drawing enables it, and its colours would replace this one
    const bool depth = RVOPENGL::getProfile() == RV_OPENGL_PROFILE_ZPASS;
    const bool skinned = mesh.isSkinned();
    RVSHADER *const program =
        !RVSHADER::usePassthrough() ? nullptr
        : depth ? (skinned ? RVSHADER::passthroughZPassA : RVSHADER::passthroughZPass)
                : (skinned ? RVSHADER::passthroughA : RVSHADER::passthrough);
    if (!program) {
        RVSHADER::disable();
    } else {
        program->render(nullptr);
        if (depth) {
            RVSHADER::bindNearAndFarPlane(RVOPENGL::getNearPlane(), RVOPENGL::getFarPlane());
            return;
        }
    }
    setPickingColor(entry.getAuxId() ? entry.getAuxId() : mesh.getId());
}

// Without a light the fixed functions draw. On purpose: also in the passes that need none, and a
// mesh that a program should skin is drawn in its bind pose then.
void disableUnusableProgram(const RVELEMENT &entry, bool cannotSkin) {
    if (entry.getNearestLight(0) && !cannotSkin)
        return;
    RVSHADER::unbindBones(); // while the program that they were bound for is known
    RVSHADER::disable();
    if (cannotSkin)
        RVMATERIAL::reset(); // its other meshes need the material's program
}

} // namespace

RVSKELETON *RVMESH::skeletonElement = nullptr;
unsigned int RVMESH::currentSkeleton = 0;
bool RVMESH::displayNormals = false;
float RVMESH::normalLength = 1;
Z3MMATRIX RVMESH::boneMatrix[RV_BONES];
Z3MVECTOR3D RVMESH::boneTrans[RV_BONES];
Z3MVECTOR4D RVMESH::boneQuat[RV_BONES];

RVMESH::RVMESH() { initType(RV_NODE_TYPE_MESH); }

RVMESH::RVMESH(const RVMESH &other) : RVNODE(other), material(other.material) {
    *this = other;
    setDynamicClass(RV_NODE_TYPE_MESH);
}

bool RVMESH::init() {
    if (!skeletonElement)
        skeletonElement = new (std::nothrow) RVSKELETON[RV_SKELETONS];
    return true;
}

bool RVMESH::free() {
    delete[] skeletonElement;
    skeletonElement = nullptr;
    return true;
}

void RVMESH::reset() {
    currentSkeleton = 0;
    RVOPENGL::vertexArrayOff();
    RVOPENGL::normalArrayOff();
    RVOPENGL::colorArrayOff();
    RVOPENGL::textureArrayOff();
    if (RVOPENGL::glClientActiveTextureARB) {
        ravolt::selectClientUnit(1);
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        ravolt::selectClientUnit(0);
    }
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    ravolt::bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

bool RVMESH::render(void *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVMESH::render\n");
        return false;
    }
    if (hidden)
        return true;

    RVELEMENT &entry = *static_cast<RVELEMENT *>(element);
    bool transparent = false;
    if (RVOPENGL::getProfile() < RV_OPENGL_PROFILE_FLAT)
        transparent = shade(*this, entry);
    else
        shadeFlat(*this, entry);
    if (isSkinned() && !animate(entry.getParam1()))
        return false;
    disableUnusableProgram(entry, cannotSkin());
    drawSurfaces(entry, transparent);
    if (isSkinned())
        RVSHADER::unbindBones();
    if (displayNormals)
        drawNormals();
    return true;
}

void RVMESH::drawSurfaces(const RVELEMENT &entry, bool transparent) const {
    glLoadMatrixf(entry.getMatrix()->e);
    if (!transparent) {
        RVOPENGL::twoSideOff();
        bindArrays();
        drawFaces();
        return;
    }
    // Inner faces first, since they are behind the outer ones.
    const bool culled = RVOPENGL::isCulled();
    RVOPENGL::twoSideOn();
    RVOPENGL::cullingOn();
    glCullFace(GL_FRONT);
    bindArrays(); // both halves are drawn from them
    drawFaces();
    glCullFace(GL_BACK);
    drawFaces();
    if (!culled)
        RVOPENGL::cullingOff();
}

// The arrays of the file, in their buffers, or the skinned arrays if the processor skins the mesh.
void RVMESH::bindArrays() const {
    RVOPENGL::colorArrayOff(); // a box that was drawn before has switched it on
    const bool buffered = !skinnedVertex && ravolt::canBindBuffers();
    const auto source = [buffered](GLuint buffer, std::size_t offset, const void *array) {
        return buffered && buffer ? reinterpret_cast<const void *>(offset) : array;
    };
    const auto bufferOf = [buffered](GLuint buffer) { return buffered ? buffer : 0; };
    if (vertex) {
        RVOPENGL::vertexArrayOn();
        const void *pointer = source(vertexBuffer, 0, skinnedVertex ? skinnedVertex : vertex);
        if (mustSet(vertexSource, bufferOf(vertexBuffer), pointer))
            glVertexPointer(3, GL_FLOAT, 0, pointer);
    } else {
        RVOPENGL::vertexArrayOff();
    }
    if (vertexNormal) {
        RVOPENGL::normalArrayOn();
        const void *pointer =
            source(normalBuffer, normalOffset, skinnedNormal ? skinnedNormal : vertexNormal);
        if (mustSet(normalSource, bufferOf(normalBuffer), pointer))
            glNormalPointer(GL_FLOAT, 0, pointer);
    } else {
        RVOPENGL::normalArrayOff();
    }
    if (uv && RVOPENGL::getProfile() != RV_OPENGL_PROFILE_FLAT) {
        RVOPENGL::textureArrayOn();
        const void *pointer = source(uvBuffer, uvOffset, uv);
        if (mustSet(coordinateSource, bufferOf(uvBuffer), pointer))
            glTexCoordPointer(2, GL_FLOAT, 0, pointer);
    } else {
        RVOPENGL::textureArrayOff();
    }
}

void RVMESH::drawFaces() const {
    ravolt::bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, faceBuffer);
    const bool buffered = faceBuffer && ravolt::canBindBuffers();
    if (face)
        glDrawElements(GL_TRIANGLES, 3 * numberOfFaces, GL_UNSIGNED_SHORT,
                       buffered ? reinterpret_cast<const void *>(std::size_t{faceOffset}) : face);
}

// Not for a mesh that a program skins: only the program has its normals.
void RVMESH::drawNormals() const {
    RVMATERIAL::reset();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVLIGHT::lightingOff();
    if (!vertex || !vertexNormal || (isSkinned() && !skinnedVertex))
        return;
    RVSHADER::disable(); // the lines have colours of their own
    const Z3MVECTOR3D *from = skinnedVertex ? skinnedVertex : vertex;
    const Z3MVECTOR3D *normal = skinnedNormal ? skinnedNormal : vertexNormal;
    glBegin(GL_LINES);
    for (unsigned int i = 0; i < numberOfVertices; ++i) {
        const Z3MVECTOR3D to = from[i] + normal[i] * normalLength;
        glColor4f(0.0f, 1.0f, 0.0f, 1.0f);
        glVertex3f(from[i].x, from[i].y, from[i].z);
        glColor4f(0.0f, 0.1f, 0.0f, 1.0f);
        glVertex3f(to.x, to.y, to.z);
    }
    glEnd();
}

void RVMESH::showNormals() { displayNormals = true; }
void RVMESH::hideNormals() { displayNormals = false; }

void RVMESH::setNormalLength(float length) {
    if (std::isfinite(length) && length > 0)
        normalLength = length;
}

float RVMESH::getNormalLength() { return normalLength; }

void RVMESH::setDisplayStatus(bool visible) { hidden = !visible; }
bool RVMESH::isHidden() const { return hidden; }
bool RVMESH::isClosed() const { return closed; }

bool RVMESH::getShadowCaster() const { return shadowCaster; }
void RVMESH::setShadowCaster(bool caster) { shadowCaster = caster; }

bool RVMESH::isSkinned() const { return numberOfWeights != 0; }

// The programs take four weights a vertex.
bool RVMESH::isSkinnedByProgram() const { return RVSHADER::useSkinning() && numberOfWeights == 4; }

// Skinned, but neither a program nor the processor can skin it.
bool RVMESH::cannotSkin() const { return isSkinned() && !isSkinnedByProgram() && !skinnedVertex; }

float RVMESH::getRadius() const { return radius; }
Z3MVECTOR3D RVMESH::getMinimum() const { return minimum; }
Z3MVECTOR3D RVMESH::getMaximum() const { return maximum; }

RVMESH::MaterialUse::MaterialUse(const MaterialUse &other) : counted(other.counted) {
    set(other.get());
}

void RVMESH::MaterialUse::set(RVMATERIAL *newMaterial) {
    if (*counted && material)
        material->decReferences();
    material.set(newMaterial);
    if (*counted && material)
        material->incReferences();
}

void RVMESH::setMaterial(RVMATERIAL *newMaterial) { material.set(newMaterial); }
RVMATERIAL *RVMESH::getMaterial() const { return material.get(); }

int RVMESH::getNumberOfBones() const { return numberOfBones; }
unsigned int RVMESH::getNumberOfVertices() const { return numberOfVertices; }
unsigned int RVMESH::getNumberOfUVs() const { return numberOfUVs; }
unsigned int RVMESH::getNumberOfFaces() const { return numberOfFaces; }

const Z3MVECTOR3D *RVMESH::getVertexPtr() const { return vertex; }
const Z3MVECTOR3D *RVMESH::getVertexNormalPtr() const { return vertexNormal; }
const Z3MVECTOR2D *RVMESH::getUVPtr() const { return uv; }
const RVFACE *RVMESH::getFacePtr() const { return face; }
const Z3MVECTOR3D *RVMESH::getFaceNormalPtr() const { return faceNormal; }
