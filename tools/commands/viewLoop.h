#pragma once

// What all viewers have in common: the window, the keys of help, information and files, dropped
// files, and the loop of the frames.

#include "tools/commands/showOptions.h"
#include "tools/commands/viewText.h"
#include "tools/process/fileDrop.h"
#include "tools/stage/drawable.h"
#include "tools/stage/engine.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <ravolt/kit/frameStatistics.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/window.h>
#include <string>
#include <vector>

namespace ravolt::tool {

struct ViewOptions : ShowOptions {
    bool spin = false;              // turns by itself
    double seconds = 0;             // ends by itself after that time; 0: when the window is closed
    std::filesystem::path pictures; // the folder of screenshots
};

// A row of a table of keys: what is pressed, and what the help says of it. Keys that a camera reads
// have no action.
template <class Viewer> struct ViewKey {
    int key; // an SDLKey
    const char *name;
    std::string what;
    std::function<void(Viewer &)> action;
};

template <class Viewer> TextRows rowsOf(const std::vector<ViewKey<Viewer>> &keys) {
    TextRows rows;
    for (const ViewKey<Viewer> &key : keys)
        rows.emplace_back(key.name, key.what);
    return rows;
}

// Whether the table has the key, whose action is then done.
template <class Viewer>
bool pressOf(const std::vector<ViewKey<Viewer>> &keys, int pressed, Viewer &viewer) {
    for (const ViewKey<Viewer> &key : keys)
        if (key.action && key.key == pressed) {
            key.action(viewer);
            return true;
        }
    return false;
}

// What lasts from one file to the next one.
class ViewSession {
  public:
    explicit ViewSession(double limit);

    // Opens the window, or changes the title of the one that is open.
    Engine &open(const ShowOptions &options, WindowSize size);
    static void setTitle(const std::filesystem::path &file);
    bool isOpen() const { return engine != nullptr; }
    // Deletes what was loaded into the window.
    void unload();

    unsigned int numberOfTextures() const { return engine->numberOfTextures(); } // of the file
    bool isOver() const; // the time limit has passed

    kit::Input input;
    kit::Window window;
    kit::FrameStatistics statistics;
    ScreenText text;
    bool smooth = false;            // edges
    std::unique_ptr<FileDrop> drop; // while there is a window
    std::vector<std::filesystem::path> dropped;

  private:
    std::unique_ptr<Engine> engine;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    double seconds;
};

// "ravolt - FILE"
std::string titleOf(const std::filesystem::path &file);

// A line on standard output.
void sayLine(const std::string &line);

// Why a viewer has ended.
enum class Ending { none, closed, nextFile, previousFile, dropped };

class ViewLoop {
  public:
    ViewLoop(ViewSession &common, std::string file) : session(common), name(std::move(file)) {}
    virtual ~ViewLoop() = default;
    ViewLoop(const ViewLoop &) = delete;
    ViewLoop &operator=(const ViewLoop &) = delete;

    Ending run();

    // Keys of every viewer.
    static const std::vector<ViewKey<ViewLoop>> &commonKeys();

  protected:
    // Moves on by so many seconds; whether the frame is another one now.
    virtual bool advance(double passed) = 0;
    virtual void draw() = 0;  // without RAVOLT::swap
    virtual void onDrawn() {} // before the text is drawn over it
    // Shifts what is drawn by parts of a pixel; false for what has no edges to be smoothed.
    virtual bool shift(const PicturePart &) { return false; }
    // Whether the key had a meaning. Called again while a key is held.
    virtual bool press(int) { return false; }
    virtual TextRows help() const = 0;
    virtual TextRows information() const { return {}; }
    // Whether letters are keys, and not what is typed.
    virtual bool hasLetterKeys() const { return true; }

    void close() { ending = Ending::closed; }
    bool hasDrawn() const { return drawn; } // in the last turn of the loop

    ViewSession &session;

  private:
    bool take(const SDL_Event &event);
    void takeDropped();
    void drawFrame(double passed);
    void drawSmooth();
    void toggleSmooth();
    void toggleHelp();
    TextRows allFacts() const;

    std::string name;
    Ending ending = Ending::none;
    bool changed = true, drawn = false;
};

// Shows a message instead of a file that cannot be shown.
class EmptyViewer : public ViewLoop {
  public:
    using ViewLoop::ViewLoop;

  private:
    bool advance(double) override { return false; }
    void draw() override;
    TextRows help() const override { return rowsOf(commonKeys()); }
};

} // namespace ravolt::tool
