#pragma once

// Additional: the engine without a display and without a GPU.

class RVSETTINGS;

namespace ravolt::test {

// Makes the recorder silent and starts the engine; its end frees the engine, with all objects that
// belong to it, and resets the recorder. One at a time. What is to be simulated at the start (a
// hidden extension, a failure) is set in the recorder before.
class SilentEngine {
  public:
    // With the default settings, or with these.
    SilentEngine();
    explicit SilentEngine(RVSETTINGS &settings);
    ~SilentEngine();
    SilentEngine(const SilentEngine &) = delete;
    SilentEngine &operator=(const SilentEngine &) = delete;

    // False when the engine has not started; its log says why.
    bool isActive() const { return active; }

  private:
    bool active = false;

    void start(RVSETTINGS *settings);
};

} // namespace ravolt::test
