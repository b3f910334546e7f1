// Clips in memory: their storage, the entries, the frames between keys, and their use on a tree.

#include "ravolt/RVANIM.h"

#include "ravolt/RVNODE.h"
#include "tests/support/logReader.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace ravolt::test;

namespace {

bool isVector(const Z3MVECTOR3D &vector, float x, float y, float z) {
    return vector.x == x && vector.y == y && vector.z == z;
}

class Anim : public testing::Test {
  protected:
    Anim() : clip(*new RVANIM) { markLog(); }
    ~Anim() override {
        RVANIM::cleanUp();
        RVNODE::cleanUp();
        RVANIM::setRVAPath(nullptr);
    }

    void size(unsigned int bones, unsigned int frames) {
        clip.setNumberOfBones(bones);
        clip.setNumberOfFrames(frames);
    }

    RVBONEFRAME &entry(unsigned int frame, unsigned int bone) {
        return *clip.getKeyframe(frame, bone);
    }

    RVANIM &clip; // the registry's
};

// --- Memory

void expectEmpty(RVANIM &clip) {
    for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone) {
        ASSERT_STREQ(clip.getBoneName(bone), "");
        for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame) {
            const RVBONEFRAME &entry = *clip.getKeyframe(frame, bone);
            ASSERT_FALSE(entry.set);
            ASSERT_TRUE(isVector(entry.rotation, 0, 0, 0));
            ASSERT_TRUE(isVector(entry.translation, 0, 0, 0));
        }
    }
}

// Of this process, in bytes.
std::size_t residentMemory() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0, resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

constexpr std::size_t bytesOfAClip = sizeof(RVANIM);

TEST_F(Anim, EmptyClipsUseHardlyAnyMemory) {
    const std::size_t before = residentMemory();
    for (int number = 0; number < 100; ++number)
        new RVANIM;
    EXPECT_LT(residentMemory(), before + 10 * bytesOfAClip);
}

// The memory of a full clip is released with it, even if other clips reuse it.
TEST_F(Anim, ClipsInMemoryThatWasUsedAreEmptyAndSmall) {
    const std::size_t before = residentMemory();
    for (int number = 0; number < 20; ++number) {
        RVANIM &full = *new RVANIM;
        full.setNumberOfBones(RV_ANIM_BONES);
        full.setNumberOfFrames(RV_ANIM_FRAMES);
        for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone) {
            full.setBoneName(bone, "bone");
            for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame)
                full.setFrame(frame, bone, 1, 2, 3);
        }
    }
    EXPECT_GT(residentMemory(), before + 19 * bytesOfAClip);
    RVANIM::cleanUp();
#ifdef __SANITIZE_ADDRESS__
    const std::size_t empty = residentMemory(); // the sanitizer does not release it
#else
    const std::size_t empty = before;
#endif
    for (int number = 0; number < 20; ++number)
        new RVANIM;
    EXPECT_LT(residentMemory(), empty + 4 * bytesOfAClip);
    for (RVANIM *each = RVANIM::getFirst(); each; each = each->getNext())
        expectEmpty(*each);
}

// In memory with any former contents.
TEST_F(Anim, ClipOutsideTheHeapIsEmptyToo) {
    const auto storage = std::make_unique<unsigned char[]>(sizeof(RVANIM) + 4096);
    for (const std::size_t offset : {0u, 8u, 4088u}) {
        std::fill_n(storage.get(), sizeof(RVANIM) + 4096, static_cast<unsigned char>(0xA5));
        RVANIM *each = new (storage.get() + offset) RVANIM;
        expectEmpty(*each);
        each->~RVANIM();
        EXPECT_EQ(storage[offset + sizeof(RVANIM)], 0xA5) << "the byte after it";
        EXPECT_TRUE(offset == 0 || storage[offset - 1] == 0xA5) << "the byte before it";
    }
}

// --- Counts and names

TEST_F(Anim, NewClipIsEmpty) {
    EXPECT_EQ(clip.getFilename(), "[anim " + std::to_string(clip.getId()) + "]");
    EXPECT_FALSE(clip.getTranslating());
    EXPECT_EQ(clip.getNumberOfBones(), 0);
    EXPECT_EQ(clip.getNumberOfFrames(), 0);
    expectEmpty(clip);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, CountsAreCutTo16Bits) {
    for (const unsigned int count : {0u, 1u, 129u, 65535u, 65536u, 65541u, 0xffffffffu}) {
        size(count, count + 1);
        EXPECT_EQ(clip.getNumberOfBones(), count & 0xffff);
        EXPECT_EQ(clip.getNumberOfFrames(), (count + 1) & 0xffff);
    }
    for (const bool translating : {true, false}) {
        clip.setTranslating(translating);
        EXPECT_EQ(clip.getTranslating(), translating);
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, BoneNamesGoUpTo128WhateverTheCountAndLongOnesAreCut) {
    const std::string longName(256, 'b');
    for (const unsigned int bone : {0u, 127u})
        for (const std::string &name : {std::string("hips"), longName.substr(1), longName}) {
            EXPECT_TRUE(clip.setBoneName(bone, name.c_str()));
            EXPECT_EQ(clip.getBoneName(bone), name.substr(0, 255));
        }
    EXPECT_STREQ(clip.getBoneName(1), "");
    for (const unsigned int bone : {128u, 129u, 0xffffffffu}) {
        EXPECT_FALSE(clip.setBoneName(bone, "none"));
        EXPECT_EQ(clip.getBoneName(bone), nullptr);
    }
    EXPECT_FALSE(clip.setBoneName(0, nullptr));
    EXPECT_EQ(clip.getBoneName(0), longName.substr(1));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, BonesAreFoundByNameWithinTheCount) {
    size(3, 0);
    for (const unsigned int bone : {1u, 2u, 3u})
        clip.setBoneName(bone, bone == 3 ? "tail" : "arm");
    EXPECT_EQ(clip.findBoneByName("arm"), 1);
    EXPECT_EQ(clip.findBoneByName(""), 0);
    for (const char *name : {"Arm", "tail", "leg"})
        EXPECT_EQ(clip.findBoneByName(name), -1) << name;
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(clip.findBoneByName(nullptr), -1);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::findBoneByName\n");
}

// --- Entries

TEST_F(Anim, FrameAfterTheLastIsAcceptedAndABoneAfterTheLastIsNot) {
    const std::pair<const char *, std::function<bool(unsigned int, unsigned int)>> setters[] = {
        {"   [!] Invalid params @ RVANIM::setFrame\n",
         [&](auto frame, auto bone) { return clip.setFrame(frame, bone, 1, 2, 3); }},
        {"   [!] Invalid params @ RVANIM::setFrameRotationX\n",
         [&](auto frame, auto bone) { return clip.setFrameRotationX(frame, bone, 1); }},
        {"   [!] Invalid params @ RVANIM::setFrameRotationY\n",
         [&](auto frame, auto bone) { return clip.setFrameRotationY(frame, bone, 2); }},
        {"   [!] Invalid params @ RVANIM::setFrameRotationZ\n",
         [&](auto frame, auto bone) { return clip.setFrameRotationZ(frame, bone, 3); }},
        {"   [!] Invalid params @ RVANIM::unsetFrame\n",
         [&](auto frame, auto bone) { return clip.unsetFrame(frame, bone); }},
    };
    using Entry = std::pair<unsigned int, unsigned int>; // frame and bone
    constexpr unsigned int max = ~0u;
    const struct {
        unsigned int bones, frames;
        std::vector<Entry> accepted, refused;
    } rows[] = {
        {3, 5, {{0, 0}, {4, 2}, {5, 0}, {5, 2}}, {{6, 0}, {0, 3}, {5, 3}, {max, 0}, {0, max}}},
        {0, 0, {}, {{0, 0}}},
        {1, 0, {{0, 0}}, {}},
        {128, 1024, {{1024, 127}}, {{1025, 127}, {1024, 128}}},
        // Counts beyond the storage add no entries.
        {65535, 65535, {{1024, 127}}, {{1025, 0}, {65535, 0}, {0, 128}, {0, 65534}}},
    };
    for (const auto &[message, set] : setters)
        for (const auto &row : rows) {
            SCOPED_TRACE(message + std::to_string(row.bones) + " bones");
            size(row.bones, row.frames);
            for (const auto &[frame, bone] : row.accepted)
                EXPECT_TRUE(set(frame, bone)) << frame << ", " << bone;
            EXPECT_NOTHING_LOGGED();
            for (const auto &[frame, bone] : row.refused) {
                EXPECT_FALSE(set(frame, bone)) << frame << ", " << bone;
                EXPECT_LOGGED_EXACTLY(message);
            }
        }
}

TEST_F(Anim, SettersChangeTheirComponentsAndMakeKeys) {
    size(2, 2);
    EXPECT_TRUE(clip.setFrame(1, 1, 10, -20, 30.5f));
    EXPECT_TRUE(isVector(clip.getFrameRotation(1, 1), 10, -20, 30.5f));
    EXPECT_TRUE(entry(1, 1).set);
    bool (RVANIM::*const setters[])(unsigned int, unsigned int, float) = {
        &RVANIM::setFrameRotationX, &RVANIM::setFrameRotationY, &RVANIM::setFrameRotationZ};
    float wanted[3] = {};
    for (int axis = 0; axis < 3; ++axis) {
        entry(0, 1).set = false;
        wanted[axis] = axis + 1.0f;
        const bool set = std::invoke(setters[axis], clip, 0, 1, wanted[axis]);
        EXPECT_TRUE(set);
        EXPECT_TRUE(isVector(clip.getFrameRotation(0, 1), wanted[0], wanted[1], wanted[2]));
        EXPECT_TRUE(entry(0, 1).set);
    }
    EXPECT_TRUE(isVector(entry(0, 1).translation, 0, 0, 0));
    EXPECT_FALSE(entry(0, 0).set);
    EXPECT_FALSE(entry(1, 0).set);

    entry(0, 1).translation.set(4, 5, 6);
    EXPECT_TRUE(clip.unsetFrame(0, 1));
    EXPECT_FALSE(entry(0, 1).set);
    EXPECT_TRUE(isVector(entry(0, 1).rotation, 1, 2, 3));
    EXPECT_TRUE(isVector(entry(0, 1).translation, 4, 5, 6));
}

TEST_F(Anim, FrameAfterTheLastOfAFullClipHasAnEntryOfItsOwn) {
    size(128, 1024);
    EXPECT_TRUE(clip.setFrame(1024, 127, 7, 8, 9));
    EXPECT_TRUE(isVector(clip.getFrameRotation(1024, 127), 7, 8, 9));
    EXPECT_TRUE(entry(1024, 127).set);
    EXPECT_TRUE(isVector(clip.getFrameRotation(1023, 127), 0, 0, 0));
    EXPECT_EQ(clip.getNext(), nullptr); // what follows the entries in memory
    EXPECT_EQ(RVANIM::getNumberOfAnims(), 1u);

    for (const auto &[frame, bone] : {std::pair{1025u, 0u}, {0u, 128u}, {~0u, ~0u}}) {
        EXPECT_EQ(clip.getKeyframe(frame, bone), nullptr);
        EXPECT_TRUE(isVector(clip.getFrameRotation(frame, bone), 0, 0, 0));
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, ResetZeroesWhatIsWithinTheCounts) {
    size(2, 3);
    clip.setBoneName(1, "arm");
    for (unsigned int frame = 0; frame < 4; ++frame)
        for (unsigned int bone = 0; bone < 3; ++bone)
            entry(frame, bone) = {{1, 2, 3}, {4, 5, 6}, true};
    clip.reset();
    for (unsigned int frame = 0; frame < 4; ++frame)
        for (unsigned int bone = 0; bone < 3; ++bone) {
            const bool within = frame < 3 && bone < 2;
            EXPECT_EQ(entry(frame, bone).set, !within);
            EXPECT_EQ(isVector(entry(frame, bone).rotation, 0, 0, 0), within);
            EXPECT_EQ(isVector(entry(frame, bone).translation, 0, 0, 0), within);
        }
    EXPECT_EQ(clip.getNumberOfBones(), 2);
    EXPECT_EQ(clip.getNumberOfFrames(), 3);
    EXPECT_STREQ(clip.getBoneName(1), "arm");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, CountsBeyondTheStorageEndWithIt) {
    size(65535, 65535);
    entry(1024, 127).set = true;
    clip.setBoneName(127, "tail");
    EXPECT_EQ(clip.findBoneByName("tail"), 127);
    EXPECT_EQ(clip.findBoneByName("none"), -1);
    clip.reset();
    EXPECT_FALSE(entry(1024, 127).set);
    RVNODE *root = new RVNODE;
    EXPECT_TRUE(clip.apply(1024, root));
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(clip.apply(1025, root));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::apply\n");
}

TEST_F(Anim, NoMeshGivesNoStructure) {
    EXPECT_FALSE(clip.acquireStructure(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::acquireStructure\n");
}

// --- Between the keys

TEST_F(Anim, KeyframesRequireARangeWithinTheClipAndItsStorage) {
    const struct {
        unsigned int frames, first, last;
        bool good = false;
    } rows[] = {
        {10, 3, 3},       {10, 4, 3},       {10, 0, 11},         {10, 10, 10},
        {10, 10, 11},     {10, ~0u, ~0u},   {10, 0, 10, true},   {10, 9, 10, true},
        {10, 0, 1, true}, {65535, 0, 1025}, {65535, 1024, 1025}, {65535, 0, 1024, true},
    };
    for (const auto &[frames, first, last, good] : rows) {
        size(1, frames);
        EXPECT_EQ(clip.createKeyframes(first, last), good) << first << ", " << last;
        EXPECT_LOGGED_EXACTLY(good ? "" : "   [!] Invalid params @ RVANIM::createKeyframes\n");
    }
}

// The frames of a clip of one bone and the one after the last: a number, with "k" if it is a key.
struct ReferenceFrame {
    bool set;
    float value;
};
std::vector<ReferenceFrame> framesOf(const std::string &text) {
    std::vector<ReferenceFrame> frames;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        frames.push_back({word.back() == 'k', std::stof(word)});
    return frames;
}

TEST_F(Anim, FramesBetweenTheKeysAreSteps) {
    const struct {
        const char *what, *before, *after;
        unsigned int first, last;
    } rows[] = {
        {"quarters", "10k 0 0 0 50k 0", "10 20 30 40 50 0", 0, 4},
        {"neighbouring keys write nothing", "1k 5k 2k 0", "1 5 2 0", 0, 2},
        {"frames that are no keys are neighbours too", "1 9 0", "1 9 0", 0, 1},
        {"a first frame that is no key takes a step itself", "0 0 0 0 8k 0", "2 4 6 8 8 0", 0, 4},
        {"the last frame is a key in any case", "4k 0 0 0 0 9", "4 3 2 1 0 9", 0, 4},
        {"others do not change", "9 9 0k 9 9 3k 9 9 9", "9 9 0 1 2 3 9 9 9", 2, 5},
        {"the frame after the last is an end", "0k 0 0 3k", "0 1 2 3", 0, 3},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const std::vector<ReferenceFrame> before = framesOf(row.before),
                                          after = framesOf(row.after);
        ASSERT_EQ(before.size(), after.size());
        size(2, static_cast<unsigned int>(before.size() - 1));
        for (unsigned int frame = 0; frame < before.size(); ++frame) {
            const auto &[set, value] = before[frame];
            entry(frame, 0) = {{value, -value, 2 * value}, {float(frame), 1, 2}, set};
        }
        EXPECT_TRUE(clip.createKeyframes(row.first, row.last));
        for (unsigned int frame = 0; frame < before.size(); ++frame) {
            const float value = after[frame].value;
            EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 0), value, -value, 2 * value));
            EXPECT_TRUE(isVector(entry(frame, 0).translation, float(frame), 1, 2));
            EXPECT_EQ(entry(frame, 0).set, before[frame].set);
            EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 1), 0, 0, 0));
        }
    }
}

// The rule for one frame: it searches back for the key of its segment's start and ahead for that of
// its end, and takes as many steps as there are frames without a key from the start to it.
float referenceValue(const std::vector<ReferenceFrame> &frames, std::size_t first, std::size_t last,
                     std::size_t at) {
    if (at < first || at >= last || frames[at].set)
        return frames[at].value;
    std::size_t from = at, to = at + 1;
    while (from > first && (from == at || !frames[from].set))
        --from;
    while (to < last && !frames[to].set)
        ++to;
    if (to - from == 1)
        return frames[at].value;
    const float step = (frames[to].value - frames[from].value) / static_cast<float>(to - from);
    float value = frames[from].value;
    for (std::size_t steps = at - from + (frames[from].set ? 0 : 1); steps; --steps)
        value += step;
    return value;
}

TEST_F(Anim, KeyframesAgreeWithTheReferenceOnRandomClips) {
    std::mt19937 random(20260);
    std::uniform_real_distribution<float> degrees(-720.0f, 720.0f);
    for (int round = 0; round < 3000; ++round) {
        const unsigned int number = 1 + random() % 24;
        const unsigned int last = 1 + random() % number, first = random() % last;
        const unsigned int density = random() % 5;
        size(3, number);
        std::vector<ReferenceFrame> frames[3][3]; // of each bone, of each component
        for (unsigned int frame = 0; frame <= number; ++frame)
            for (unsigned int bone = 0; bone < 3; ++bone) {
                RVBONEFRAME &each = entry(frame, bone);
                each.set = random() % 4 < density;
                for (int axis = 0; axis < 3; ++axis) {
                    each.rotation[axis] = degrees(random);
                    frames[bone][axis].push_back({each.set, each.rotation[axis]});
                }
            }
        ASSERT_TRUE(clip.createKeyframes(first, last));
        for (unsigned int frame = 0; frame <= number; ++frame)
            for (unsigned int bone = 0; bone < 3; ++bone)
                for (int axis = 0; axis < 3; ++axis) {
                    ASSERT_EQ(entry(frame, bone).set, frames[bone][axis][frame].set);
                    ASSERT_EQ(entry(frame, bone).rotation[axis],
                              referenceValue(frames[bone][axis], first, last, frame))
                        << "frame " << frame << " of " << number << ", from " << first << " to "
                        << last;
                }
    }
}

// --- On a tree

class AnimOnTree : public Anim {
  protected:
    AnimOnTree() {
        hips->link(root);
        arm->link(hips);
        leg->link(hips);
        const char *nodeNames[] = {"root", "hips", "arm", "leg"};
        for (unsigned int number = 0; number < 4; ++number) {
            nodes[number]->setName(nodeNames[number]);
            nodes[number]->setPosition(1, 1, 1);
            nodes[number]->setRotation(-1, -1, -1);
        }
        size(4, 2);
        const char *names[] = {"arm", "wing", "hips", "tail"};
        for (unsigned int bone = 0; bone < 4; ++bone) {
            clip.setBoneName(bone, names[bone]);
            for (unsigned int frame = 0; frame < 2; ++frame) {
                const float number = static_cast<float>(10 * frame + bone);
                entry(frame, bone).rotation.set(number, number + 0.25f, number + 0.5f);
                entry(frame, bone).translation.set(-number, 0.125f, 7);
            }
        }
    }

    // The rotation and the position of root, hips, arm and leg by their x, which identifies the
    // entry.
    using Numbers = std::vector<float>;
    void expectNodes(const Numbers &turns, const Numbers &moves = {1, 1, 1, 1}) {
        for (unsigned int number = 0; number < 4; ++number) {
            SCOPED_TRACE(nodes[number]->getName());
            const float x = turns[number], step = x == -1 ? 0 : 0.25f;
            EXPECT_TRUE(isVector(nodes[number]->getRotation(), x, x + step, x + 2 * step));
            const Z3MVECTOR3D position = nodes[number]->getPosition();
            const bool moved = moves[number] != 1;
            EXPECT_TRUE(isVector(position, moves[number], moved ? 0.125f : 1, moved ? 7 : 1));
        }
    }

    RVNODE *root = new RVNODE, *hips = new RVNODE, *arm = new RVNODE, *leg = new RVNODE;
    RVNODE *const nodes[4] = {root, hips, arm, leg};
};

TEST_F(AnimOnTree, OnlyBonesOfTheClipAndTheTreeTurnAndTheClipIsNotNeededAfterwards) {
    EXPECT_TRUE(clip.apply(1, root));
    expectNodes({-1, 12, 10, -1});
    clip.setNumberOfBones(2); // without the hips
    EXPECT_TRUE(clip.apply(0, root));
    expectNodes({-1, 12, 0, -1});
    EXPECT_NOTHING_LOGGED();
    RVANIM::cleanUp();
    expectNodes({-1, 12, 0, -1});
}

TEST_F(AnimOnTree, TranslatingClipsMoveTheBonesToo) {
    clip.setTranslating(true);
    EXPECT_TRUE(clip.apply(0, root));
    expectNodes({-1, 2, 0, -1}, {1, -2, 0, 1});
    clip.setTranslating(false);
    EXPECT_TRUE(clip.apply(1, root));
    expectNodes({-1, 12, 10, -1}, {1, -2, 0, 1});
}

TEST_F(AnimOnTree, FrameAfterTheLastCanBeSetButNotApplied) {
    EXPECT_TRUE(clip.setFrame(2, 0, 1, 2, 3));
    for (const auto &[frame, top] : {std::pair{2u, root}, {~0u, root}, {0u, nullptr}}) {
        EXPECT_FALSE(clip.apply(frame, top));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::apply\n");
    }
    expectNodes({-1, -1, -1, -1});
}

TEST_F(AnimOnTree, KeysAndOtherEntriesAreAppliedAlikeAndThePositioningDoesNotChange) {
    entry(0, 0).set = true;
    arm->setPositioning(RV_NODE_POSITIONING_MATRIX);
    EXPECT_TRUE(clip.apply(0, root));
    expectNodes({-1, 2, 0, -1});
    EXPECT_EQ(arm->getPositioning(), RV_NODE_POSITIONING_MATRIX);
    EXPECT_EQ(hips->getPositioning(), RV_NODE_POSITIONING_VECTORS);
}

// Depth first, the root included.
TEST_F(AnimOnTree, FirstNodeOfTheNameTurns) {
    leg->setName("arm");
    EXPECT_TRUE(clip.apply(1, root));
    expectNodes({-1, 12, 10, -1});
    root->setName("arm");
    EXPECT_TRUE(clip.apply(0, root));
    expectNodes({0, 2, 10, -1});
    EXPECT_TRUE(clip.apply(1, hips)); // a part of the tree
    expectNodes({0, 12, 10, -1});
}

} // namespace
