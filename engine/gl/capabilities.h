#pragma once

#include "ravolt/RVOPENGL.h"

// What the driver offers, detected in each start of the OpenGL layer.
struct RVOPENGL::Capabilities {
    // Fewer texture units than these count as no multitexturing.
    static constexpr int requiredUnits = 16;

    // Creates the render targets of the pool. Without memory the pool remains empty.
    using MakePool = bool (*)(RVFBO *(&pool)[14]);

    // Logs the driver and what it has and lacks, fetches the entry points and sets the flags. The
    // pool is made on the way, where there are framebuffers, since its log lines come before those
    // of the occlusion queries.
    static void detect(MakePool makePool);

  private:
    struct Capability;
    static void readAnisotropy();
    static void countTextureUnits();
    static bool detectOne(const Capability &capability, const char *extensions);
};
