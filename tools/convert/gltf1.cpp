// The reader below passes over what it does not look for; assimp has read the file before, so it is
// JSON. It ends at the first thing that is not, and the rest of the nodes stays as assimp has it.

#include "tools/convert/gltf1.h"

#include <algorithm>
#include <array>
#include <assimp/scene.h>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace ravolt::tool {

namespace {

class Json {
  public:
    explicit Json(const std::string &json) : at(json.data()), end(json.data() + json.size()) {}

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

    // Three numbers; false for anything else, which is skipped.
    bool vector(std::array<float, 3> &numbers) {
        blanks();
        const char *const start = at;
        bool good = take('[');
        for (std::size_t i = 0; i < 3 && good; ++i) {
            blanks();
            const auto [rest, error] = std::from_chars(at, end, numbers[i]);
            good = error == std::errc();
            at = rest;
            good = good && take(i < 2 ? ',' : ']');
        }
        if (!good) {
            at = start;
            skip();
        }
        return good;
    }

    // Over the value that comes next.
    void skip() {
        int depth = 0;
        do {
            blanks();
            if (at == end)
                return;
            if (*at == '"') {
                text();
            } else if (std::strchr("{[", *at)) {
                ++depth, ++at;
            } else if (std::strchr("}]", *at)) {
                --depth, ++at;
            } else if (std::strchr(",:", *at)) {
                ++at;
            } else {
                at =
                    std::find_if(at, end, [](char c) { return std::strchr(",:{}[]\" \t\r\n", c); });
            }
        } while (depth > 0);
    }

  private:
    void blanks() {
        at = std::find_if(at, end, [](char c) { return !c || !std::strchr(" \t\r\n", c); });
    }

    bool take(char expected) {
        blanks();
        if (at == end || *at != expected)
            return false;
        ++at;
        return true;
    }

    // A text with its escapes left in; names of nodes that have some are not found then.
    std::string text() {
        if (!take('"'))
            return stop(), "";
        const char *const start = at;
        while (at < end && *at != '"')
            at += *at == '\\' && at + 1 < end ? 2 : 1;
        const std::string result(start, at);
        take('"');
        return result;
    }

    void stop() { at = end; }

    const char *at;
    const char *end;
};

// The file's JSON, also out of a binary file.
std::string jsonOf(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>()};
    constexpr std::size_t header = 20;
    if (bytes.size() < header || bytes.compare(0, 4, "glTF") != 0)
        return bytes;
    std::uint32_t length = 0;
    std::memcpy(&length, bytes.data() + 12, sizeof length);
    return bytes.substr(header, length);
}

} // namespace

void placeGltf1Nodes(aiScene &scene, const std::filesystem::path &file) {
    const std::string text = jsonOf(file);
    Json json(text);
    json.eachMember([&](const std::string &section) {
        if (section != "nodes")
            return json.skip();
        json.eachMember([&](const std::string &name) {
            json.eachMember([&](const std::string &key) {
                std::array<float, 3> place;
                if (key != "translation")
                    return json.skip();
                aiNode *node =
                    json.vector(place) ? scene.mRootNode->FindNode(name.c_str()) : nullptr;
                if (!node)
                    return;
                node->mTransformation.a4 = place[0];
                node->mTransformation.b4 = place[1];
                node->mTransformation.c4 = place[2];
            });
        });
    });
}

} // namespace ravolt::tool
