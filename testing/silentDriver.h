#pragma once

// A simulated driver that draws nothing. It stores what the engine queries: the matrix stacks, the
// viewport, the switches, the names of objects. Each member has the name of the OpenGL function
// that it implements; a function without a member does nothing and returns 0.

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
    void glEnableClientState(GLenum what) { enabled.insert(what); }
    void glDisableClientState(GLenum what) { enabled.erase(what); }
    GLboolean glIsEnabled(GLenum what) { return enabled.count(what) ? GL_TRUE : GL_FALSE; }
    void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
        viewport = {x, y, width, height};
    }

    void glMatrixMode(GLenum mode) { matrixMode = mode; }
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

  private:
    GLenum matrixMode = GL_MODELVIEW;
    std::map<GLenum, std::vector<Matrix>> stacks;
    std::array<GLint, 4> viewport{0, 0, 0, 0};
    std::set<GLenum> enabled{GL_DITHER, GL_MULTISAMPLE};
    std::map<GLenum, GLint> integers; // single values
    std::map<std::string, GLint> locations;
    GLuint lastName = 0;

    Matrix &top() { return stacks[matrixMode].back(); }
    void multiply(const Matrix &matrix); // multiplies the top from the right
    void generate(GLsizei number, GLuint *names);
    std::vector<double> values(GLenum name) const;
    GLint location(const char *name);
};

// Bytes of one pixel of glReadPixels.
std::size_t bytesOfPixel(GLenum format, GLenum type);

} // namespace ravolt::test
