#pragma once

// Bodies of scene files as bytes, and nodes that note how they are drawn.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace ravolt::test {

// Little-endian values one behind the other.
class Bytes {
  public:
    template <class T> Bytes &add(T value) {
        const char *bytes = reinterpret_cast<const char *>(&value);
        content.append(bytes, sizeof value);
        return *this;
    }
    Bytes &floats(std::initializer_list<float> values) {
        for (const float value : values)
            add(value);
        return *this;
    }
    Bytes &text(const std::string &value) {
        content += value;
        content += '\0';
        return *this;
    }

    // A copy on the heap of exactly this size, so that a read past its end is noticed.
    std::unique_ptr<char[]> exact() const {
        std::unique_ptr<char[]> copy(new char[content.size()]);
        std::memcpy(copy.get(), content.data(), content.size());
        return copy;
    }
    std::size_t size() const { return content.size(); }

  private:
    std::string content;
};

inline Bytes plainNodeBody(const std::string &name, std::uint16_t children = 0) {
    Bytes body;
    body.add(std::uint32_t{77}).text(name).floats({1, 2, 3}).floats({10, 20, 30}).add(children);
    return body;
}

inline Bytes lightBody(const std::string &name, std::uint8_t type = 2, std::uint16_t children = 0) {
    Bytes body;
    body.add(std::uint32_t{0xdeadbeef}).add(type).text(name);
    body.floats({1, 2, 3}).floats({4, 5, 6}).add(35.0f).floats({1.0f, 0.5f, 0.25f}).add(children);
    return body;
}

// A mesh without faces: one vertex, and one weight for it when there are bones.
inline Bytes meshBody(const std::string &name, float radius,
                      const std::vector<std::string> &bones = {}) {
    Bytes body;
    body.add(std::uint32_t{0}).text(name).floats({0, 0, 0}).floats({0, 0, 0}).floats({0, 0, 0});
    body.text("").add(radius).floats({0, 0, 0}).floats({0, 0, 0}).add(std::uint8_t{0});
    const std::uint16_t weights = bones.empty() ? 0 : 1;
    for (const std::uint16_t count :
         {std::uint16_t{1}, std::uint16_t{0}, std::uint16_t{0}, std::uint16_t{0}, weights})
        body.add(count);
    body.floats({0, 0, 0}).floats({0, 0, 1});
    if (!bones.empty()) {
        body.add(std::uint8_t{0}).add(1.0f).add(static_cast<std::uint16_t>(bones.size()));
        for (const std::string &bone : bones)
            body.text(bone);
    }
    return body;
}

inline RVMESH *loadMesh(const Bytes &body) {
    long cursor = 0;
    const auto bytes = body.exact();
    return static_cast<RVMESH *>(RVMESH::load(bytes.get(), &cursor, false));
}

// What a node was drawn with.
struct Drawn {
    const RVNODE *node;
    Z3MMATRIX matrix;
    unsigned int auxId;
    unsigned int param1;
};

using Drawings = std::vector<Drawn>;

// A node of any drawing class that notes each render and draws nothing.
template <class Node> class Probe : public Node {
  public:
    explicit Probe(Drawings &drawings) : drawn(drawings) {}

    bool render(void *entry) override {
        RVELEMENT *element = static_cast<RVELEMENT *>(entry);
        drawn.push_back(
            {element->getNode(), *element->getMatrix(), element->getAuxId(), element->getParam1()});
        return true;
    }

  private:
    Drawings &drawn;
};

class CustomNode : public RVNODE {
  public:
    CustomNode() { type = RV_NODE_TYPE_CUSTOM; }
};

using CustomProbe = Probe<CustomNode>;
using MeshProbe = Probe<RVMESH>;
using LightProbe = Probe<RVLIGHT>;
using HelperProbe = Probe<RVHELPER>;

} // namespace ravolt::test
