// The engine's state: switches, frame clock and stamp, the count of the video memory. Only `init`
// and `free` (engine/app/lifecycle.cpp) write `active`. No other member is reset between two runs
// of the engine.

#include "ravolt/RAVOLT.h"

#include "foundation/text.h"
#include "ravolt/zlf.h"

#include <GL/gl.h>
#include <SDL/SDL.h>

bool RAVOLT::active = false;
bool RAVOLT::wireframe = false;
bool RAVOLT::shadowing = false;
bool RAVOLT::blooming = false;
unsigned int RAVOLT::videoMemoryTotal = 0;
unsigned int RAVOLT::videoMemoryUsed = 0;
bool RAVOLT::HDR = false;
bool RAVOLT::DOF = false;
bool RAVOLT::skipShadows = false;
bool RAVOLT::renderingOnFbo = false;
char RAVOLT::rvePath[256] = "";
RVNODE *RAVOLT::skybox = nullptr;
int RAVOLT::timer = -1;
int RAVOLT::timeStamp = 65536; // On purpose: not 0.
float RAVOLT::bloomingIntensity = 1.0f;
float RAVOLT::HDRExposure = 1.0f;
float RAVOLT::HDRCurrentLuminance = 1.0f;
float RAVOLT::DOFFocus = 1.0f;
float RAVOLT::DOFRange = 2.0f;

namespace {

bool timerAdjourned = false; // the clock has advanced in this frame
bool confiningFiles = false;
float frameDuration = 0.0f; // seconds; 0 for the measured one
float shadowOffsetFactor = 0.0f, shadowOffsetUnits = 0.0f;

} // namespace

bool RAVOLT::isActive() { return active; }

void RAVOLT::updateTimer() {
    if (timerAdjourned)
        return;
    zlfAdjournTimer(timer);
    timerAdjourned = true;
}

float RAVOLT::getFPS() {
    return frameDuration > 0.0f ? 1.0f / frameDuration : zlfGetTimerFps(timer);
}

// The timer's rate is 1, so its factor is a time in seconds.
float RAVOLT::getFPSfactor() {
    return frameDuration > 0.0f ? frameDuration : zlfGetTimerFactor(timer);
}

void RAVOLT::setFrameDuration(float seconds) { frameDuration = seconds > 0.0f ? seconds : 0.0f; }
float RAVOLT::getFrameDuration() { return frameDuration; }

long RAVOLT::getTimeStamp() { return timeStamp; }

bool RAVOLT::swap() {
    timerAdjourned = false;
    glFlush();
    glFinish(); // the clock is read after this call, so that it measures the GPU's work, too
    if (SDL_WasInit(SDL_INIT_VIDEO)) // else there is no window
        SDL_GL_SwapBuffers();
    return true;
}

unsigned int RAVOLT::getVideoMemory() { return videoMemoryTotal; }

unsigned int RAVOLT::getUsedVideoMemory() { return videoMemoryUsed; }

// On purpose: wraps when more is charged than there is.
unsigned int RAVOLT::getFreeVideoMemory() { return videoMemoryTotal - videoMemoryUsed; }

unsigned int RAVOLT::pushVideoMemory(unsigned int bytes) { return videoMemoryUsed += bytes; }

// On purpose: wraps below zero.
unsigned int RAVOLT::popVideoMemory(unsigned int bytes) { return videoMemoryUsed -= bytes; }

void RAVOLT::wireframeOn() { wireframe = true; }

void RAVOLT::wireframeOff() { wireframe = false; }

bool RAVOLT::isWireframed() { return wireframe; }

void RAVOLT::shadowingOff() { shadowing = false; }

bool RAVOLT::isShadowed() { return shadowing; }

void RAVOLT::skipShadowsGeneration() { skipShadows = true; }

void RAVOLT::setShadowOffset(float factor, float units) {
    shadowOffsetFactor = factor;
    shadowOffsetUnits = units;
}

float RAVOLT::getShadowOffsetFactor() { return shadowOffsetFactor; }

float RAVOLT::getShadowOffsetUnits() { return shadowOffsetUnits; }

void RAVOLT::bloomingOff() { blooming = false; }

bool RAVOLT::isBlooming() { return blooming; }

void RAVOLT::setBloomingIntensity(float intensity) { bloomingIntensity = intensity; }

float RAVOLT::getBloomingIntensity() { return bloomingIntensity; }

void RAVOLT::HDROn() { HDR = true; }

void RAVOLT::HDROff() { HDR = false; }

bool RAVOLT::isHDR() { return HDR; }

void RAVOLT::setHDRExposure(float exposure) { HDRExposure = exposure; }

float RAVOLT::getHDRExposure() { return HDRExposure; }

void RAVOLT::DOFOff() { DOF = false; }

void RAVOLT::setDOFFocus(float focus) { DOFFocus = focus; }

void RAVOLT::setDOFRange(float range) { DOFRange = range; }

float RAVOLT::getDOFFocus() { return DOFFocus; }

float RAVOLT::getDOFRange() { return DOFRange; }

// On purpose: empty. Videos are advanced by the application.
void RAVOLT::updateVideo() {}

void RAVOLT::setRVEPath(const char *path) { ravolt::copyText(rvePath, path); }

char *RAVOLT::getRVEPath() { return rvePath; }

void RAVOLT::confineFilesOn() { confiningFiles = true; }

void RAVOLT::confineFilesOff() { confiningFiles = false; }

bool RAVOLT::isConfiningFiles() { return confiningFiles; }

void RAVOLT::setSkybox(RVNODE *node) { skybox = node; }

RVNODE *RAVOLT::getSkybox() { return skybox; }
