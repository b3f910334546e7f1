// Boxes: their state, their hit tests and their drawing from arrays on the stack.

#include "ravolt/RVBOX.h"

#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "gui/boxNodes.h"
#include "gui/pixels.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>

using ravolt::clampedToInt;
using ravolt::Pixels;

long RVBOX::foremostCounter = 0;

namespace {

constexpr unsigned int maxRings = 4096;

bool isLive(const RVSHADER *program) {
    for (const RVSHADER *each = RVSHADER::getFirst(); each; each = each->getNext())
        if (each == program)
            return true;
    return false;
}

void drawQuad(Pixels x1, Pixels y1, Pixels x2, Pixels y2, const Z3MVECTOR4D &color,
              const RVBOXCOORD &coords) {
    const float left = static_cast<float>(x1), top = static_cast<float>(y1);
    const float right = static_cast<float>(x2), bottom = static_cast<float>(y2);
    const float vertices[] = {left, top, right, top, left, bottom, right, bottom};
    const Z3MVECTOR4D colors[] = {color, color, color, color};
    const Z3MVECTOR2D texCoords[] = {coords.topLeft, coords.topRight, coords.bottomLeft,
                                     coords.bottomRight};
    ravolt::useMemory(GL_ARRAY_BUFFER_ARB);
    RVOPENGL::normalArrayOff(); // of a mesh
    glVertexPointer(2, GL_FLOAT, 0, vertices);
    glColorPointer(4, GL_FLOAT, 0, colors);
    glTexCoordPointer(2, GL_FLOAT, 0, texCoords);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

// A step along one axis, limited to the range from `start` to `end` in the window of the
// application. `parents` is the parent's position there. The end is applied last.
int limitedStep(int step, int parents, int position, int size, int start, int end) {
    long long next = static_cast<long long>(step) + parents + position;
    next = std::max(next, static_cast<long long>(start) + parents);
    if (static_cast<long long>(end) + parents < next + size)
        next = static_cast<long long>(end) - size + parents;
    return clampedToInt(next - parents - position);
}

} // namespace

RVBOX::RVBOX()
    : sizeX(64), sizeY(64), startX(0), startY(0), endX(0), endY(0), thickness(3),
      color(0.5f, 0.5f, 0.5f, 1.0f), checkStatus(false), displayStatus(true), staticStatus(true),
      clickedStatus(false), limitStatus(false), scissorStatus(true),
      foremostTimeStamp(getNextCounter()), shader(nullptr) {
    initType(RV_NODE_TYPE_BOX);
}

RVBOX::~RVBOX() = default;

RVBOX::RVBOX(const RVBOX &other) : RVNODE(other) {
    copyFields(other);
    setDynamicClass(RV_NODE_TYPE_BOX);
}

RVBOX &RVBOX::operator=(const RVBOX &other) {
    RVNODE::operator=(other);
    if (this != &other)
        copyFields(other);
    return *this;
}

void RVBOX::copyFields(const RVBOX &other) {
    sizeX = other.sizeX;
    sizeY = other.sizeY;
    startX = other.startX;
    startY = other.startY;
    endX = other.endX;
    endY = other.endY;
    thickness = other.thickness;
    color = other.color;
    checkStatus = other.checkStatus;
    displayStatus = other.displayStatus;
    staticStatus = other.staticStatus;
    clickedStatus = other.clickedStatus;
    limitStatus = other.limitStatus;
    scissorStatus = other.scissorStatus;
    foremostTimeStamp = other.foremostTimeStamp;
    texture.set(other.texture.get());
    shader = other.shader;
    boxCoord = other.boxCoord;
}

bool RVBOX::setTexture(RVTEXTURE *newTexture) {
    if (texture)
        texture->decReferences();
    texture.set(newTexture);
    if (texture)
        texture->incReferences();
    return true;
}

bool RVBOX::setShader(RVSHADER *newShader) {
    shader = newShader;
    return true;
}

void RVBOX::setColor(float red, float green, float blue, float alpha) {
    color = Z3MVECTOR4D(red, green, blue, alpha);
}

void RVBOX::setSizes(int width, int height) {
    sizeX = width;
    sizeY = height;
}

void RVBOX::setLimits(int newStartX, int newStartY, int newEndX, int newEndY) {
    startX = newStartX;
    startY = newStartY;
    endX = newEndX;
    endY = newEndY;
}

bool RVBOX::setForemost(long) {
    foremostTimeStamp = getNextCounter();
    for (unsigned int index = 0; index < getNumberOfChildren(); ++index)
        if (RVBOX *child = ravolt::asBox(getChild(index)))
            child->setForemost(getNextCounter());
    return true;
}

bool RVBOX::checkBoundaries(int x, int y) {
    if (!checkStatus)
        return false;
    RVBOX *const window = ravolt::findWindow(*this);
    if (window && window != this && !window->checkBoundaries(x, y) && window->getChild(0) != this)
        return false;
    const Z3MVECTOR2D parents = ravolt::parentsPosition(*this);
    const float left = parents.x + getPosition().x, top = parents.y + getPosition().y;
    const float px = static_cast<float>(x), py = static_cast<float>(y);
    return left <= px && px <= left + static_cast<float>(sizeX) && top <= py &&
           py <= top + static_cast<float>(sizeY);
}

bool RVBOX::checkLimits(int *dx, int *dy) {
    if (!dx || !dy) {
        zlfLog("   [!] Invalid params @ RVBOX::checkLimits\n");
        return false;
    }
    if (!limitStatus)
        return false;
    using ravolt::truncated;
    const Z3MVECTOR2D parents = ravolt::parentsPosition(*this);
    const Z3MVECTOR3D own = getPosition();
    *dx = limitedStep(*dx, truncated(parents.x), truncated(own.x), sizeX, startX, endX);
    *dy = limitedStep(*dy, truncated(parents.y), truncated(own.y), sizeY, startY, endY);
    return true;
}

bool RVBOX::render(void *element) {
    if (!displayStatus)
        return false;
    if (element)
        glLoadMatrixf(static_cast<const RVELEMENT *>(element)->getMatrix()->e);
    if (scissorStatus)
        beginScissor();
    applySurface();
    drawFill();
    drawBorder();
    if (scissorStatus)
        RVOPENGL::scissorOff();
    return true;
}

// On purpose: without a window the rectangle is set, but not switched on.
void RVBOX::beginScissor() {
    if (RVBOX *window = ravolt::findWindow(*this))
        ravolt::enableWindowScissor(*window);
    else
        glScissor(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
}

void RVBOX::applySurface() const {
    if (shader && isLive(shader))
        shader->render(nullptr);
    else
        RVSHADER::disable();
    if (texture)
        texture->render(nullptr);
    else
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    if (isTransparent())
        RVOPENGL::blendingOn();
    else
        RVOPENGL::blendingOff();
}

Z3MVECTOR4D RVBOX::shadeOf(float factor, float alpha) const {
    return Z3MVECTOR4D(color.x * factor, color.y * factor, color.z * factor, alpha);
}

int RVBOX::borderRings() const { return static_cast<int>(std::min(thickness, maxRings)); }

void RVBOX::drawFill() const {
    constexpr float pressed = 0.9f;
    drawQuad(0, 0, sizeX, sizeY, clickedStatus ? shadeOf(pressed, color.w) : color, boxCoord);
}

void RVBOX::drawBorder() const {
    if (thickness == 0)
        return;
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOn();
    constexpr float alpha = 0.5f;
    const float light = clickedStatus ? 0.7f : 1.3f, dark = clickedStatus ? 1.3f : 0.7f;
    const float lightest = clickedStatus ? 0.4f : 1.6f, darkest = clickedStatus ? 1.6f : 0.4f;
    const auto quad = [this](Pixels x1, Pixels y1, Pixels x2, Pixels y2, float factor) {
        drawQuad(x1, y1, x2, y2, shadeOf(factor, alpha), boxCoord);
    };
    const Pixels w = sizeX, h = sizeY;
    for (int i = 0; i < borderRings(); ++i) {
        quad(i + 1, i, w - i - 1, i + 1, light);
        quad(i, i + 1, i + 1, h - i - 1, light);
        quad(i + 1, h - i, w - i - 1, h - i - 1, dark);
        quad(w - i, i + 1, w - i - 1, h - i - 1, dark);
        quad(i, i, i + 1, i + 1, lightest);
        quad(i, h - i, i + 1, h - i - 1, 1.0f);
        quad(w - i, i, w - i - 1, i + 1, 1.0f);
        quad(w - i, h - i, w - i - 1, h - i - 1, darkest);
    }
}
