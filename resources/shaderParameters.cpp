// Parameters of programs: the table of slots, which load fills with locations, and the values that
// go through it into the program in use.

#include "ravolt/RVSHADER.h"

#include "engine/gl/bindings.h"
#include "engine/gl/entryPoint.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr unsigned int maxBones = 100; // the size of the programs' arrays

// The parameters by slot. Slots are shared by all programs, and some programs have a slot of theirs
// bound to another name after load.
constexpr struct {
    const char *name;
    bool attribute;
} parameterNames[] = {
    {"textureSampler0", false},
    {"textureSampler1", false},
    {"width", false},
    {"height", false},
    {"boneQuat", false},
    {"boneTrans", false},
    {"boneIndex", true},
    {"boneWeight", true},
    {"textureSampler2", false},
    {"textureSampler3", false},
    {"maxLuminance", false},
    {"exposure", false},
    {"focus", false},
    {"range", false},
    {"near", false},
    {"far", false},
    {"textureSampler4", false},
    {"textureSampler5", false},
    {"textureSampler6", false},
    {"textureSampler7", false},
    {"textureSampler8", false},
    {"textureSampler9", false},
    {"textureSampler10", false},
    {"textureSampler11", false},
    {"textureSampler12", false},
    {"textureSampler13", false},
    {"textureSampler14", false},
    {"textureSampler15", false},
};
static_assert(std::size(parameterNames) == RVSHADER::parameters);

enum Slot : unsigned int {
    slotWidth = 2,
    slotHeight = 3,
    slotBoneQuat = 4,
    slotBoneTrans = 5,
    slotBoneIndex = 6,
    slotBoneWeight = 7,
    slotMaxLuminance = 10,
    slotExposure = 11,
    slotFocus = 12,
    slotRange = 13,
    slotNear = 14,
    slotFar = 15
};

// The sampler's slot by unit.
constexpr unsigned int samplerSlot[RV_TEXTURE_UNITS] = {0,  1,  8,  9,  16, 17, 18, 19,
                                                        20, 21, 22, 23, 24, 25, 26, 27};

constexpr unsigned int noLocation = ~0u; // OpenGL's -1

GLint location(const RVSHADER &program, unsigned int slot) {
    return static_cast<GLint>(program.getParam(slot));
}

void setFloat(const RVSHADER &program, unsigned int slot, float value) {
    ravolt::callIfPresent<RVOPENGL::glUniform1fARB>(location(program, slot), value);
}

// An enabled array is read for every vertex, so that it is enabled only with a buffer.
void bindAttribute(GLuint attribute, unsigned int buffer) {
    if (!buffer || !RVOPENGL::glBindBufferARB || !RVOPENGL::glVertexAttribPointerARB)
        return;
    ravolt::bindBufferAlways(GL_ARRAY_BUFFER_ARB, buffer);
    ravolt::callIfPresent<RVOPENGL::glEnableVertexAttribArrayARB>(attribute);
    RVOPENGL::glVertexAttribPointerARB(attribute, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
}

} // namespace

void RVSHADER::findParameters() {
    for (unsigned int slot = 0; slot < parameters; ++slot)
        bindParam(slot, parameterNames[slot].name, parameterNames[slot].attribute);
    assignSamplerUnits();
}

// A texture that is already bound to a unit is not bound again for a later program, so each sampler
// is assigned its unit from the start. This also avoids that samplers of two types share a unit,
// with which no program runs.
void RVSHADER::assignSamplerUnits() const {
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        if (param[samplerSlot[unit]] != noLocation && currentShader == this)
            bindTexture(unit);
}

bool RVSHADER::bindParam(unsigned int slot, const char *paramName, bool attribute) {
    if (slot >= parameters || !paramName) {
        zlfLog("   [!] Invalid params @ RVSHADER::bindParam\n");
        return false;
    }
    if (currentShader != this)
        render(nullptr);
    const auto find =
        attribute ? RVOPENGL::glGetAttribLocationARB : RVOPENGL::glGetUniformLocationARB;
    param[slot] = find ? static_cast<unsigned int>(find(programObject, paramName)) : noLocation;
    return true;
}

// On purpose: the size of the table is no error value.
unsigned int RVSHADER::getParam(unsigned int slot) const {
    return slot < parameters ? param[slot] : parameters;
}

bool RVSHADER::bindTexture(unsigned int unit) {
    if (!currentShader || !enabled)
        return false;
    if (unit < RV_TEXTURE_UNITS)
        ravolt::callIfPresent<RVOPENGL::glUniform1iARB>(location(*currentShader, samplerSlot[unit]),
                                                        static_cast<GLint>(unit));
    return true;
}

bool RVSHADER::bindBones(unsigned int count, const float *quat, const float *trans,
                         unsigned int indexBuffer, unsigned int weightBuffer) {
    if (!currentShader || !enabled)
        return false;
    if (!quat || !trans) {
        zlfLog("   [!] Invalid params @ RVSHADER::bindBones\n");
        return false;
    }
    const RVSHADER &program = *currentShader;
    const GLsizei bones = static_cast<GLsizei>(std::min(count, maxBones));
    ravolt::callIfPresent<RVOPENGL::glUniform4fvARB>(location(program, slotBoneQuat), bones, quat);
    ravolt::callIfPresent<RVOPENGL::glUniform3fvARB>(location(program, slotBoneTrans), bones,
                                                     trans);
    bindAttribute(program.param[slotBoneIndex], indexBuffer);
    bindAttribute(program.param[slotBoneWeight], weightBuffer);
    bonesBound = true;
    return true;
}

bool RVSHADER::unbindBones() {
    if (!currentShader || !enabled || !bonesBound)
        return false;
    ravolt::callIfPresent<RVOPENGL::glDisableVertexAttribArrayARB>(
        currentShader->param[slotBoneIndex]);
    ravolt::callIfPresent<RVOPENGL::glDisableVertexAttribArrayARB>(
        currentShader->param[slotBoneWeight]);
    bonesBound = false;
    return true;
}

bool RVSHADER::bindSizes(int x, int y) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotWidth, static_cast<float>(x));
    setFloat(*currentShader, slotHeight, static_cast<float>(y));
    return true;
}

bool RVSHADER::bindLuminanceAndExposure(float luminance, float exposure) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotMaxLuminance, luminance);
    setFloat(*currentShader, slotExposure, exposure);
    return true;
}

bool RVSHADER::bindFocusAndRange(float focus, float range) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotFocus, focus);
    setFloat(*currentShader, slotRange, range);
    return true;
}

bool RVSHADER::bindNearAndFarPlane(float nearPlane, float farPlane) {
    if (!currentShader || !enabled)
        return false;
    setFloat(*currentShader, slotNear, nearPlane);
    setFloat(*currentShader, slotFar, farPlane);
    return true;
}
