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
        EXPECT_EQ(filesBefore, openFiles()) << "a video is still open";
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
        recorder.start();
        EXPECT_TRUE(video.update(steps));
        return recorder.stop().count("glTexSubImage2D");
    }

    RVTEXTURE *screen = nullptr;
    std::ptrdiff_t filesBefore = 0;
};

// --- Registry

TEST_F(Video, NewOneIsStoppedAndHasNothing) {
    const RVVIDEO *video = new RVVIDEO;
    EXPECT_NE(0u, video->getId());
    EXPECT_EQ(RV_VIDEO_STOP, video->getStatus());
    EXPECT_EQ(nullptr, video->getTexture());
    EXPECT_FALSE(video->isFlipped());
    EXPECT_EQ(defaultName(*video), RVVIDEO::findById(video->getId())->getName());
}

TEST_F(Video, FirstMatchInOrderOfCreationIsFound) {
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename("video"));
    EXPECT_EQ(nullptr, RVVIDEO::findById(1));
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
    const TestVideo first("video"), second("video");
    const TestVideo third;
    EXPECT_EQ(3u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(&*first, RVVIDEO::findByFilename("video"));
    EXPECT_EQ(&*third, RVVIDEO::findByFilename(defaultName(*third).c_str()));
    EXPECT_EQ(&*second, RVVIDEO::findById(second->getId()));
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename("Video"));
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename("fil"));
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename(nullptr));
    EXPECT_EQ(nullptr, RVVIDEO::findById(65535));
}

TEST_F(Video, RegistryKeepsTheOrderOfCreation) {
    EXPECT_EQ(nullptr, RVVIDEO::getFirst());
    const RVVIDEO *first = new RVVIDEO, *second = new RVVIDEO, *third = new RVVIDEO;
    EXPECT_EQ(first, RVVIDEO::getFirst());
    EXPECT_EQ(nullptr, first->getPrevious());
    EXPECT_EQ(second, first->getNext());
    EXPECT_EQ(second, third->getPrevious());
    EXPECT_EQ(nullptr, third->getNext());
    delete second;
    EXPECT_EQ(third, first->getNext());
    EXPECT_EQ(first, third->getPrevious());
}

TEST_F(Video, DestructorGivesTheIdentifierBackAndLeavesTheRegistry) {
    const RVVIDEO *first = new RVVIDEO, *middle = new RVVIDEO, *last = new RVVIDEO;
    const unsigned int id = middle->getId();
    delete middle;
    EXPECT_EQ(2u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(nullptr, RVVIDEO::findById(id));
    const RVVIDEO *again = new RVVIDEO;
    EXPECT_EQ(id, again->getId());
    delete first;
    delete again;
    EXPECT_EQ(last, RVVIDEO::findById(last->getId()));
}

TEST_F(Video, CleanUpDeletesAllAndSaysWhetherThereWereAny) {
    markLog();
    EXPECT_FALSE(RVVIDEO::cleanUp());
    new RVVIDEO;
    new RVVIDEO;
    EXPECT_TRUE(RVVIDEO::cleanUp());
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
    EXPECT_FALSE(RVVIDEO::cleanUp());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, EngineDeletesWhatIsLeft) {
    (new RVVIDEO)->setTexture(screen);
    new RVVIDEO;
    EXPECT_TRUE(RAVOLT::free());
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
}

TEST_F(Video, UpdateOfTheEngineDoesNothing) {
    const auto video = openVideo();
    (*video)->play();
    recorder.start();
    RAVOLT::updateVideo();
    EXPECT_EQ(Calls(), recorder.stop());
    EXPECT_EQ(framesPerVideo, framesShown(**video, wholeVideo));
}

// On purpose: see the header.
TEST_F(Video, DestructorLeavesTheFileOpen) {
#if defined(__SANITIZE_ADDRESS__)
    const __lsan::ScopedDisabler leakIsMeant;
#endif
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("video"));
    delete video;
    EXPECT_EQ(filesBefore + 1, openFiles());
    filesBefore = openFiles();
}

// --- The folder

TEST_F(Video, FolderOfVideosIsCutAtItsBufferAndEmptiedByNull) {
    EXPECT_STREQ("", RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath("videos/");
    EXPECT_STREQ("videos/", RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath(std::string(300, 'x').c_str());
    EXPECT_EQ(std::string(255, 'x'), RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath(nullptr);
    EXPECT_STREQ("", RVVIDEO::getMPGPath());
}

TEST_F(Video, VideoIsSoughtBehindTheFolder) {
    fs::create_directory("folder");
    fs::rename("video", "folder/video");
    const TestVideo video;
    EXPECT_FALSE(video->load("video"));
    RVVIDEO::setMPGPath("folder/");
    EXPECT_TRUE(video->load("video"));
    EXPECT_STREQ("video", video->getName());
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
    EXPECT_EQ(filesBefore, openFiles());
}

TEST_F(Video, StartOfTheEngineDoesNotTakeTheFolderFromTheSettings) {
    RVVIDEO::setMPGPath("mine/");
    settings.setMPGPath("theirs/");
    ASSERT_TRUE(restart());
    EXPECT_STREQ("mine/", RVVIDEO::getMPGPath());
    EXPECT_EQ(std::string::npos, logTextSince(startMark).find("theirs/"));
}

// --- Loading

TEST_F(Video, LoadTellsTheNameAndTakesIt) {
    const TestVideo video;
    markLog();
    EXPECT_TRUE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video"));
    EXPECT_STREQ("video", video->getName());
    EXPECT_EQ(RV_VIDEO_STOP, video->getStatus());
    EXPECT_EQ(filesBefore + 1, openFiles());
}

TEST_F(Video, WhatIsNoFileIsNotFound) {
    fs::create_directory("folder.m2v");
    const TestVideo video;
    for (const char *name : {"missing", "folder.m2v", "folder.m2v/", "", "video/"}) {
        markLog();
        EXPECT_FALSE(video->load(name)) << name;
        EXPECT_LOGGED_EXACTLY(notFound);
        EXPECT_EQ(RV_VIDEO_STOP, video->getStatus());
        EXPECT_EQ(defaultName(*video), video->getName());
    }
}

TEST_F(Video, NullIsRefusedWhateverTheFolder) {
    const TestVideo video;
    for (const std::string &folder : {std::string(), std::string("video"), std::string(255, 'x')}) {
        RVVIDEO::setMPGPath(folder.c_str());
        markLog();
        EXPECT_FALSE(video->load(nullptr));
        EXPECT_LOGGED_EXACTLY(notFound);
    }
}

TEST_F(Video, FileThatCannotBeOpenedIsNamedWithItsFolder) {
    const TestVideo video;
    RVVIDEO::setMPGPath("folder/");
    everyFileExists = true;
    markLog();
    EXPECT_FALSE(video->load("gone"));
    EXPECT_LOGGED_EXACTLY(loading("gone") +
                          "   [!] Unable to open file folder/gone @ RVVOLT::load\n");
    EXPECT_EQ(defaultName(*video), video->getName());
}

TEST_F(Video, WithoutADecoderTheFileIsClosedAgain) {
    const TestVideo video;
    decoderFails = true;
    markLog();
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video") + noDecoder);
    EXPECT_EQ(filesBefore, openFiles());
    video->play();
    EXPECT_TRUE(video->update(100));
    EXPECT_EQ(RV_VIDEO_PLAY, video->getStatus());
    decoderFails = false;
    EXPECT_TRUE(video->load("video"));
}

TEST_F(Video, WithoutMemoryForItsStreamNothingIsLoaded) {
    recorder.failAllocation(4096, 0, 1);
    const TestVideo video;
    recorder.allocationsWork();
    markLog();
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loading("video") + noDecoder);
    EXPECT_EQ(filesBefore, openFiles());
    video->rewind();
    EXPECT_TRUE(video->update(10));
    const RVVIDEO copy(*video);
    EXPECT_EQ(video->getId(), copy.getId());
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
    EXPECT_EQ(filesBefore, openFiles());
    EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
}

TEST_F(Video, NoNameNeedsNoMemory) {
    const TestVideo video;
    RVVIDEO::setMPGPath(std::string(250, 'p').c_str());
    markLog();
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
    EXPECT_EQ(filesBefore + 1, openFiles());
    EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
    EXPECT_STREQ("other", (*video)->getName());
    (*video)->play();
    recorder.start();
    (*video)->update(wholeVideo);
    const Calls frames = recorder.stop().named("glTexSubImage2D");
    EXPECT_EQ(framesPerVideo, frames.size());
    EXPECT_EQ(16, frames[0].arguments.at(4));
}

TEST_F(Video, FailedLoadClosesAndStopsTheFirstVideoToo) {
    for (const char *name : {"missing", static_cast<const char *>(nullptr)}) {
        const auto video = openVideo();
        (*video)->playLoop();
        (*video)->update(20);
        EXPECT_FALSE((*video)->load(name));
        EXPECT_EQ(filesBefore, openFiles());
        EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
        EXPECT_STREQ("video", (*video)->getName());
        (*video)->play();
        EXPECT_EQ(0u, framesShown(**video, wholeVideo));
    }
}

TEST_F(Video, NameLongerThanItsBufferIsCutAndNotFoundAgain) {
    std::string name;
    while (name.size() < 300)
        name += "./";
    name += "video";
    const TestVideo video(name);
    EXPECT_EQ(name.substr(0, 255), video->getName());
    video->play();
    markLog();
    EXPECT_TRUE(video->update(wholeVideo));
    EXPECT_LOGGED_EXACTLY(notFound); // what is cut names a folder
    EXPECT_EQ(filesBefore, openFiles());
}

// --- Status

TEST_F(Video, StatusIsStoredAndNothingElse) {
    const auto opened = openVideo();
    RVVIDEO &video = **opened;
    recorder.start();
    video.play();
    EXPECT_EQ(RV_VIDEO_PLAY, video.getStatus());
    video.playLoop();
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, video.getStatus());
    video.rewind();
    EXPECT_EQ(RV_VIDEO_REWIND, video.getStatus());
    video.stop();
    EXPECT_EQ(RV_VIDEO_STOP, video.getStatus());
    EXPECT_EQ(Calls(), recorder.stop());
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(0, RV_VIDEO_STOP);
    EXPECT_EQ(1, RV_VIDEO_PLAY);
    EXPECT_EQ(2, RV_VIDEO_PLAYLOOP);
    EXPECT_EQ(3, RV_VIDEO_REWIND);
}

TEST_F(Video, StoppedVideoStaysWhereItIs) {
    const auto video = openVideo();
    EXPECT_EQ(0u, framesShown(**video, wholeVideo));
    (*video)->play();
    const std::size_t begun = framesShown(**video, 20);
    (*video)->stop();
    EXPECT_EQ(0u, framesShown(**video, wholeVideo));
    (*video)->play();
    EXPECT_EQ(framesPerVideo, begun + framesShown(**video, wholeVideo));
}

TEST_F(Video, PlayingWithoutAFileDoesNothing) {
    const TestVideo video;
    video->setTexture(screen);
    video->play();
    markLog();
    EXPECT_EQ(0u, framesShown(*video, 1000));
    EXPECT_EQ(RV_VIDEO_PLAY, video->getStatus());
    video->playLoop();
    EXPECT_EQ(0u, framesShown(*video, 1000));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, video->getStatus());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, NoStepsDoNothing) {
    const auto video = openVideo();
    for (auto status : {&RVVIDEO::play, &RVVIDEO::playLoop, &RVVIDEO::rewind}) {
        (**video.*status)();
        EXPECT_EQ(0u, framesShown(**video, 0));
    }
    EXPECT_EQ(RV_VIDEO_REWIND, (*video)->getStatus());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, PlayedVideoStopsAtItsStart) {
    const auto video = openVideo();
    for (int turn = 0; turn < 3; ++turn) {
        markLog();
        (*video)->play();
        EXPECT_EQ(framesPerVideo, framesShown(**video, wholeVideo));
        EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
        EXPECT_LOGGED_EXACTLY(loading("video"));
        EXPECT_EQ(filesBefore + 1, openFiles());
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
    EXPECT_EQ(3 * framesPerVideo, framesShown(**video, 3 * steps));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, (*video)->getStatus());
    EXPECT_LOGGED_EXACTLY(loading("video") + loading("video") + loading("video"));
}

TEST_F(Video, RewindInTheMiddlePlaysToTheEndFirst) {
    const auto video = openVideo();
    (*video)->playLoop();
    const std::size_t begun = framesShown(**video, 20);
    (*video)->rewind();
    EXPECT_EQ(0u, framesShown(**video, 0));
    EXPECT_EQ(RV_VIDEO_REWIND, (*video)->getStatus());
    EXPECT_EQ(framesPerVideo, begun + framesShown(**video, wholeVideo));
    EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
    EXPECT_LOGGED_EXACTLY(loading("video"));
}

TEST_F(Video, RewindAtTheEndIsCarriedOutWithoutAStep) {
    const auto video = openVideo();
    fs::rename("video", "away"); // so that the video finds no start at its end
    (*video)->play();
    EXPECT_EQ(framesPerVideo, framesShown(**video, wholeVideo));
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(filesBefore, openFiles());

    (*video)->rewind();
    markLog();
    EXPECT_EQ(0u, framesShown(**video, 0));
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(RV_VIDEO_REWIND, (*video)->getStatus());

    fs::rename("away", "video");
    markLog();
    EXPECT_EQ(0u, framesShown(**video, 1000));
    EXPECT_LOGGED_EXACTLY(loading("video"));
    EXPECT_EQ(RV_VIDEO_STOP, (*video)->getStatus());
    (*video)->play();
    EXPECT_EQ(framesPerVideo, framesShown(**video, wholeVideo));
}

TEST_F(Video, RewindBeforeTheFirstLoadLooksForItsDefaultName) {
    const TestVideo video;
    video->rewind();
    markLog();
    EXPECT_TRUE(video->update(0));
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, LoopWhoseFileHasGoneEndsWithoutOne) {
    const auto video = openVideo();
    fs::remove("video");
    (*video)->playLoop();
    EXPECT_EQ(framesPerVideo, framesShown(**video, wholeVideo));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, (*video)->getStatus());
    EXPECT_EQ(0u, framesShown(**video, wholeVideo));
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, EmptyFileIsAtItsEndAtOnce) {
    writeFile("empty", {});
    const TestVideo video("empty");
    video->setTexture(screen);
    video->play();
    EXPECT_EQ(0u, framesShown(*video, 1));
    EXPECT_EQ(RV_VIDEO_STOP, video->getStatus());
    video->playLoop();
    markLog();
    EXPECT_EQ(0u, framesShown(*video, 2)); // each step ends it
    EXPECT_LOGGED_EXACTLY(loading("empty") + loading("empty"));
}

// --- Copies

TEST_F(Video, CopyGoesOnWithTheSameVideoAndOwnsNothing) {
    const auto video = openVideo();
    (*video)->play();
    const std::size_t begun = framesShown(**video, 20);
    {
        RVVIDEO copy(**video);
        EXPECT_EQ((*video)->getId(), copy.getId());
        EXPECT_STREQ("video", copy.getName());
        EXPECT_EQ(screen, copy.getTexture());
        EXPECT_EQ(RV_VIDEO_PLAY, copy.getStatus());
        EXPECT_EQ(1u, RVVIDEO::getNumberOfVideos());
        EXPECT_EQ(framesPerVideo, begun + framesShown(copy, wholeVideo));
        EXPECT_EQ(RV_VIDEO_STOP, copy.getStatus());
    }
    EXPECT_EQ(&**video, RVVIDEO::findById((*video)->getId()));
    EXPECT_EQ(framesPerVideo,
              framesShown(**video, wholeVideo)); // the shared stream is at its start
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
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
    copy.play();
    EXPECT_EQ(framesPerVideo, framesShown(copy, wholeVideo));
    copy.load(nullptr);
}

TEST_F(Video, AssignmentCopiesTheFieldsAndKeepsThePlaceInTheRegistry) {
    const auto video = openVideo();
    (*video)->playLoop();
    auto *other = new RVVIDEO, *last = new RVVIDEO;
    const unsigned int own = other->getId();
    *other = **video;
    EXPECT_EQ((*video)->getId(), other->getId());
    EXPECT_STREQ("video", other->getName());
    EXPECT_EQ(screen, other->getTexture());
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, other->getStatus());
    EXPECT_EQ(3u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(last, RVVIDEO::findById(last->getId()));
    other->play();
    EXPECT_EQ(framesPerVideo, framesShown(*other, wholeVideo));
    delete other;
    EXPECT_EQ(2u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(&**video, RVVIDEO::findByFilename("video"));
    const RVVIDEO *again = new RVVIDEO;
    EXPECT_EQ(own, again->getId());
}

TEST_F(Video, AssignmentToItselfAndToACopyChangeNoRegistry) {
    const auto video = openVideo();
    RVVIDEO &same = **video;
    same = **video;
    RVVIDEO copy(same);
    const TestVideo other;
    copy = *other;
    EXPECT_EQ(other->getId(), copy.getId());
    EXPECT_EQ(2u, RVVIDEO::getNumberOfVideos());
    same.play();
    EXPECT_EQ(framesPerVideo, framesShown(same, wholeVideo));
}

} // namespace

} // namespace ravolt::test
