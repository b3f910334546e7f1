// The reader of emitter files without an emitter.

#include "effects/emitterFile.h"

#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

using namespace ravolt;

namespace {

class EmitterFile : public ravolt::test::RecorderTest {
  protected:
    bool read(const std::string &text) {
        elements.clear();
        std::ofstream("file.xml") << text;
        return readEmitterFile("file.xml", elements);
    }

    std::vector<EmitterElement> elements;
};

TEST_F(EmitterFile, ElementsAreReadInOrderWithTheirAttributes) {
    ASSERT_TRUE(read("<emitter><radius value='2'/><type value='1'/><radius value='3'/>"
                     "<center z='3' x='1' y='2'/><emitterSize x='4' y='5'/>"
                     "<texture value='a &amp; b.tga'/><maxSpin value='-12'/></emitter>"));
    ASSERT_EQ(elements.size(), 7u);
    EXPECT_EQ(elements[0].key, EmitterKey::radius);
    EXPECT_EQ(elements[0].x, 2);
    EXPECT_EQ(elements[1].key, EmitterKey::type);
    EXPECT_EQ(elements[1].integer, 1);
    EXPECT_EQ(elements[2].x, 3);
    EXPECT_EQ(elements[3].x, 1);
    EXPECT_EQ(elements[3].y, 2);
    EXPECT_EQ(elements[3].z, 3);
    EXPECT_EQ(elements[4].y, 5);
    EXPECT_EQ(elements[5].text, "a & b.tga");
    EXPECT_EQ(elements[6].integer, -12);
}

TEST_F(EmitterFile, UnknownNamesAndMissingAttributesAreSkipped) {
    ASSERT_TRUE(read("<emitter><!-- a comment --><Type value='1'/><type/><type x='1'/>"
                     "<center x='1' y='2'/><center x='1' z='3'/><center y='2' z='3'/>"
                     "<emitterSize x='1'/><emitterSize y='1'/><texture/><more><radius value='1'/>"
                     "</more>text</emitter><emitter><radius value='1'/></emitter>"));
    EXPECT_TRUE(elements.empty());
}

TEST_F(EmitterFile, RemarksHaveWhatIsLeftOutWithItsPosition) {
    std::ofstream("file.xml") << "<emitter>\n <Type value='1'/><center x='1'/>\n</emitter>";
    EmitterRemarks remarks;
    ASSERT_TRUE(readEmitterFile("file.xml", elements, &remarks));
    ASSERT_EQ(remarks.skipped.size(), 2u);
    EXPECT_EQ(remarks.skipped[0].name, "Type");
    EXPECT_FALSE(remarks.skipped[0].known);
    EXPECT_EQ(remarks.skipped[1].name, "center");
    EXPECT_TRUE(remarks.skipped[1].known);
    EXPECT_EQ(remarks.skipped[1].line, 2);
    EXPECT_EQ(remarks.skipped[1].column, 19);
    EXPECT_EQ(remarks.problem.text, "");
}

TEST_F(EmitterFile, RemarksSayWhyAFileIsRefused) {
    const auto problemOf = [this](const std::string &text) {
        std::ofstream("file.xml") << text;
        EmitterRemarks remarks;
        EXPECT_FALSE(readEmitterFile("file.xml", elements, &remarks));
        return std::to_string(remarks.problem.line) + ": " + remarks.problem.text;
    };
    EXPECT_EQ(problemOf("\n<root/>"), "1: no element emitter");
    EXPECT_EQ(problemOf("<emitter>\n<"), "2: malformed, or more than 256 levels or attributes");
}

TEST_F(EmitterFile, WithoutMemoryItIsRefused) {
    ASSERT_TRUE(read("<emitter><type value='1'/></emitter>"));
    unsigned int failures = 0;
    for (bool refused = true; refused; ++failures) {
        std::vector<EmitterElement> found; // without room
        recorder.failAllocation(1, failures, 1);
        refused = !readEmitterFile("file.xml", found);
        recorder.allocationsWork();
        EXPECT_EQ(found.size(), refused ? 0u : 1u);
        ASSERT_LT(failures, 1000u);
    }
    EXPECT_GT(failures, 1u);
}

TEST_F(EmitterFile, NumbersOutOfRangeAreCut) {
    ASSERT_TRUE(read("<emitter><type value='99999999999'/><type value='-99999999999'/>"
                     "<type value='words'/></emitter>"));
    ASSERT_EQ(elements.size(), 3u);
    EXPECT_EQ(elements[0].integer, 2147483647);
    EXPECT_EQ(elements[1].integer, -2147483647 - 1);
    EXPECT_EQ(elements[2].integer, 0);
}

TEST_F(EmitterFile, OtherFilesAreRefused) {
    EXPECT_FALSE(readEmitterFile("none.xml", elements));
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("<emitter>"));
    EXPECT_FALSE(read("<root/>"));
    EXPECT_FALSE(read("emitter"));
    EXPECT_TRUE(read("<emitter/>"));
}

} // namespace
