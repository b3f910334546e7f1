// What of a video reaches its texture, and by which calls.

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

    // The sizes of the frames that a video copies, each size with the number of frames in a row.
    struct Run {
        unsigned int frames, across, down;
        Run(unsigned int number, unsigned int sizeX, unsigned int sizeY)
            : frames(number), across(sizeX), down(sizeY) {}
        std::pair<unsigned int, unsigned int> size() const { return {across, down}; }
        bool operator==(const Run &) const = default;
    };
    std::vector<Run> sizesCopied(RVVIDEO &video) {
        video.play();
        std::vector<Run> runs;
        for (const Call &call : updateCalls(video).named("glTexSubImage2D")) {
            const Run frame(1, static_cast<unsigned int>(call.arguments.at(4)),
                            static_cast<unsigned int>(call.arguments.at(5)));
            if (runs.empty() || runs.back().size() != frame.size())
                runs.push_back(frame);
            else
                ++runs.back().frames;
        }
        return runs;
    }
};

TEST_F(Frames, EachFrameIsOneCopyOfWholeMacroblocks) {
    for (const VideoSample &sample : samples) {
        const TestVideo video(pathOf(sample.name));
        RVTEXTURE *screen = makeScreen(512, 512);
        video->setTexture(screen);
        video->play();
        const Calls calls = updateCalls(*video);
        ASSERT_EQ(calls.size(), 4 * framesPerVideo) << sample.name;
        for (unsigned int frame = 0; frame < framesPerVideo; ++frame) {
            EXPECT_EQ(calls[4 * frame], Call("glActiveTextureARB", GL_TEXTURE0));
            EXPECT_EQ(calls[4 * frame + 1],
                      Call("glBindTexture", GL_TEXTURE_2D, screen->getGLId()));
            EXPECT_EQ(calls[4 * frame + 2], Call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1));
            EXPECT_EQ(calls[4 * frame + 3],
                      copied(wholeBlocks(sample.width), wholeBlocks(sample.height)));
        }
    }
}

TEST_F(Frames, FlippedFrameIsOneCopyOfThePicturesRows) {
    for (const VideoSample &sample : samples) {
        const TestVideo video(pathOf(sample.name));
        video->setTexture(makeScreen(512, 512));
        video->flipOn();
        video->play();
        const Calls calls = updateCalls(*video).named("glTexSubImage2D");
        ASSERT_EQ(calls.size(), framesPerVideo) << sample.name;
        for (const Call &call : calls)
            EXPECT_EQ(call, copied(wholeBlocks(sample.width), sample.height));
    }
}

TEST_F(Frames, FlippedFrameWithoutMemoryIsDroppedWithOneLine) {
    const TestVideo video(pathOf("ffmpeg1_352x288_b"));
    video->setTexture(makeScreen(512, 512));
    video->play();
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
// An end shows it too, in the last block and in its middle.
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
        const TestVideo video(name);
        video->setTexture(makeScreen(256, 256));
        video->play();
        EXPECT_EQ(updateCalls(*video).count("glTexSubImage2D"), shown) << name;
    }
}

TEST_F(Frames, OneFrameTakesManySteps) {
    const TestVideo video(pathOf("ffmpeg2_176x144"));
    video->setTexture(makeScreen(256, 256));
    video->play();
    std::size_t steps = 0;
    while (updateCalls(*video, 1).empty())
        ++steps;
    EXPECT_GT(steps, 4u);
}

TEST_F(Frames, WithoutATextureTheyAreDropped) {
    const TestVideo video(pathOf("ffmpeg2_64x48_b"));
    video->play();
    markLog();
    EXPECT_EQ(updateCalls(*video), Calls());
    EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    EXPECT_LOGGED_EXACTLY("\n   Loading MPG file '" + pathOf("ffmpeg2_64x48_b") + "'...\n");
}

TEST_F(Frames, TextureMayComeAndGoInTheMiddle) {
    const TestVideo video(pathOf("ffmpeg2_64x48_b"));
    RVTEXTURE *first = makeScreen(64, 64), *second = makeScreen(64, 64);
    video->setTexture(first);
    EXPECT_EQ(video->getTexture(), first);
    EXPECT_EQ(first->getReferences(), 1); // its own: the video counts none
    video->play();
    EXPECT_TRUE(
        updateCalls(*video, 20).contains(Call("glBindTexture", GL_TEXTURE_2D, first->getGLId())));
    video->setTexture(second);
    const Calls calls = updateCalls(*video, 20);
    EXPECT_TRUE(calls.contains(Call("glBindTexture", GL_TEXTURE_2D, second->getGLId())));
    EXPECT_FALSE(calls.contains(Call("glBindTexture", GL_TEXTURE_2D, first->getGLId())));
    video->setTexture(nullptr);
    EXPECT_EQ(updateCalls(*video), Calls());
}

TEST_F(Frames, TextureThatIsNotInVideoMemoryGetsNothing) {
    const TestVideo video(pathOf("ffmpeg2_64x48_b"));
    RVTEXTURE *screen = makeScreen(64, 64);
    screen->unload(true);
    video->setTexture(screen);
    video->play();
    markLog();
    EXPECT_EQ(updateCalls(*video, 30), Calls());
    EXPECT_NOTHING_LOGGED();
    ASSERT_TRUE(screen->create(64, 64, 3));
    EXPECT_TRUE(updateCalls(*video, 6).contains("glTexSubImage2D"));
}

TEST_F(Frames, DeletedTextureGetsNothing) {
    const TestVideo video(pathOf("ffmpeg2_64x48_b"));
    RVTEXTURE *screen = makeScreen(64, 64);
    video->setTexture(screen);
    video->play();
    EXPECT_GT(updateCalls(*video, 20).count("glTexSubImage2D"), 0u);
    screen->decReferences();
    RVTEXTURE::garbageCollect(~0ul);
    EXPECT_EQ(updateCalls(*video), Calls());
}

TEST_F(Frames, TextureOfThePicturesSizeGetsThePictureAlone) {
    const TestVideo video(pathOf("ffmpeg2_50x38"));
    RVTEXTURE *screen = makeScreen(50, 38);
    video->setTexture(screen);
    video->play();
    Calls calls = updateCalls(*video);
    EXPECT_EQ(calls.count(copied(50, 38)), framesPerVideo);
    EXPECT_EQ(Calls({{"glActiveTextureARB", GL_TEXTURE0},
                     {"glBindTexture", GL_TEXTURE_2D, screen->getGLId()},
                     {"glPixelStorei", GL_UNPACK_ALIGNMENT, 1},
                     {"glPixelStorei", GL_UNPACK_ROW_LENGTH, 64},
                     copied(50, 38),
                     {"glPixelStorei", GL_UNPACK_ROW_LENGTH, 0}}),
              Calls({calls[0], calls[1], calls[2], calls[3], calls[4], calls[5]}));
    video->setTexture(makeScreen(64, 38));
    video->play();
    calls = updateCalls(*video);
    EXPECT_EQ(calls.count(copied(64, 38)), framesPerVideo);
    EXPECT_EQ(calls.size(), 4 * framesPerVideo);
}

TEST_F(Frames, FrameLargerThanItsTextureIsRefusedWithOneLine) {
    const TestVideo video(pathOf("ffmpeg2_50x38"));
    markLog();
    for (const auto &size : {std::pair{49u, 64u}, std::pair{64u, 37u}, std::pair{16u, 16u}}) {
        video->setTexture(makeScreen(size.first, size.second));
        markLog();
        for (int turn = 0; turn < 3; ++turn) {
            video->play();
            EXPECT_EQ(updateCalls(*video), Calls());
        }
        EXPECT_LOGGED_TIMES(1, tooLarge);
    }
}

TEST_F(Frames, AnotherVideoThatIsTooLargeHasALineOfItsOwn) {
    const TestVideo video(pathOf("ffmpeg2_50x38"));
    video->setTexture(makeScreen(16, 16));
    video->play();
    markLog();
    EXPECT_EQ(updateCalls(*video), Calls());
    ASSERT_TRUE(video->load(pathOf("ffmpeg2_64x48_b").c_str()));
    for (int turn = 0; turn < 3; ++turn) {
        video->play();
        EXPECT_EQ(updateCalls(*video), Calls());
    }
    EXPECT_LOGGED_TIMES(2, tooLarge);
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
        const TestVideo video(row.name);
        video->setTexture(makeScreen(256, 256));
        EXPECT_EQ(sizesCopied(*video), row.runs) << row.name;
    }
}

TEST_F(Frames, NewSizeThatIsTooLargeIsRefusedWithOneLineAndTheRestIsShown) {
    const Bytes small = bytesOf("ffmpeg2_64x48_b"), large = bytesOf("ffmpeg2_176x144");
    writeFile("video", small + large + small);
    const TestVideo video("video");
    video->setTexture(makeScreen(64, 48));
    markLog();
    EXPECT_EQ(sizesCopied(*video), (std::vector<Run>{{2 * framesPerVideo, 64, 48}}));
    EXPECT_LOGGED_TIMES(1, tooLarge);
}

// Width and height stand in the twelve bits each behind the start code of a sequence.
Bytes withSize(Bytes video, unsigned int width, unsigned int height) {
    for (std::size_t place = 0; place + 7 < video.size(); ++place)
        if (video[place] == 0 && video[place + 1] == 0 && video[place + 2] == 1 &&
            video[place + 3] == 0xb3) {
            video[place + 4] = static_cast<unsigned char>(width >> 4);
            video[place + 5] = static_cast<unsigned char>((width << 4) | (height >> 8));
            video[place + 6] = static_cast<unsigned char>(height);
        }
    return video;
}

TEST_F(Frames, SizeThatNoTextureHasIsNotEvenDecoded) {
    const Bytes data = bytesOf("ffmpeg2_64x48_b");
    writeFile("giant", withGiantSize(data) + data);
    const TestVideo video("giant");
    video->setTexture(makeScreen(64, 48));
    video->playLoop();
    markLog();
    // What follows in the block that announces the size is lost; the next turn begins anew.
    EXPECT_TRUE(updateCalls(*video, 3000).contains(copied(64, 48)));
    EXPECT_LOGGED_TIMES(1, tooLarge);
}

TEST_F(Frames, SizeThatIsNotTheVideosOwnIsDecodedAsFarAsItGoes) {
    for (const auto &size : {std::pair{16u, 16u}, std::pair{2048u, 16u}, std::pair{16u, 2048u},
                             std::pair{1u, 1u}, std::pair{4095u, 33u}}) {
        writeFile("video", withSize(bytesOf("ffmpeg2_64x48_b"), size.first, size.second));
        const TestVideo video("video");
        video->setTexture(makeScreen(4096, 4096));
        video->play();
        EXPECT_TRUE(updateCalls(*video).contains(
            copied(wholeBlocks(size.first), wholeBlocks(size.second))));
        EXPECT_EQ(video->getStatus(), RV_VIDEO_STOP);
    }
}

// --- What the engine takes to be bound

TEST_F(Frames, TextureOrMaterialInUseBeforeIsBoundAnew) {
    auto *material = new RVMATERIAL;
    RVTEXTURE *wall = makeScreen(8, 8);
    material->setTexture(0, wall);
    for (const bool byMaterial : {false, true}) {
        SCOPED_TRACE(byMaterial);
        const auto use = [&] { byMaterial ? material->render(nullptr) : wall->render(nullptr); };
        const TestVideo video(pathOf("ffmpeg2_64x48_b"));
        video->setTexture(makeScreen(64, 64));
        use();
        EXPECT_EQ(callsOf(use), Calls());
        video->play();
        EXPECT_TRUE(updateCalls(*video, 20).contains("glTexSubImage2D"));
        EXPECT_TRUE(callsOf(use).contains(Call("glBindTexture", GL_TEXTURE_2D, wall->getGLId())));
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    }
}

} // namespace

} // namespace ravolt::test
