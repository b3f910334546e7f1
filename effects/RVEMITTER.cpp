// Emitters: the pool, the births, the file and the drawing.
//
// Invariants: an entry of particleIndex is -1 or a slot of the pool; numberOfParticles is at most
// RV_EMITTER_PARTICLES. The arrays serve one emitter at a time. The order of the calls of rand is
// fixed: the components of a vector are computed from the third to the first.

#include "ravolt/RVEMITTER.h"

#include "effects/emitterFile.h"
#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

using ravolt::EmitterKey;

RVPARTICLE *RVEMITTER::particle = nullptr;
int RVEMITTER::numberbOfParticlesUsed = 0;
Z3MVECTOR4D RVEMITTER::vertexArray[RV_EMITTER_VERTICES];
Z3MVECTOR2D RVEMITTER::uvArray[RV_EMITTER_VERTICES];
Z3MVECTOR2D RVEMITTER::uvSecondaryArray[RV_EMITTER_VERTICES];
unsigned char RVEMITTER::colorArray[4 * RV_EMITTER_VERTICES] = {};

namespace {

constexpr unsigned int defaultBlendingSrc = GL_SRC_ALPHA;
constexpr unsigned int defaultBlendingDst = GL_ONE_MINUS_SRC_ALPHA;
constexpr int maxParticles = RV_EMITTER_PARTICLES;

// Whether the file may name this one as its texture.
bool mayLoad(const char *name) {
    if (!RAVOLT::isConfiningFiles() || ravolt::staysBelowPath(name))
        return true;
    zlfLog("   [!] File name %s leaves its path: refused @ RVEMITTER::load\n", name);
    return false;
}

// 0 to limit - 1; a limit of 0, which a file may have, counts as 1.
unsigned int randomBelow(unsigned int limit) {
    return static_cast<unsigned int>(std::rand()) % std::max(limit, 1u);
}

// 0 to 1.
double randomRatio() { return std::rand() / static_cast<double>(RAND_MAX); }

// The third component first.
template <class Component> Z3MVECTOR3D vectorOf(const Component &component) {
    const auto z = component(2);
    const auto y = component(1);
    const auto x = component(0);
    return Z3MVECTOR3D(x, y, z);
}

Z3MVECTOR3D randomColor() {
    return vectorOf([](int) { return std::rand() % 100 / 100.0; });
}

// On purpose: the low eight bits, so that a value above 1 wraps around. `scaled` must fit 64 bits.
unsigned char lowByte(double scaled) {
    return static_cast<unsigned char>(static_cast<std::int64_t>(scaled));
}

unsigned char colorByte(float value) {
    const double scaled = value * 255.0;
    constexpr double limit = 9.0e18; // beyond, where the low bits of a number are 0, and for NaN
    return std::fabs(scaled) < limit ? lowByte(scaled) : 0;
}

// Whether no component needs the test of colorByte; one test of all four takes less time.
bool isInRange(const Z3MVECTOR4D &color) {
    constexpr float limit = 9.0e15f;
    return std::fabs(color.x) + std::fabs(color.y) + std::fabs(color.z) + std::fabs(color.w) <
           limit;
}

// The same four bytes for each of the four vertices of a quad.
template <class Byte>
void storeBytes(const Z3MVECTOR4D &color, unsigned char *target, const Byte &byte) {
    const unsigned char bytes[4] = {byte(color.x), byte(color.y), byte(color.z), byte(color.w)};
    for (int vertex = 0; vertex < 4; ++vertex)
        std::memcpy(target + 4 * vertex, bytes, sizeof bytes);
}

void storeColor(const Z3MVECTOR4D &color, unsigned char *target) {
    if (isInRange(color))
        storeBytes(color, target, [](float value) { return lowByte(value * 255.0); });
    else
        storeBytes(color, target, colorByte);
}

Z3MVECTOR4D colorOf(const RVPARTICLE &p, const Z3MVECTOR3D &end, const Z3MVECTOR3D &delta) {
    const float ratio = p.startEnergy == 0.0f ? 1.0f : p.energy / p.startEnergy;
    const Z3MVECTOR3D color = end - delta * ratio;
    return Z3MVECTOR4D(color.x, color.y, color.z, p.energy);
}

// Whether the program builds the quads. Sizes and spins are passed as the second unit's
// coordinates.
bool hasHardwarePath() {
    return RVSHADER::useEmitter() && RVSHADER::emitter && RVSHADER::emitter->isOperative() &&
           RVOPENGL::glClientActiveTextureARB && RVOPENGL::glActiveTextureARB;
}

void beginState(const float *matrix, unsigned int blendingSrc, unsigned int blendingDst) {
    glLoadMatrixf(matrix);
    RVLIGHT::lightingOff();
    RVSHADER::disable();
    RVOPENGL::blendingOn();
    glBlendFunc(blendingSrc, blendingDst);
}

// On purpose: culling remains off, without an update of its cached switch. In the shadow map
// particles write depth.
void setTests() {
    if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FULL)
        glDepthMask(GL_FALSE);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.2f);
    glDisable(GL_CULL_FACE);
    RVSHADER::reset();
}

void endState() {
    glDisable(GL_ALPHA_TEST);
    if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FULL)
        glDepthMask(GL_TRUE);
    RVOPENGL::blendingOff();
    RVMATERIAL::reset();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    RVLIGHT::lightingOn();
}

void selectBothUnits(unsigned int unit) {
    ravolt::selectClientUnit(unit);
    ravolt::selectUnit(unit);
}

} // namespace

// The axes of the screen in the emitter's own frame.
struct RVEMITTER::Facing {
    Z3MVECTOR3D right, up, axis;

    Facing() {
        float m[16];
        glGetFloatv(GL_MODELVIEW_MATRIX, m);
        right.set(m[0], m[4], m[8]);
        up.set(m[1], m[5], m[9]);
        axis = (up ^ right).normalize();
    }

    // The quad of a particle of the drawn size `s`, around its scaled position.
    void build(const RVPARTICLE &p, float s, Z3MVECTOR4D *corner) const {
        Z3MVECTOR3D r = right, u = up;
        if (p.spin != 0.0f) {
            Z3MMATRIX rotation;
            rotation.setRotation(p.spin, axis.x, axis.y, axis.z);
            r = rotation.rotate(r);
            u = rotation.rotate(u);
        }
        r *= s;
        u *= s;
        // On purpose: the size scales the position, too.
        const Z3MVECTOR3D centre = p.position * s;
        corner[0] = Z3MVECTOR4D(centre - r - u);
        corner[1] = Z3MVECTOR4D(centre + r - u);
        corner[2] = Z3MVECTOR4D(centre + r + u);
        corner[3] = Z3MVECTOR4D(centre - r + u);
    }
};

// --- The object

RVEMITTER::RVEMITTER()
    : emitterType(0), initialized(false), numberOfParticles(0), maxEnergy(100), maxVelocity(100),
      maxParticleSize(100), maxSpin(1), spinning(0.0f), maxAngle(0.0f), sizeX(10.0f), sizeY(10.0f),
      radius(10.0f), upVector(0, 1, 0), colorStart(randomColor()), colorEnd(randomColor()),
      blendingSrc(defaultBlendingSrc), blendingDst(defaultBlendingDst) {
    std::fill(std::begin(particleIndex), std::end(particleIndex), -1);
    colorDelta = colorEnd - colorStart;
    initType(RV_NODE_TYPE_EMITTER);
}

RVEMITTER::RVEMITTER(const RVEMITTER &other) : RVNODE(other) {
    *this = other;
    setDynamicClass(RV_NODE_TYPE_EMITTER);
}

RVEMITTER &RVEMITTER::operator=(const RVEMITTER &) = default;

// On purpose: the slots of the pool stay in use.
RVEMITTER::~RVEMITTER() = default;

void RVEMITTER::TextureLink::set(RVTEXTURE *newTarget) { target.set(newTarget); }

void RVEMITTER::setTexture(RVTEXTURE *value) { texture.set(value); }

void RVEMITTER::setColorStart(const Z3MVECTOR3D &value) {
    colorStart = value;
    colorDelta = colorEnd - colorStart;
}

void RVEMITTER::setColorEnd(const Z3MVECTOR3D &value) {
    colorEnd = value;
    colorDelta = colorEnd - colorStart;
}

// --- The pool

bool RVEMITTER::init() {
    if (!particle)
        particle = new (std::nothrow) RVPARTICLE[RV_PARTICLES];
    constexpr float side[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (unsigned int vertex = 0; vertex < RV_EMITTER_VERTICES; ++vertex) {
        const float u = side[vertex % 4][0], v = side[vertex % 4][1];
        uvArray[vertex].set(u, v);
        vertexArray[vertex].set(2 * u - 1, 2 * v - 1, 0, 1);
    }
    return particle;
}

bool RVEMITTER::free() {
    delete[] particle;
    particle = nullptr;
    numberbOfParticlesUsed = 0; // they were deleted with the pool
    return true;
}

// Enters free slots from the entry `first` on, and returns their number. It compares after a slot
// is entered, so that a request for 0 enters one: the caller decides whether it makes one.
unsigned int RVEMITTER::takeSlots(unsigned int first, unsigned int wanted) {
    unsigned int taken = 0;
    for (unsigned int slot = 0; particle && slot < RV_PARTICLES; ++slot) {
        if (particle[slot].used)
            continue;
        particle[slot].used = true;
        particleIndex[first + taken] = static_cast<int>(slot);
        if (++taken >= wanted)
            return taken;
    }
    zlfLog("   [!] Not enough free particles @ RVEMITTER::initialize()\n");
    return taken;
}

void RVEMITTER::takeParticles(unsigned int first, unsigned int number) {
    const unsigned int taken = takeSlots(first, number);
    for (unsigned int index = first; index < first + taken; ++index)
        updateParticle(&particle[particleIndex[index]]);
}

// On purpose: the entries of the slots stay.
void RVEMITTER::releaseParticles(unsigned int first, unsigned int end) {
    for (unsigned int index = first; index < end; ++index)
        if (particle && particleIndex[index] >= 0)
            particle[particleIndex[index]].used = false;
}

void RVEMITTER::setNumberOfParticles(int number) {
    constexpr std::int64_t pool = RV_PARTICLES;
    std::int64_t wanted = std::clamp(number, 0, maxParticles);
    const auto current = static_cast<std::int64_t>(numberOfParticles);
    // On purpose: the excess, not what is left. It has no upper limit of its own.
    const std::int64_t total = numberbOfParticlesUsed - current + wanted;
    if (total > pool)
        wanted = std::min<std::int64_t>(total - pool, maxParticles);
    const std::int64_t delta = wanted - current;

    if (delta > 0)
        takeParticles(numberOfParticles, static_cast<unsigned int>(delta));
    else
        releaseParticles(static_cast<unsigned int>(wanted), numberOfParticles);
    if (maxEnergy == 0)
        zlfLog("   [!] Maximum energy for particles too low @ RVEMITTER::initialize()\n");
    numberOfParticles = static_cast<unsigned int>(wanted);
    // On purpose: negative where a copy has released the same particles.
    numberbOfParticlesUsed = static_cast<int>(
        std::clamp<std::int64_t>(numberbOfParticlesUsed + delta, INT32_MIN, INT32_MAX));
    initialized = true;
}

bool RVEMITTER::initialize() {
    if (numberOfParticles > RV_EMITTER_PARTICLES) {
        zlfLog("   [!] Too many particles per emitter (rescaled to %d) @ RVEMITTER::initialize()\n",
               RV_EMITTER_PARTICLES);
        numberOfParticles = RV_EMITTER_PARTICLES;
    }
    takeSlots(0, numberOfParticles);
    if (maxEnergy == 0)
        zlfLog("   [!] Maximum energy for particles too low @ RVEMITTER::initialize()\n");
    for (unsigned int index = 0; index < numberOfParticles; ++index)
        if (particle && particleIndex[index] >= 0)
            updateParticle(&particle[particleIndex[index]]);
    initialized = true;
    return true;
}

// --- Births

bool RVEMITTER::updateParticle(RVPARTICLE *p) {
    p->energy = p->startEnergy = static_cast<float>(randomBelow(maxEnergy) / 100.0);
    p->color = Z3MVECTOR4D(colorStart.x, colorStart.y, colorStart.z, 1.0);
    p->size = static_cast<float>(randomBelow(maxParticleSize) / 10.0);
    p->spinSpeed = static_cast<float>(randomBelow(maxSpin));
    p->spin = spinning;
    switch (emitterType) {
    case 0:
        p->velocity = vectorOf([this](int) {
            const double backward = randomBelow(maxVelocity) / 10.0;
            return -backward + randomBelow(maxVelocity) / 10.0;
        });
        p->position = center;
        break;
    case 1:
        shoot(*p);
        placeOnPlane(*p);
        break;
    case 2:
        shoot(*p);
        placeOnDisc(*p);
        break;
    default:
        zlfLog("   [!] Unknown emitter tpye @ RVEMITTER::updateParticle\n");
    }
    return true;
}

// Along the up vector.
void RVEMITTER::shoot(RVPARTICLE &p) const {
    p.velocity = vectorOf([this](int component) {
        return static_cast<float>(randomBelow(maxVelocity)) * upVector[component];
    });
}

void RVEMITTER::placeOnPlane(RVPARTICLE &p) const {
    const double z = randomRatio() * 2 * sizeY - sizeY + center.z;
    const double x = randomRatio() * 2 * sizeX - sizeX + center.x;
    p.position.set(x, center.y, z);
}

// On purpose: the centre is subtracted, and its y does not count.
void RVEMITTER::placeOnDisc(RVPARTICLE &p) const {
    const double a = randomRatio() * (radius * 2.0) - radius;
    double b = radius == 0.0f ? 0.0 : std::sin(std::acos(a / radius)) * radius;
    if (std::rand() % 2 != 0)
        b = -b;
    const double z = randomRatio() * b - center.z;
    const double x = randomRatio() * a - center.x;
    p.position.set(x, 0, z);
}

// --- The drawing

bool RVEMITTER::render(void *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVEMITTER::render\n");
        return false;
    }
    if (!initialized)
        initialize();

    beginState(static_cast<const RVELEMENT *>(element)->getMatrix()->e, blendingSrc, blendingDst);
    const Facing facing;
    setTests();
    const bool hardware = hasHardwarePath();
    if (hardware)
        RVSHADER::emitter->render(nullptr);
    advanceAll(facing, hardware);
    if (RVTEXTURE *const image = texture.get())
        image->render(nullptr);
    drawArrays(hardware);
    endState();
    return true;
}

// Fills the arrays with the particles as they are now, and advances them. The compiler would load
// what does not change again for each particle, were it not in local variables.
void RVEMITTER::advanceAll(const Facing &facing, bool hardware) {
    const float f = RAVOLT::getFPSfactor();
    const double loss = f * 0.5;
    const Z3MVECTOR3D acceleration = gravity * f, end = colorEnd, delta = colorDelta;
    RVPARTICLE *const pool = particle;
    const unsigned int number = pool ? numberOfParticles : 0; // none: a copy outlived the engine
    for (unsigned int quad = 0; quad < number && particleIndex[quad] >= 0; ++quad) {
        RVPARTICLE &p = pool[particleIndex[quad]];
        p.velocity += acceleration;
        p.position += p.velocity * f;
        // On purpose: the size that is drawn grows as the energy falls, but not with the program.
        if (!hardware)
            facing.build(p, std::fabs(p.size - p.energy), vertexArray + 4 * quad);
        p.color = colorOf(p, end, delta);
        p.spin += f * p.spinSpeed;
        if (hardware) // on purpose: with the spin of the next frame
            storeHardware(quad, p);
        storeColor(p.color, colorArray + 16 * quad);
        p.energy = static_cast<float>(p.energy - loss);
        if (p.energy <= 0.0f)
            updateParticle(&p);
    }
}

// On purpose: without enough slots in the pool, the quads of an earlier emitter fill the number.
void RVEMITTER::drawArrays(bool hardware) const {
    RVOPENGL::vertexArrayOn();
    RVOPENGL::textureArrayOn();
    RVOPENGL::colorArrayOn();
    if (!hardware)
        RVOPENGL::normalArrayOff(); // that of a mesh may have fewer vertices
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, 0);
    glVertexPointer(4, GL_FLOAT, 0, vertexArray);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colorArray);
    glTexCoordPointer(2, GL_FLOAT, 0, uvArray);
    if (hardware) {
        RVOPENGL::normalArrayOn();
        glNormalPointer(GL_FLOAT, 0, positions);
        selectBothUnits(1);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, 0, uvSecondaryArray);
    }
    glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(numberOfParticles * 4));
    RVOPENGL::vertexArrayOff();
    RVOPENGL::colorArrayOff();
    if (hardware) {
        RVOPENGL::normalArrayOff();
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        selectBothUnits(0);
    }
    RVOPENGL::textureArrayOff();
}

// --- The file

bool RVEMITTER::load(const char *filename) {
    if (!filename) {
        zlfLog("   [!] Invalid params @ RVEMITTER::load\n");
        return false;
    }
    setNumberOfParticles(0);
    delete texture.get();
    texture.set(new (std::nothrow) RVTEXTURE);
    if (!texture.get()) {
        zlfLog("   [!] Out of memory @ RVEMITTER::load\n");
        return false;
    }
    std::vector<ravolt::EmitterElement> elements;
    if (!ravolt::readEmitterFile(filename, elements)) {
        zlfLog("   [!] Error while loading XML file: %s @ RVEMITTER::load\n", filename);
        return false;
    }
    unsigned int source = defaultBlendingSrc, destination = defaultBlendingDst;
    for (const ravolt::EmitterElement &element : elements) {
        if (element.key == EmitterKey::blendingSrc)
            source = static_cast<unsigned int>(element.integer);
        else if (element.key == EmitterKey::blendingDst)
            destination = static_cast<unsigned int>(element.integer);
        else
            apply(element);
    }
    colorDelta = colorEnd - colorStart;
    blendingSrc = source;
    blendingDst = destination;
    return true;
}

// On purpose: the limits are stored without those of their setters, and the centre is the node's
// position.
void RVEMITTER::apply(const ravolt::EmitterElement &element) {
    const Z3MVECTOR3D vector(element.x, element.y, element.z);
    const auto limit = static_cast<unsigned int>(element.integer);
    switch (element.key) {
    case EmitterKey::type:
        emitterType = element.integer;
        break;
    case EmitterKey::texture:
        if (mayLoad(element.text.c_str()))
            texture.get()->load(element.text.c_str());
        break;
    case EmitterKey::nbOfParticles:
        setNumberOfParticles(element.integer);
        break;
    case EmitterKey::maxEnergy:
        maxEnergy = limit;
        break;
    case EmitterKey::maxVelocity:
        maxVelocity = limit;
        break;
    case EmitterKey::maxAngle:
        maxAngle = element.x;
        break;
    case EmitterKey::emitterSize:
        sizeX = element.x;
        sizeY = element.y;
        break;
    case EmitterKey::radius:
        radius = element.x;
        break;
    case EmitterKey::maxParticleSize:
        maxParticleSize = limit;
        break;
    case EmitterKey::maxSpin:
        maxSpin = limit;
        break;
    case EmitterKey::spinning:
        spinning = element.x;
        break;
    case EmitterKey::center:
        setPosition(vector);
        break;
    case EmitterKey::gravity:
        gravity = vector;
        break;
    case EmitterKey::rotation:
        setRotation(vector);
        break;
    case EmitterKey::upVector:
        upVector = vector;
        break;
    case EmitterKey::colorStart:
        colorStart = vector;
        break;
    case EmitterKey::colorEnd:
        colorEnd = vector;
        break;
    case EmitterKey::blendingSrc:
    case EmitterKey::blendingDst:
        break; // stored at the end
    }
}

void RVEMITTER::storeHardware(unsigned int quad, const RVPARTICLE &p) {
    std::fill_n(positions + 4 * quad, 4, p.position);
    std::fill_n(uvSecondaryArray + 4 * quad, 4, Z3MVECTOR2D(p.size, p.spin));
}
