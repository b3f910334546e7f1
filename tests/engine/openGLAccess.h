#pragma once

// The private side of RVOPENGL, for tests: start and stop on their own, and the flags, which no
// start clears. Access is not checked in an explicit instantiation, which passes the pointers to
// the members.

#include "ravolt/RVOPENGL.h"

#include <initializer_list>

namespace ravolt::test {

template <class Door, typename Door::Type member> struct Opened {
    friend typename Door::Type reach(Door) { return member; }
};

#define RV_OPEN(name, type)                                                                        \
    struct Door_##name {                                                                           \
        using Type = type;                                                                         \
        friend Type reach(Door_##name);                                                            \
    };                                                                                             \
    template struct Opened<Door_##name, &RVOPENGL::name>;

using Step = bool (*)();
using Flag = bool *;
using Level = float *;
using Pool = RVFBO *(*)[14];
RV_OPEN(init, Step)
RV_OPEN(free, Step)
RV_OPEN(reset, Step)
RV_OPEN(isActive, Step)
RV_OPEN(multitextureFlag, Flag)
RV_OPEN(VBOFlag, Flag)
RV_OPEN(shadersFlag, Flag)
RV_OPEN(anisotropicFlag, Flag)
RV_OPEN(FBOFlag, Flag)
RV_OPEN(OcclusionQueryFlag, Flag)
RV_OPEN(anisotropicLevel, Level)
RV_OPEN(fbo, Pool)
#undef RV_OPEN

inline bool startOpenGL() { return reach(Door_init())(); }
inline bool stopOpenGL() { return reach(Door_free())(); }
inline bool resetOpenGL() { return reach(Door_reset())(); }
inline bool isOpenGLActive() { return reach(Door_isActive())(); }

// As in a process that has not started the layer yet.
inline void resetCapabilities() {
    for (Flag flag :
         {reach(Door_multitextureFlag()), reach(Door_VBOFlag()), reach(Door_shadersFlag()),
          reach(Door_anisotropicFlag()), reach(Door_FBOFlag()), reach(Door_OcclusionQueryFlag())})
        *flag = false;
    *reach(Door_anisotropicLevel()) = 0;
    for (RVFBO *&target : *reach(Door_fbo()))
        target = nullptr;
#define RV_GL_ENTRY_POINT(group, name) RVOPENGL::name = nullptr;
#include "engine/gl/glEntryPoints.inc"
}

} // namespace ravolt::test
