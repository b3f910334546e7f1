// The class in a build without libmpeg2. This program is not linked with it.

#include "ravolt/RVVIDEO.h"

#include "ravolt/zlf.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace ravolt::test {

namespace {

std::ptrdiff_t openFiles() {
    using Folder = std::filesystem::directory_iterator;
    return std::distance(Folder("/proc/self/fd"), Folder());
}

// The hook that opens the log as the library is loaded is not linked from an archive.
TEST(VideoWithoutDecoder, DoesNotLoadAndTheRestOfTheClassWorks) {
    zlfOpenLog("ravolt_log.txt");
    writeFile("video", Bytes{0, 0, 1, 0xb3});
    auto *video = new RVVIDEO;
    EXPECT_EQ(RVVIDEO::findById(video->getId()), video);
    const auto before = openFiles();
    markLog();
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY("\n   Loading MPG file 'video'...\n"
                          "   [!] Decoder failed to initialize @ RVVIDEO::load\n");
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(video->getName(), "[video " + std::to_string(video->getId()) + "]");
    video->playLoop();
    EXPECT_TRUE(video->update(1000));
    EXPECT_EQ(video->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(video->load(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params or file not found @ RVVIDEO::load\n");
    EXPECT_TRUE(RVVIDEO::cleanUp());
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 0u);
    zlfCloseLog();
}

} // namespace

} // namespace ravolt::test
