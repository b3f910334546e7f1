// Lists of dropped files.

#include "tools/common/uriList.h"

#include <array>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using ravolt::tool::filesOfUriList;
using Files = std::vector<std::filesystem::path>;

TEST(UriList, HasTheFilesInItsOrder) {
    EXPECT_EQ(filesOfUriList("file:///b.obj\r\nfile:///a/c.glb\r\n"),
              (Files{"/b.obj", "/a/c.glb"}));
    EXPECT_EQ(filesOfUriList("file:///one\nfile:///two"), (Files{"/one", "/two"}));
    EXPECT_EQ(filesOfUriList(""), Files());
}

TEST(UriList, DecodesPercentEscapes) {
    EXPECT_EQ(filesOfUriList("file:///a%20b%25.obj"), Files{"/a b%.obj"});
    EXPECT_EQ(filesOfUriList("file:///%C3%A4%c3%b6.obj"), Files{"/\xc3\xa4\xc3\xb6.obj"});
    EXPECT_EQ(filesOfUriList("file:///a+b"), Files{"/a+b"}); // no form of a web page
}

TEST(UriList, IgnoresEscapesThatAreNone) {
    for (const char *uri : {"file:///a%2", "file:///a%", "file:///a%zz", "file:///a%00b"})
        EXPECT_EQ(filesOfUriList(uri), Files()) << uri;
}

TEST(UriList, TakesTheFormsOfThisMachine) {
    std::array<char, 256> host{};
    ASSERT_EQ(gethostname(host.data(), host.size() - 1), 0);
    for (const std::string &start :
         {std::string("file:"), std::string("file://"), std::string("file://localhost"),
          std::string("FILE://LocalHost"), std::string("file://") + host.data()})
        EXPECT_EQ(filesOfUriList(start + "/a.obj"), Files{"/a.obj"}) << start;
}

TEST(UriList, IgnoresOtherMachinesAndOtherSchemes) {
    EXPECT_EQ(
        filesOfUriList("# a comment\r\nhttp://here/a.obj\r\nfile://elsewhere.invalid/a.obj\r\n"
                       "file:relative\r\nfile:\r\nfile://\r\n\r\n/plain\r\nfile:///last"),
        Files{"/last"});
}

} // namespace
