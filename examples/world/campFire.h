#pragma once

// A fire with smoke and sparks, and the light that it gives by night.

#include <string>

class RVEMITTER;
class RVLIGHT;

namespace world {

class CampFire {
  public:
    // From the files that `ravolt terrain --island` has made in this folder, which ends with '/'.
    bool load(const std::string &folder);
    void pass() const;
    void passLight(float seconds) const; // flickers with the time

  private:
    RVEMITTER *flames = nullptr, *smoke = nullptr, *sparks = nullptr;
    RVLIGHT *light = nullptr;
};

} // namespace world
