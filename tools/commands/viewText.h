#pragma once

// Text on the screen of a viewer, in the engine's built-in letters, above the frame.

#include <string>
#include <utility>
#include <vector>

namespace ravolt::tool {

// What is named, and what it does or is: two columns of a panel.
using TextRows = std::vector<std::pair<std::string, std::string>>;

// The same for a terminal.
std::string printed(const TextRows &rows);

class ScreenText {
  public:
    void toggleHelp() { help = !help; }
    void toggleInformation() { information = !information; }
    bool isShowingHelp() const { return help; }
    bool isShowingInformation() const { return information; }

    // One line that is shown until another one, or an empty one, replaces it.
    void setMessage(const std::string &line) { message = line; }

    // Draws what is shown, in a 2D block of its own: after the frame, and after pictures of it.
    void draw(const TextRows &keys, const TextRows &facts) const;

  private:
    bool help = false, information = false;
    std::string message;
};

} // namespace ravolt::tool
