#pragma once

// Reads JSON from front to back. Whoever reads passes over what he does not look for; reading ends
// at the first thing that is no JSON.

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace ravolt::tool {

class Json {
  public:
    explicit Json(const std::string &json)
        : start(json.data()), at(json.data()), end(json.data() + json.size()) {}

    // Calls `visit` with each key of the object that comes next, the cursor at the value, which
    // it has to take or skip.
    template <class Visit> void eachMember(const Visit &visit) {
        if (!take('{'))
            return skip();
        while (at < end && !take('}')) {
            const std::string key = text();
            if (!take(':'))
                return stop();
            visit(key);
            take(',');
        }
    }

    // Likewise with the number of each item of the array that comes next.
    template <class Visit> void eachItem(const Visit &visit) {
        if (!take('['))
            return skip();
        for (std::size_t index = 0; at < end && !take(']'); ++index) {
            const char *const before = at;
            visit(index);
            if (at == before)
                return stop();
            take(',');
        }
    }

    // Three numbers; false for anything else, which is skipped.
    bool vector(std::array<float, 3> &numbers);
    // Not below 0; false for anything else, which is skipped.
    bool number(std::size_t &value);
    // A text with its escapes left in; nothing for anything else.
    std::string text();
    bool isText();
    // Over the value that comes next.
    void skip();

    // In bytes: where the next value begins, and where the last one has ended.
    std::size_t next() {
        blanks();
        return last();
    }
    std::size_t last() const { return static_cast<std::size_t>(at - start); }

  private:
    void blanks();
    bool take(char expected);
    void stop() { at = end; }

    const char *start;
    const char *at;
    const char *end;
};

// A text of JSON with its escapes replaced.
std::string unescaped(const std::string &text);

} // namespace ravolt::tool
