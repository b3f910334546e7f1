#pragma once

// What the examples share and what is not about the engine: the command line, the window's events,
// and pictures of the frame.
//
//   EXAMPLE [--frames N] [--picture FILE.png] [--width N] [--draft] FILE ...
//
// With --frames the program ends by itself after N frames. With --picture it writes the last one;
// a "%03d" in the name makes it write them all, and a "%s" those that have a label. With
// --width the stage's window has so many columns, 240 to 1920; the smaller it is, the coarser are
// its shadows. --draft is --width 240, for quick runs.

#include <ravolt/kit/input.h>
#include <ravolt/kit/window.h>

#include <initializer_list>
#include <string>
#include <vector>

class RVNODE;
class RVSETTINGS;

// The part of a file's name up to and including the last slash; empty if there is none.
std::string folderOf(const std::string &file);

struct Example {
    int frames = 0;                  // 0: until the window is closed
    const char *picture = nullptr;   // NULL: none
    int width = 960;                 // of the stage's window, in pixels
    std::vector<const char *> files; // as many as the constructor requires

    int frame = 0;               // frames that have been shown
    const char *label = nullptr; // of the frame's picture; NULL: the frame has none

    // The events of the frame. Escape closes the window, Alt and Enter toggle the full screen, and
    // the user may resize a resizable window.
    ravolt::kit::Input input;
    ravolt::kit::Window window;

    // Reads the command line; `required` are the names of the required files in the usage line.
    // Ends the program with that line when the command line is invalid, and with advice when there
    // is no display.
    Example(int argc, char **argv, std::initializer_list<const char *> required = {});

    // Starts the engine with these settings, and loads the scene that is the first of `files`, with
    // the textures beside it. NULL when that fails; the log says why.
    RVNODE *openScene(RVSETTINGS &settings) const;

    // To be called once after each RAVOLT::swap: handles the window's events and writes the picture
    // of the frame, if it has one. False when the program is to end.
    bool next();

    // Seconds that the last frame took. A run with --frames counts a thirtieth for each, so that
    // its pictures are the same every time.
    float seconds() const;

    // Writes the frame that has just been shown into a PNG file.
    static void writePicture(const char *path);

  private:
    void writeFramePicture(bool last) const;
};
