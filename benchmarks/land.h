#pragma once

// A terrain of 64 by 64 chunks, made by the writer of `ravolt terrain`.

#include "benchScene.h"
#include "jobs.h"

#include "tools/terrain/chunkLists.h"

#include <vector>

class RVSKYDOME;
class RVTERRAIN;
class RVTERRAIN_CHUNK;
class RVWATER;

namespace bench {

constexpr const char *landConfig = "bench_land.xml", *landGeometry = "bench_land.geo";

// Makes the files in the working directory, unless they are there.
void writeLand();
void removeLand();

class Land : public Job {
  public:
    Land();
    ~Land() override;

    void drawByEngine() override;
    void drawByHand() override;
    void startHand() override;

    static constexpr int passes = 3; // reflection, refraction, screen
    static const char *const passNames[passes];

    // Chunks that a pass draws; known after startHand.
    std::size_t drawnIn(int pass) const { return drawn[pass].size(); }

    // The choice of levels and the three tests of all chunks, as the engine's frame makes them.
    void chooseAll() const;

  private:
    // A chunk in a pass; its edges at coarser neighbours have bits.
    struct Drawn {
        unsigned int buffer, level, coarser;
    };
    struct List {
        std::size_t offset;
        int count;
    };

    Scene scene;
    RVTERRAIN *terrain;
    float formerFarPlane;
    RVSKYDOME *sky = nullptr;
    RVWATER *water = nullptr;
    std::vector<RVTERRAIN_CHUNK *> chunks;
    std::vector<unsigned int> buffers; // of the chunks by hand; 0 for those that no pass draws
    std::vector<Drawn> drawn[passes];
    unsigned int indexBuffer = 0, coordBuffer = 0;
    std::vector<List> bodies,
        edges; // by level; by level, edge and whether the neighbour is coarser

    void choose(int pass) const;
    void record(int pass);
    void uploadLists();
    void uploadChunks();
    void bindProgram(float inv) const;
    void drawChunks(int pass, float inv) const;
    void drawSky(float scaleY) const;
};

} // namespace bench
