#pragma once

// What stands between the engine and the OpenGL driver: the extensions found at start-up as flags,
// their entry points, the base state, the projection, and switches that remember what they set so
// that a call which changes nothing does not reach the driver. Static members only; RAVOLT starts
// and stops it. A missing extension is never fatal: ask the flag, not the pointer, before using a
// feature. Everything here needs the context's thread; apart from plain reads and stores,
// everything needs the context.

#include <GL/gl.h>

#include <GL/glext.h>

#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"

class RVFBO;

// The kind of pass that is running, so that one render function serves all of them. The order of
// the values counts: from FLAT on, there are no lights, textures and blending.
enum RV_OPENGL_PROFILE {
    RV_OPENGL_PROFILE_FULL = 1, // normal drawing
    RV_OPENGL_PROFILE_FLAT = 2, // identities as flat colours: selection and shadow map
    RV_OPENGL_PROFILE_ZPASS = 3 // depth coding: depth of field
};

class RV_API RVOPENGL {
  public:
    // A render target of the pool, index 0 to 13; NULL for any other index, while there is no pool,
    // and for one that was deleted. The pool stays the engine's.
    static RVFBO *getFbo(int index);

    // What the driver offers, as found at start-up. A flag that is set is never cleared: over a
    // second start in the same process it stays true, also where the new settings request no
    // shaders or the new display offers less. The one exception is useMultitexturing, which a
    // start that finds fewer than 16 image units clears.
    static bool useVBO();
    static bool useAnisotropic();
    static bool useFBO();
    static bool useMultitexturing(); // false with fewer than 16 image units
    static bool useShaders();        // looked for only when the settings request shaders
    static bool useOcclusionQuery();

    // The driver's largest anisotropy; 0 without the extension.
    static float getAnisotropicLevel();

    // The pass that is running.
    static void setProfile(RV_OPENGL_PROFILE profile);
    static RV_OPENGL_PROFILE getProfile();

    // The projection: distances in scene units (1 and 1024), vertical angle of view in degrees
    // (45). A change takes effect with the next resize.
    static void setNearPlane(float distance);
    static float getNearPlane();
    static void setFarPlane(float distance);
    static float getFarPlane();
    static void setAngleOfView(float degrees);
    static float getAngleOfView();

    // Clear colour, red to alpha from 0 to 1; takes effect at once.
    static void setBackgroundColor(Z3MVECTOR4D color);
    static void setBackgroundColor(float red, float green, float blue, float alpha);
    static Z3MVECTOR4D getBackgroundColor();

    // Ambient light of the whole scene, red to alpha from 0 to 1; takes effect at once.
    static void setGlobalAmbientLight(Z3MVECTOR4D color);
    static void setGlobalAmbientLight(float red, float green, float blue, float alpha);
    static Z3MVECTOR4D getGlobalAmbientLight();

    // Viewport in pixels, y counted down from the window's top, and the projection for it, turned
    // by 90 degrees in landscape mode. Always true: a size below 1 is logged and carried through.
    static bool resize(int x, int y, int sizeX, int sizeY);

    // Multiplies a perspective onto the current matrix and loads nothing first. Vertical angle in
    // degrees, aspect as width by height.
    static void setPerspective(float angle, float aspect, float zNear, float zFar);

    // Replaces the projection by a frustum and leaves the modelview mode current. Always true; the
    // last argument is ignored on purpose.
    static bool setFrustum(float left, float right, float bottom, float top, float zNear,
                           float zFar, bool unused);

    // The cached switches. Each reaches OpenGL only when it changes what was last set through it.
    // GL_CULL_FACE
    static void cullingOn();
    static void cullingOff();
    static bool isCulled();

    // GL_BLEND
    static void blendingOn();
    static void blendingOff();
    static bool isBlended();

    // GL_SCISSOR_TEST
    static void scissorOn();
    static void scissorOff();

    // GL_LIGHT_MODEL_TWO_SIDE
    static void twoSideOn();
    static void twoSideOff();
    static bool isTwoSide();

    // GL_VERTEX_ARRAY
    static void vertexArrayOn();
    static void vertexArrayOff();

    // GL_INDEX_ARRAY
    static void indexArrayOn();
    static void indexArrayOff();

    // GL_NORMAL_ARRAY
    static void normalArrayOn();
    static void normalArrayOff();

    // GL_COLOR_ARRAY
    static void colorArrayOn();
    static void colorArrayOff();

    // GL_TEXTURE_COORD_ARRAY, always that of unit 0: the unit becomes the client's active one
    // first.
    static void textureArrayOn();
    static void textureArrayOff();

    // The extension functions, named as OpenGL names them; NULL until start-up has found their
    // extension. They keep their values after shutdown.
    // GL_ARB_multitexture
    static PFNGLACTIVETEXTUREARBPROC glActiveTextureARB;
    static PFNGLMULTITEXCOORD2FARBPROC glMultiTexCoord2fARB;
    static PFNGLCLIENTACTIVETEXTUREARBPROC glClientActiveTextureARB;

    // GL_ARB_vertex_buffer_object
    static PFNGLGENBUFFERSARBPROC glGenBuffersARB;
    static PFNGLBINDBUFFERARBPROC glBindBufferARB;
    static PFNGLBUFFERDATAARBPROC glBufferDataARB;
    static PFNGLDELETEBUFFERSARBPROC glDeleteBuffersARB;

    // GL_ARB_vertex_shader and GL_ARB_fragment_shader
    static PFNGLCREATESHADEROBJECTARBPROC glCreateShaderObjectARB;
    static PFNGLSHADERSOURCEARBPROC glShaderSourceARB;
    static PFNGLCOMPILESHADERARBPROC glCompileShaderARB;
    static PFNGLCREATEPROGRAMOBJECTARBPROC glCreateProgramObjectARB;
    static PFNGLATTACHOBJECTARBPROC glAttachObjectARB;
    static PFNGLLINKPROGRAMARBPROC glLinkProgramARB;
    static PFNGLUSEPROGRAMOBJECTARBPROC glUseProgramObjectARB;
    static PFNGLDELETEOBJECTARBPROC glDeleteObjectARB;
    static PFNGLDETACHOBJECTARBPROC glDetachObjectARB;
    static PFNGLGETOBJECTPARAMETERIVARBPROC glGetObjectParameterivARB;
    static PFNGLGETUNIFORMLOCATIONARBPROC glGetUniformLocationARB;
    static PFNGLUNIFORM1IARBPROC glUniform1iARB;
    static PFNGLUNIFORM1FARBPROC glUniform1fARB;
    static PFNGLUNIFORM3FARBPROC glUniform3fARB;
    static PFNGLUNIFORM4FARBPROC glUniform4fARB;
    static PFNGLUNIFORM3FVARBPROC glUniform3fvARB;
    static PFNGLUNIFORM4FVARBPROC glUniform4fvARB;
    static PFNGLUNIFORMMATRIX4FVARBPROC glUniformMatrix4fvARB;
    static PFNGLVERTEXATTRIBPOINTERARBPROC glVertexAttribPointerARB;
    static PFNGLENABLEVERTEXATTRIBARRAYARBPROC glEnableVertexAttribArrayARB;
    static PFNGLDISABLEVERTEXATTRIBARRAYARBPROC glDisableVertexAttribArrayARB;
    static PFNGLGETATTRIBLOCATIONARBPROC glGetAttribLocationARB;

    // GL_EXT_framebuffer_object
    static PFNGLGENFRAMEBUFFERSEXTPROC glGenFramebuffersEXT;
    static PFNGLDELETEFRAMEBUFFERSEXTPROC glDeleteFramebuffersEXT;
    static PFNGLBINDFRAMEBUFFEREXTPROC glBindFramebufferEXT;
    static PFNGLFRAMEBUFFERTEXTURE2DEXTPROC glFramebufferTexture2DEXT;
    static PFNGLGENRENDERBUFFERSEXTPROC glGenRenderbuffersEXT;
    static PFNGLDELETERENDERBUFFERSEXTPROC glDeleteRenderbuffersEXT;
    static PFNGLBINDRENDERBUFFEREXTPROC glBindRenderbufferEXT;
    static PFNGLRENDERBUFFERSTORAGEEXTPROC glRenderbufferStorageEXT;
    static PFNGLFRAMEBUFFERRENDERBUFFEREXTPROC glFramebufferRenderbufferEXT;
    static PFNGLGENERATEMIPMAPEXTPROC glGenerateMipmapEXT;
    static PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC glCheckFramebufferStatusEXT;

    // GL_ARB_occlusion_query
    static PFNGLGENQUERIESARBPROC glGenQueriesARB;
    static PFNGLDELETEQUERIESARBPROC glDeleteQueriesARB;
    static PFNGLISQUERYARBPROC glIsQueryARB;
    static PFNGLBEGINQUERYARBPROC glBeginQueryARB;
    static PFNGLENDQUERYARBPROC glEndQueryARB;
    static PFNGLGETQUERYIVARBPROC glGetQueryivARB;
    static PFNGLGETQUERYOBJECTIVARBPROC glGetQueryObjectivARB;
    static PFNGLGETQUERYOBJECTUIVARBPROC glGetQueryObjectuivARB;

  private:
    friend class RAVOLT;
    friend class RVFBO; // a target that goes leaves the pool
    struct Capabilities;

    static bool init();
    static bool free();
    static bool reset();
    static bool isActive();

    static void reapplySwitches();
    static void onTargetDestroyed(const RVFBO *target);
    static RVFBO *fbo[14];
    static float anisotropicLevel;
    static bool active;
    static bool blending;
    static bool scissor;
    static bool culling;
    static bool twoSide;
    static bool vertexArrayStatus;
    static bool indexArrayStatus;
    static bool normalArrayStatus;
    static bool colorArrayStatus;
    static bool textureArrayStatus;
    static bool multitextureFlag;
    static bool VBOFlag;
    static bool shadersFlag;
    static bool anisotropicFlag;
    static bool FBOFlag;
    static bool OcclusionQueryFlag;
    static Z3MVECTOR4D globalAmbientLight;
    static Z3MVECTOR4D backgroundColor;
    static float nearPlane;
    static float farPlane;
    static float angleOfView;
    static RV_OPENGL_PROFILE currentProfile;
};
