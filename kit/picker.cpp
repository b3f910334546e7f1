// RAVOLT::select finds the node: it draws the last 3D block once more into one pixel of what that
// block was drawn into, and counts rows from one below the window's. What is done here is to find
// the pixel and the numbers by which select arrives at it, to restore the pixel, which select does
// not where target 0 is larger than the window, and to find the node of an identifier. The depth
// that the drawing has left in the pixel gives the point.

#include "ravolt/kit/picker.h"

#include "kit/surface.h"
#include "kit/view.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace ravolt::kit {

namespace {

// Of a surface, as OpenGL counts: from the lower left.
struct Pixel {
    int x = 0, y = 0;
};

bool isInWindow(int x, int y) {
    return x >= 0 && y >= 0 && x < RVSETTINGS::getSDLWindowX() && y < RVSETTINGS::getSDLWindowY();
}

// A target covers the whole window.
Pixel pixelOf(const Surface &surface, int x, int y) {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    const auto scaled = [](int position, int from, int to) {
        return static_cast<int>((static_cast<long long>(2 * position) + 1) * to / (2LL * from));
    };
    return {scaled(x, width, surface.width), scaled(height - 1 - y, height, surface.height)};
}

// The frame's transforms, from the eye and from the world to the pixels and depths of its surface.
struct View {
    Transform eyeToClip, worldToClip; // inverted below
    int viewport[4] = {};
    bool isValid = false;

    View() {
        float projection[16];
        glGetFloatv(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        eyeToClip = Transform::from(projection);
        worldToClip = Transform::from(RVCAMERA::getCameraMatrix()->e) * eyeToClip;
        isValid = eyeToClip.invert() && worldToClip.invert() && viewport[2] > 0 && viewport[3] > 0;
    }

    // Of the middle of a pixel, at a depth from 0 to 1.
    Point pointOf(const Transform &inverse, const Pixel &pixel, double depth) const {
        return inverse.apply({2 * (pixel.x + 0.5 - viewport[0]) / viewport[2] - 1,
                              2 * (pixel.y + 0.5 - viewport[1]) / viewport[3] - 1, 2 * depth - 1});
    }
    Point inEye(const Pixel &pixel, double depth) const { return pointOf(eyeToClip, pixel, depth); }
    // The origin of a node's space.
    static Point fromEye(const Z3MMATRIX &nodeToEye) {
        Transform toWorld = Transform::from(RVCAMERA::getCameraMatrix()->e);
        toWorld.invert();
        return (Transform::from(nodeToEye.e) * toWorld).apply({});
    }
    Point inWorld(const Pixel &pixel, double depth) const {
        return pointOf(worldToClip, pixel, depth);
    }
};

Z3MVECTOR3D floats(const Point &p) { return Z3MVECTOR3D(p.x, p.y, p.z); }

Ray rayThrough(const View &view, const Pixel &pixel) {
    if (!view.isValid)
        return {};
    const Point from = view.inWorld(pixel, 0), whole = view.inWorld(pixel, 1) - from;
    const double all = length(whole);
    return {floats(from), floats(whole * (1 / all)), static_cast<float>(all)};
}

// Colour and depth of a pixel. With SDL 1.2's interface on SDL 2 the depth of a window with
// multisampling cannot be read: it is 0 then.
struct Content {
    float color[4] = {};
    float depth = 1;

    explicit Content(const Pixel &pixel) {
        readPixels(pixel.x, pixel.y, 1, 1, GL_RGBA, GL_FLOAT, color);
        readPixels(pixel.x, pixel.y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    }

    // With depth test on, texturing, lighting, blending and programs off.
    void write(const Surface &surface, const Pixel &pixel, bool withDepth) const {
        glViewport(0, 0, surface.width, surface.height);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glOrtho(0, surface.width, 0, surface.height, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
        // Not at the middle of the pixel, which may be rounded to the next one.
        glRasterPos2f(static_cast<float>(pixel.x) + 0.25f, static_cast<float>(pixel.y) + 0.25f);
        glDisable(GL_DEPTH_TEST);
        glDrawPixels(1, 1, GL_RGBA, GL_FLOAT, color); // not clamped in a target of floats
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_ALWAYS);
        glColorMask(0, 0, 0, 0);
        if (withDepth)
            glDrawPixels(1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        glColorMask(1, 1, 1, 1);
        glDepthFunc(GL_LESS);
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
    }
};

// The numbers by which select arrives at the pixel.
unsigned int select(const Pixel &pixel) {
    const int height = RVSETTINGS::getSDLWindowY();
    if (RVSETTINGS::isSDLLandscape())
        return RAVOLT::select(height - pixel.y, height - pixel.x);
    return RAVOLT::select(pixel.x, height - pixel.y);
}

// In wireframe mode faces are drawn as lines until begin2D.
class FilledFaces {
  public:
    FilledFaces() {
        glGetIntegerv(GL_POLYGON_MODE, modes);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    }
    ~FilledFaces() {
        glPolygonMode(GL_FRONT, static_cast<GLenum>(modes[0]));
        glPolygonMode(GL_BACK, static_cast<GLenum>(modes[1]));
    }
    FilledFaces(const FilledFaces &) = delete;
    FilledFaces &operator=(const FilledFaces &) = delete;

  private:
    GLint modes[2] = {GL_FILL, GL_FILL};
};

// The bits of an identifier that colours of this depth keep.
unsigned int keptBits() {
    const int depth = RVSETTINGS::getSDLColorDepth();
    return depth == 16 ? 0xffffu : depth == 32 ? 0xffffffffu : 0xffffffu;
}

std::vector<RVNODE *> nodesOf(unsigned int id) {
    std::vector<RVNODE *> nodes;
    for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode()) {
        const bool pickable =
            node->getType() == RV_NODE_TYPE_MESH || node->getType() == RV_NODE_TYPE_CUSTOM;
        const unsigned int own = node->getAuxId() ? node->getAuxId() : node->getId();
        if (pickable && (own & keptBits()) == (id & keptBits()))
            nodes.push_back(node);
    }
    return nodes;
}

// A part of a line in the eye's space on which the face is looked for: all of it, or around the
// point of the depth.
struct Search {
    Point from, to;
    double low = 0, high = 1; // of the way
};

struct FaceHit {
    int face = -1;
    double along = 0; // part of the way
};

// The nearest face of a mesh. The matrix is that of its last pass.
FaceHit faceOn(const Search &search, RVMESH &mesh) {
    Transform toMesh = Transform::from(mesh.getCachedMatrix()->e);
    if (mesh.isSkinned() || !mesh.getVertexPtr() || !toMesh.invert())
        return {};
    const Point origin = toMesh.apply(search.from), direction = toMesh.apply(search.to) - origin;
    FaceHit nearest;
    for (unsigned int face = 0; face < mesh.getNumberOfFaces(); ++face) {
        Point corners[3];
        for (int i = 0; i < 3; ++i) {
            const Z3MVECTOR3D &v = mesh.getVertexPtr()[mesh.getFacePtr()[face].vertex[i]];
            corners[i] = {static_cast<double>(v.x), static_cast<double>(v.y),
                          static_cast<double>(v.z)};
        }
        const double along = intersect(corners, origin, direction);
        if (along >= search.low && along <= search.high &&
            (nearest.face < 0 || along < nearest.along))
            nearest = {static_cast<int>(face), along};
    }
    return nearest;
}

RVMESH *meshOf(RVNODE *node) {
    return node->getType() == RV_NODE_TYPE_MESH ? static_cast<RVMESH *>(node) : nullptr;
}

// Of the nodes that share the identifier the one with the nearest face, or else the first one.
FaceHit findNode(unsigned int id, const Search &search, Pick &pick) {
    FaceHit nearest;
    for (RVNODE *node : nodesOf(id)) {
        RVMESH *mesh = meshOf(node);
        const FaceHit hit = mesh ? faceOn(search, *mesh) : FaceHit();
        const bool isNearer = hit.face >= 0 && (nearest.face < 0 || hit.along < nearest.along);
        if (pick.node && !isNearer)
            continue;
        pick.node = node;
        pick.material = mesh ? mesh->getMaterial() : nullptr;
        pick.face = hit.face;
        nearest = hit;
    }
    return nearest;
}

// The point is that of the depth; where that cannot be read, that of the face, or else the node's
// origin.
void findPoint(const View &view, const Pixel &pixel, unsigned int id, double depth, Pick &pick) {
    constexpr double tolerance = 5e-3; // of the distance: a depth buffer is coarse far away
    const bool hasDepth = depth > 0;
    const Point eye = view.inEye(pixel, 0), near = view.inWorld(pixel, 0);
    Point point = view.inWorld(pixel, hasDepth ? depth : 1);
    Search search = {eye, view.inEye(pixel, hasDepth ? depth : 1)};
    if (hasDepth) {
        search.low = 1 - tolerance;
        search.high = 1 + tolerance;
    }
    const FaceHit hit = findNode(id, search, pick);
    if (!pick.node)
        return;
    if (!hasDepth && hit.face >= 0)
        point = near + (point - near) * hit.along;
    else if (!hasDepth)
        point = View::fromEye(*pick.node->getCachedMatrix());
    pick.point = floats(point);
    pick.distance = static_cast<float>(length(point - near));
}

} // namespace

void Picker::setGround(std::function<float(float, float)> height, float step) {
    ground = std::move(height);
    groundStep = step > 0 ? step : 1;
}

Ray Picker::rayAt(int x, int y) {
    if (!RAVOLT::isActive() || !isInWindow(x, y))
        return {};
    const BindingScope restore;
    const Surface surface = bindDrawnSurface();
    return rayThrough(View(), pixelOf(surface, x, y));
}

Pick Picker::pick(int x, int y) const {
    if (!RAVOLT::isActive()) {
        zlfLog("   [!] Engine not running @ Picker::pick\n");
        return {};
    }
    if (!isInWindow(x, y))
        return {};
    const BindingScope restore;
    const Surface surface = bindDrawnSurface();
    const Pixel pixel = pixelOf(surface, x, y);
    const View view;

    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS); // select draws with textures that are still on
    const Content before(pixel);
    const FilledFaces filled;
    const unsigned int id = select(pixel);
    const double depth = static_cast<double>(Content(pixel).depth);
    before.write(surface, pixel, depth > 0);

    Pick pick;
    const Ray ray = rayThrough(view, pixel);
    if (id && view.isValid)
        findPoint(view, pixel, id, depth, pick);
    float distance;
    if (hitGround(ray, pick.node ? pick.distance : ray.length, distance)) {
        pick = {};
        pick.isGround = true;
        pick.point = ray.origin + ray.direction * distance;
        pick.distance = distance;
    }
    return pick;
}

// The first step that ends below the ground, and in it the point by bisection.
bool Picker::hitGround(const Ray &ray, float limit, float &distance) const {
    if (!ground || !(ray.length > 0))
        return false;
    const auto above = [&](float along) {
        const Z3MVECTOR3D point = ray.origin + ray.direction * along;
        return point.y - ground(point.x, point.z);
    };
    constexpr float maxSteps = 65536;
    const float step = std::max(groundStep, limit / maxSteps);
    float last = 0, lastAbove = above(0);
    for (float number = 1; last < limit; ++number) {
        const float next = std::min(number * step, limit), nextAbove = above(next);
        if (lastAbove > 0 && nextAbove <= 0) {
            float high = last, low = next;
            for (int i = 0; i < 24; ++i) {
                const float middle = (high + low) / 2;
                (above(middle) > 0 ? high : low) = middle;
            }
            distance = low;
            return true;
        }
        last = next;
        lastAbove = nextAbove;
    }
    return false;
}

} // namespace ravolt::kit
