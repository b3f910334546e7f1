#pragma once

// A lie about files, for the tests of readers that read a file whole.

namespace ravolt::test {

// While one lives, every fread reads one byte less than it was asked for.
class ShortReads {
  public:
    ShortReads() { active = true; }
    ~ShortReads() { active = false; }
    ShortReads(const ShortReads &) = delete;
    ShortReads &operator=(const ShortReads &) = delete;

    static bool active;
};

} // namespace ravolt::test
