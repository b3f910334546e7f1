// Two emitters of 4,000 particles each: the quads built on the processor, and by the program.

#include "benchScene.h"
#include "jobs.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int emitters = 2, particlesOfEmitter = 4000;
constexpr int allParticles = emitters * particlesOfEmitter;
constexpr float frameSeconds = 1.0f / 60, cameraDistance = 60;
constexpr float gravity = -4, planeSize = 30, places[emitters][3] = {{-8, -5, -4}, {8, -5, 4}};
constexpr int maxEnergy = 100, maxVelocity = 20, maxSize = 6, maxSpin = 90;
constexpr float firstSpin = 30;
constexpr float colors[2][3] = {{1.0f, 0.9f, 0.3f}, {0.4f, 0.1f, 0.6f}}; // at birth, at the end

struct Particle {
    float position[3], velocity;
    float spinSpeed, spin, size, startEnergy, energy;

    void begin() {
        energy = startEnergy = std::rand() % maxEnergy / 100.0f;
        size = std::rand() % maxSize / 10.0f;
        spinSpeed = static_cast<float>(std::rand() % maxSpin);
        spin = firstSpin;
        std::rand(); // the velocities along the axes in which the up vector is 0
        velocity = static_cast<float>(std::rand() % maxVelocity);
        std::rand();
        position[2] = ratio() * 2 * planeSize - planeSize;
        position[0] = ratio() * 2 * planeSize - planeSize;
        position[1] = 0;
    }
    static float ratio() { return static_cast<float>(std::rand() / double{RAND_MAX}); }
};

struct Vertex {
    float position[3];
    unsigned char color[4];
    float uv[2];
};

class Particles : public bench::Job {
  public:
    explicit Particles(bool byProgram);

    void drawByEngine() override;
    void drawByHand() override;
    void startHand() override;

  private:
    bool program;
    bench::Scene scene;
    RVTEXTURE *texture;
    unsigned int object = 0;    // OpenGL's program
    unsigned int seeds[2] = {}; // of the next frames: births are the same for both
    std::vector<Particle> particles;
    std::vector<Vertex> vertices;
    std::vector<float> sizesAndSpins, centres; // for the program: two and three of a vertex

    RVEMITTER *makeEmitter(const float *place);
    void advanceAll();
    void build(Vertex *quad, const Particle &particle, const float *place) const;
    void storeCentre(std::size_t number, const Particle &particle, const float *place);
};

Particles::Particles(bool byProgram)
    : program(byProgram), particles(allParticles), vertices(4 * allParticles),
      sizesAndSpins(8 * allParticles), centres(12 * allParticles) {
    bench::stopEngine();
    bench::startEngine(byProgram);
    RAVOLT::setFrameDuration(frameSeconds);
    const std::vector<unsigned char> texels = bench::makeTexture(3);
    ravolt::writeTga("bench_particle.tga", {64, 64, 3, false, texels.data()});
    texture = new RVTEXTURE;
    texture->load("bench_particle.tga");
    std::remove("bench_particle.tga");
    texture->incReferences();
    scene.root = new RVNODE;
    scene.camera = new RVCAMERA;
    scene.camera->setPosition(0, 0, cameraDistance);
    RVEMITTER *made[emitters]; // their constructors take random numbers for colours
    for (int i = 0; i < emitters; ++i)
        made[i] = makeEmitter(places[i]);
    std::srand(1);
    for (RVEMITTER *emitter : made)
        emitter->setNumberOfParticles(particlesOfEmitter);
    std::srand(1);
    for (Particle &particle : particles)
        particle.begin();
    constexpr float corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const float u = corners[i % 4][0], v = corners[i % 4][1];
        vertices[i] = {{2 * u - 1, 2 * v - 1, 0}, {}, {u, v}};
    }
}

RVEMITTER *Particles::makeEmitter(const float *place) {
    RVEMITTER *emitter = new RVEMITTER;
    emitter->setEmitterType(1);
    emitter->setTexture(texture);
    emitter->setMaximumEnergy(maxEnergy);
    emitter->setMaximumVelocity(maxVelocity);
    emitter->setMaximumParticuleSize(maxSize);
    emitter->setMaximumSpin(maxSpin);
    emitter->setSpinning(firstSpin);
    emitter->setSizeX(planeSize);
    emitter->setSizeY(planeSize);
    emitter->setGravity({0, gravity, 0});
    emitter->setColorStart({colors[0][0], colors[0][1], colors[0][2]});
    emitter->setColorEnd({colors[1][0], colors[1][1], colors[1][2]});
    emitter->setPosition(place[0], place[1], place[2]);
    emitter->link(scene.root);
    return emitter;
}

void Particles::drawByEngine() {
    std::srand(++seeds[0]);
    bench::drawByEngine(scene);
}

// Resets what the engine's frame has left.
void Particles::startHand() {
    if (program) {
        RVSHADER::emitter->render(nullptr);
        int current = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &current);
        object = static_cast<unsigned int>(current);
        RVSHADER::disable();
    }
    RAVOLT::begin3D(scene.camera);
    RVLIGHT::lightingOff();
    glLoadIdentity();
    glDisable(GL_CULL_FACE);
    RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
}

void Particles::drawByHand() {
    std::srand(++seeds[1]);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    advanceAll();
    if (program)
        RVOPENGL::glUseProgramObjectARB(object);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.2f);
    glDepthMask(GL_FALSE);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture->getGLId());
    constexpr GLsizei stride = sizeof(Vertex);
    for (const GLenum array : {GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        glEnableClientState(array);
    glVertexPointer(3, GL_FLOAT, stride, vertices[0].position);
    glColorPointer(4, GL_UNSIGNED_BYTE, stride, vertices[0].color);
    glTexCoordPointer(2, GL_FLOAT, stride, vertices[0].uv);
    if (program) {
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, 0, centres.data());
        RVOPENGL::glClientActiveTextureARB(GL_TEXTURE1);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, 0, sizesAndSpins.data());
    }
    glDrawArrays(GL_QUADS, 0, 4 * allParticles);
    if (program) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        RVOPENGL::glClientActiveTextureARB(GL_TEXTURE0);
        glDisableClientState(GL_NORMAL_ARRAY);
        RVOPENGL::glUseProgramObjectARB(0);
    }
    glDepthMask(GL_TRUE);
    glFinish();
}

// The emitters in the order in which they are drawn.
void Particles::advanceAll() {
    for (std::size_t i = 0; i < particles.size(); ++i) {
        Particle &p = particles[i];
        const float *const place = places[i / particlesOfEmitter];
        Vertex *const quad = &vertices[4 * i];
        p.velocity += gravity * frameSeconds;
        p.position[1] += p.velocity * frameSeconds;
        if (!program)
            build(quad, p, place);
        const float ratio = p.startEnergy == 0 ? 1 : p.energy / p.startEnergy;
        unsigned char color[4];
        for (int c = 0; c < 3; ++c)
            color[c] = static_cast<unsigned char>(
                (colors[1][c] - (colors[1][c] - colors[0][c]) * ratio) * 255);
        color[3] = static_cast<unsigned char>(static_cast<int>(p.energy * 255));
        for (int corner = 0; corner < 4; ++corner)
            std::copy_n(color, 4, quad[corner].color);
        p.spin += frameSeconds * p.spinSpeed;
        if (program)
            storeCentre(i, p, place);
        p.energy -= frameSeconds * 0.5f;
        if (p.energy <= 0)
            p.begin();
    }
}

// In the camera's space, which is turned as the world is.
void Particles::build(Vertex *quad, const Particle &p, const float *place) const {
    const float s = std::fabs(p.size - p.energy), angle = p.spin * 0.01745329252f;
    const float x = s * std::cos(angle), y = s * std::sin(angle);
    const float centre[3] = {p.position[0] * s + place[0], p.position[1] * s + place[1],
                             p.position[2] * s + place[2] - cameraDistance};
    const float offsets[4][2] = {{-x - y, y - x}, {x - y, -y - x}, {x + y, x - y}, {y - x, y + x}};
    for (int corner = 0; corner < 4; ++corner) {
        quad[corner].position[0] = centre[0] + offsets[corner][0];
        quad[corner].position[1] = centre[1] + offsets[corner][1];
        quad[corner].position[2] = centre[2];
    }
}

// The program adds the centre before it multiplies by the size. Without a size nothing is seen.
void Particles::storeCentre(std::size_t number, const Particle &p, const float *place) {
    const float inverse = p.size > 0 ? 1 / p.size : 0;
    const float centre[3] = {p.position[0] + place[0] * inverse, p.position[1] + place[1] * inverse,
                             p.position[2] + (place[2] - cameraDistance) * inverse};
    for (std::size_t vertex = 4 * number; vertex < 4 * number + 4; ++vertex) {
        std::copy_n(centre, 3, &centres[3 * vertex]);
        sizesAndSpins[2 * vertex] = p.size;
        sizesAndSpins[2 * vertex + 1] = p.spin;
    }
}

const bench::AddedJobs added({
    {"8,000 particles, processor", "particles",
     []() -> std::unique_ptr<bench::Job> { return std::make_unique<Particles>(false); }},
    {"8,000 particles, program", "particlesProgram",
     []() -> std::unique_ptr<bench::Job> { return std::make_unique<Particles>(true); }},
});

} // namespace
