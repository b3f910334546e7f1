// The calls that copy the frames of a video to its texture.

#include "ravolt/RVVIDEO.h"

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "tests/support/engineFixture.h"
#include "tests/video/videos.h"
#include "video/stream.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {

namespace {

const std::string tooLarge = "   [!] Frame larger than its texture @ RVVIDEO::update";

class Frames : public SilentEngineTest {
  protected:
    void TearDown() override {
        RVMATERIAL::reset();
        SilentEngineTest::TearDown();
    }

    static Call copied(unsigned int width, unsigned int height) {
        return {"glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGB,
                GL_UNSIGNED_BYTE,  anyAddress};
    }

    static Calls updateCalls(RVVIDEO &video, unsigned int steps = wholeVideo) {
        return callsOf([&] { EXPECT_TRUE(video.update(steps)); });
    }

    static Call binding(RVTEXTURE *texture) {
        return {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()};
    }

    // The sizes of the frames that a video copies, each size with the number of frames in a row.
    struct Run {
        std::size_t frames;
        double width, height;
        bool operator==(const Run &) const = default;
    };
    static std::vector<Run> sizesCopied(RVVIDEO &video) {
        std::vector<Run> runs;
        for (const Call &call : updateCalls(video).named("glTexSubImage2D")) {
            const double width = call.arguments.at(4), height = call.arguments.at(5);
            if (runs.empty() || runs.back() != Run{runs.back().frames, width, height})
                runs.push_back({0, width, height});
            ++runs.back().frames;
        }
        return runs;
    }
};

TEST_F(Frames, EachFrameIsOneCopyOfWholeMacroblocksOrOfTheFlippedRows) {
    for (const VideoSample &sample : samples) {
        SCOPED_TRACE(sample.name);
        RVTEXTURE *screen = makeScreen(512, 512);
        const PlayingVideo video(pathOf(sample.name), screen);
        const unsigned int across = wholeBlocks(sample.width);
        std::vector<Call> wanted;
        for (unsigned int frame = 0; frame < framesPerVideo; ++frame)
            wanted.insert(wanted.end(), {{"glActiveTextureARB", GL_TEXTURE0},
                                         binding(screen),
                                         {"glPixelStorei", GL_UNPACK_ALIGNMENT, 1},
                                         copied(across, wholeBlocks(sample.height))});
        EXPECT_EQ(updateCalls(*video), Calls(wanted));
        video->flipOn();
        video->play();
        EXPECT_EQ(updateCalls(*video).named("glTexSubImage2D"),
                  Calls(std::vector<Call>(framesPerVideo, copied(across, sample.height))));
    }
}

TEST_F(Frames, FlippedFrameWithoutMemoryIsDroppedWithOneLine) {
    const PlayingVideo video(pathOf("ffmpeg1_352x288_b"), makeScreen(512, 512));
    updateCalls(*video, 20); // the decoder has its memory
    video->flipOn();
    markLog();
    recorder.failAllocation(352 * 288 * 3);
    EXPECT_EQ(updateCalls(*video, 15), Calls());
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVVIDEO::update\n");
    EXPECT_GT(updateCalls(*video, 15).count("glTexSubImage2D"), 0u);
}

// The last picture is complete only when something follows it, and the last but one is shown then.
// An end code shows it too, in the last block and before the end of that block.
TEST_F(Frames, LastOneIsShownByTheEndOfTheVideo) {
    Bytes padded = bytesOf("ffmpeg2_176x144");
    const std::size_t room = blockBytes - padded.size() % blockBytes;
    ASSERT_GT(room, 1u);
    padded.insert(padded.end(), room / 2, 0);
    writeFile("padded", padded);
    const std::pair<std::string, unsigned int> rows[] = {
        {pathOf("ffmpeg2_176x144.noend"), framesPerVideo - 2},
        {pathOf("ffmpeg2_176x144"), framesPerVideo},
        {"padded", framesPerVideo}};
    for (const auto &[name, shown] : rows) {
        const PlayingVideo video(name, makeScreen(256, 256));
        EXPECT_EQ(updateCalls(*video).count("glTexSubImage2D"), shown) << name;
    }
}

TEST_F(Frames, OneFrameTakesManySteps) {
    const PlayingVideo video(pathOf("ffmpeg2_176x144"), makeScreen(256, 256));
    std::size_t steps = 0;
    while (updateCalls(*video, 1).empty())
        ++steps;
    EXPECT_GT(steps, 4u);
}

TEST_F(Frames, WithoutATextureTheyAreDropped) {
    const PlayingVideo video(pathOf("ffmpeg2_64x48_b"));
    markLog();
    EXPECT_EQ(updateCalls(*video), Calls());
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_LOGGED_EXACTLY("\n   Loading MPG file '" + pathOf("ffmpeg2_64x48_b") + "'...\n");
}

TEST_F(Frames, TextureMayChangeInTheMiddleAndDeletedOnesGetNothing) {
    RVTEXTURE *first = makeScreen(64, 64), *second = makeScreen(64, 64);
    const PlayingVideo video(pathOf("ffmpeg2_64x48_b"), first);
    EXPECT_EQ(video->getTexture(), first);
    EXPECT_EQ(first->getReferences(), 1); // its own: the video counts none
    EXPECT_TRUE(updateCalls(*video, 20).contains(binding(first)));
    video->setTexture(second);
    const Calls calls = updateCalls(*video, 20);
    EXPECT_TRUE(calls.contains(binding(second)));
    EXPECT_FALSE(calls.contains(binding(first)));
    second->decReferences();
    RVTEXTURE::garbageCollect(~0ul);
    constexpr unsigned int severalFrames = 100;
    video->playLoop(); // which never ends
    EXPECT_EQ(updateCalls(*video, severalFrames), Calls());
    EXPECT_EQ(video->getTexture(), nullptr);
    makeScreen(64, 64); // perhaps at the address of the deleted one
    EXPECT_EQ(updateCalls(*video, severalFrames), Calls());
    video->setTexture(nullptr);
    EXPECT_EQ(updateCalls(*video, severalFrames), Calls());
}

TEST_F(Frames, TextureThatIsNotInVideoMemoryGetsNothing) {
    RVTEXTURE *screen = makeScreen(64, 64);
    screen->unload(true);
    const PlayingVideo video(pathOf("ffmpeg2_64x48_b"), screen);
    markLog();
    EXPECT_EQ(updateCalls(*video, 30), Calls());
    EXPECT_NOTHING_LOGGED();
    ASSERT_TRUE(screen->create(64, 64, 3));
    EXPECT_TRUE(updateCalls(*video, 6).contains("glTexSubImage2D"));
}

TEST_F(Frames, TextureOfThePicturesSizeGetsThePictureAlone) {
    RVTEXTURE *screen = makeScreen(50, 38);
    const PlayingVideo video(pathOf("ffmpeg2_50x38"), screen);
    Calls calls = updateCalls(*video);
    EXPECT_EQ(calls.count(copied(50, 38)), framesPerVideo);
    EXPECT_EQ(Calls({{"glActiveTextureARB", GL_TEXTURE0},
                     binding(screen),
                     {"glPixelStorei", GL_UNPACK_ALIGNMENT, 1},
                     {"glPixelStorei", GL_UNPACK_ROW_LENGTH, 64},
                     copied(50, 38),
                     {"glPixelStorei", GL_UNPACK_ROW_LENGTH, 0}}),
              Calls(std::vector<Call>(calls.begin(), calls.begin() + 6)));
    video->setTexture(makeScreen(64, 38));
    video->play();
    calls = updateCalls(*video);
    EXPECT_EQ(calls.count(copied(64, 38)), framesPerVideo);
    EXPECT_EQ(calls.size(), 4 * framesPerVideo);
}

TEST_F(Frames, FrameLargerThanItsTextureIsRefusedWithOneLineAVideo) {
    const auto expectRefused = [](RVVIDEO &video) {
        for (int turn = 0; turn < 3; ++turn) {
            video.play();
            EXPECT_EQ(updateCalls(video), Calls());
        }
        EXPECT_LOGGED_TIMES(1, tooLarge);
    };
    const TestVideo video(pathOf("ffmpeg2_50x38"));
    for (const auto &[across, down] : {std::pair{49u, 64u}, {64u, 37u}, {16u, 16u}}) {
        video->setTexture(makeScreen(across, down));
        markLog();
        expectRefused(*video);
    }
    markLog();
    ASSERT_TRUE(video->load(pathOf("ffmpeg2_64x48_b").c_str()));
    expectRefused(*video);
}

// --- A new size in the middle

TEST_F(Frames, NewSizeCopiesNothingUntilItsFirstFrame) {
    const Bytes small = bytesOf("ffmpeg2_64x48_b"), large = bytesOf("ffmpeg2_176x144");
    const Bytes endlessSmall = bytesOf("ffmpeg2_64x48_b.noend");
    const Bytes endlessLarge = bytesOf("ffmpeg2_176x144.noend");
    const unsigned int all = framesPerVideo;
    const struct {
        const char *name;
        Bytes bytes;
        std::vector<Run> runs;
    } rows[] = {
        {"grown", small + large, {{all, 64, 48}, {all, 176, 144}}},
        {"shrunk", large + small, {{all, 176, 144}, {all, 64, 48}}},
        // Without an end code the size itself ends the first sequence.
        {"grownAtOnce", endlessSmall + large, {{all, 64, 48}, {all, 176, 144}}},
        {"shrunkAtOnce", endlessLarge + small, {{all, 176, 144}, {all, 64, 48}}},
        {"toAndFro",
         endlessSmall + endlessLarge + small + large,
         {{all, 64, 48}, {all, 176, 144}, {all, 64, 48}, {all, 176, 144}}},
        {"otherStandard", bytesOf("ffmpeg1_16x16.noend") + large, {{all, 16, 16}, {all, 176, 144}}},
    };
    for (const auto &row : rows) {
        writeFile(row.name, row.bytes);
        const PlayingVideo video(row.name, makeScreen(256, 256));
        EXPECT_EQ(sizesCopied(*video), row.runs) << row.name;
    }
}

TEST_F(Frames, NewSizeThatIsTooLargeIsRefusedWithOneLineAndTheRestIsShown) {
    const Bytes small = bytesOf("ffmpeg2_64x48_b"), large = bytesOf("ffmpeg2_176x144");
    writeFile("video", small + large + small);
    const PlayingVideo video("video", makeScreen(64, 48));
    markLog();
    EXPECT_EQ(sizesCopied(*video), (std::vector<Run>{{2 * framesPerVideo, 64, 48}}));
    EXPECT_LOGGED_TIMES(1, tooLarge);
}

// Width and height are the twelve bits each after the start code of a sequence.
Bytes withSize(Bytes video, unsigned int width, unsigned int height) {
    return withHeaders(std::move(video), 0xb3, [=](unsigned char *sequence) {
        sequence[0] = static_cast<unsigned char>(width >> 4);
        sequence[1] = static_cast<unsigned char>((width << 4) | (height >> 8));
        sequence[2] = static_cast<unsigned char>(height);
    });
}

TEST_F(Frames, SizeThatNoTextureHasIsNotEvenDecoded) {
    const Bytes data = bytesOf("ffmpeg2_64x48_b");
    writeFile("giant", withGiantSize(data) + data);
    const TestVideo video("giant", makeScreen(64, 48));
    video->playLoop();
    markLog();
    // What follows in the block that announces the size is lost; the next turn begins anew.
    EXPECT_TRUE(updateCalls(*video, 3000).contains(copied(64, 48)));
    EXPECT_LOGGED_TIMES(1, tooLarge);
}

TEST_F(Frames, SizeThatIsNotTheVideosOwnIsDecodedAsFarAsItGoes) {
    for (const auto &[across, down] :
         {std::pair{16u, 16u}, {2048u, 16u}, {16u, 2048u}, {1u, 1u}, {4095u, 33u}}) {
        writeFile("video", withSize(bytesOf("ffmpeg2_64x48_b"), across, down));
        const PlayingVideo video("video", makeScreen(4096, 4096));
        EXPECT_TRUE(updateCalls(*video).contains(copied(wholeBlocks(across), wholeBlocks(down))));
        EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    }
}

// --- Texture bindings after an update

TEST_F(Frames, TextureOrMaterialUsedBeforeIsBoundAgain) {
    auto *material = new RVMATERIAL;
    RVTEXTURE *wall = makeScreen(8, 8);
    material->setTexture(0, wall);
    for (const bool byMaterial : {false, true}) {
        SCOPED_TRACE(byMaterial);
        const auto use = [&] { byMaterial ? material->render(nullptr) : wall->render(nullptr); };
        const PlayingVideo video(pathOf("ffmpeg2_64x48_b"), makeScreen(64, 64));
        use();
        EXPECT_EQ(callsOf(use), Calls());
        EXPECT_TRUE(updateCalls(*video, 20).contains("glTexSubImage2D"));
        EXPECT_TRUE(callsOf(use).contains(binding(wall)));
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    }
}

} // namespace

} // namespace ravolt::test
