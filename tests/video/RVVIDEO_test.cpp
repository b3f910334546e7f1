// Films as objects: registry, file, status, copies. What becomes of their frames is in
// frames_test.cpp.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"
#include "tests/support/engineFixture.h"
#include "tests/video/films.h"

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

// A short film in the test's folder, and a texture in front of a silent driver.
class Video : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        fs::copy_file(pathOf("ffmpeg2_64x48_b"), "film", fs::copy_options::overwrite_existing);
        screen = makeScreen(64, 64);
        filesBefore = openFiles();
    }

    void TearDown() override {
        decoderFails = everyFileExists = false;
        EXPECT_EQ(filesBefore, openFiles()) << "a film is still open";
        RVVIDEO::cleanUp();
        RVVIDEO::setMPGPath(nullptr);
        SilentEngineTest::TearDown();
    }

    std::unique_ptr<TestFilm> openFilm() {
        auto film = std::make_unique<TestFilm>("film");
        (*film)->setTexture(screen);
        markLog();
        return film;
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
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename("film"));
    EXPECT_EQ(nullptr, RVVIDEO::findById(1));
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
    const TestFilm first("film"), second("film");
    const TestFilm third;
    EXPECT_EQ(3u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(&*first, RVVIDEO::findByFilename("film"));
    EXPECT_EQ(&*third, RVVIDEO::findByFilename(defaultName(*third).c_str()));
    EXPECT_EQ(&*second, RVVIDEO::findById(second->getId()));
    EXPECT_EQ(nullptr, RVVIDEO::findByFilename("Film"));
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
    const auto film = openFilm();
    (*film)->play();
    recorder.start();
    RAVOLT::updateVideo();
    EXPECT_EQ(Calls(), recorder.stop());
    EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm));
}

// On purpose: see the header.
TEST_F(Video, DestructorLeavesTheFileOpen) {
#if defined(__SANITIZE_ADDRESS__)
    const __lsan::ScopedDisabler leakIsMeant;
#endif
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("film"));
    delete video;
    EXPECT_EQ(filesBefore + 1, openFiles());
    filesBefore = openFiles();
}

// --- The folder

TEST_F(Video, FolderOfFilmsIsCutAtItsBufferAndEmptiedByNull) {
    EXPECT_STREQ("", RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath("films/");
    EXPECT_STREQ("films/", RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath(std::string(300, 'x').c_str());
    EXPECT_EQ(std::string(255, 'x'), RVVIDEO::getMPGPath());
    RVVIDEO::setMPGPath(nullptr);
    EXPECT_STREQ("", RVVIDEO::getMPGPath());
}

TEST_F(Video, FilmIsSoughtBehindTheFolder) {
    fs::create_directory("folder");
    fs::rename("film", "folder/film");
    const TestFilm film;
    EXPECT_FALSE(film->load("film"));
    RVVIDEO::setMPGPath("folder/");
    EXPECT_TRUE(film->load("film"));
    EXPECT_STREQ("film", film->getName());
    RVVIDEO::setMPGPath("folder/f"); // no separator is added
    EXPECT_TRUE(film->load("ilm"));
}

TEST_F(Video, EndOfTheFilmLooksForItBehindThePathOfThatMoment) {
    const auto film = openFilm();
    (*film)->playLoop();
    framesShown(**film, 20);
    RVVIDEO::setMPGPath("elsewhere/");
    EXPECT_TRUE((*film)->update(wholeFilm));
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
    const TestFilm film;
    markLog();
    EXPECT_TRUE(film->load("film"));
    EXPECT_LOGGED_EXACTLY(loading("film"));
    EXPECT_STREQ("film", film->getName());
    EXPECT_EQ(RV_VIDEO_STOP, film->getStatus());
    EXPECT_EQ(filesBefore + 1, openFiles());
}

TEST_F(Video, WhatIsNoFileIsNotFound) {
    fs::create_directory("folder.m2v");
    const TestFilm film;
    for (const char *name : {"missing", "folder.m2v", "folder.m2v/", "", "film/"}) {
        markLog();
        EXPECT_FALSE(film->load(name)) << name;
        EXPECT_LOGGED_EXACTLY(notFound);
        EXPECT_EQ(RV_VIDEO_STOP, film->getStatus());
        EXPECT_EQ(defaultName(*film), film->getName());
    }
}

TEST_F(Video, NullIsRefusedWhateverTheFolder) {
    const TestFilm film;
    for (const std::string &folder : {std::string(), std::string("film"), std::string(255, 'x')}) {
        RVVIDEO::setMPGPath(folder.c_str());
        markLog();
        EXPECT_FALSE(film->load(nullptr));
        EXPECT_LOGGED_EXACTLY(notFound);
    }
}

TEST_F(Video, FileThatCannotBeOpenedIsNamedWithItsFolder) {
    const TestFilm film;
    RVVIDEO::setMPGPath("folder/");
    everyFileExists = true;
    markLog();
    EXPECT_FALSE(film->load("gone"));
    EXPECT_LOGGED_EXACTLY(loading("gone") +
                          "   [!] Unable to open file folder/gone @ RVVOLT::load\n");
    EXPECT_EQ(defaultName(*film), film->getName());
}

TEST_F(Video, WithoutADecoderTheFileIsClosedAgain) {
    const TestFilm film;
    decoderFails = true;
    markLog();
    EXPECT_FALSE(film->load("film"));
    EXPECT_LOGGED_EXACTLY(loading("film") + noDecoder);
    EXPECT_EQ(filesBefore, openFiles());
    film->play();
    EXPECT_TRUE(film->update(100));
    EXPECT_EQ(RV_VIDEO_PLAY, film->getStatus());
    decoderFails = false;
    EXPECT_TRUE(film->load("film"));
}

TEST_F(Video, WithoutMemoryForItsStreamNothingIsLoaded) {
    recorder.failAllocation(4096, 0, 1);
    const TestFilm film;
    recorder.allocationsWork();
    markLog();
    EXPECT_FALSE(film->load("film"));
    EXPECT_LOGGED_EXACTLY(loading("film") + noDecoder);
    EXPECT_EQ(filesBefore, openFiles());
    film->rewind();
    EXPECT_TRUE(film->update(10));
    const RVVIDEO copy(*film);
    EXPECT_EQ(film->getId(), copy.getId());
    zlfFree(nullptr); // the count of the block that was not had
}

TEST_F(Video, NameTooLargeForTheMemoryIsRefused) {
    const std::string name(600, 'n');
    const auto film = openFilm();
    RVVIDEO::setMPGPath("films/");
    recorder.failAllocation(600, 0, 1);
    EXPECT_FALSE((*film)->load(name.c_str()));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for file films/" + name + " @ RVVIDEO::load\n");
    EXPECT_EQ(filesBefore, openFiles());
    EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
}

TEST_F(Video, NoNameNeedsNoMemory) {
    const TestFilm film;
    RVVIDEO::setMPGPath(std::string(250, 'p').c_str());
    markLog();
    recorder.failAllocation(200, 0, 1);
    EXPECT_FALSE(film->load(nullptr));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, SecondFilmClosesTheFirst) {
    fs::copy_file(pathOf("ffmpeg1_16x16"), "other");
    const auto film = openFilm();
    (*film)->play();
    const std::size_t begun = framesShown(**film, 20);
    EXPECT_GT(begun, 0u);
    EXPECT_LT(begun, framesOfFilms);
    EXPECT_TRUE((*film)->load("other"));
    EXPECT_EQ(filesBefore + 1, openFiles());
    EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
    EXPECT_STREQ("other", (*film)->getName());
    (*film)->play();
    recorder.start();
    (*film)->update(wholeFilm);
    const Calls frames = recorder.stop().named("glTexSubImage2D");
    EXPECT_EQ(framesOfFilms, frames.size());
    EXPECT_EQ(16, frames[0].arguments.at(4));
}

TEST_F(Video, FailedLoadClosesAndStopsTheFirstFilmToo) {
    for (const char *name : {"missing", static_cast<const char *>(nullptr)}) {
        const auto film = openFilm();
        (*film)->playLoop();
        (*film)->update(20);
        EXPECT_FALSE((*film)->load(name));
        EXPECT_EQ(filesBefore, openFiles());
        EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
        EXPECT_STREQ("film", (*film)->getName());
        (*film)->play();
        EXPECT_EQ(0u, framesShown(**film, wholeFilm));
    }
}

TEST_F(Video, NameLongerThanItsBufferIsCutAndNotFoundAgain) {
    std::string name;
    while (name.size() < 300)
        name += "./";
    name += "film";
    const TestFilm film(name);
    EXPECT_EQ(name.substr(0, 255), film->getName());
    film->play();
    markLog();
    EXPECT_TRUE(film->update(wholeFilm));
    EXPECT_LOGGED_EXACTLY(notFound); // what is cut names a folder
    EXPECT_EQ(filesBefore, openFiles());
}

// --- Status

TEST_F(Video, StatusIsStoredAndNothingElse) {
    const auto film = openFilm();
    RVVIDEO &video = **film;
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

TEST_F(Video, StoppedFilmStaysWhereItIs) {
    const auto film = openFilm();
    EXPECT_EQ(0u, framesShown(**film, wholeFilm));
    (*film)->play();
    const std::size_t begun = framesShown(**film, 20);
    (*film)->stop();
    EXPECT_EQ(0u, framesShown(**film, wholeFilm));
    (*film)->play();
    EXPECT_EQ(framesOfFilms, begun + framesShown(**film, wholeFilm));
}

TEST_F(Video, PlayingWithoutAFileDoesNothing) {
    const TestFilm film;
    film->setTexture(screen);
    film->play();
    markLog();
    EXPECT_EQ(0u, framesShown(*film, 1000));
    EXPECT_EQ(RV_VIDEO_PLAY, film->getStatus());
    film->playLoop();
    EXPECT_EQ(0u, framesShown(*film, 1000));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, film->getStatus());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, NoStepsDoNothing) {
    const auto film = openFilm();
    for (auto status : {&RVVIDEO::play, &RVVIDEO::playLoop, &RVVIDEO::rewind}) {
        (**film.*status)();
        EXPECT_EQ(0u, framesShown(**film, 0));
    }
    EXPECT_EQ(RV_VIDEO_REWIND, (*film)->getStatus());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Video, PlayedFilmStopsAtItsStart) {
    const auto film = openFilm();
    for (int turn = 0; turn < 3; ++turn) {
        markLog();
        (*film)->play();
        EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm));
        EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
        EXPECT_LOGGED_EXACTLY(loading("film"));
        EXPECT_EQ(filesBefore + 1, openFiles());
    }
}

TEST_F(Video, LoopedFilmGoesOnInTheSameUpdate) {
    const auto film = openFilm();
    (*film)->play();
    unsigned int steps = 0;
    for (; (*film)->getStatus() == RV_VIDEO_PLAY; ++steps)
        (*film)->update(1);
    markLog();
    (*film)->playLoop();
    EXPECT_EQ(3 * framesOfFilms, framesShown(**film, 3 * steps));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, (*film)->getStatus());
    EXPECT_LOGGED_EXACTLY(loading("film") + loading("film") + loading("film"));
}

TEST_F(Video, RewindInTheMiddlePlaysToTheEndFirst) {
    const auto film = openFilm();
    (*film)->playLoop();
    const std::size_t begun = framesShown(**film, 20);
    (*film)->rewind();
    EXPECT_EQ(0u, framesShown(**film, 0));
    EXPECT_EQ(RV_VIDEO_REWIND, (*film)->getStatus());
    EXPECT_EQ(framesOfFilms, begun + framesShown(**film, wholeFilm));
    EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
    EXPECT_LOGGED_EXACTLY(loading("film"));
}

TEST_F(Video, RewindAtTheEndIsCarriedOutWithoutAStep) {
    const auto film = openFilm();
    fs::rename("film", "away"); // so that the film finds no start at its end
    (*film)->play();
    EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm));
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(filesBefore, openFiles());

    (*film)->rewind();
    markLog();
    EXPECT_EQ(0u, framesShown(**film, 0));
    EXPECT_LOGGED_EXACTLY(notFound);
    EXPECT_EQ(RV_VIDEO_REWIND, (*film)->getStatus());

    fs::rename("away", "film");
    markLog();
    EXPECT_EQ(0u, framesShown(**film, 1000));
    EXPECT_LOGGED_EXACTLY(loading("film"));
    EXPECT_EQ(RV_VIDEO_STOP, (*film)->getStatus());
    (*film)->play();
    EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm));
}

TEST_F(Video, RewindBeforeTheFirstLoadLooksForItsDefaultName) {
    const TestFilm film;
    film->rewind();
    markLog();
    EXPECT_TRUE(film->update(0));
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, LoopWhoseFileHasGoneEndsWithoutOne) {
    const auto film = openFilm();
    fs::remove("film");
    (*film)->playLoop();
    EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm));
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, (*film)->getStatus());
    EXPECT_EQ(0u, framesShown(**film, wholeFilm));
    EXPECT_LOGGED_EXACTLY(notFound);
}

TEST_F(Video, EmptyFileIsAtItsEndAtOnce) {
    writeFile("empty", {});
    const TestFilm film("empty");
    film->setTexture(screen);
    film->play();
    EXPECT_EQ(0u, framesShown(*film, 1));
    EXPECT_EQ(RV_VIDEO_STOP, film->getStatus());
    film->playLoop();
    markLog();
    EXPECT_EQ(0u, framesShown(*film, 2)); // each step ends it
    EXPECT_LOGGED_EXACTLY(loading("empty") + loading("empty"));
}

// --- Copies

TEST_F(Video, CopyGoesOnWithTheSameFilmAndOwnsNothing) {
    const auto film = openFilm();
    (*film)->play();
    const std::size_t begun = framesShown(**film, 20);
    {
        RVVIDEO copy(**film);
        EXPECT_EQ((*film)->getId(), copy.getId());
        EXPECT_STREQ("film", copy.getName());
        EXPECT_EQ(screen, copy.getTexture());
        EXPECT_EQ(RV_VIDEO_PLAY, copy.getStatus());
        EXPECT_EQ(1u, RVVIDEO::getNumberOfVideos());
        EXPECT_EQ(framesOfFilms, begun + framesShown(copy, wholeFilm));
        EXPECT_EQ(RV_VIDEO_STOP, copy.getStatus());
    }
    EXPECT_EQ(&**film, RVVIDEO::findById((*film)->getId()));
    EXPECT_EQ(framesOfFilms, framesShown(**film, wholeFilm)); // the shared stream is at its start
}

TEST_F(Video, FlippingIsKeptByLoadingAndTakenByCopies) {
    const auto film = openFilm();
    (*film)->flipOn();
    EXPECT_TRUE((*film)->isFlipped());
    EXPECT_TRUE((*film)->load("film"));
    EXPECT_TRUE((*film)->isFlipped());
    const RVVIDEO copy(**film);
    EXPECT_TRUE(copy.isFlipped());
    (*film)->flipOff();
    EXPECT_FALSE((*film)->isFlipped());
    EXPECT_TRUE(copy.isFlipped());
}

TEST_F(Video, CopyOutlivesItsOriginal) {
    auto *video = new RVVIDEO;
    ASSERT_TRUE(video->load("film"));
    video->setTexture(screen);
    RVVIDEO copy(*video);
    delete video;
    EXPECT_EQ(0u, RVVIDEO::getNumberOfVideos());
    copy.play();
    EXPECT_EQ(framesOfFilms, framesShown(copy, wholeFilm));
    copy.load(nullptr);
}

TEST_F(Video, AssignmentCopiesTheFieldsAndKeepsThePlaceInTheRegistry) {
    const auto film = openFilm();
    (*film)->playLoop();
    auto *other = new RVVIDEO, *last = new RVVIDEO;
    const unsigned int own = other->getId();
    *other = **film;
    EXPECT_EQ((*film)->getId(), other->getId());
    EXPECT_STREQ("film", other->getName());
    EXPECT_EQ(screen, other->getTexture());
    EXPECT_EQ(RV_VIDEO_PLAYLOOP, other->getStatus());
    EXPECT_EQ(3u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(last, RVVIDEO::findById(last->getId()));
    other->play();
    EXPECT_EQ(framesOfFilms, framesShown(*other, wholeFilm));
    delete other;
    EXPECT_EQ(2u, RVVIDEO::getNumberOfVideos());
    EXPECT_EQ(&**film, RVVIDEO::findByFilename("film"));
    const RVVIDEO *again = new RVVIDEO;
    EXPECT_EQ(own, again->getId());
}

TEST_F(Video, AssignmentToItselfAndToACopyChangeNoRegistry) {
    const auto film = openFilm();
    RVVIDEO &same = **film;
    same = **film;
    RVVIDEO copy(same);
    const TestFilm other;
    copy = *other;
    EXPECT_EQ(other->getId(), copy.getId());
    EXPECT_EQ(2u, RVVIDEO::getNumberOfVideos());
    same.play();
    EXPECT_EQ(framesOfFilms, framesShown(same, wholeFilm));
}

} // namespace

} // namespace ravolt::test
