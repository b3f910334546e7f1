#pragma once

#include <cstddef>
#include <string>
#include <vector>

union SDL_Event;

namespace ravolt::kit {

class Overlay;

// The times of the last frames, and numbers made of them: what a frame takes on average, in most
// frames, and in the slowest of a hundred. A key shows and hides them in the window.
class FrameStatistics {
  public:
    // Over the last `capacity` frames (at least 1). `key` is an SDLKey; the default is SDLK_F3.
    explicit FrameStatistics(std::size_t capacity = 240, int key = 284);

    // The duration of a frame in seconds, as RAVOLT::getFPSfactor. What is no positive number is
    // ignored.
    void add(float seconds);
    void clear();
    std::size_t getNumberOfFrames() const { return times.size(); }

    // Seconds; 0 while there are no frames.
    float getMean() const;
    float getMedian() const;
    // The time that so many percent of the frames do not exceed: the time of nearest rank, 0 for
    // the shortest to 100 for the longest.
    float getPercentile(float percent) const;
    // Frames per second: the inverse of the mean.
    float getRate() const;

    // Two lines: rate, and mean, median and 99th percentile in milliseconds.
    std::string getText() const;

    // Shows or hides at the key's press; true if the event was that.
    bool handle(const SDL_Event &event);
    void show(bool shown) { isVisible = shown; }
    bool isShown() const { return isVisible; }

    // Draws the text with its upper left corner at that pixel, in a 2D block. False when it is
    // hidden, and when the overlay cannot draw.
    bool draw(Overlay &overlay, int x = 8, int y = 8) const;

  private:
    std::size_t capacity;
    int key;
    std::vector<float> times;
    std::size_t oldest = 0; // the next to be replaced, once there are `capacity` times
    bool isVisible = false;
};

} // namespace ravolt::kit
