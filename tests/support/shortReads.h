#pragma once

// Simulated short reads, for the tests of readers that read a whole file.

namespace ravolt::test {

// While one is alive, every fread reads one element less than requested.
class ShortReads {
  public:
    ShortReads() { active = true; }
    ~ShortReads() { active = false; }
    ShortReads(const ShortReads &) = delete;
    ShortReads &operator=(const ShortReads &) = delete;

    static bool active;
};

} // namespace ravolt::test
