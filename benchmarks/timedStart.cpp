// The duration of a start of the engine, and of its parts: without programs, and with the 35
// programs while the driver finds them in its cache on disk, has that cache off, or fills it.
// Beside them the same window by hand, cleared, and with a picture in its middle as the splash has.
// Each start is one of a process of its own; the figures are medians, in milliseconds of the
// calling thread.
//
//   timedStart [STARTS]                    a table
//   timedStart none|programs|clear|picture a single start, as a row of numbers
//
// The program's own SDL_GL_GetProcAddress replaces SDL's and returns functions that measure the
// time; so do its versions of the functions that open the window, show the splash and make
// textures.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

enum Share { window, splash, targets, compile, link, lookUp, otherCalls, rest, shares };
constexpr const char *shareNames[] = {"SDL, OpenGL and the window",
                                      "showing the splash",
                                      "memory of textures and targets",
                                      "compiling stages",
                                      "linking",
                                      "looking up parameters",
                                      "other calls for programs",
                                      "the rest"};
using Times = std::array<double, shares + 1>; // the last one is the whole

double spent[shares];

double threadTime() {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

class Stopwatch {
  public:
    explicit Stopwatch(Share timedShare) : share(timedShare), start(threadTime()) {}
    ~Stopwatch() { spent[share] += threadTime() - start; }

  private:
    Share share;
    double start;
};

// Stands in for the function of that number in the list below.
template <std::size_t number, Share share, class Function> struct Timed;
template <std::size_t number, Share share, class Result, class... Arguments>
struct Timed<number, share, Result (*)(Arguments...)> {
    static inline Result (*real)(Arguments...) = nullptr;
    static Result call(Arguments... arguments) {
        const Stopwatch running(share);
        return real(arguments...);
    }
    static void *over(void *function) {
        real = reinterpret_cast<Result (*)(Arguments...)>(function);
        return reinterpret_cast<void *>(&call);
    }
};

constexpr struct {
    const char *name;
    void *(*over)(void *function);
} timedFunctions[] = {
    {"glCompileShaderARB", Timed<0, compile, PFNGLCOMPILESHADERARBPROC>::over},
    {"glLinkProgramARB", Timed<1, link, PFNGLLINKPROGRAMARBPROC>::over},
    {"glGetUniformLocationARB", Timed<2, lookUp, PFNGLGETUNIFORMLOCATIONARBPROC>::over},
    {"glGetAttribLocationARB", Timed<3, lookUp, PFNGLGETATTRIBLOCATIONARBPROC>::over},
    {"glCreateShaderObjectARB", Timed<4, otherCalls, PFNGLCREATESHADEROBJECTARBPROC>::over},
    {"glCreateProgramObjectARB", Timed<5, otherCalls, PFNGLCREATEPROGRAMOBJECTARBPROC>::over},
    {"glShaderSourceARB", Timed<6, otherCalls, PFNGLSHADERSOURCEARBPROC>::over},
    {"glGetObjectParameterivARB", Timed<7, otherCalls, PFNGLGETOBJECTPARAMETERIVARBPROC>::over},
    {"glAttachObjectARB", Timed<8, otherCalls, PFNGLATTACHOBJECTARBPROC>::over},
    {"glUseProgramObjectARB", Timed<9, otherCalls, PFNGLUSEPROGRAMOBJECTARBPROC>::over},
    {"glUniform1iARB", Timed<10, otherCalls, PFNGLUNIFORM1IARBPROC>::over},
    {"glRenderbufferStorageEXT", Timed<11, targets, PFNGLRENDERBUFFERSTORAGEEXTPROC>::over},
    {"glFramebufferTexture2DEXT", Timed<12, targets, PFNGLFRAMEBUFFERTEXTURE2DEXTPROC>::over},
    {"glFramebufferRenderbufferEXT", Timed<13, targets, PFNGLFRAMEBUFFERRENDERBUFFEREXTPROC>::over},
    {"glCheckFramebufferStatusEXT", Timed<14, targets, PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC>::over},
};

template <class Function> Function realFunction(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

void *SDL_GL_GetProcAddress(const char *name) {
    void *found = realFunction<decltype(&SDL_GL_GetProcAddress)>("SDL_GL_GetProcAddress")(name);
    for (const auto &timed : timedFunctions)
        if (found && std::strcmp(timed.name, name) == 0)
            return timed.over(found);
    return found;
}

int SDL_Init(Uint32 flags) {
    const Stopwatch running(window);
    return realFunction<decltype(&SDL_Init)>("SDL_Init")(flags);
}

int SDL_GL_LoadLibrary(const char *path) {
    const Stopwatch running(window);
    return realFunction<decltype(&SDL_GL_LoadLibrary)>("SDL_GL_LoadLibrary")(path);
}

SDL_Surface *SDL_SetVideoMode(int width, int height, int bits, Uint32 flags) {
    const Stopwatch running(window);
    return realFunction<decltype(&SDL_SetVideoMode)>("SDL_SetVideoMode")(width, height, bits,
                                                                         flags);
}

void SDL_GL_SwapBuffers() {
    const Stopwatch running(splash);
    realFunction<decltype(&SDL_GL_SwapBuffers)>("SDL_GL_SwapBuffers")();
}

void glFinish() {
    const Stopwatch running(splash);
    realFunction<decltype(&glFinish)>("glFinish")();
}

void glTexImage2D(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const void *pixels) {
    const Stopwatch running(targets);
    realFunction<decltype(&glTexImage2D)>("glTexImage2D")(target, level, internal, width, height,
                                                          border, format, type, pixels);
}
}

namespace {

constexpr int windowX = 640, windowY = 480, pictureSize = 256;

void printTimes(double whole) {
    spent[rest] = whole;
    for (int share = 0; share < rest; ++share)
        spent[rest] -= spent[share];
    for (double time : spent)
        std::fprintf(stderr, "%f ", time);
    std::fprintf(stderr, "%f\n", whole);
}

int startEngine(bool programs) {
    zlfSetConsoleEcho(false);
    RVSETTINGS settings;
    settings.setWindowX(windowX);
    settings.setWindowY(windowY);
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setShaders(programs);
    const double start = threadTime();
    if (!RAVOLT::init(&settings)) {
        std::fprintf(stderr, "the engine does not start here, see ravolt_log.txt\n");
        return 1;
    }
    printTimes(threadTime() - start);
    RAVOLT::free();
    return 0;
}

void drawPictureByHand() {
    const std::vector<unsigned char> texels(3 * pictureSize * pictureSize, 128);
    constexpr int left = (windowX - pictureSize) / 2, top = (windowY - pictureSize) / 2;
    constexpr int right = left + pictureSize, bottom = top + pictureSize;
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, pictureSize, pictureSize, 0, GL_BGR, GL_UNSIGNED_BYTE,
                 texels.data());
    glEnable(GL_TEXTURE_2D);
    glOrtho(0, windowX, windowY, 0, -1, 1);
    glBegin(GL_QUADS);
    glTexCoord2i(0, 1), glVertex2i(left, top);
    glTexCoord2i(0, 0), glVertex2i(left, bottom);
    glTexCoord2i(1, 0), glVertex2i(right, bottom);
    glTexCoord2i(1, 1), glVertex2i(right, top);
    glEnd();
    glDeleteTextures(1, &texture);
}

int startByHand(bool picture) {
    const double start = threadTime();
    SDL_Init(SDL_INIT_VIDEO);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
    if (!SDL_SetVideoMode(windowX, windowY, 32, SDL_OPENGL)) {
        std::fprintf(stderr, "no window: %s\n", SDL_GetError());
        return 1;
    }
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    if (picture)
        drawPictureByHand();
    SDL_GL_SwapBuffers();
    printTimes(threadTime() - start);
    SDL_Quit();
    return 0;
}

int startOnce(const std::string &mode) {
    const bool engine = mode == "none" || mode == "programs";
    return engine ? startEngine(mode == "programs") : startByHand(mode == "picture");
}

// A start in a process of its own, under a shell's `environment`.
Times timeStart(const std::string &self, const std::string &environment, const char *mode) {
    Times times{};
    const std::string command = environment + " '" + self + "' " + mode + " 2>&1 >/dev/null";
    std::FILE *pipe = popen(command.c_str(), "r");
    for (double &time : times)
        if (!pipe || std::fscanf(pipe, "%lf", &time) != 1) {
            std::fprintf(stderr, "a start has failed: %s\n", command.c_str());
            std::exit(1);
        }
    pclose(pipe);
    return times;
}

Times medians(std::vector<Times> starts) {
    Times result{};
    for (std::size_t share = 0; share < result.size(); ++share) {
        std::sort(starts.begin(), starts.end(),
                  [share](const Times &a, const Times &b) { return a[share] < b[share]; });
        result[share] = starts[starts.size() / 2][share];
    }
    return result;
}

// The driver's cache in a folder that is new for each start, or the same for all.
constexpr struct {
    const char *name;
    const char *mode;
    const char *environment;
    bool emptied;
} settings[] = {
    {"no programs, cache warm", "none", "", false},
    {"no programs, cache empty", "none", "", true},
    {"35, cache warm", "programs", "", false},
    {"35, cache off", "programs", "MESA_SHADER_CACHE_DISABLE=true", false},
    {"35, cache empty", "programs", "", true},
    {"by hand, cleared", "clear", "", false},
    {"by hand, with a picture", "picture", "", false},
};

int printTable(const std::string &self, int starts) {
    const std::filesystem::path cache = std::filesystem::current_path() / "timedStart_cache";
    std::vector<std::vector<Times>> times(std::size(settings));
    timeStart(self, "MESA_SHADER_CACHE_DIR='" + cache.string() + "'", "programs");
    for (int start = 0; start < starts; ++start)
        for (std::size_t i = 0; i < std::size(settings); ++i) {
            const std::filesystem::path folder = cache / (settings[i].emptied ? "new" : "");
            std::filesystem::remove_all(cache / "new");
            times[i].push_back(timeStart(
                self, "MESA_SHADER_CACHE_DIR='" + folder.string() + "' " + settings[i].environment,
                settings[i].mode));
        }
    std::filesystem::remove_all(cache);

    std::printf("| ms |");
    for (const auto &setting : settings)
        std::printf(" %s |", setting.name);
    std::printf("\n|---|");
    for (std::size_t i = 0; i < std::size(settings); ++i)
        std::printf("---:|");
    std::printf("\n");
    for (std::size_t share = 0; share <= shares; ++share) {
        std::printf("| %s |", share < shares ? shareNames[share] : "**together**");
        for (const auto &each : times)
            std::printf(" %.1f |", medians(each)[share]);
        std::printf("\n");
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    for (const auto &setting : settings)
        if (argc == 2 && !std::strcmp(argv[1], setting.mode))
            return startOnce(setting.mode);
    const int starts = argc == 2 ? std::atoi(argv[1]) : 15;
    return printTable(std::filesystem::canonical("/proc/self/exe").string(), std::max(starts, 1));
}
