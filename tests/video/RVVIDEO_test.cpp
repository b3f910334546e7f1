// Videos as objects: registry, file, status, copies. What becomes of their frames is in
// frames_test.cpp.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"
#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

bool decoderFails = false;
bool everyFileExists = false;

} // namespace

// Stand in front of functions that cannot be made to fail by themselves (see the linker's --wrap).
extern "C" {
void *__real_mpeg2_init();
void *__wrap_mpeg2_init() { return decoderFails ? nullptr : __real_mpeg2_init(); }
bool __real__Z13zlfFileExistsPKc(const char *path);
bool __wrap__Z13zlfFileExistsPKc(const char *path) {
    return everyFileExists || __real__Z13zlfFileExistsPKc(path);
}
}

namespace ravolt::test {

namespace {

namespace fs = std::filesystem;

const std::string notFound = "   [!] Invalid params or file not found @ RVVIDEO::load\n";
const std::string noDecoder = "   [!] Decoder failed to initialize @ RVVIDEO::load\n";

std::string loading(const std::string &name) { return "\n   Loading MPG file '" + name + "'...\n"; }

std::string defaultName(const RVVIDEO &video) {
    return "[video " + std::to_string(video.getId()) + "]";
}

std::ptrdiff_t openFiles() {
    using Folder = fs::directory_iterator;
    return std::distance(Folder("/proc/self/fd"), Folder());
}

// A short video in the test's folder, and a texture in front of a silent driver.
class Video : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        fs::copy_file(pathOf("ffmpeg2_64x48_b"), "video", fs::copy_options::overwrite_existing);
        screen = makeScreen(64, 64);
        filesBefore = openFiles();
    }

    void TearDown() override {
        decoderFails = everyFileExists = false;
        EXPECT_EQ(openFiles(), filesBefore) << "a video is still open";
        RVVIDEO::cleanUp();
        RVVIDEO::setMPGPath(nullptr);
        SilentEngineTest::TearDown();
    }

    std::unique_ptr<TestVideo> openVideo() {
        auto video = std::make_unique<TestVideo>("video");
        (*video)->setTexture(screen);
        markLog();
        return video;
    }

    // Frames that reach the texture meanwhile.
    std::size_t framesShown(RVVIDEO &video, unsigned int steps) {
        return callsOf([&] { EXPECT_TRUE(video.update(steps)); }).count("glTexSubImage2D");
    }

    RVTEXTURE *screen = nullptr;
    std::ptrdiff_t filesBefore = 0;
};

// --- Registry

TEST_F(Video, NewOneIsStoppedAndHasNothing) {
    const RVVIDEO *video = new RVVIDEO;
    EXPECT_NE(video->getId(), 0u);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(video->getTexture(), nullptr);
    EXPECT_FALSE(video->isFlipped());
    EXPECT_EQ(RVVIDEO::findById(video->getId())->getName(), defaultName(*video));
}

TEST_F(Video, UpdateOfTheEngineDoesNothing) {
    const auto video = openVideo();
    (*video)->play();
    EXPECT_EQ(callsOf([&] { RAVOLT::updateVideo(); }), Calls());
    EXPECT_EQ(framesShown(**video, wholeVideo), framesPerVideo);
}

// The identifier 0 stands for none, and the registry has the video all the same.
TEST_F(Video, WithoutAnIdentifierLeavesTheRegistryToo) {
    std::vector<unsigned int> ids;
    while (const unsigned int id = zlfNewId())
        ids.push_back(id);
    delete new RVVIDEO;
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 0u);
    for (const unsigned int id : ids)
        releaseId(id);
    markLog();
}

// On purpose: see the header.
TEST_F(Video, DestructorLeavesTheFileOpen) {
#if defined(__SANITIZE_ADDRESS__)
    const __lsan::ScopedDisabler leakIsMeant;
#endif
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("video"));
    delete video;
    EXPECT_EQ(openFiles(), filesBefore + 1);
    filesBefore = openFiles();
}

// --- The folder

TEST_F(Video, VideoIsSoughtBehindTheFolder) {
    fs::create_directory("folder");
    fs::rename("video", "folder/video");
    const TestVideo video;
    EXPECT_FALSE(video->load("video"));
    RVVIDEO::setMPGPath("folder/");
    EXPECT_TRUE(video->load("video"));
    EXPECT_STREQ(video->getName(), "video");
    RVVIDEO::setMPGPath("folder/v"); // no separator is added
    EXPECT_TRUE(video->load("ideo"));
}

TEST_F(Video, EndOfTheVideoLooksForItBehindThePathOfThatMoment) {
    const auto video = openVideo();
    (*video)->playLoop();
    framesShown(**video, 20);
    RVVIDEO::setMPGPath("elsewhere/");
    EXPECT_TRUE((*video)->update(wholeVideo));
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(openFiles(), filesBefore);
}

TEST_F(Video, StartOfTheEngineDoesNotTakeTheFolderFromTheSettings) {
    RVVIDEO::setMPGPath("mine/");
    settings.setMPGPath("theirs/");
    ASSERT_TRUE(restart());
    EXPECT_STREQ(RVVIDEO::getMPGPath(), "mine/");
    EXPECT_EQ(logTextSince(startMark).find("theirs/"), std::string::npos);
}

// --- Loading

TEST_F(Video, LoadTellsTheNameAndTakesIt) {
    const TestVideo video;
    EXPECT_TRUE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video"));
    EXPECT_STREQ(video->getName(), "video");
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(openFiles(), filesBefore + 1);
}

TEST_F(Video, WhatIsNoFileIsNotFound) {
    fs::create_directory("folder.m2v");
    const TestVideo video;
    for (const char *name : {"missing", "folder.m2v", "folder.m2v/", "", "video/"}) {
        EXPECT_FALSE(video->load(name)) << name;
        EXPECT_LOGGED_EXACTLY(notFound);
        EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
        EXPECT_EQ(video->getName(), defaultName(*video));
    }
}

TEST_F(Video, NullIsRefusedWhateverTheFolder) {
    const TestVideo video;
    for (const std::string &folder : {std::string(), std::string("video"), std::string(255, 'x')}) {
        RVVIDEO::setMPGPath(folder.c_str());
        EXPECT_FALSE(video->load(nullptr));
        EXPECT_LOGGED_EXACTLY(notFound);
    }
}

TEST_F(Video, FileThatCannotBeOpenedIsNamedWithItsFolder) {
    const TestVideo video;
    RVVIDEO::setMPGPath("folder/");
    everyFileExists = true;
    EXPECT_FALSE(video->load("gone"));
    EXPECT_LOGGED_EXACTLY(loading("gone") +
                          "   [!] Unable to open file folder/gone @ RVVOLT::load\n");
    EXPECT_EQ(video->getName(), defaultName(*video));
}

TEST_F(Video, WithoutADecoderTheFileIsClosedAgain) {
    const TestVideo video;
    decoderFails = true;
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video") + noDecoder);
    EXPECT_EQ(openFiles(), filesBefore);
    video->play();
    EXPECT_TRUE(video->update(100));
    EXPECT_EQ(video->getStatus(), RV_VIDEO_PLAY);
    decoderFails = false;
    EXPECT_TRUE(video->load("video"));
}

TEST_F(Video, WithoutMemoryForItsStreamNothingIsLoaded) {
    recorder.failAllocation(4096, 0, 1);
    const TestVideo video;
    recorder.allocationsWork();
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video") + noDecoder);
    EXPECT_EQ(openFiles(), filesBefore);
    video->rewind();
    EXPECT_TRUE(video->update(10));
    const RVVIDEO copy(*video);
    EXPECT_EQ(copy.getId(), video->getId());
    zlfFree(nullptr); // the count of the block that was not had
}

TEST_F(Video, NameTooLargeForTheMemoryIsRefused) {
    const std::string name(600, 'n');
    const auto video = openVideo();
    RVVIDEO::setMPGPath("videos/");
    recorder.failAllocation(600, 0, 1);
    EXPECT_FALSE((*video)->load(name.c_str()));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for file videos/" + name + " @ RVVIDEO::load\n");
    EXPECT_EQ(openFiles(), filesBefore);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
}

TEST_F(Video, NoNameNeedsNoMemory) {
    const TestVideo video;
    RVVIDEO::setMPGPath(std::string(250, 'p').c_str());
    recorder.failAllocation(200, 0, 1);
    EXPECT_FALSE(video->load(nullptr));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, SecondVideoClosesTheFirst) {
    fs::copy_file(pathOf("ffmpeg1_16x16"), "other");
    const auto video = openVideo();
    (*video)->play();
    const std::size_t begun = framesShown(**video, 20);
    EXPECT_GT(begun, 0u);
    EXPECT_LT(begun, framesPerVideo);
    EXPECT_TRUE((*video)->load("other"));
    EXPECT_EQ(openFiles(), filesBefore + 1);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
    EXPECT_STREQ((*video)->getName(), "other");
    (*video)->play();
    const Calls frames = callsOf([&] { (*video)->update(wholeVideo); }).named("glTexSubImage2D");
    EXPECT_EQ(frames.size(), framesPerVideo);
    EXPECT_EQ(frames[0].arguments.at(4), 16);
}

TEST_F(Video, FailedLoadClosesAndStopsTheFirstVideoToo) {
    for (const char *name : {"missing", static_cast<const char *>(nullptr)}) {
        const auto video = openVideo();
        (*video)->playLoop();
        (*video)->update(20);
        EXPECT_FALSE((*video)->load(name));
        EXPECT_EQ(openFiles(), filesBefore);
        EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
        EXPECT_STREQ((*video)->getName(), "video");
        (*video)->play();
        EXPECT_EQ(framesShown(**video, wholeVideo), 0u);
    }
}

TEST_F(Video, NameLongerThanItsBufferIsCutAndNotFoundAgain) {
    std::string name;
    while (name.size() < 300)
        name += "./";
    name += "video";
    const TestVideo video(name);
    EXPECT_EQ(video->getName(), name.substr(0, 255));
    video->play();
    markLog();
    EXPECT_TRUE(video->update(wholeVideo));
    EXPECT_LOGGED_EXACTLY(notFound); // what is cut names a folder
    EXPECT_EQ(openFiles(), filesBefore);
}

// --- Status

TEST_F(Video, StatusIsStoredAndNothingElse) {
    const auto opened = openVideo();
    RVVIDEO &video = **opened;
    recorder.start();
    video.play();
    EXPECT_EQ(video.getStatus(), RV_VIDEO_PLAY);
    video.playLoop();
    EXPECT_EQ(video.getStatus(), RV_VIDEO_PLAYLOOP);
    video.rewind();
    EXPECT_EQ(video.getStatus(), RV_VIDEO_REWIND);
    video.stop();
    EXPECT_EQ(video.getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(recorder.stop(), Calls());
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(RV_VIDEO_STOP, 0);
    EXPECT_EQ(RV_VIDEO_PLAY, 1);
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, 2);
    EXPECT_EQ(RV_VIDEO_REWIND, 3);
}

TEST_F(Video, StoppedVideoStaysWhereItIs) {
    const auto video = openVideo();
    EXPECT_EQ(framesShown(**video, wholeVideo), 0u);
    (*video)->play();
    const std::size_t begun = framesShown(**video, 20);
    (*video)->stop();
    EXPECT_EQ(framesShown(**video, wholeVideo), 0u);
    (*video)->play();
    EXPECT_EQ(begun + framesShown(**video, wholeVideo), framesPerVideo);
}

TEST_F(Video, PlayingWithoutAFileDoesNothing) {
    const TestVideo video;
    video->setTexture(screen);
    video->play();
    EXPECT_EQ(framesShown(*video, 1000), 0u);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_PLAY);
    video->playLoop();
    EXPECT_EQ(framesShown(*video, 1000), 0u);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, NoStepsDoNothing) {
    const auto video = openVideo();
    for (auto status : {&RVVIDEO::play, &RVVIDEO::playLoop, &RVVIDEO::rewind}) {
        (**video.*status)();
        EXPECT_EQ(framesShown(**video, 0), 0u);
    }
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_REWIND);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, PlayedVideoStopsAtItsStart) {
    const auto video = openVideo();
    for (int turn = 0; turn < 3; ++turn) {
        (*video)->play();
        EXPECT_EQ(framesShown(**video, wholeVideo), framesPerVideo);
        EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
        EXPECT_LOGGED_EXACTLY(loading("video"));
        EXPECT_EQ(openFiles(), filesBefore + 1);
    }
}

TEST_F(Video, LoopedVideoGoesOnInTheSameUpdate) {
    const auto video = openVideo();
    (*video)->play();
    unsigned int steps = 0;
    for (; (*video)->getStatus() == RV_VIDEO_PLAY; ++steps)
        (*video)->update(1);
    markLog();
    (*video)->playLoop();
    EXPECT_EQ(framesShown(**video, 3 * steps), 3 * framesPerVideo);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_LOGGED_EXACTLY(loading("video") + loading("video") + loading("video"));
}

TEST_F(Video, RewindInTheMiddlePlaysToTheEndFirst) {
    const auto video = openVideo();
    (*video)->playLoop();
    const std::size_t begun = framesShown(**video, 20);
    (*video)->rewind();
    EXPECT_EQ(framesShown(**video, 0), 0u);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_REWIND);
    EXPECT_EQ(begun + framesShown(**video, wholeVideo), framesPerVideo);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
    EXPECT_LOGGED_EXACTLY(loading("video"));
}

TEST_F(Video, RewindAtTheEndIsCarriedOutWithoutAStep) {
    const auto video = openVideo();
    fs::rename("video", "away"); // so that the video finds no start at its end
    (*video)->play();
    EXPECT_EQ(framesShown(**video, wholeVideo), framesPerVideo);
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(openFiles(), filesBefore);

    (*video)->rewind();
    EXPECT_EQ(framesShown(**video, 0), 0u);
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_REWIND);

    fs::rename("away", "video");
    EXPECT_EQ(framesShown(**video, 1000), 0u);
    EXPECT_LOGGED_EXACTLY(loading("video"));
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_STOP);
    (*video)->play();
    EXPECT_EQ(framesShown(**video, wholeVideo), framesPerVideo);
}

TEST_F(Video, RewindBeforeTheFirstLoadLooksForItsDefaultName) {
    const TestVideo video;
    video->rewind();
    EXPECT_TRUE(video->update(0));
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, LoopWhoseFileHasGoneEndsWithoutOne) {
    const auto video = openVideo();
    fs::remove("video");
    (*video)->playLoop();
    EXPECT_EQ(framesShown(**video, wholeVideo), framesPerVideo);
    EXPECT_EQ((*video)->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_EQ(framesShown(**video, wholeVideo), 0u);
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, EmptyFileIsAtItsEndAtOnce) {
    writeFile("empty", Bytes());
    const TestVideo video("empty");
    video->setTexture(screen);
    video->play();
    EXPECT_EQ(framesShown(*video, 1), 0u);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    video->playLoop();
    markLog();
    EXPECT_EQ(framesShown(*video, 2), 0u); // each step ends it
    EXPECT_LOGGED_EXACTLY(loading("empty") + loading("empty"));
}

// --- Copies

TEST_F(Video, CopyGoesOnWithTheSameVideoAndOwnsNothing) {
    const auto video = openVideo();
    (*video)->play();
    const std::size_t begun = framesShown(**video, 20);
    {
        RVVIDEO copy(**video);
        EXPECT_EQ(copy.getId(), (*video)->getId());
        EXPECT_STREQ(copy.getName(), "video");
        EXPECT_EQ(copy.getTexture(), screen);
        EXPECT_EQ(copy.getStatus(), RV_VIDEO_PLAY);
        EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 1u);
        EXPECT_EQ(begun + framesShown(copy, wholeVideo), framesPerVideo);
        EXPECT_EQ(copy.getStatus(), RV_VIDEO_STOP);
    }
    EXPECT_EQ(RVVIDEO::findById((*video)->getId()), &**video);
    EXPECT_EQ(framesShown(**video, wholeVideo),
              framesPerVideo); // the shared stream is at its start
}

TEST_F(Video, FlippingIsKeptByLoadingAndTakenByCopies) {
    const auto video = openVideo();
    (*video)->flipOn();
    EXPECT_TRUE((*video)->isFlipped());
    EXPECT_TRUE((*video)->load("video"));
    EXPECT_TRUE((*video)->isFlipped());
    const RVVIDEO copy(**video);
    EXPECT_TRUE(copy.isFlipped());
    (*video)->flipOff();
    EXPECT_FALSE((*video)->isFlipped());
    EXPECT_TRUE(copy.isFlipped());
}

TEST_F(Video, CopyOutlivesItsOriginal) {
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("video"));
    video->setTexture(screen);
    RVVIDEO copy(*video);
    delete video;
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 0u);
    copy.play();
    EXPECT_EQ(framesShown(copy, wholeVideo), framesPerVideo);
    copy.load(nullptr);
}

TEST_F(Video, AssignmentCopiesTheFieldsAndKeepsThePlaceInTheRegistry) {
    const auto video = openVideo();
    (*video)->playLoop();
    auto *other = new RVVIDEO, *last = new RVVIDEO;
    const unsigned int own = other->getId();
    *other = **video;
    EXPECT_EQ(other->getId(), (*video)->getId());
    EXPECT_STREQ(other->getName(), "video");
    EXPECT_EQ(other->getTexture(), screen);
    EXPECT_EQ(other->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 3u);
    EXPECT_EQ(RVVIDEO::findById(last->getId()), last);
    other->play();
    EXPECT_EQ(framesShown(*other, wholeVideo), framesPerVideo);
    delete other;
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 2u);
    EXPECT_EQ(RVVIDEO::findByFilename("video"), &**video);
    const RVVIDEO *again = new RVVIDEO;
    EXPECT_EQ(again->getId(), own);
}

TEST_F(Video, AssignmentToItselfAndToACopyChangeNoRegistry) {
    const auto video = openVideo();
    RVVIDEO &same = **video;
    same = **video;
    RVVIDEO copy(same);
    const TestVideo other;
    copy = *other;
    EXPECT_EQ(copy.getId(), other->getId());
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 2u);
    same.play();
    EXPECT_EQ(framesShown(same, wholeVideo), framesPerVideo);
}

} // namespace

} // namespace ravolt::test
