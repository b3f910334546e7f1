// The reader of terrain configurations: elements in their order, and which files it refuses.

#include "effects/terrainConfig.h"

#include "foundation/xmlDocument.h"
#include "tests/support/files.h"
#include "tests/support/recorder.h"

#include <filesystem>
#include <string>

using namespace ravolt;
using namespace ravolt::test;

namespace {

std::string textOf(const TerrainEntry &entry) {
    return entry.name + (entry.hasText ? "=" + entry.text : "");
}

// "A=text[B=1 C] D", or "refused".
std::string readConfig(const char *path = "land.xml") {
    std::vector<TerrainSection> sections;
    if (!readTerrainConfig(path, sections))
        return "refused";
    std::string all;
    for (const TerrainSection &section : sections) {
        all += (all.empty() ? "" : " ") + textOf(section);
        if (section.entries.empty())
            continue;
        std::string children;
        for (const TerrainEntry &entry : section.entries)
            children += (children.empty() ? "" : " ") + textOf(entry);
        all += "[" + children + "]";
    }
    return all;
}

std::string nested(std::size_t levels) {
    std::string text;
    for (std::size_t level = 0; level < levels; ++level)
        text.insert(0, "<A>").append("</A>");
    return text;
}

class TerrainConfigTest : public RecorderTest {};

TEST_F(TerrainConfigTest, ElementsAreReadInTheirOrderWithTheirTexts) {
    const struct {
        const char *what;
        std::string text, result;
    } cases[] = {
        {"any root", "<?xml version=\"1.0\"?><anything/>", ""},
        {"order", "<R><B>1</B><A/><B>2</B></R>", "B=1 A B=2"},
        {"children", "<R><A><Y>1</Y><X/><Y> 2 </Y></A><B/></R>", "A[Y=1 X Y=2] B"},
        {"grandchildren are ignored", "<R><A><B>1<C>2</C></B></A></R>", "A[B=1]"},
        {"text after a child is none", "<R><A><B/>text</A></R>", "A[B]"},
        {"comments between elements", "<R><!--x--><A>1</A><!--y--></R>", "A=1"},
        {"256 levels", nested(maxXmlDepth), "A[A]"},
        {"257 levels", nested(maxXmlDepth + 1), "refused"},
        {"4 MiB", "<R><A/>" + std::string(maxXmlSize - 11, ' ') + "</R>", "A"},
        {"more than 4 MiB", "<R><A/>" + std::string(maxXmlSize - 10, ' ') + "</R>", "refused"},
        {"an empty file", "", "refused"},
        {"no element", "text", "refused"},
        {"a comment alone", "<!--x-->", "refused"},
        {"an element without an end", "<R><A></R>", "refused"}};
    for (const auto &c : cases) {
        writeFile("land.xml", c.text);
        EXPECT_EQ(readConfig(), c.result) << c.what;
    }
}

TEST_F(TerrainConfigTest, WhatIsNoFileIsRefused) {
    std::filesystem::create_directory("folder");
    for (const char *path : {"gone.xml", "folder", ""})
        EXPECT_EQ(readConfig(path), "refused") << path;
}

TEST_F(TerrainConfigTest, TheProblemOfARefusedFileHasItsPosition) {
    const auto problemOf = [](const std::string &text) {
        writeFile("land.xml", text);
        std::vector<TerrainSection> sections;
        XmlProblem problem;
        EXPECT_FALSE(readTerrainConfig("land.xml", sections, &problem));
        return std::to_string(problem.line) + ": " + problem.text;
    };
    EXPECT_EQ(problemOf("\n<!--x-->"), "1: no element");
    EXPECT_EQ(problemOf("<R>\n<A></R>"), "2: malformed, or more than 256 levels or attributes");
}

TEST_F(TerrainConfigTest, GeometriesAreConfinedToTheWorkingDirectory) {
    namespace fs = std::filesystem;
    const fs::path here = fs::current_path();
    const std::string below = (here / "land.geo").string(),
                      outside = here.parent_path() / "land.geo";
    fs::create_symlink("loop", "loop");
    const std::string loop = (here / "loop" / "land.geo").string();
    EXPECT_TRUE(isConfinedGeometry("land.geo", here));
    EXPECT_TRUE(isConfinedGeometry("land.geo", {})) << "a relative name needs no directory";
    EXPECT_FALSE(isConfinedGeometry("../land.geo", here));
    EXPECT_TRUE(isConfinedGeometry(below, here));
    EXPECT_FALSE(isConfinedGeometry(below, {})) << "the directory is unknown";
    EXPECT_FALSE(isConfinedGeometry(outside, here));
    EXPECT_FALSE(isConfinedGeometry(loop, here)) << "where it leads to is unknown";
    EXPECT_FALSE(isConfinedGeometry(below, here / "loop" / "folder"));
}

// Records what a configuration does. A geometry has three levels of detail.
class RecordingTarget : public TerrainTarget {
  public:
    bool loadGeometry(const TerrainEntry &filename) override {
        return add("geometry " + filename.text);
    }
    bool hasWater() const override { return true; }
    bool hasSky() const override { return true; }
    unsigned int levels() const override { return 3; }
    void setLayers(const TerrainLayers &layers) override {
        add(layers.complex ? "complex layers" : "layers");
    }
    void setWaterSpeed(float) override { add("water speed"); }
    bool loadWater(const TerrainSection &, const TerrainEntry *normal, const TerrainEntry *dudv,
                   int repeat) override {
        return add("water " + (normal ? normal->text : "-") + (dudv ? dudv->text : "-") +
                   std::to_string(repeat));
    }
    void setSkySpeed(float) override { add("sky speed"); }
    bool loadSky(const TerrainEntry &filename) override { return add("sky " + filename.text); }
    void startLod() override { add("lod"); }
    void setLodEnabled(bool enabled) override { add(enabled ? "on" : "off"); }
    void setLodThreshold(std::size_t number, float squaredDistance) override {
        add(std::to_string(number) + "=" + std::to_string(static_cast<int>(squaredDistance)));
    }
    void finishLod() override { add("end"); }
    void report(const Problem &problem) override { add(problem.reason); }

    std::string calls;

  private:
    bool add(const std::string &call) {
        calls += (calls.empty() ? "" : ", ") + call;
        return true;
    }
};

std::string callsOf(const std::string &sections) {
    writeFile("land.xml", "<R>" + sections + "</R>");
    std::vector<TerrainSection> read;
    EXPECT_TRUE(readTerrainConfig("land.xml", read));
    RecordingTarget target;
    applyTerrainConfig(read, target);
    return target.calls;
}

TEST_F(TerrainConfigTest, ElementsWithoutAMeaningAreIgnoredInEverySection) {
    const std::string more = "<MORE/><MORE>1</MORE>";
    EXPECT_EQ(callsOf("<MORE>1</MORE><GEOMETRY>a</GEOMETRY>"), "geometry a");
    EXPECT_EQ(callsOf("<WATER>" + more + "<REPEAT>7</REPEAT>" + more +
                      "<TEXTURE24_NORMAL>n</TEXTURE24_NORMAL></WATER>"),
              "water n-7");
    EXPECT_EQ(callsOf("<SKY>" + more + "<TEXTURE24_DIFFUSE>s</TEXTURE24_DIFFUSE></SKY>"), "sky s");
    EXPECT_EQ(callsOf("<LOD>" + more + "<LEVEL>4</LEVEL>" + more + "<LEVEL>9</LEVEL></LOD>"),
              "lod, 0=4, 1=9, end");
    std::string layers;
    for (int layer = 0; layer < 4; ++layer)
        layers += "<REPEAT>1</REPEAT><TEXTURE32_NORMAL_GLOSS>n</TEXTURE32_NORMAL_GLOSS>"
                  "<TEXTURE32_DIFFUSE_HEIGHT>d</TEXTURE32_DIFFUSE_HEIGHT>" +
                  more;
    EXPECT_EQ(callsOf("<TERRAIN>" + layers + "</TERRAIN>"), "layers");
}

TEST_F(TerrainConfigTest, WithoutMemoryTheFileIsRefused) {
    writeFile("land.xml", "<R><A>1</A></R>");
    unsigned int failures = 0;
    for (std::string result = "refused"; result == "refused"; ++failures) {
        recorder.failAllocation(1, failures, 1);
        result = readConfig();
        recorder.allocationsWork();
        ASSERT_LT(failures, 1000u);
    }
    EXPECT_GT(failures, 1u);
}

} // namespace
