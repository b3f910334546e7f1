// The check of scene files, and the records that it passes to a visitor.

#include "models/rveFile.h"

#include "foundation/bytes.h"
#include "models/rveFormat.h"
#include "tests/models/modelScenes.h"

#include <algorithm>
#include <array>
#include <string>

#include <gtest/gtest.h>

namespace ravolt::test {
namespace {

// One line for each record: its level, what it is, its name and its offset.
class Listing : public RveVisitor {
  public:
    void visit(const MaterialRecord &material, std::size_t offset) override {
        add("material", material.name, offset);
    }
    void visit(const PlainNodeRecord &node, std::size_t offset, std::size_t level) override {
        add(std::to_string(level) + " node", node.name, offset);
    }
    void visit(const LightRecord &light, std::size_t offset, std::size_t level) override {
        add(std::to_string(level) + " light", light.name, offset);
    }
    void visit(const MeshRecord &mesh, std::size_t offset, std::size_t level) override {
        add(std::to_string(level) + " mesh", mesh.name, offset);
        meshes.push_back(offset);
    }

    std::string lines;
    std::vector<std::size_t> meshes;

  private:
    void add(const std::string &what, const char *name, std::size_t offset) {
        EXPECT_GT(offset, last) << name;
        last = offset;
        lines += what + " " + name + "\n";
    }

    std::size_t last = 0;
};

Bytes smallScene() {
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    return bytesOf({{materialNamed("stone"), materialNamed("glass")},
                    rootOver({nodeNamed("group", {light, squareMesh("wall")}), emptyMesh("end")})});
}

RveVerdict verdictOf(const Bytes &file, Listing &listing) {
    ByteReader reader(file.data(), file.size(), rve::headerBytes);
    return checkRve(reader, false, &listing);
}

TEST(RveFile, VisitsItsRecordsInOrderWithLevelsAndOffsets) {
    const Bytes file = smallScene();
    Listing listing;
    ASSERT_EQ(verdictOf(file, listing), RveVerdict::good);
    EXPECT_EQ(listing.lines, "material stone\nmaterial glass\n0 mesh [root]\n1 node group\n"
                             "2 light lamp\n2 mesh wall\n1 mesh end\n");
    for (const std::size_t offset : listing.meshes)
        EXPECT_EQ(file[offset], rve::kindMesh) << "the byte of the kind";
}

TEST(RveFile, LocatesTheFirstBadIndex) {
    Bytes file = bytesOf({{}, rootOver({squareMesh("wall")})});
    constexpr std::array<unsigned char, 12> faces{0, 0, 1, 0, 2, 0, 0, 0, 2, 0, 3, 0};
    const auto last = std::search(file.begin(), file.end(), faces.begin(), faces.end()) + 10;
    ASSERT_EQ(*last, 3);
    *last = 4;
    ByteReader reader(file.data(), file.size(), rve::headerBytes);
    EXPECT_EQ(checkRve(reader, false), RveVerdict::corrupted);
    EXPECT_EQ(reader.problem().offset, static_cast<std::size_t>(last - file.begin()));
    EXPECT_STREQ(reader.problem().reason, "a face's index beyond the vertices");
}

TEST(RveFile, VisitsWhatIsBeforeTheFirstFault) {
    Bytes file = smallScene();
    Listing whole;
    ASSERT_EQ(verdictOf(file, whole), RveVerdict::good);
    file[whole.meshes.back()] = 200;
    Listing unknown;
    EXPECT_EQ(verdictOf(file, unknown), RveVerdict::unknownKind);
    EXPECT_EQ(unknown.lines + "1 mesh end\n", whole.lines);
    file.pop_back();
    file[whole.meshes.back()] = static_cast<unsigned char>(rve::kindMesh);
    Listing cut;
    EXPECT_EQ(verdictOf(file, cut), RveVerdict::corrupted);
    EXPECT_EQ(cut.lines, unknown.lines);
}

} // namespace
} // namespace ravolt::test
