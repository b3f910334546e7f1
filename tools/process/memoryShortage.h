#pragma once

// Where the engine's memory runs out it logs a line, and continues without what it has no memory
// for: a picture may lack something then.

#include <fstream>
#include <string>

namespace ravolt::tool {

class MemoryShortage {
  public:
    // Reads the engine's log of this run; see LogRedirect.
    MemoryShortage();

    // The engine's words for the next shortage that it has logged, such as "Out of memory for
    // a.tga"; empty if there is no further one so far.
    std::string next();

  private:
    std::ifstream log;
    std::string part; // of a line whose end is not written yet
};

} // namespace ravolt::tool
