// Videos as objects: registry, file, status, copies. Their frames are tested in frames_test.cpp.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"
#include "tests/support/engineFixture.h"
#include "tests/support/loadVerdicts.h"
#include "tests/support/missingFiles.h"
#include "tests/video/videos.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

static bool decoderFails = false;

// Stands in front of a function that cannot be made to fail by itself (see the linker's --wrap).
extern "C" {
void *__real_mpeg2_init();
void *__wrap_mpeg2_init() { return decoderFails ? nullptr : __real_mpeg2_init(); }
}

namespace ravolt::test {

namespace {

namespace fs = std::filesystem;

const std::string notFound = "   [!] Invalid params or file not found @ RVVIDEO::load\n";
const std::string noDecoder = "   [!] Decoder failed to initialize @ RVVIDEO::load\n";

std::string loading(const std::string &name) { return "\n   Loading MPG file '" + name + "'...\n"; }
const std::string loadingVideo = loading("video");

std::string defaultName(const RVVIDEO &video) {
    return "[video " + std::to_string(video.getId()) + "]";
}

std::ptrdiff_t openFiles() {
    using Folder = fs::directory_iterator;
    return std::distance(Folder("/proc/self/fd"), Folder());
}

// A short video in the test's folder, and a texture with a silent driver.
class Video : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        fs::copy_file(pathOf("ffmpeg2_64x48_b"), "video", fs::copy_options::overwrite_existing);
        screen = makeScreen(64, 64);
        filesBefore = openFiles();
    }

    void TearDown() override {
        decoderFails = false;
        EXPECT_EQ(openFiles(), filesBefore) << "a video is still open";
        RVVIDEO::cleanUp();
        RVVIDEO::setMPGPath(nullptr);
        SilentEngineTest::TearDown();
    }

    // Number of frames that are copied to the texture meanwhile.
    static std::size_t framesShown(RVVIDEO &video, unsigned int steps) {
        return callsOf([&] { EXPECT_TRUE(video.update(steps)); }).count("glTexSubImage2D");
    }

    // What an update does: the frames that it shows, and what follows from its end.
    void expectUpdate(RVVIDEO &video, unsigned int steps, std::size_t frames,
                      RV_VIDEO_STATUS status, const std::string &log = "",
                      std::ptrdiff_t open = 1) const {
        markLog();
        EXPECT_EQ(framesShown(video, steps), frames);
        EXPECT_EQ(video.getStatus(), status);
        EXPECT_LOGGED_EXACTLY(log);
        EXPECT_EQ(openFiles(), filesBefore + open);
    }

    // Some of the frames.
    static std::size_t begin(RVVIDEO &video) {
        const std::size_t begun = framesShown(video, 20);
        EXPECT_GT(begun, 0u);
        EXPECT_LT(begun, framesPerVideo);
        return begun;
    }

    RVTEXTURE *screen = nullptr;
    std::ptrdiff_t filesBefore = 0;
};

// Loaded.
class OpenVideo : public Video {
  protected:
    void SetUp() override {
        Video::SetUp();
        opened = std::make_unique<TestVideo>("video", screen);
        video = &**opened;
        markLog();
    }
    void TearDown() override {
        opened.reset();
        Video::TearDown();
    }

    RVVIDEO *video = nullptr;

  private:
    std::unique_ptr<TestVideo> opened;
};

// --- Registry

TEST_F(Video, NewOneIsStoppedAndEmpty) {
    const RVVIDEO *video = new RVVIDEO;
    EXPECT_NE(video->getId(), 0u);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(video->getTexture(), nullptr);
    EXPECT_FALSE(video->isFlipped());
    EXPECT_EQ(RVVIDEO::findById(video->getId())->getName(), defaultName(*video));
}

TEST_F(OpenVideo, UpdateOfTheEngineDoesNothing) {
    video->play();
    EXPECT_EQ(callsOf([] { RAVOLT::updateVideo(); }), Calls());
    EXPECT_EQ(framesShown(*video, wholeVideo), framesPerVideo);
}

// The identifier 0 means none, but the video is registered all the same.
TEST_F(Video, WithoutAnIdentifierIsUnregisteredToo) {
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
TEST_F(Video, DestructorDoesNotCloseTheFile) {
#if defined(__SANITIZE_ADDRESS__)
    const __lsan::ScopedDisabler leakIsMeant;
#endif
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("video"));
    delete video;
    EXPECT_EQ(openFiles(), filesBefore + 1);
    filesBefore = openFiles();
}

// --- The path

TEST_F(Video, PathIsPutInFrontOfTheName) {
    fs::create_directory("videos");
    fs::rename("video", "videos/video");
    const TestVideo video;
    EXPECT_FALSE(video->load("video"));
    RVVIDEO::setMPGPath("videos/");
    EXPECT_TRUE(video->load("video"));
    EXPECT_STREQ(video->getName(), "video");
    RVVIDEO::setMPGPath("videos/v"); // no separator is added
    EXPECT_TRUE(video->load("ideo"));
}

TEST_F(OpenVideo, EndOfTheVideoSearchesItWithTheCurrentPath) {
    video->playLoop();
    const std::size_t begun = begin(*video);
    RVVIDEO::setMPGPath("elsewhere/");
    expectUpdate(*video, wholeVideo, framesPerVideo - begun, RV_VIDEO_PLAYLOOP, notFound, 0);
}

TEST_F(Video, StartOfTheEngineDoesNotReadThePathOfTheSettings) {
    RVVIDEO::setMPGPath("mine/");
    settings.setMPGPath("theirs/");
    ASSERT_TRUE(restart());
    EXPECT_STREQ(RVVIDEO::getMPGPath(), "mine/");
    EXPECT_EQ(logTextSince(startMark).find("theirs/"), std::string::npos);
}

// --- Loading

TEST_F(Video, LoadLogsTheNameAndStoresIt) {
    const TestVideo video;
    EXPECT_TRUE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loadingVideo);
    EXPECT_STREQ(video->getName(), "video");
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(openFiles(), filesBefore + 1);
}

TEST_F(Video, NamesWithoutAFileAreRefused) {
    const TestVideo video;
    expectNamesWithoutAFileAreRefused(
        {notFound, "   [!] Out of memory for file %s @ RVVIDEO::load\n",
         [&video](const char *name) { return video->load(name); }, RVVIDEO::setMPGPath,
         loading("missing") + "   [!] Unable to open file folder/missing @ RVVOLT::load\n"});
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_EQ(video->getName(), defaultName(*video));
}

TEST_F(Video, WithoutADecoderTheFileIsClosedAgain) {
    const UncomparedLoads uncompared;
    const TestVideo video;
    decoderFails = true;
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loadingVideo + noDecoder);
    video->play();
    expectUpdate(*video, 100, 0, RV_VIDEO_PLAY, "", 0);
    decoderFails = false;
    EXPECT_TRUE(video->load("video"));
}

TEST_F(Video, WithoutMemoryForItsStreamNothingIsLoaded) {
    const UncomparedLoads uncompared;
    recorder.failAllocation(4096, 0, 1);
    const TestVideo video;
    recorder.allocationsWork();
    EXPECT_FALSE(video->load("video"));
    EXPECT_LOGGED_EXACTLY(loadingVideo + noDecoder);
    video->rewind();
    expectUpdate(*video, 10, 0, RV_VIDEO_REWIND, "", 0);
    const RVVIDEO copy(*video);
    EXPECT_EQ(copy.getId(), video->getId());
    zlfFree(nullptr); // the count of the block that was refused
}

TEST_F(OpenVideo, SecondVideoClosesTheFirst) {
    fs::copy_file(pathOf("ffmpeg1_16x16"), "other");
    video->play();
    begin(*video);
    EXPECT_TRUE(video->load("other"));
    EXPECT_EQ(openFiles(), filesBefore + 1);
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_STREQ(video->getName(), "other");
    video->play();
    const Calls frames = callsOf([&] { video->update(wholeVideo); }).named("glTexSubImage2D");
    EXPECT_EQ(frames.size(), framesPerVideo);
    EXPECT_EQ(frames[0].arguments.at(4), 16);
}

TEST_F(OpenVideo, FailedLoadClosesAndStopsTheFirstVideoToo) {
    const std::string longName(600, 'n');
    for (const char *name : {"missing", static_cast<const char *>(nullptr), longName.c_str()}) {
        video->playLoop();
        begin(*video);
        if (name && name == longName)
            recorder.failAllocation(600, 0, 1);
        EXPECT_FALSE(video->load(name));
        recorder.allocationsWork();
        EXPECT_EQ(openFiles(), filesBefore);
        EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
        EXPECT_STREQ(video->getName(), "video");
        video->play();
        EXPECT_EQ(framesShown(*video, wholeVideo), 0u);
        EXPECT_TRUE(video->load("video"));
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
    expectUpdate(*video, wholeVideo, 0, RV_VIDEO_PLAY, notFound, 0); // a folder's name
}

// --- Status

TEST_F(OpenVideo, StatusIsStoredAndNothingElse) {
    const struct {
        void (RVVIDEO::*call)();
        RV_VIDEO_STATUS status;
        int number;
    } rows[] = {{&RVVIDEO::play, RV_VIDEO_PLAY, 1},
                {&RVVIDEO::playLoop, RV_VIDEO_PLAYLOOP, 2},
                {&RVVIDEO::rewind, RV_VIDEO_REWIND, 3},
                {&RVVIDEO::stop, RV_VIDEO_STOP, 0}};
    for (const auto &row : rows) {
        EXPECT_EQ(row.status, row.number);
        recorder.start();
        std::invoke(row.call, *video);
        EXPECT_EQ(recorder.stop(), Calls());
        expectUpdate(*video, 0, 0, row.status);
    }
}

TEST_F(OpenVideo, StoppedVideoDoesNotAdvance) {
    expectUpdate(*video, wholeVideo, 0, RV_VIDEO_STOP);
    video->play();
    const std::size_t begun = begin(*video);
    video->stop();
    expectUpdate(*video, wholeVideo, 0, RV_VIDEO_STOP);
    video->play();
    expectUpdate(*video, wholeVideo, framesPerVideo - begun, RV_VIDEO_STOP, loadingVideo);
}

TEST_F(Video, PlayingWithoutAFileDoesNothing) {
    const TestVideo video;
    video->setTexture(screen);
    video->play();
    expectUpdate(*video, 1000, 0, RV_VIDEO_PLAY, "", 0);
    video->playLoop();
    expectUpdate(*video, 1000, 0, RV_VIDEO_PLAYLOOP, "", 0);
    video->rewind(); // which searches the default name
    expectUpdate(*video, 0, 0, RV_VIDEO_REWIND, notFound, 0);
}

TEST_F(OpenVideo, PlayedVideoStopsAtItsStartAndALoopContinuesInTheSameUpdate) {
    for (int turn = 0; turn < 3; ++turn) {
        video->play();
        expectUpdate(*video, wholeVideo, framesPerVideo, RV_VIDEO_STOP, loadingVideo);
    }
    video->play();
    unsigned int steps = 0;
    for (; video->getStatus() == RV_VIDEO_PLAY; ++steps)
        video->update(1);
    video->playLoop();
    expectUpdate(*video, 3 * steps, 3 * framesPerVideo, RV_VIDEO_PLAYLOOP,
                 loadingVideo + loadingVideo + loadingVideo);
}

TEST_F(OpenVideo, RewindInTheMiddlePlaysToTheEndFirst) {
    video->playLoop();
    const std::size_t begun = begin(*video);
    video->rewind();
    expectUpdate(*video, 0, 0, RV_VIDEO_REWIND);
    expectUpdate(*video, wholeVideo, framesPerVideo - begun, RV_VIDEO_STOP, loadingVideo);
}

TEST_F(OpenVideo, RewindAtTheEndNeedsNoStep) {
    fs::rename("video", "away"); // so that the video finds no start at its end
    video->play();
    expectUpdate(*video, wholeVideo, framesPerVideo, RV_VIDEO_PLAY, notFound, 0);
    video->rewind();
    expectUpdate(*video, 0, 0, RV_VIDEO_REWIND, notFound, 0);
    fs::rename("away", "video");
    expectUpdate(*video, 1000, 0, RV_VIDEO_STOP, loadingVideo);
    video->play();
    expectUpdate(*video, wholeVideo, framesPerVideo, RV_VIDEO_STOP, loadingVideo);
}

TEST_F(OpenVideo, LoopWhoseFileWasDeletedEndsWithoutOne) {
    fs::remove("video");
    video->playLoop();
    expectUpdate(*video, wholeVideo, framesPerVideo, RV_VIDEO_PLAYLOOP, notFound, 0);
    expectUpdate(*video, wholeVideo, 0, RV_VIDEO_PLAYLOOP, "", 0);
}

TEST_F(Video, EmptyFileIsAtItsEndAtOnce) {
    writeFile("empty", Bytes());
    const TestVideo video("empty", screen);
    video->play();
    expectUpdate(*video, 1, 0, RV_VIDEO_STOP, loading("empty"));
    video->playLoop();
    expectUpdate(*video, 2, 0, RV_VIDEO_PLAYLOOP, loading("empty") + loading("empty")); // each step
}

// --- Copies

TEST_F(OpenVideo, CopyContinuesTheSameVideoAndOwnsNothing) {
    video->flipOn();
    EXPECT_TRUE(video->load("video"));
    EXPECT_TRUE(video->isFlipped()) << "after a load";
    video->play();
    const std::size_t begun = begin(*video);
    {
        RVVIDEO copy(*video);
        video->flipOff();
        EXPECT_FALSE(video->isFlipped());
        EXPECT_TRUE(copy.isFlipped());
        EXPECT_EQ(copy.getId(), video->getId());
        EXPECT_STREQ(copy.getName(), "video");
        EXPECT_EQ(copy.getTexture(), screen);
        EXPECT_EQ(copy.getStatus(), RV_VIDEO_PLAY);
        EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 1u);
        expectUpdate(copy, wholeVideo, framesPerVideo - begun, RV_VIDEO_STOP, loadingVideo);
    }
    EXPECT_EQ(RVVIDEO::findById(video->getId()), video);
    // The shared stream is at its start.
    expectUpdate(*video, wholeVideo, framesPerVideo, RV_VIDEO_STOP, loadingVideo);
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

TEST_F(OpenVideo, AssignmentCopiesTheFieldsAndChangesNoRegistry) {
    video->playLoop();
    auto *other = new RVVIDEO, *last = new RVVIDEO;
    const unsigned int own = other->getId();
    *other = *video;
    EXPECT_EQ(other->getId(), video->getId());
    EXPECT_STREQ(other->getName(), "video");
    EXPECT_EQ(other->getTexture(), screen);
    EXPECT_EQ(other->getStatus(), RV_VIDEO_PLAYLOOP);
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 3u);
    EXPECT_EQ(RVVIDEO::findById(last->getId()), last);
    other->play();
    EXPECT_EQ(framesShown(*other, wholeVideo), framesPerVideo);
    delete other;
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 2u);
    EXPECT_EQ(RVVIDEO::findByFilename("video"), video);
    EXPECT_EQ((new RVVIDEO)->getId(), own);

    RVVIDEO &same = *video;
    *video = same;
    RVVIDEO copy(same);
    copy = *last;
    EXPECT_EQ(copy.getId(), last->getId());
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 3u);
    video->play();
    EXPECT_EQ(framesShown(*video, wholeVideo), framesPerVideo);
}

} // namespace

} // namespace ravolt::test
