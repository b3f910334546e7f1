// The extent of an emitter follows from a sample of its particles, since the engine's own are not
// accessible. They are born by the rules of the engine, with numbers of the tool's own.

#include "tools/stage/particles.h"

#include "tools/process/signals.h"
#include "tools/stage/stage.h"
#include "tools/stage/vectors.h"

#include <GL/gl.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVEMITTER.h>

namespace ravolt::tool {

namespace {

constexpr int sampleSize = 4000;
constexpr double rareEnd = 0.02; // of the particles at each end, which may leave the picture
constexpr double frameSeconds = 1 / 30.0;
constexpr float noTime = 1e-30f; // 0 would be the clock's
constexpr double energyPerSecond = 0.5;
constexpr double visibleEnergy = 0.2; // the engine's alpha test

class Sample {
  public:
    explicit Sample(const RVEMITTER &source) : emitter(source) {
        for (int i = 0; i < sampleSize; ++i)
            add();
    }

    Sphere sphere();

  private:
    // From 0 to below `limit`, in whole steps.
    double below(unsigned int limit) {
        return limit > 1 ? std::floor(fraction(generator) * limit) : 0;
    }
    double around() { return 2 * fraction(generator) - 1; }
    Vector birthplace();
    Vector velocity();
    void add();

    const RVEMITTER &emitter;
    std::mt19937 generator{1};
    std::uniform_real_distribution<double> fraction{0, 1};
    std::array<std::vector<double>, 3> places; // of the particles' centres
    std::vector<double> sizes;
};

Vector Sample::birthplace() {
    const Vector center = vectorFrom(emitter.getCenter());
    if (emitter.getEmitterType() == 1)
        return center + Vector(around() * emitter.getSizeX(), 0, around() * emitter.getSizeY());
    if (emitter.getEmitterType() == 2) {
        const double angle = std::numbers::pi * around(), radius = emitter.getRadius();
        const double distance = radius * std::abs(around());
        return {distance * std::cos(angle) - center.x, 0, distance * std::sin(angle) - center.z};
    }
    return center;
}

Vector Sample::velocity() {
    const unsigned int limit = emitter.getMaximumVelocity();
    const auto number = [&] { return below(limit); };
    if (emitter.getEmitterType() == 0)
        return Vector(number() - number(), number() - number(), number() - number()) * 0.1;
    const Vector up = vectorFrom(emitter.getUpVector());
    return {number() * up.x, number() * up.y, number() * up.z};
}

void Sample::add() {
    const double start = below(emitter.getMaximumEnergy()) / 100;
    const double energy = start * fraction(generator);
    if (energy < std::min(visibleEnergy, emitter.getMaximumEnergy() / 200.0))
        return;
    const double time = (start - energy) / energyPerSecond;
    const double size = std::abs(below(emitter.getMaximumParticuleSize()) / 10 - energy);
    const Vector place =
        (birthplace() + velocity() * time + vectorFrom(emitter.getGravity()) * (time * time / 2)) *
        size;
    if (!isFinite(place))
        return;
    places[0].push_back(place.x);
    places[1].push_back(place.y);
    places[2].push_back(place.z);
    sizes.push_back(size);
}

// The value that a part of the numbers is below.
double quantile(std::vector<double> &numbers, double part) {
    if (numbers.empty())
        return 0;
    const auto at = static_cast<std::ptrdiff_t>(part * static_cast<double>(numbers.size() - 1));
    std::nth_element(numbers.begin(), numbers.begin() + at, numbers.end());
    return numbers[static_cast<std::size_t>(at)];
}

Sphere Sample::sphere() {
    const double size = quantile(sizes, 1 - 4 * rareEnd);
    Vector low, high;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        low[axis] = quantile(places[axis], rareEnd);
        high[axis] = quantile(places[axis], 1 - rareEnd);
    }
    Sphere sphere;
    low -= Vector(size, 0.5 * size, size);
    high += Vector(size, size, size);
    sphere.lowest = low.y;
    sphere.center = (low + high) * 0.5;
    sphere.radius = 0.6 * std::max({high.x - low.x, high.y - low.y, high.z - low.z});
    return sphere;
}

} // namespace

Sphere sphereAround(RVEMITTER &emitter) {
    Sphere sphere = Sample(emitter).sphere();
    const Vector position = vectorFrom(emitter.getPosition());
    sphere.center = sphere.center + position;
    sphere.lowest += position.y;
    return sphere;
}

double fullAfter(const RVEMITTER &emitter) {
    return std::min(emitter.getMaximumEnergy() / 100.0 / energyPerSecond, 60.0);
}

void moveParticles(Stage &stage, double seconds) {
    const Effects effects = stage.getEffects();
    Effects plain = effects; // others draw, and so move, particles several times
    for (const EffectRow &row : effectTable())
        if (row.wholePicture || row.effect == Effect::shadows)
            plain.switchOff(row.effect);
    stage.setEffects(plain);
    const int frames = static_cast<int>(std::ceil(seconds / frameSeconds));
    if (frames > 0)
        RAVOLT::setFrameDuration(static_cast<float>(seconds / frames));
    glEnable(GL_SCISSOR_TEST); // which saves time
    glScissor(0, 0, 1, 1);
    for (int i = 0; i < frames; ++i) {
        throwIfInterrupted();
        stage.draw();
        RAVOLT::swap();
    }
    glDisable(GL_SCISSOR_TEST);
    stage.setEffects(effects);
    RAVOLT::setFrameDuration(noTime);
}

} // namespace ravolt::tool
