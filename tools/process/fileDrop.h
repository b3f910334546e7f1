#pragma once

// Files that are dropped on the window of the tool, from a file manager for example. X11 alone: on
// other window systems there are none.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <vector>

union SDL_Event;

namespace ravolt::tool {

// The receiving side of XDND, version 5. Create it while there is a window.
class FileDrop {
  public:
    FileDrop();
    ~FileDrop();
    FileDrop(const FileDrop &) = delete;
    FileDrop &operator=(const FileDrop &) = delete;

    // Call it once a frame: announces the window, also one that has replaced the former one.
    void announce();
    // True for an event of the window system, which is none for others.
    bool handle(const SDL_Event &event);
    // The files that were dropped since the last call.
    std::vector<std::filesystem::path> take();

  private:
    class Target;
    std::unique_ptr<Target> target;
    std::vector<std::filesystem::path> dropped;
};

} // namespace ravolt::tool
