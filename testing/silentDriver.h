#pragma once

// A simulated driver that draws nothing. It stores what the engine queries: the matrix stacks, the
// viewport, the switches, the names of objects, the vertex arrays and buffers, which it checks at
// each draw. Each member has the name of the OpenGL function that it implements; a function without
// a member does nothing and returns 0.

#include "testing/drawChecker.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

class SilentDriver {
  public:
    // In column-major order.
    using Matrix = std::array<double, 16>;

    SilentDriver();

    const GLubyte *glGetString(GLenum name);
    void glGetIntegerv(GLenum name, GLint *values);
    void glGetFloatv(GLenum name, GLfloat *values);
    void glGetBooleanv(GLenum name, GLboolean *values);
    void glEnable(GLenum what) { enabled.insert(what); }
    void glDisable(GLenum what) { enabled.erase(what); }
    void glEnableClientState(GLenum what) {
        enabled.insert(what);
        draws.enable(what, true);
    }
    void glDisableClientState(GLenum what) {
        enabled.erase(what);
        draws.enable(what, false);
    }
    GLboolean glIsEnabled(GLenum what) { return enabled.count(what) ? GL_TRUE : GL_FALSE; }
    void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
        viewport = {x, y, width, height};
    }

    // A mode that does not exist changes nothing.
    void glMatrixMode(GLenum mode) {
        if (stacks.count(mode))
            matrixMode = mode;
    }
    void glLoadIdentity();
    void glLoadMatrixf(const GLfloat *matrix);
    void glLoadMatrixd(const GLdouble *matrix);
    void glMultMatrixf(const GLfloat *matrix);
    void glTranslatef(GLfloat x, GLfloat y, GLfloat z);
    void glRotatef(GLfloat degrees, GLfloat x, GLfloat y, GLfloat z);
    void glScalef(GLfloat x, GLfloat y, GLfloat z);
    void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble zNear,
                 GLdouble zFar);
    void glFrustum(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble zNear,
                   GLdouble zFar);
    void glPushMatrix();
    void glPopMatrix();

    void glGenTextures(GLsizei number, GLuint *names) { generate(number, names); }
    void glGenBuffersARB(GLsizei number, GLuint *names) { generate(number, names); }
    void glGenFramebuffersEXT(GLsizei number, GLuint *names) { generate(number, names); }
    void glGenRenderbuffersEXT(GLsizei number, GLuint *names) { generate(number, names); }
    void glGenQueriesARB(GLsizei number, GLuint *names) { generate(number, names); }
    GLuint glGenLists(GLsizei range);
    GLhandleARB glCreateShaderObjectARB(GLenum) { return ++lastName; }
    GLhandleARB glCreateProgramObjectARB() { return ++lastName; }
    void glGetObjectParameterivARB(GLhandleARB object, GLenum name, GLint *value);
    GLint glGetUniformLocationARB(GLhandleARB, const GLcharARB *name) { return location(name); }
    GLint glGetAttribLocationARB(GLhandleARB, const GLcharARB *name) { return location(name); }
    GLenum glCheckFramebufferStatusEXT(GLenum) { return GL_FRAMEBUFFER_COMPLETE_EXT; }
    void glBindFramebufferEXT(GLenum, GLuint name) {
        integers[GL_FRAMEBUFFER_BINDING_EXT] = static_cast<GLint>(name);
    }
    void glActiveTextureARB(GLenum unit) { integers[GL_ACTIVE_TEXTURE] = static_cast<GLint>(unit); }
    void glDrawBuffer(GLenum buffer) { integers[GL_DRAW_BUFFER] = static_cast<GLint>(buffer); }
    void glReadBuffer(GLenum buffer) { integers[GL_READ_BUFFER] = static_cast<GLint>(buffer); }
    void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                      GLvoid *pixels);

    void glBindBufferARB(GLenum target, GLuint name) { draws.bindBuffer(target, name); }
    void glBufferDataARB(GLenum target, GLsizeiptrARB size, const GLvoid *data, GLenum) {
        draws.setData(target, size, data);
    }
    void glDeleteBuffersARB(GLsizei number, const GLuint *names) {
        draws.deleteBuffers(number, names);
    }
    void glClientActiveTextureARB(GLenum unit) { draws.setTextureUnit(unit); }
    void glVertexPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *pointer) {
        draws.setArray(GL_VERTEX_ARRAY, size, type, stride, pointer);
    }
    void glNormalPointer(GLenum type, GLsizei stride, const GLvoid *pointer) {
        draws.setArray(GL_NORMAL_ARRAY, 3, type, stride, pointer);
    }
    void glColorPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *pointer) {
        draws.setArray(GL_COLOR_ARRAY, size, type, stride, pointer);
    }
    void glTexCoordPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *pointer) {
        draws.setArray(GL_TEXTURE_COORD_ARRAY, size, type, stride, pointer);
    }
    void glEnableVertexAttribArrayARB(GLuint index) { draws.enableAttribute(index, true); }
    void glDisableVertexAttribArrayARB(GLuint index) { draws.enableAttribute(index, false); }
    void glVertexAttribPointerARB(GLuint index, GLint size, GLenum type, GLboolean, GLsizei stride,
                                  const GLvoid *pointer) {
        draws.setAttribute(index, size, type, stride, pointer);
    }
    void glDrawArrays(GLenum, GLint first, GLsizei count) { draws.drawArrays(first, count); }
    void glDrawElements(GLenum, GLsizei count, GLenum type, const GLvoid *indices) {
        draws.drawElements(count, type, indices);
    }

    void glPixelStorei(GLenum name, GLint value) { draws.setUnpacking(name, value); }
    void glTexImage2D(GLenum target, GLint level, GLint internalFormat, GLsizei width,
                      GLsizei height, GLint border, GLenum format, GLenum type,
                      const GLvoid *pixels);
    void glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width,
                         GLsizei height, GLenum format, GLenum type, const GLvoid *pixels);

    // The draws that have read outside their buffers.
    const std::vector<std::string> &faults() const { return draws.faults(); }

  private:
    GLenum matrixMode = GL_MODELVIEW;
    std::map<GLenum, std::vector<Matrix>> stacks;
    std::array<GLint, 4> viewport{0, 0, 0, 0};
    std::set<GLenum> enabled{GL_DITHER, GL_MULTISAMPLE};
    std::map<GLenum, GLint> integers; // single values
    std::map<std::string, GLint> locations;
    GLuint lastName = 0;
    DrawChecker draws;

    Matrix &top() { return stacks[matrixMode].back(); }
    void multiply(const Matrix &matrix); // multiplies the top from the right
    void generate(GLsizei number, GLuint *names);
    std::vector<double> values(GLenum name) const;
    GLint location(const char *name);
};

// Bytes of one pixel of glReadPixels.
std::size_t bytesOfPixel(GLenum format, GLenum type);

} // namespace ravolt::test
