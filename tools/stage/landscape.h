#pragma once

// A terrain under its sky, lit by a sun, seen from a point that the user moves.

#include "tools/common/algebra.h"
#include "tools/stage/drawable.h"
#include "tools/stage/effects.h"

#include <filesystem>
#include <string>
#include <vector>

class RVCAMERA;
class RVHELPER;
class RVLIGHT;
class RVNODE;
class RVTERRAIN;
class RVTERRAIN_CHUNK;

namespace ravolt::tool {

class Engine;

// A terrain's files.
struct TerrainFiles {
    std::filesystem::path config, folder; // the path of the geometry is relative to `folder`
    std::filesystem::path geometry;
    std::string sky;             // its texture; empty for none
    double width = 0, depth = 0; // along X and Z
};

// Reads the configuration and the head of the geometry. The path of the geometry leads from the
// configuration's folder, one of the folders above it, or the working folder, whichever is the
// first. Throws Failure where it leads to no geometry.
TerrainFiles findTerrain(const std::filesystem::path &config);

class Landscape : public Drawable {
  public:
    static constexpr double defaultYaw = 35, defaultPitch = 15;

    // Loads the terrain. Throws Failure. Initially it is seen as a whole.
    Landscape(Engine &engine, const TerrainFiles &files);

    void setEye(const Vector &point) { eye = point; }
    const Vector &getEye() const { return eye; }
    // Turns the eye to a point; unchanged for that of the eye.
    void lookAt(const Vector &point);
    const Vector &getTarget() const { return target; }
    // The eye of an orbit about the target: degrees round it and above it, and how much nearer
    // than where the whole terrain is seen.
    void orbit(double yaw, double pitch, double zoom);

    // Along the ground's diagonal.
    double size() const { return std::hypot(ground.width, ground.depth); }

    void setWireframe(bool on) { wireframe = on; }
    bool isWireframe() const { return wireframe; }
    // A box around each chunk that is seen, in the colour of its level.
    void setChunks(bool on) { showChunks = on; }
    bool isShowingChunks() const { return showChunks; }
    // "chunks: 12 of 16, level 0 green 4, ..." of the last frame.
    std::string chunkCounts() const;

    void draw() override;
    // Without those of lights and of a floor.
    void setEffects(const Effects &wanted) override { effects = wanted; }
    const Effects &getEffects() const override { return effects; }
    void setPart(const PicturePart &shown) override { part = shown; }

  private:
    double farthest() const { return 3 * size(); } // of what is seen
    void addToGround(const RVTERRAIN_CHUNK &chunk);
    void setBackground();
    void shine();
    void aim();
    void applyEffects();
    void passChunks();

    TerrainFiles ground;
    RVTERRAIN *terrain;
    RVLIGHT *sun;
    RVCAMERA *camera;
    std::vector<RVHELPER *> boxes; // of the chunks, once they are shown
    double highest = 0;
    Vector eye, target;
    Effects effects;
    PicturePart part;
    bool wireframe = false, showChunks = false;
    bool nudged = false; // see aim
};

} // namespace ravolt::tool
