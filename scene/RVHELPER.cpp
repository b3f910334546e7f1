// Invariant: `radius` is the first field.

#include "ravolt/RVHELPER.h"

#include "engine/gl/bindings.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int boxVertices = 36;

// One face of the box: two triangles, counter-clockwise seen from outside. A corner's bits 0, 1
// and 2 take x, y and z from the maximum.
struct Face {
    float normal[3];
    unsigned char corner[6];
};

constexpr Face faces[] = {{{0, 0, -1}, {0, 2, 3, 0, 3, 1}}, {{0, 0, 1}, {4, 5, 7, 4, 7, 6}},
                          {{-1, 0, 0}, {0, 4, 6, 0, 6, 2}}, {{1, 0, 0}, {1, 3, 7, 1, 7, 5}},
                          {{0, 1, 0}, {2, 6, 7, 2, 7, 3}},  {{0, -1, 0}, {0, 1, 5, 0, 5, 4}}};

// The lines, by corners.
constexpr unsigned char firstStrip[] = {5, 2, 3, 7, 6, 2};
constexpr unsigned char secondStrip[] = {7, 0, 1, 5, 4, 0};
// On purpose: with the lead-in of the two strips, the first two pairs are the space diagonals.
constexpr unsigned char pairs[] = {1, 6, 4, 3, 0, 2, 1, 3, 4, 6, 5, 7};

Z3MVECTOR3D cornerOf(const Z3MVECTOR3D &min, const Z3MVECTOR3D &max, unsigned int corner) {
    return Z3MVECTOR3D(corner & 1 ? max.x : min.x, corner & 2 ? max.y : min.y,
                       corner & 4 ? max.z : min.z);
}

// OpenGL has their addresses also after the drawing, so they are static.
float vertex[boxVertices][3];
float normal[boxVertices][3];

void fillArrays(const Z3MVECTOR3D &min, const Z3MVECTOR3D &max) {
    unsigned int index = 0;
    for (const Face &face : faces) {
        for (const unsigned int corner : face.corner) {
            const Z3MVECTOR3D point = cornerOf(min, max, corner);
            vertex[index][0] = point.x;
            vertex[index][1] = point.y;
            vertex[index][2] = point.z;
            std::copy(std::begin(face.normal), std::end(face.normal), normal[index]);
            ++index;
        }
    }
}

void drawArrays(GLenum culledSide) {
    glCullFace(culledSide);
    glVertexPointer(3, GL_FLOAT, 0, vertex);
    glNormalPointer(GL_FLOAT, 0, normal);
    glDrawArrays(GL_TRIANGLES, 0, boxVertices);
}

void setArrays() {
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, 0);
    RVOPENGL::vertexArrayOn();
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, 0);
    RVOPENGL::normalArrayOn();
    RVOPENGL::textureArrayOff();
    RVOPENGL::colorArrayOff();
}

void setMaterial(const Z3MVECTOR4D &color) {
    const float emission[] = {color.x / 2, color.y / 2, color.z / 2, color.w};
    constexpr float none[] = {0, 0, 0, 0};
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, none);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, &color.x);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, none);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 30);
}

void drawWire(const Z3MVECTOR3D &min, const Z3MVECTOR3D &max) {
    const auto draw = [&](GLenum primitive, const auto &corners) {
        glBegin(primitive);
        for (const unsigned int corner : corners) {
            const Z3MVECTOR3D point = cornerOf(min, max, corner);
            glVertex3f(point.x, point.y, point.z);
        }
        glEnd();
    };
    draw(GL_LINE_STRIP, firstStrip);
    draw(GL_LINE_STRIP, secondStrip);
    draw(GL_LINES, pairs);
}

// The far side first, so that the near side blends over it.
void drawSolid(const Z3MVECTOR3D &min, const Z3MVECTOR3D &max) {
    const bool culled = RVOPENGL::isCulled();
    fillArrays(min, max);
    RVOPENGL::cullingOn();
    drawArrays(GL_FRONT);
    drawArrays(GL_BACK);
    if (!culled)
        RVOPENGL::cullingOff();
}

} // namespace

RVHELPER::RVHELPER()
    : radius(1.0f), thickness(1.0f), color(1.0, 0.8, 0.2, 0.5), reserved2(1, 1, 1), min(-1, -1, -1),
      max(1, 1, 1) {
    initType(RV_NODE_TYPE_HELPER);
}

RVHELPER::RVHELPER(const RVHELPER &other) : RVNODE(other) {
    *this = other;
    setDynamicClass(RV_NODE_TYPE_HELPER);
}

RVHELPER::~RVHELPER() = default;

bool RVHELPER::render(void *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVHELPER::render\n");
        return true;
    }
    RVTEXTURE::texturingOff(16);
    RVSHADER::disable();
    glLoadMatrixf(static_cast<const RVELEMENT *>(element)->getMatrix()->e);
    setArrays();
    setMaterial(color);
    // The wire is just outside of the solid. On purpose: the scale applies to the solid, too.
    glScalef(1.01f, 1.01f, 1.01f);
    glLineWidth(thickness);
    RVLIGHT::lightingOff();
    glColor4fv(&color.x);
    drawWire(min, max);

    RVLIGHT::lightingOn();
    RVOPENGL::blendingOn();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    drawSolid(min, max);
    RVOPENGL::blendingOff();
    RVMATERIAL::reset();
    return true;
}
