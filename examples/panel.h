#pragma once

#include <string>

class RVNODE;
class RVHSCROLLBAR;
struct Example;

// The control panel of the demo, media/panel.xml: a switch for each effect, sliders, a text field
// and a button for pictures, a frame counter, and a text of help.
class Panel {
  public:
    // Loads the file, with font.tga and font.txt beside it. False when it cannot be loaded; the log
    // says why.
    bool load(const char *file);

    // Passes on pointer and keys of the last frame and shows the frame rate. To be called once a
    // frame, after showFrame.
    void update(Example &example);

    // Shows this rate in place of the measured one.
    void fixRate(float rate);

    // Moves the sliders and the switches as a user would, for a `progress` from 0 to 1; at its end
    // all is as in the beginning.
    void operate(float progress);

    // What is set; all effects are on initially.
    bool isOn(const char *name) const; // a switch
    float getBloomFactor() const;      // 0 to 2
    float getFocusFactor() const;      // 0.5 to 2
    std::string takePictureName();     // empty unless the button was pressed

    // The node to pass in the 2D block, in pixels of the window.
    RVNODE *getNode() const { return root; }

  private:
    RVHSCROLLBAR *slider(const char *name) const;
    void showRate(float rate);

    RVNODE *root = nullptr;
    std::string picture;
    float time = 0; // since the rate was shown
    int frames = 0; // since then
    bool rateFixed = false;
};
