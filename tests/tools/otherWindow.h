#pragma once

// The window of another program on the X server: its title, and simulated keys.

#include <memory>
#include <string>

namespace tool_test {

class OtherWindow {
  public:
    // Waits some seconds for a window whose title has `part`.
    explicit OtherWindow(const std::string &part);
    ~OtherWindow();
    OtherWindow(const OtherWindow &) = delete;
    OtherWindow &operator=(const OtherWindow &) = delete;

    bool isThere() const;
    // Presses and releases. Names are X11's: "a", "Tab", "Prior".
    void press(const std::string &key);
    // Waits some seconds for that title; returns the last one seen.
    std::string titleOnceItIs(const std::string &title) const;
    // Waits some seconds; whether the window has been closed.
    bool isClosed() const;

  private:
    struct Connection;
    std::unique_ptr<Connection> connection;
};

} // namespace tool_test
