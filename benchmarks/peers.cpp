// Particles and strings as programs of other engines draw them, to be run beside those: it takes
// the same command line and prints the same lines. It is built where the folder RAVOLT_PEERS has
// the headers that these programs share: the work (workload.h) and the measuring (bench.h).
//
//   peers WORK [--frames N] [--warm N] [--shot F.ppm] [--data DIR]
//
// WORK: particles: two emitters of 4,000 with the program, or on the processor (OURS_PROGRAMS=0 in
// the environment); text, textstatic: 100 strings of 40 characters.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tools/writers/tgaWriter.h"

#include <SDL/SDL.h>

#include "bench.h"
#include "workload.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

bench::Args arguments;

bool usesPrograms() {
    const char *value = std::getenv("OURS_PROGRAMS");
    return arguments.is("particles") && (!value || std::atoi(value));
}

bool startEngine() {
    zlfSetConsoleEcho(false);
    RVSETTINGS settings;
    settings.setWindowX(wl::WIDTH);
    settings.setWindowY(wl::HEIGHT);
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setTexturePath((arguments.data + "/").c_str());
    settings.setShaders(usesPrograms());
    settings.setMaxAnisotropy(1);
    SDL_putenv(const_cast<char *>("__GL_SYNC_TO_VBLANK=0"));
    if (!RAVOLT::init(&settings))
        return false;
    RVOPENGL::setNearPlane(wl::ZNEAR);
    RVOPENGL::setFarPlane(wl::ZFAR);
    RVOPENGL::setAngleOfView(wl::FOVY_DEG);
    RVOPENGL::resize(0, 0, wl::WIDTH, wl::HEIGHT);
    RVOPENGL::setBackgroundColor(wl::CLEAR_R, wl::CLEAR_G, wl::CLEAR_B, 1);
    return true;
}

RVTEXTURE *makeTexture(const char *name, unsigned int width, unsigned int height,
                       const std::vector<unsigned char> &texels, bool topRowFirst, bool linear) {
    ravolt::writeTga(arguments.data + "/" + name, {width, height, 4, topRowFirst, texels.data()});
    auto *texture = new RVTEXTURE;
    texture->load(name);
    texture->setFilter(linear, false, false);
    texture->incReferences();
    return texture;
}

template <class Draw> void drawFrame(int frame, const Draw &draw) {
    for (SDL_Event event; SDL_PollEvent(&event);) {
    }
    RAVOLT::clear(true, true, false);
    draw();
    if (frame == arguments.shotFrame)
        bench::shotGL(arguments);
    RAVOLT::swap();
}

// ---- Particles. The engine's are born again when they end, so that all are always alive.

constexpr int emitters = 2, particlesOfEmitter = 4000;

RVEMITTER *makeEmitter(int number, RVTEXTURE *texture) {
    auto *emitter = new RVEMITTER;
    emitter->setEmitterType(1); // a plane, so that the velocity has one direction
    emitter->setSizeX(1);
    emitter->setSizeY(1);
    emitter->setTexture(texture);
    emitter->setMaximumEnergy(100); // two seconds
    emitter->setMaximumVelocity(6);
    emitter->setMaximumParticuleSize(6);
    emitter->setGravity({0, wl::PT_GRAVITY, 0});
    emitter->setColorStart({1, 1, 1});
    emitter->setColorEnd({1, 1, 1});
    emitter->setBlendingSrc(GL_SRC_ALPHA);
    emitter->setBlendingDst(GL_ONE);
    emitter->setPosition(number ? 7.0f : -7.0f, -3, 0);
    emitter->setNumberOfParticles(particlesOfEmitter);
    return emitter;
}

void drawParticles() {
    RVTEXTURE *texture =
        makeTexture("particle.tga", wl::PT_TEX, wl::PT_TEX, wl::particleTexture(), false, true);
    auto *root = new RVNODE;
    auto *camera = new RVCAMERA;
    camera->setPosition(0, 0, wl::CAM_Z);
    RAVOLT::setFrameDuration(wl::DT);
    for (int i = 0; i < emitters; ++i)
        makeEmitter(i, texture)->link(root);
    bench::run(arguments, [&](int frame) {
        drawFrame(frame, [&] {
            RAVOLT::begin3D(camera);
            root->pass();
            RAVOLT::end3D(true);
        });
    });
    std::printf("NOTE\t%s\tparticles\talive=%d, %s\n", arguments.peer,
                emitters * particlesOfEmitter, RVSHADER::useEmitter() ? "program" : "processor");
}

// ---- Strings.

constexpr unsigned int atlasSide = 128, atlasColumns = atlasSide / wl::TX_CELL;

// With a width of 8 pixels on the screen the engine reads each row of the atlas eight cells further
// to the right than the row above.
std::vector<unsigned char> makeAtlas() {
    const std::vector<unsigned char> font = wl::fontAtlas();
    std::vector<unsigned char> texels(4 * atlasSide * atlasSide);
    for (unsigned int y = 0; y < wl::FONT_H; ++y)
        for (unsigned int x = 0; x < atlasSide; ++x) {
            const unsigned int shift = y / wl::TX_CELL * (atlasColumns - wl::TX_CELL) * wl::TX_CELL;
            const unsigned int from = 4 * (y * wl::FONT_W + x);
            const unsigned int to = 4 * (y * atlasSide + (x + shift) % atlasSide);
            std::copy_n(font.begin() + from, 4, texels.begin() + to);
        }
    return texels;
}

// At the end of a text, ^ would be a truncated tag.
std::string text(int number, int frame) {
    std::string result = wl::textString(number, frame);
    if (result.back() == '^')
        result += ' ';
    return result;
}

void drawStrings(bool fixed) {
    auto *font = new RVFONT;
    font->setTexture(makeTexture("font.tga", atlasSide, atlasSide, makeAtlas(), true, false));
    font->setCharSizeX(wl::TX_CELL);
    font->setCharSizeY(wl::TX_CELL);
    std::array<std::string, wl::TX_STRINGS> texts;
    for (int i = 0; i < wl::TX_STRINGS; ++i)
        texts[static_cast<std::size_t>(i)] = text(i, 0);
    bench::run(arguments, [&](int frame) {
        drawFrame(frame, [&] {
            RAVOLT::begin2D();
            for (int i = 0; i < wl::TX_STRINGS; ++i) {
                std::string &shown = texts[static_cast<std::size_t>(i)];
                if (!fixed)
                    shown = text(i, frame);
                font->putText(wl::textX(i), wl::textY(i), shown.c_str());
            }
            RAVOLT::end2D();
        });
    });
}

} // namespace

int main(int argc, char **argv) {
    const char *name = std::getenv("OURS_NAME");
    arguments = bench::parse(name ? name : "ours", argc, argv);
    const bool fixed = arguments.is("textstatic");
    if (!arguments.is("particles") && !arguments.is("text") && !fixed) {
        std::printf("SKIP\t%s\t%s\n", arguments.peer, arguments.work.c_str());
        return 0;
    }
    if (!startEngine()) {
        std::fprintf(stderr, "the engine does not start, see ravolt_log.txt\n");
        return 1;
    }
    if (arguments.is("particles"))
        drawParticles();
    else
        drawStrings(fixed);
    RAVOLT::free();
    return 0;
}
