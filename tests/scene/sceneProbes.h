#pragma once

// Bodies of scene files as bytes, and nodes that record how they are drawn.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace ravolt::test {

// Little-endian values in sequence.
class Bytes {
  public:
    template <class T> Bytes &add(T value) {
        content.append(reinterpret_cast<const char *>(&value), sizeof value);
        return *this;
    }
    Bytes &floats(std::initializer_list<float> values) {
        for (const float value : values)
            add(value);
        return *this;
    }
    Bytes &text(const std::string &value) {
        content.append(value.c_str(), value.size() + 1);
        return *this;
    }

    // A copy on the heap of exactly this size, so that a read past its end is noticed.
    std::unique_ptr<char[]> exact() const { return exact(size()); }
    std::unique_ptr<char[]> exact(std::size_t length) const {
        std::unique_ptr<char[]> copy(new char[length]);
        std::copy_n(content.data(), length, copy.get());
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
    for (const int count : {1, 0, 0, 0, bones.empty() ? 0 : 1})
        body.add(static_cast<std::uint16_t>(count));
    body.floats({0, 0, 0}).floats({0, 0, 1});
    if (!bones.empty()) {
        body.add(std::uint8_t{0}).add(1.0f).add(static_cast<std::uint16_t>(bones.size()));
        for (const std::string &bone : bones)
            body.text(bone);
    }
    return body;
}

// What the class reads from the body, and where the cursor is then; NULL where it is refused.
template <class Node> Node *loadNode(const Bytes &body, long *end = nullptr) {
    long cursor = 0;
    const auto bytes = body.exact();
    Node *node;
    if constexpr (std::is_same_v<Node, RVMESH>)
        node = static_cast<Node *>(Node::load(bytes.get(), &cursor, false));
    else
        node = static_cast<Node *>(Node::load(bytes.get(), &cursor));
    if (end)
        *end = cursor;
    return node;
}
inline RVMESH *loadMesh(const Bytes &body) { return loadNode<RVMESH>(body); }

// What a node was drawn with.
struct Drawn {
    const RVNODE *node;
    Z3MMATRIX matrix;
    unsigned int auxId;
    unsigned int param1;
};

using Drawings = std::vector<Drawn>;
using NodeList = std::vector<const RVNODE *>;

inline NodeList nodesOf(const Drawings &drawings) {
    NodeList nodes;
    for (const Drawn &drawing : drawings)
        nodes.push_back(drawing.node);
    return nodes;
}

// A node of any drawing class that records each render and draws nothing.
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

// A node of an application, of any type.
template <RV_NODE_TYPE number> class TypedNode : public RVNODE {
  public:
    TypedNode() { type = number; }
};
using CustomNode = TypedNode<RV_NODE_TYPE_CUSTOM>;

using CustomProbe = Probe<CustomNode>;
using MeshProbe = Probe<RVMESH>;
using LightProbe = Probe<RVLIGHT>;
using HelperProbe = Probe<RVHELPER>;

} // namespace ravolt::test
