// Clips in memory: the registry, the entries, what lies between keys, and their use on a tree.

#include "ravolt/RVANIM.h"

#include "ravolt/RVNODE.h"
#include "ravolt/zlf.h"
#include "tests/support/logReader.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <random>
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

// Of this process, in bytes.
std::size_t residentMemory() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0, resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

constexpr std::size_t bytesOfAClip = sizeof(RVANIM);

TEST_F(Anim, EmptyClipsTakeNoMemoryToSpeakOf) {
    const std::size_t before = residentMemory();
    for (int number = 0; number < 100; ++number)
        new RVANIM;
    EXPECT_LT(residentMemory(), before + 10 * bytesOfAClip);
}

// What they hold is gone with them, also where the same memory serves others.
TEST_F(Anim, ClipsInMemoryThatWasUsedAreEmptyAndSmall) {
    const auto makeFull = [] {
        for (int number = 0; number < 20; ++number) {
            RVANIM &full = *new RVANIM;
            for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone)
                full.setBoneName(bone, "bone");
            full.setNumberOfBones(RV_ANIM_BONES);
            full.setNumberOfFrames(RV_ANIM_FRAMES);
            for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame)
                for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone)
                    full.setFrame(frame, bone, 1, 2, 3);
        }
    };
    const std::size_t before = residentMemory();
    makeFull();
    EXPECT_GT(residentMemory(), before + 19 * bytesOfAClip);
    RVANIM::cleanUp();
#ifdef __SANITIZE_ADDRESS__
    const std::size_t empty = residentMemory(); // the sanitizer keeps what is freed
#else
    const std::size_t empty = before;
#endif
    for (int number = 0; number < 20; ++number)
        new RVANIM;
    EXPECT_LT(residentMemory(), empty + 4 * bytesOfAClip);
    for (RVANIM *each = RVANIM::getFirst(); each; each = each->getNext())
        for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame)
            for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone) {
                ASSERT_STREQ(each->getBoneName(bone), "");
                ASSERT_FALSE(each->getKeyframe(frame, bone)->set);
                ASSERT_TRUE(isVector(each->getFrameRotation(frame, bone), 0, 0, 0));
            }
}

// On any storage, whatever it held.
TEST_F(Anim, AClipOutsideTheHeapIsEmptyToo) {
    const auto storage = std::make_unique<unsigned char[]>(sizeof(RVANIM) + 4096);
    for (const std::size_t offset : {0u, 8u, 4088u}) {
        std::fill_n(storage.get(), sizeof(RVANIM) + 4096, static_cast<unsigned char>(0xA5));
        RVANIM *each = new (storage.get() + offset) RVANIM;
        for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame)
            for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone) {
                ASSERT_STREQ(each->getBoneName(bone), "");
                ASSERT_FALSE(each->getKeyframe(frame, bone)->set);
                ASSERT_TRUE(isVector(each->getFrameRotation(frame, bone), 0, 0, 0));
            }
        each->~RVANIM();
        EXPECT_EQ(storage[offset + sizeof(RVANIM)], 0xA5) << "what is behind it stays";
        EXPECT_TRUE(offset == 0 || storage[offset - 1] == 0xA5);
    }
}

// --- The registry

TEST_F(Anim, NewClipIsEmpty) {
    EXPECT_EQ(clip.getFilename(), "[anim " + std::to_string(clip.getId()) + "]");
    EXPECT_FALSE(clip.getTranslating());
    EXPECT_EQ(clip.getNumberOfBones(), 0);
    EXPECT_EQ(clip.getNumberOfFrames(), 0);
    for (unsigned int bone = 0; bone < RV_ANIM_BONES; ++bone) {
        EXPECT_STREQ(clip.getBoneName(bone), "");
        for (unsigned int frame = 0; frame <= RV_ANIM_FRAMES; ++frame) {
            ASSERT_TRUE(isVector(entry(frame, bone).rotation, 0, 0, 0));
            ASSERT_TRUE(isVector(entry(frame, bone).translation, 0, 0, 0));
            ASSERT_FALSE(entry(frame, bone).set);
        }
    }
    EXPECT_NOTHING_LOGGED();
}

// --- Counts and names

TEST_F(Anim, CountsAreCutTo16Bits) {
    for (const unsigned int count : {0u, 1u, 129u, 65535u, 65536u, 65541u, 0xffffffffu}) {
        size(count, count + 1);
        EXPECT_EQ(clip.getNumberOfBones(), count & 0xffff);
        EXPECT_EQ(clip.getNumberOfFrames(), (count + 1) & 0xffff);
    }
    clip.setTranslating(true);
    EXPECT_TRUE(clip.getTranslating());
    clip.setTranslating(false);
    EXPECT_FALSE(clip.getTranslating());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, BoneNamesGoUpTo128WhateverTheCount) {
    EXPECT_TRUE(clip.setBoneName(0, "hips"));
    EXPECT_TRUE(clip.setBoneName(127, "tail"));
    EXPECT_STREQ(clip.getBoneName(0), "hips");
    EXPECT_STREQ(clip.getBoneName(127), "tail");
    for (const unsigned int bone : {128u, 129u, 0xffffffffu}) {
        EXPECT_FALSE(clip.setBoneName(bone, "none"));
        EXPECT_EQ(clip.getBoneName(bone), nullptr);
    }
    EXPECT_FALSE(clip.setBoneName(0, nullptr));
    EXPECT_STREQ(clip.getBoneName(0), "hips");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, LongBoneNamesAreCut) {
    EXPECT_TRUE(clip.setBoneName(1, std::string(255, 'a').c_str()));
    EXPECT_EQ(clip.getBoneName(1), std::string(255, 'a'));
    EXPECT_TRUE(clip.setBoneName(1, std::string(256, 'b').c_str()));
    EXPECT_EQ(clip.getBoneName(1), std::string(255, 'b'));
    EXPECT_STREQ(clip.getBoneName(2), "");
}

TEST_F(Anim, BonesAreFoundByNameWithinTheCount) {
    size(3, 0);
    for (const unsigned int bone : {1u, 2u, 3u})
        clip.setBoneName(bone, bone == 3 ? "tail" : "arm");
    EXPECT_EQ(clip.findBoneByName("arm"), 1);
    EXPECT_EQ(clip.findBoneByName(""), 0);
    EXPECT_EQ(clip.findBoneByName("Arm"), -1);
    EXPECT_EQ(clip.findBoneByName("tail"), -1);
    EXPECT_EQ(clip.findBoneByName("leg"), -1);
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(clip.findBoneByName(nullptr), -1);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::findBoneByName\n");
}

// --- Entries

struct Setter {
    const char *message;
    bool (*call)(RVANIM &clip, unsigned int frame, unsigned int bone);
};

void PrintTo(const Setter &setter, std::ostream *out) { *out << setter.message; }

const Setter setters[] = {
    {"   [!] Invalid params @ RVANIM::setFrame\n",
     [](RVANIM &clip, unsigned int frame, unsigned int bone) {
         return clip.setFrame(frame, bone, 1.0f, 2.0f, 3.0f);
     }},
    {"   [!] Invalid params @ RVANIM::setFrameRotationX\n",
     [](RVANIM &clip, unsigned int frame, unsigned int bone) {
         return clip.setFrameRotationX(frame, bone, 1.0f);
     }},
    {"   [!] Invalid params @ RVANIM::setFrameRotationY\n",
     [](RVANIM &clip, unsigned int frame, unsigned int bone) {
         return clip.setFrameRotationY(frame, bone, 2.0f);
     }},
    {"   [!] Invalid params @ RVANIM::setFrameRotationZ\n",
     [](RVANIM &clip, unsigned int frame, unsigned int bone) {
         return clip.setFrameRotationZ(frame, bone, 3.0f);
     }},
    {"   [!] Invalid params @ RVANIM::unsetFrame\n",
     [](RVANIM &clip, unsigned int frame, unsigned int bone) {
         return clip.unsetFrame(frame, bone);
     }},
};

class AnimSetter : public Anim, public testing::WithParamInterface<Setter> {
  protected:
    void expectAccepted(unsigned int frame, unsigned int bone) {
        markLog();
        EXPECT_TRUE(GetParam().call(clip, frame, bone)) << frame << ", " << bone;
        EXPECT_NOTHING_LOGGED();
    }

    void expectRefused(unsigned int frame, unsigned int bone) {
        markLog();
        EXPECT_FALSE(GetParam().call(clip, frame, bone)) << frame << ", " << bone;
        EXPECT_LOGGED_EXACTLY(GetParam().message);
    }
};

TEST_P(AnimSetter, FrameBehindTheLastPassesAndBoneBehindTheLastDoesNot) {
    size(3, 5);
    expectAccepted(0, 0);
    expectAccepted(4, 2);
    expectAccepted(5, 0);
    expectAccepted(5, 2);
    expectRefused(6, 0);
    expectRefused(0, 3);
    expectRefused(5, 3);
    expectRefused(0xffffffffu, 0);
    expectRefused(0, 0xffffffffu);
}

TEST_P(AnimSetter, EmptyClipHasNoBoneToSet) {
    expectRefused(0, 0);
    size(1, 0);
    expectAccepted(0, 0);
}

TEST_P(AnimSetter, FullClipHasAFrameBehindTheLastToo) {
    size(128, 1024);
    expectAccepted(1024, 127);
    expectRefused(1025, 127);
    expectRefused(1024, 128);
}

TEST_P(AnimSetter, CountsBeyondTheStorageBringNoEntries) {
    size(65535, 65535);
    expectAccepted(1024, 127);
    expectRefused(1025, 0);
    expectRefused(65535, 0);
    expectRefused(0, 128);
    expectRefused(0, 65534);
}

INSTANTIATE_TEST_SUITE_P(Operations, AnimSetter, testing::ValuesIn(setters));

TEST_F(Anim, SettersChangeTheirComponentsAndMakeKeys) {
    size(2, 2);
    EXPECT_TRUE(clip.setFrame(1, 1, 10, -20, 30.5f));
    EXPECT_TRUE(isVector(clip.getFrameRotation(1, 1), 10, -20, 30.5f));
    EXPECT_TRUE(entry(1, 1).set);
    EXPECT_TRUE(clip.setFrameRotationX(0, 1, 1));
    EXPECT_TRUE(isVector(clip.getFrameRotation(0, 1), 1, 0, 0));
    EXPECT_TRUE(entry(0, 1).set);
    entry(0, 1).set = false;
    EXPECT_TRUE(clip.setFrameRotationY(0, 1, 2));
    EXPECT_TRUE(isVector(clip.getFrameRotation(0, 1), 1, 2, 0));
    EXPECT_TRUE(entry(0, 1).set);
    entry(0, 1).set = false;
    EXPECT_TRUE(clip.setFrameRotationZ(0, 1, 3));
    EXPECT_TRUE(isVector(clip.getFrameRotation(0, 1), 1, 2, 3));
    EXPECT_TRUE(entry(0, 1).set);
    EXPECT_TRUE(isVector(entry(0, 1).translation, 0, 0, 0));
    EXPECT_FALSE(entry(0, 0).set);
    EXPECT_FALSE(entry(1, 0).set);
}

TEST_F(Anim, FrameBehindTheLastOfAFullClipHasAPlaceOfItsOwn) {
    size(128, 1024);
    EXPECT_TRUE(clip.setFrame(1024, 127, 7, 8, 9));
    EXPECT_TRUE(isVector(clip.getFrameRotation(1024, 127), 7, 8, 9));
    EXPECT_TRUE(entry(1024, 127).set);
    EXPECT_TRUE(isVector(clip.getFrameRotation(1023, 127), 0, 0, 0));
    EXPECT_EQ(clip.getNext(), nullptr); // what follows the entries in memory
    EXPECT_EQ(RVANIM::getNumberOfAnims(), 1u);
}

TEST_F(Anim, UnsetEntriesKeepTheirValues) {
    size(1, 1);
    clip.setFrame(0, 0, 1, 2, 3);
    entry(0, 0).translation.set(4, 5, 6);
    EXPECT_TRUE(clip.unsetFrame(0, 0));
    EXPECT_FALSE(entry(0, 0).set);
    EXPECT_TRUE(isVector(entry(0, 0).rotation, 1, 2, 3));
    EXPECT_TRUE(isVector(entry(0, 0).translation, 4, 5, 6));
}

TEST_F(Anim, EntriesBeyondTheStorageAreNull) {
    EXPECT_NE(clip.getKeyframe(1024, 127), nullptr);
    EXPECT_EQ(clip.getKeyframe(1025, 0), nullptr);
    EXPECT_EQ(clip.getKeyframe(0, 128), nullptr);
    EXPECT_EQ(clip.getKeyframe(0xffffffffu, 0xffffffffu), nullptr);
    EXPECT_TRUE(isVector(clip.getFrameRotation(1025, 0), 0, 0, 0));
    EXPECT_TRUE(isVector(clip.getFrameRotation(0, 128), 0, 0, 0));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, ResetZeroesWhatLiesWithinTheCounts) {
    size(2, 3);
    clip.setBoneName(1, "arm");
    for (unsigned int frame = 0; frame < 4; ++frame)
        for (unsigned int bone = 0; bone < 3; ++bone) {
            entry(frame, bone).rotation.set(1, 2, 3);
            entry(frame, bone).translation.set(4, 5, 6);
            entry(frame, bone).set = true;
        }
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

TEST_F(Anim, KeyframesWantARangeWithinTheClip) {
    size(1, 10);
    const unsigned int bad[][2] = {{3, 3}, {4, 3}, {0, 11}, {10, 10}, {10, 11}, {~0u, ~0u}};
    for (const auto &range : bad) {
        EXPECT_FALSE(clip.createKeyframes(range[0], range[1])) << range[0] << ", " << range[1];
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::createKeyframes\n");
    }
    EXPECT_TRUE(clip.createKeyframes(0, 10));
    EXPECT_TRUE(clip.createKeyframes(9, 10));
    EXPECT_TRUE(clip.createKeyframes(0, 1));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Anim, KeyframesBeyondTheStorageAreRefused) {
    size(1, 65535);
    EXPECT_FALSE(clip.createKeyframes(0, 1025));
    EXPECT_FALSE(clip.createKeyframes(1024, 1025));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::createKeyframes\n"
                          "   [!] Invalid params @ RVANIM::createKeyframes\n");
    EXPECT_TRUE(clip.createKeyframes(0, 1024));
}

TEST_F(Anim, FramesBetweenTwoKeysAreQuarters) {
    size(2, 5);
    clip.setFrame(0, 0, 10, 0, -40);
    clip.setFrame(4, 0, 50, 0, 40);
    for (unsigned int frame = 0; frame < 5; ++frame)
        entry(frame, 0).translation.set(frame, 1, 2);
    EXPECT_TRUE(clip.createKeyframes(0, 4));
    for (unsigned int frame = 0; frame < 5; ++frame) {
        const float t = static_cast<float>(frame);
        EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 0), 10 + 10 * t, 0, -40 + 20 * t));
        EXPECT_TRUE(isVector(entry(frame, 0).translation, t, 1, 2));
        EXPECT_EQ(entry(frame, 0).set, frame == 0 || frame == 4);
        EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 1), 0, 0, 0));
    }
}

// The frames of a clip of one bone, keys marked; what createKeyframes over all of them makes of
// them.
struct ReferenceFrame {
    bool set;
    float value;
};
constexpr ReferenceFrame key(float value) { return {true, value}; }
constexpr ReferenceFrame other(float value) { return {false, value}; }

TEST_F(Anim, FramesBetweenTheKeysAreSteps) {
    const struct {
        const char *name;
        std::vector<ReferenceFrame> before;
        std::vector<float> after;
    } rows[] = {
        {"neighbouring keys write nothing", {key(1), key(5), key(2)}, {1, 5, 2}},
        {"two frames that are no keys are neighbours too", {other(1), other(9)}, {1, 9}},
        {"a first frame that is no key takes a step itself",
         {other(0), other(0), other(0), other(0), key(8)},
         {2, 4, 6, 8, 8}},
        {"the last frame is a key in any case",
         {key(4), other(0), other(0), other(0), other(0)},
         {4, 3, 2, 1, 0}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const auto number = static_cast<unsigned int>(row.before.size());
        size(1, number);
        for (unsigned int frame = 0; frame < number; ++frame) {
            const auto &[set, value] = row.before[frame];
            entry(frame, 0).rotation.set(value, -value, 2 * value);
            entry(frame, 0).set = set;
        }
        EXPECT_TRUE(clip.createKeyframes(0, number - 1));
        for (unsigned int frame = 0; frame < number; ++frame) {
            const float value = row.after[frame];
            EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 0), value, -value, 2 * value));
            EXPECT_EQ(entry(frame, 0).set, row.before[frame].set);
        }
    }
}

TEST_F(Anim, FrameBehindTheLastServesAsEnd) {
    for (const unsigned int frames : {4u, 1024u}) {
        size(1, frames);
        clip.setFrame(0, 0, 0, 0, 0);
        clip.setFrame(frames, 0, static_cast<float>(frames), 0, 0);
        EXPECT_TRUE(clip.createKeyframes(0, frames));
        for (unsigned int frame = 0; frame <= frames; ++frame)
            ASSERT_EQ(clip.getFrameRotation(frame, 0).x, static_cast<float>(frame));
        clip.reset();
    }
}

TEST_F(Anim, FramesOutsideOfTheRangeStay) {
    size(1, 8);
    for (unsigned int frame = 0; frame <= 8; ++frame)
        entry(frame, 0).rotation.set(100, 100, 100);
    clip.setFrame(2, 0, 0, 0, 0);
    clip.setFrame(5, 0, 3, 3, 3);
    EXPECT_TRUE(clip.createKeyframes(2, 5));
    for (const unsigned int frame : {0u, 1u, 6u, 7u, 8u})
        EXPECT_TRUE(isVector(clip.getFrameRotation(frame, 0), 100, 100, 100));
    EXPECT_TRUE(isVector(clip.getFrameRotation(3, 0), 1, 1, 1));
    EXPECT_TRUE(isVector(clip.getFrameRotation(4, 0), 2, 2, 2));
}

// The rule from a frame's point of view: it looks back for the key that it comes from and ahead for
// the key that it goes to, and takes as many steps as frames without a key lie behind it.
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
                entry(frame, bone).set = random() % 4 < density;
                for (int axis = 0; axis < 3; ++axis) {
                    entry(frame, bone).rotation[axis] = degrees(random);
                    frames[bone][axis].push_back(
                        {entry(frame, bone).set, entry(frame, bone).rotation[axis]});
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
        hips->setName("hips");
        arm->setName("arm");
        leg->setName("leg");
        hips->link(root);
        arm->link(hips);
        leg->link(hips);
        for (RVNODE *node : {root, hips, arm, leg}) {
            node->setPosition(1, 1, 1);
            node->setRotation(2, 2, 2);
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

    RVNODE *root = new RVNODE, *hips = new RVNODE, *arm = new RVNODE, *leg = new RVNODE;
};

TEST_F(AnimOnTree, OnlyTheBonesThatAreThereTurn) {
    EXPECT_TRUE(clip.apply(1, root));
    EXPECT_TRUE(isVector(arm->getRotation(), 10, 10.25f, 10.5f));
    EXPECT_TRUE(isVector(hips->getRotation(), 12, 12.25f, 12.5f));
    EXPECT_TRUE(isVector(leg->getRotation(), 2, 2, 2));
    EXPECT_TRUE(isVector(root->getRotation(), 2, 2, 2));
    for (const RVNODE *node : {root, hips, arm, leg})
        EXPECT_TRUE(isVector(node->getPosition(), 1, 1, 1));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(AnimOnTree, TranslatingClipsMoveTheBonesToo) {
    clip.setTranslating(true);
    EXPECT_TRUE(clip.apply(0, root));
    EXPECT_TRUE(isVector(arm->getRotation(), 0, 0.25f, 0.5f));
    EXPECT_TRUE(isVector(arm->getPosition(), 0, 0.125f, 7));
    EXPECT_TRUE(isVector(hips->getPosition(), -2, 0.125f, 7));
    EXPECT_TRUE(isVector(leg->getPosition(), 1, 1, 1));
    clip.setTranslating(false);
    EXPECT_TRUE(clip.apply(1, root));
    EXPECT_TRUE(isVector(hips->getPosition(), -2, 0.125f, 7));
}

TEST_F(AnimOnTree, FrameBehindTheLastCanBeSetButNotApplied) {
    EXPECT_TRUE(clip.setFrame(2, 0, 1, 2, 3));
    EXPECT_FALSE(clip.apply(2, root));
    EXPECT_FALSE(clip.apply(~0u, root));
    EXPECT_FALSE(clip.apply(0, nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::apply\n"
                          "   [!] Invalid params @ RVANIM::apply\n"
                          "   [!] Invalid params @ RVANIM::apply\n");
    EXPECT_TRUE(isVector(arm->getRotation(), 2, 2, 2));
}

TEST_F(AnimOnTree, KeysAndOtherEntriesAreAppliedAlikeAndThePositioningStays) {
    entry(0, 0).set = true;
    arm->setPositioning(RV_NODE_POSITIONING_MATRIX);
    EXPECT_TRUE(clip.apply(0, root));
    EXPECT_TRUE(isVector(hips->getRotation(), 2, 2.25f, 2.5f));
    EXPECT_EQ(arm->getPositioning(), RV_NODE_POSITIONING_MATRIX);
    EXPECT_EQ(hips->getPositioning(), RV_NODE_POSITIONING_VECTORS);
    EXPECT_TRUE(isVector(arm->getRotation(), 0, 0.25f, 0.5f));
}

TEST_F(AnimOnTree, BonesBehindTheCountAreLeftAlone) {
    clip.setNumberOfBones(2);
    EXPECT_TRUE(clip.apply(1, root));
    EXPECT_TRUE(isVector(arm->getRotation(), 10, 10.25f, 10.5f));
    EXPECT_TRUE(isVector(hips->getRotation(), 2, 2, 2));
}

// Depth first, the root included.
TEST_F(AnimOnTree, FirstNodeOfTheNameTurns) {
    leg->setName("arm");
    EXPECT_TRUE(clip.apply(1, root));
    EXPECT_TRUE(isVector(arm->getRotation(), 10, 10.25f, 10.5f));
    EXPECT_TRUE(isVector(leg->getRotation(), 2, 2, 2));
    root->setName("arm");
    EXPECT_TRUE(clip.apply(0, root));
    EXPECT_TRUE(isVector(root->getRotation(), 0, 0.25f, 0.5f));
    EXPECT_TRUE(isVector(arm->getRotation(), 10, 10.25f, 10.5f));
    EXPECT_TRUE(clip.apply(1, hips)); // a part of the tree
    EXPECT_TRUE(isVector(hips->getRotation(), 12, 12.25f, 12.5f));
    EXPECT_TRUE(isVector(root->getRotation(), 0, 0.25f, 0.5f));
}

TEST_F(AnimOnTree, NothingIsAllocatedAndNothingHeld) {
    EXPECT_TRUE(clip.apply(1, root));
    RVANIM::cleanUp();
    EXPECT_TRUE(isVector(arm->getRotation(), 10, 10.25f, 10.5f));
}

} // namespace
