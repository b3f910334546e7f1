#pragma once

// Loads that are compared with the tool's inspection, in the programs that loadVerdicts.cpp is part
// of.

namespace ravolt::test {

// While one exists, loads are not compared: they fail for another reason than the file.
class UncomparedLoads {
  public:
    UncomparedLoads() { ++count; }
    ~UncomparedLoads() { --count; }
    UncomparedLoads(const UncomparedLoads &) = delete;
    UncomparedLoads &operator=(const UncomparedLoads &) = delete;

    static bool exist() { return count > 0; }

  private:
    static inline unsigned int count = 0;
};

} // namespace ravolt::test
