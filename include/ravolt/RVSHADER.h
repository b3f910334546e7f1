#pragma once

#include "ravolt/api.h"

namespace ravolt {
struct BuiltinPrograms;
}

// A GLSL program of two stages, with a table of 28 parameters that are found by name once, at load,
// and addressed by slot from then on. The class also knows the program in use and what the driver's
// programs support: RAVOLT::init builds the programs below and sets the flags of the use...
// queries. What is lit has the program of its material. All programs are in a registry, which
// owns them: create them with `new`; RAVOLT::free or cleanUp deletes those that the application has
// not deleted. Without shaders on the machine, or in the settings, every object is inoperative,
// and what would use it is drawn without it. Needs the engine's context; OpenGL's errors are not
// read.
class RV_API RVSHADER {
  public:
    // Slots of the parameter table.
    static constexpr unsigned int parameters = 28;

    // Registers the program under a fresh identifier and the name "[shader ID]"; inoperative.
    RVSHADER();
    // Deletes its OpenGL objects, releases the identifier and removes the program from the registry
    // and from the materials that have it as their explicit program.
    ~RVSHADER();
    RVSHADER(const RVSHADER &) = delete;
    RVSHADER &operator=(const RVSHADER &) = delete;

    // Compiles the stages from files below the path of setPath (NULL for a stage without file),
    // unless they are compiled already by the two calls below; links them, which may fail without a
    // sign, and finds the parameters. Each sampler textureSampler0 to textureSampler15 is set to
    // the unit of its number. The program is in use afterwards. False, with a line in the log,
    // for a stage that cannot be read or compiled; the program does not change then.
    bool load(const char *vertexFile, const char *pixelFile, bool alreadyCompiled);

    // Compile one stage from the text `source`, with `name` as its label, or for a NULL source from
    // the file `name` below the path of setPath. The stage is inoperative until that succeeds.
    // False, without a log line, without shaders; false, with a line in the log, for a NULL name, a
    // file that is not there or cannot be read, or a text that does not compile.
    bool loadVertexShader(const char *name, const char *source);
    bool loadPixelShader(const char *name, const char *source);

    // Finds a uniform, or with `attribute` a vertex attribute, and stores its location in a slot,
    // in place of a former one. The program is in use afterwards. False, with a line in the log,
    // for a slot outside of the table or a NULL name.
    bool bindParam(unsigned int slot, const char *paramName, bool attribute);
    // OpenGL's location: -1 as unsigned for a name that the program does not have, 0 before load.
    // 28 for a slot outside of the table.
    unsigned int getParam(unsigned int slot) const;

    // Makes the program current, unless it is already; `data` is ignored. False without shaders.
    bool render(void *data);

    // Whether both stages are compiled.
    bool isOperative() const;
    // Makes the program inoperative; its OpenGL objects are not deleted.
    void forceDeactivation();

    // NULL, or 256 characters and more, changes nothing.
    void setName(const char *name);
    char *getName();
    unsigned int getId() const;
    // The names of the compiled stages; "[none]" by default.
    char *getVSFilename();
    char *getPSFilename();

    // The prefix of every file name, without an added separator; NULL empties it. At most 255
    // characters are stored.
    static char *getPath();
    static void setPath(const char *path);

    // Builds the programs below and detects what they support; free does not delete the programs,
    // which cleanUp does, and does not change the flags. For RAVOLT::init and RAVOLT::free. A
    // machine without shaders is no failure. While the shader system is active a second init is
    // refused, false with a line in the log, but the pointers below then name new programs, all
    // inoperative. free is false when the system is not active.
    static bool init();
    static bool free();
    // Whether shaders were requested and supported when init ran.
    static bool isActive();

    // Whether the programs of a feature are operative, and OpenGL has what else it needs.
    static bool useSkinning();
    static bool usePPL();
    static bool useBloom();
    static bool useShadows();
    static bool usePassthrough();
    static bool useEmitter();
    static bool useDOF();
    static bool useSkydome();
    static bool useWater();
    static bool useTerrain();

    // The master switch. With enable, values are passed to the current program; with disable there
    // is no current program, so that the fixed functions draw. Both are false without shaders.
    static bool enable();
    static bool disable();
    // Invalidates the cached current program, and disables.
    static void reset();

    // Values for the current program; OpenGL ignores those that it does not have. All are false
    // when there is no current program, and bindBones, with a line in the log, for NULL.
    // Sets the sampler of a unit, 0 to 15, to that unit. True for any other unit, too.
    static bool bindTexture(unsigned int unit);
    // The transform of each bone as a quaternion (x, y, z, w) and a translation (3 floats), at most
    // 100 bones; bone numbers and weights of the vertices, 4 floats each, from two vertex buffers.
    static bool bindBones(unsigned int count, const float *quat, const float *trans,
                          unsigned int indexBuffer, unsigned int weightBuffer);
    // Disables the attribute arrays of bindBones; false when they are off.
    static bool unbindBones();
    // Width and height of a texture, in pixels.
    static bool bindSizes(int x, int y);
    // For tone mapping: the luminance that the eye is adapted to, above 0 and 1 for white, and the
    // number of RAVOLT::setHDRExposure.
    static bool bindLuminanceAndExposure(float luminance, float exposure);
    // For depth of field: the numbers of RAVOLT::setDOFFocus and setDOFRange.
    static bool bindFocusAndRange(float focus, float range);
    // Distances in scene units.
    static bool bindNearAndFarPlane(float nearPlane, float farPlane);

    // Deletes all programs, also those below. False when there are none.
    static bool cleanUp();

    // The number of programs that exist, the built-in ones too.
    static unsigned int getNumberOfShaders();
    // The first match in order of creation, or NULL. Case counts.
    static RVSHADER *findById(unsigned int id);
    static RVSHADER *findByName(const char *name);
    static RVSHADER *getFirst();
    RVSHADER *getNext() const;
    RVSHADER *getPrevious() const;

    // The engine's programs. They exist from RAVOLT::init to RAVOLT::free, operative or not; a
    // pointer is NULL outside of that, and after its program was deleted.
    // Light on each pixel, by the type of the light; A is skinned, T textured, S shadowed.
    static RVSHADER *pplDirect;
    static RVSHADER *pplOmni;
    static RVSHADER *pplSpot;
    static RVSHADER *pplDirectA;
    static RVSHADER *pplOmniA;
    static RVSHADER *pplSpotA;
    static RVSHADER *pplDirectT;
    static RVSHADER *pplOmniT;
    static RVSHADER *pplSpotT;
    static RVSHADER *pplDirectTA;
    static RVSHADER *pplOmniTA;
    static RVSHADER *pplSpotTA;
    static RVSHADER *pplSpotS;
    static RVSHADER *pplSpotSA;
    static RVSHADER *pplSpotTS;
    static RVSHADER *pplSpotTSA;
    // The colour as it is; ZPass writes the depth as alpha, and on purpose has the name
    // "passhtroughZPass" for findByName. A is skinned.
    static RVSHADER *passthrough;
    static RVSHADER *passthroughA;
    static RVSHADER *passthroughZPass;
    static RVSHADER *passthroughZPassA;
    // Bloom and tone mapping. On purpose: bloomV blurs along x and bloomH along y.
    static RVSHADER *bloomBright;
    static RVSHADER *bloomToneMapping;
    static RVSHADER *bloomCombine;
    static RVSHADER *bloomForceAlpha;
    static RVSHADER *bloomV;
    static RVSHADER *bloomH;
    // A blur for the application; the engine does not use it.
    static RVSHADER *gaussian;
    // Particles: billboards built in the vertex stage.
    static RVSHADER *emitter;
    // Depth of field.
    static RVSHADER *dofCombine;
    static RVSHADER *dof;
    // Sky, water (S with the shadow map), terrain.
    static RVSHADER *skydome;
    static RVSHADER *water;
    static RVSHADER *waterS;
    static RVSHADER *terrainComplex;
    static RVSHADER *terrainSimple;

  private:
    struct Stage;

    bool readAndCompile(const Stage &stage, const char *stageName, const char *source);
    bool compile(const Stage &stage, const char *stageName, const char *source);
    void link(bool vertex, bool pixel);
    void findParameters();
    void assignSamplerUnits() const;

    unsigned int id;
    char name[256];
    char vsFilename[256];
    char psFilename[256];
    bool vsOperative;
    bool psOperative;
    unsigned int vertexObject; // OpenGL's names; 0 for none
    unsigned int pixelObject;
    unsigned int programObject;
    unsigned int param[parameters];
    RVSHADER *previous, *next;

    static RVSHADER *firstShader, *lastShader;
    static RVSHADER *currentShader; // current; NULL for none
    static char shaderPath[256];
    static bool active;
    static bool enabled;
    static bool bonesBound; // the attribute arrays of bindBones are on
    static bool pplFlag;
    static bool bloomFlag;
    static bool shadowsFlag;
    static bool skinningFlag;
    static bool passthroughFlag;
    static bool emitterFlag;
    static bool dofFlag;
    static bool skydomeFlag;
    static bool waterFlag;
    static bool terrainFlag;

    friend struct ravolt::Registry<RVSHADER>;
    friend struct ravolt::BuiltinPrograms;
};
