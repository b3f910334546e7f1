// The passes of a frame with effects, by direct OpenGL calls.

#define GL_GLEXT_PROTOTYPES

#include "handEffects.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"

#include <cmath>

namespace bench {

namespace {

// The engine's targets by their numbers: scene, depths and blurred image, shadow map, luminance,
// bright parts, copy of the scene, and from 6 on pairs of ever smaller ones.
enum Target { scene, blurred, map, luminance, bright, copy, firstLevel };
constexpr int levels = 4;

void into(int target) {
    const RVFBO &fbo = *RVOPENGL::getFbo(target);
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbo.getGLId());
    glViewport(0, 0, fbo.getSizeX(), fbo.getSizeY());
}

void intoWindow() {
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glViewport(0, 0, windowWidth, windowHeight);
}

void from(int target, int unit = 0) {
    if (unit)
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, RVOPENGL::getFbo(target)->getTexture()->getGLId());
    if (unit)
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
}

// All of the viewport, under identities.
void drawQuad() {
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(-1, -1);
    glTexCoord2f(1, 0);
    glVertex2f(1, -1);
    glTexCoord2f(1, 1);
    glVertex2f(1, 1);
    glTexCoord2f(0, 1);
    glVertex2f(-1, 1);
    glEnd();
}

void normalize(float *v) {
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (int i = 0; i < 3; ++i)
        v[i] /= length;
}

void cross(const float *a, const float *b, float *result) {
    for (int i = 0; i < 3; ++i)
        result[i] = a[(i + 1) % 3] * b[(i + 2) % 3] - a[(i + 2) % 3] * b[(i + 1) % 3];
}

void makeLightView(float *matrix) {
    float forward[3] = {-spot.direction[0], -spot.direction[1], -spot.direction[2]};
    normalize(forward);
    const float y[3] = {0, 1, 0};
    float side[3], up[3];
    cross(y, forward, side);
    normalize(side);
    cross(forward, side, up);
    const float *rows[3] = {side, up, forward};
    for (int row = 0; row < 3; ++row) {
        float shift = 0;
        for (int i = 0; i < 3; ++i) {
            matrix[i * 4 + row] = rows[row][i];
            shift -= rows[row][i] * spot.position[i];
        }
        matrix[12 + row] = shift;
        matrix[row * 4 + 3] = 0;
    }
    matrix[15] = 1;
}

void setSpot() {
    const float position[] = {spot.position[0], spot.position[1],
                              spot.position[2] - spot.cameraDistance, 1.0f};
    const float direction[] = {spot.direction[0], spot.direction[1], spot.direction[2], 0.0f};
    const float specular[] = {0, 0, 0, 1};
    glEnable(GL_LIGHT0);
    glLightfv(GL_LIGHT0, GL_AMBIENT, spot.ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, spot.diffuse);
    glLightfv(GL_LIGHT0, GL_SPECULAR, specular);
    glLightf(GL_LIGHT0, GL_SPOT_CUTOFF, spot.cutOff);
    glLightf(GL_LIGHT0, GL_SPOT_EXPONENT, 0);
    glLightf(GL_LIGHT0, GL_CONSTANT_ATTENUATION, 1);
    glLightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, 0);
    glLightf(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 0);
    glLoadIdentity();
    glLightfv(GL_LIGHT0, GL_POSITION, position);
    glLightfv(GL_LIGHT0, GL_SPOT_DIRECTION, direction);
}

void drawMarker() {
    constexpr float s = 2.0f;
    constexpr float corner[][3] = {{0, s, 0},   {s, -s, -s}, {-s, -s, -s}, {0, s, 0},
                                   {s, -s, s},  {-s, -s, s}, {0, s, 0},    {s, -s, s},
                                   {s, -s, -s}, {0, s, 0},   {-s, -s, s},  {-s, -s, -s}};
    glDisable(GL_LIGHTING);
    glTranslatef(spot.position[0], spot.position[1], spot.position[2] - spot.cameraDistance);
    glColor4fv(spot.diffuse);
    glBegin(GL_LINE_STRIP);
    for (const auto &point : corner)
        glVertex3fv(point);
    glEnd();
    glEnable(GL_LIGHTING);
}

// Nothing but pictures: no depth test, the identity on both matrices.
void startPictures() {
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void endPictures() {
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glEnable(GL_DEPTH_TEST);
}

} // namespace

HandEffects::Program::Program(const char *name) {
    RVSHADER *program = RVSHADER::findByName(name);
    program->render(nullptr);
    int current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    object = current;
    const auto find = [this](const char *uniform) {
        return RVOPENGL::glGetUniformLocationARB(object, uniform);
    };
    width = find("width"), height = find("height");
    near = find("near"), far = find("far");
    luminance = find("maxLuminance"), exposure = find("exposure");
    focus = find("focus"), range = find("range");
    RVSHADER::disable();
}

void HandEffects::Program::use() const { RVOPENGL::glUseProgramObjectARB(object); }

void HandEffects::Program::set(int location, float value) const {
    RVOPENGL::glUniform1fARB(location, value);
}

HandEffects::HandEffects(const Scene &scene, const Effects &wantedEffects, Buffers buffers)
    : meshes(scene, buffers), wanted(wantedEffects), litOneByOne(buffers == Buffers::own),
      adapted(1), lit("pplSpotT"), shadowed("pplSpotTS"), flat("passthrough"),
      depth("passhtroughZPass"), brightParts("bloomBright"), blurX("bloomVert"), blurY("bloomHor"),
      sum("bloomCombine"), mean("dofCombine"), tones("bloomToneMapping"), glow("bloomForceAlpha"),
      focused("dof") {
    makeLightView(lightView);
    // The same as the engine's current adaptation.
    glGetUniformfvARB(tones.object, tones.luminance, &adapted);
}

void HandEffects::draw() {
    const bool composed = wanted.bloom || wanted.depthOfField;
    if (composed)
        into(scene);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    HandMeshes::start();
    setSpot();
    if (wanted.depthOfField)
        drawDepths();
    if (wanted.shadows) {
        drawMap();
        composed ? into(scene) : intoWindow();
        setMapMatrix(GL_TEXTURE);
        drawMeshes();
        RVOPENGL::glActiveTextureARB(GL_TEXTURE1);
        glMatrixMode(GL_TEXTURE);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    }
    drawMeshes();
    HandMeshes::end();
    glEnable(GL_TEXTURE_2D);
    if (composed)
        startPictures();
    if (wanted.bloom)
        drawBloom();
    if (wanted.depthOfField)
        drawFocus();
    if (composed) {
        intoWindow();
        from(scene);
        glColor4f(1, 1, 1, 1);
        RVOPENGL::glUseProgramObjectARB(0);
        drawQuad();
        endPictures();
    }
    glDisable(GL_TEXTURE_2D);
    RVOPENGL::glUseProgramObjectARB(0);
    glFinish();
}

void HandEffects::drawMeshes() const {
    if (!wanted.programs) {
        glEnable(GL_LIGHTING);
        drawList();
        glDisable(GL_LIGHTING);
        return;
    }
    const Program &program = wanted.shadows ? shadowed : lit;
    program.use();
    if (wanted.shadows) {
        const float size = static_cast<float>(RVSETTINGS::getSDLShadowMapSize());
        program.set(program.width, size);
        program.set(program.height, size);
    }
    drawList();
}

void HandEffects::drawList() const {
    if (!litOneByOne) {
        meshes.draw();
        return;
    }
    meshes.draw([](const Placement &) {
        setSpot();
        drawMarker();
    });
    glDisable(GL_LIGHTING);
}

void HandEffects::drawDepths() const {
    into(blurred);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    depth.use();
    depth.set(depth.near, RVOPENGL::getNearPlane());
    depth.set(depth.far, RVOPENGL::getFarPlane());
    meshes.drawPositions();
    into(scene);
    glClear(GL_DEPTH_BUFFER_BIT);
}

// From eye space to the caster's clip space, onto the projection or, moved to 0 to 1, onto the
// texture matrix of unit 1, which the map needs.
void HandEffects::setMapMatrix(unsigned int mode) const {
    if (mode == GL_TEXTURE) {
        from(map, 1);
        RVOPENGL::glActiveTextureARB(GL_TEXTURE1);
    }
    glMatrixMode(mode);
    glLoadIdentity();
    if (mode == GL_TEXTURE) {
        glTranslatef(0.5f, 0.5f, 0.5f);
        glScalef(0.5f, 0.5f, 0.5f);
    }
    RVOPENGL::setPerspective(2 * spot.cutOff, 1, spot.nearPlane, spot.farPlane);
    glMultMatrixf(lightView);
    glTranslatef(0, 0, spot.cameraDistance);
    glMatrixMode(GL_MODELVIEW);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
}

void HandEffects::drawMap() const {
    into(map);
    glColorMask(0, 0, 0, 0);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_FRONT);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    setMapMatrix(GL_PROJECTION);
    flat.use();
    meshes.drawPositions();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glCullFace(GL_BACK);
    if (!RVOPENGL::isCulled())
        glDisable(GL_CULL_FACE);
    glColorMask(1, 1, 1, 1);
}

void HandEffects::blur(int source, const Program &combine) const {
    glColorMask(1, 1, 1, 0);
    for (int level = 0; level < levels; ++level) {
        const int result = firstLevel + 2 * level, scratch = result + 1;
        const float width = static_cast<float>(RVOPENGL::getFbo(result)->getSizeX());
        const float height = static_cast<float>(RVOPENGL::getFbo(result)->getSizeY());
        into(scratch);
        blurY.use();
        blurY.set(blurY.height, height);
        from(source);
        drawQuad();
        into(result);
        blurX.use();
        blurX.set(blurX.width, width);
        from(scratch);
        drawQuad();
        source = result;
    }
    into(blurred);
    combine.use();
    for (int level = 0; level < levels; ++level)
        from(firstLevel + 2 * level, level);
    drawQuad();
    glColorMask(1, 1, 1, 1);
}

float HandEffects::measure() const {
    into(luminance);
    RVOPENGL::glUseProgramObjectARB(0);
    from(scene);
    glColor4f(1, 1, 1, 1);
    drawQuad();
    from(luminance);
    RVOPENGL::glGenerateMipmapEXT(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 1);
    glViewport(0, 0, 1, 1);
    drawQuad();
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
    float color[3];
    glReadPixels(0, 0, 1, 1, GL_RGB, GL_FLOAT, color);
    return 0.3f * color[0] + 0.59f * color[1] + 0.11f * color[2];
}

void HandEffects::drawBloom() {
    into(bright);
    brightParts.use();
    from(scene);
    drawQuad();
    blur(bright, sum);
    const float seen = wanted.toneMapping ? measure() : 1.0f;
    into(scene);
    if (wanted.toneMapping) {
        adapted += RAVOLT::getFPSfactor() * (seen - adapted);
        from(copy);
        glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, windowWidth, windowHeight);
        tones.use();
        tones.set(tones.luminance, adapted);
        tones.set(tones.exposure, exposure);
        drawQuad();
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glow.use();
    glColor4f(1, 1, 1, bloomIntensity);
    from(blurred);
    drawQuad();
    glDisable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void HandEffects::drawFocus() const {
    blur(scene, mean);
    into(scene);
    focused.use();
    focused.set(focused.focus, focus);
    focused.set(focused.range, range);
    from(copy);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, windowWidth, windowHeight);
    from(blurred, 1);
    drawQuad();
}

} // namespace bench
