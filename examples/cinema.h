#pragma once

class RVNODE;
class RVTEXTURE;
class RVVIDEO;

// A video as scripts/makeVideo.sh makes it, 320 by 240 pixels and 5 seconds, on a mesh, in a
// loop. Its file remains open while the program runs.
class Cinema {
  public:
    // Loads the video; prints a message and shows black if that fails.
    explicit Cinema(const char *file);

    // Shows the video on the mesh of this name. The mesh must have matching texture coordinates:
    // the picture is 320 of 512 texels wide and 240 of 256 high, its first row at V = 0.
    void showOn(RVNODE *scene, const char *mesh);

    void advance(float seconds);

  private:
    RVVIDEO *video;
    RVTEXTURE *texture;
    float stepsPerSecond = 0;
    float pendingSteps = 0; // steps
};
