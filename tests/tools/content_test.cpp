// What a file is, by its content.

#include "tests/tools/support.h"
#include "tools/stage/content.h"

namespace {

using namespace tool_test;

Content contentOfText(const std::string &text) {
    writeFile("content", text); // the name says nothing
    return contentOf("content");
}

TEST(ContentTest, KindsOfXmlFilesAreKnownByTheirElements) {
    EXPECT_EQ(contentOfText("<emitter/>"), Content::emitter);
    EXPECT_EQ(contentOfText("\xef\xbb\xbf\n <?xml version='1.0'?><!-- <root> -->\n<emitter>"),
              Content::emitter);
    EXPECT_EQ(contentOfText("<root><emitter/></root>"), Content::interface);
    EXPECT_EQ(contentOfText("<Place a='>'><GEOMETRY>a.geo</GEOMETRY></Place>"), Content::terrain);
    EXPECT_EQ(contentOfText("<a><b/><c>x</c><TERRAIN/></a>"), Content::terrain);
}

TEST(ContentTest, OtherFilesAreScenesByTheirFirstBytesOrModels) {
    EXPECT_EQ(contentOfText("RVE file v1.6a"), Content::scene);
    for (const char *text : {"", "<", "v 0 0 0\n", "<a><b><GEOMETRY/></b></a>", "<COLLADA/>",
                             "x <emitter/>", "<roots/>", "<geometry/><a><terrain/></a>"})
        EXPECT_EQ(contentOfText(text), Content::model) << text;
}

TEST(ContentTest, FilesThatCannotBeReadAreReported) {
    EXPECT_EQ(failureOf([] { contentOf("missing"); }), "missing: no such file");
    EXPECT_EQ(failureOf([] { contentOf("."); }), ".: is a folder, not a scene or a model");
    EXPECT_EQ(failureOf([] { contentOf("/dev/null"); }), "/dev/null: is no regular file");
}

TEST(ContentTest, ElementsHaveTheirDepthAndText) {
    const auto elements = elementsOf("<a><b x='1'> one &amp; &lt;two </b><c/><d><e>3</e></d></a>");
    ASSERT_EQ(elements.size(), 5u);
    EXPECT_EQ(elements[1].name, "b");
    EXPECT_EQ(elements[1].text, "one & <two");
    EXPECT_EQ(elements[2].depth, 1u);
    EXPECT_EQ(elements[3].depth, 1u);
    EXPECT_EQ(elements[4].depth, 2u);
    EXPECT_EQ(elements[4].text, "3");
}

} // namespace
