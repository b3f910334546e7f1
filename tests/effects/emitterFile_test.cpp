// The reader of emitter files without an emitter.

#include "effects/emitterFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

using namespace ravolt;

namespace {

class EmitterFile : public testing::Test {
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
                     "<center x='1' y='2'/><emitterSize x='1'/><texture/><more><radius value='1'/>"
                     "</more>text</emitter><emitter><radius value='1'/></emitter>"));
    EXPECT_TRUE(elements.empty());
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
