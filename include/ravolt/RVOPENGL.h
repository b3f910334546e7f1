#pragma once

// The layer between the engine and the OpenGL driver: flags for the extensions that start-up has
// detected, their entry points, the base state, the projection, and cached switches, which call the
// driver only for a change. Static members only; RAVOLT starts and stops it. A missing extension is
// never fatal: test the flag, not the pointer, before using a feature. Everything here is for the
// context's thread; all but plain reads and stores needs a current context.

#include <GL/gl.h>

#include <GL/glext.h>

#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"

class RVFBO;

// The kind of pass that is running, so that one render function serves all of them. The order of
// the values counts: from FLAT on, there are no lights, textures and blending.
enum RV_OPENGL_PROFILE : unsigned int {
    RV_OPENGL_PROFILE_FULL = 1, // normal drawing
    RV_OPENGL_PROFILE_FLAT = 2, // object ids as flat colours: selection and shadow map
    RV_OPENGL_PROFILE_ZPASS = 3 // depth coding: depth of field
};

class RV_API RVOPENGL {
  public:
    // A render target of the pool, index 0 to 13; NULL for any other index, while there is no pool,
    // and for one that was deleted. The engine owns the targets. Their images, 38 MB with the
    // default sizes, are allocated together at their first use: by this function, by the first
    // effect that draws into targets, or with one of their textures.
    static RVFBO *getFbo(int index);

    // What the driver offers, as detected at start-up. A flag that is set is never cleared: in a
    // second start in the same process it is still true, even if the new settings request no
    // shaders or the new display offers less. The one exception is useMultitexturing, which a start
    // that finds fewer than 16 image units clears.
    static bool useVBO();
    static bool useAnisotropic();
    static bool useFBO(); // on purpose false where the name of the driver's vendor has "ATI" in it
    static bool useMultitexturing(); // false with fewer than 16 image units
    static bool useShaders();        // detected only when the settings request shaders
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
    // by 90 degrees in landscape mode. Always true: a size below 1 is logged and used all the same.
    static bool resize(int x, int y, int sizeX, int sizeY);

    // Multiplies a perspective onto the current matrix, without loading identity first. Vertical
    // angle in degrees; the aspect is width / height.
    static void setPerspective(float angle, float aspect, float zNear, float zFar);

    // Replaces the projection with a frustum and makes the modelview matrix, set to identity, the
    // current one. Always true; the last argument is ignored on purpose.
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

    // GL_TEXTURE_COORD_ARRAY, always that of unit 0, which is made the client's active one first.
    static void textureArrayOn();
    static void textureArrayOff();

    // The extension functions, named as in OpenGL; NULL until start-up has detected their
    // extension. Shutdown does not reset them.
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
    friend class RVFBO; // removes a destroyed target from the pool
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
