#pragma once

// While one lives, nothing reaches standard output.

namespace ravolt::tool {

class Silence {
  public:
    Silence();
    ~Silence();
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

  private:
    int output = -1; // where it went; -1 when it could not be turned aside
};

} // namespace ravolt::tool
