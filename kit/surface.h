#pragma once

class RVFBO;

namespace ravolt::kit {

// What is drawn into, and its size in pixels.
struct Surface {
    RVFBO *target = nullptr; // NULL: the window
    int width = 0, height = 0;
};

// What is bound.
Surface boundSurface();

// Binds what the 3D block of a frame is drawn into with the effects that are on now.
Surface bindDrawnSurface();

// glReadPixels of what is bound, also of a window with multisampling, whose samples it averages.
void readPixels(int x, int y, int width, int height, unsigned int format, unsigned int type,
                void *pixels);

// Restores, at the end of its lifetime, what was bound, and the viewport.
class BindingScope {
  public:
    BindingScope();
    ~BindingScope();
    BindingScope(const BindingScope &) = delete;
    BindingScope &operator=(const BindingScope &) = delete;

  private:
    RVFBO *target;
    int viewport[4] = {};
};

} // namespace ravolt::kit
