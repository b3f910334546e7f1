// The version in the headers, in the library, in the log's banner and in the build is the same.

#include "engine/state/version.h"
#include "ravolt/version.h"

#include <gtest/gtest.h>

#include <string>

namespace ravolt::test {
namespace {

TEST(Version, MacrosAreThatOfTheBuild) {
    EXPECT_STREQ(RAVOLT_VERSION_STRING, RAVOLT_BUILD_VERSION);
    EXPECT_EQ(std::to_string(RAVOLT_VERSION_MAJOR) + "." + std::to_string(RAVOLT_VERSION_MINOR) +
                  "." + std::to_string(RAVOLT_VERSION_PATCH),
              RAVOLT_BUILD_VERSION);
}

TEST(Version, LibraryReportsThatOfItsHeaders) {
    EXPECT_STREQ(ravoltVersion(), RAVOLT_VERSION_STRING);
}

TEST(Version, BannerContainsIt) {
    EXPECT_NE(std::string(banner).find(" v" RAVOLT_VERSION_STRING), std::string::npos) << banner;
}

} // namespace
} // namespace ravolt::test
