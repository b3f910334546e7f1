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
