// Fonts as objects: defaults, the texture's references, copies, and the memory of the cache.

#include "tests/engine/openGLAccess.h"
#include "tests/gui/fontTest.h"

#include "ravolt/zlf.h"

using namespace ravolt::test;

namespace ravolt::test {

struct FontVertices {
    using Type = float **;
    friend Type reach(FontVertices);
};
struct FontIndices {
    using Type = unsigned short **;
    friend Type reach(FontIndices);
};
template struct Opened<FontVertices, &RVFONT::fontCachedVertex>;
template struct Opened<FontIndices, &RVFONT::fontCachedIndex>;

} // namespace ravolt::test

namespace {

class Font : public FontTest {};

TEST_F(Font, HasItsDefaults) {
    const RVFONT made;
    EXPECT_EQ(made.getCharSizeX(), 16u);
    EXPECT_EQ(made.getCharSizeY(), 16u);
    EXPECT_EQ(made.stringLength("az"), 32u);
    EXPECT_EQ(made.getPrevious(), font);
    EXPECT_STREQ(RVFONT::getPath(), "");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Font, CountsAsAUserOfItsTexture) {
    EXPECT_EQ(atlas->getReferences(), 1);
    EXPECT_FALSE(font->setTexture(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::setTexture\n");
    EXPECT_EQ(atlas->getReferences(), 1);
    auto *second = new RVFONT;
    EXPECT_TRUE(second->setTexture(atlas));
    EXPECT_TRUE(second->setTexture(atlas));
    EXPECT_EQ(atlas->getReferences(), 2) << "one a font";
    auto *other = new RVTEXTURE;
    EXPECT_TRUE(font->setTexture(other));
    EXPECT_EQ(atlas->getReferences(), 1);
    EXPECT_EQ(other->getReferences(), 1);
    delete second;
    EXPECT_EQ(atlas->getReferences(), 0);
    delete other;
    EXPECT_TRUE(font->setTexture(atlas)) << "the old one is not there any more";
    EXPECT_EQ(atlas->getReferences(), 1);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Font, ACopyHasItsValuesAndReleasesNothing) {
    font->setName("original");
    font->setCharSizeX(10);
    font->setCharSizeY(20);
    font->setKerning('a', 3);
    font->setKerning(0x7f, 4);
    const unsigned int fonts = RVFONT::getNumberOfFonts(), id = font->getId();
    auto *assigned = new RVFONT;
    const unsigned int assignedId = assigned->getId();
    {
        RVFONT copy(*font);
        *assigned = *font;
        assigned->operator=(*assigned);
        for (const RVFONT *each : {&copy, assigned}) {
            EXPECT_EQ(each->getId(), id);
            EXPECT_EQ(each->getCharSizeX(), 10u);
            EXPECT_EQ(each->getCharSizeY(), 20u);
            EXPECT_EQ(each->stringLength("a\x7f"), 13u);
        }
        EXPECT_STREQ(copy.getName(), "original");
        EXPECT_STREQ(assigned->getName(), "original");
        EXPECT_TRUE(copy.putString(0, 0, "a")) << "with the same texture";
        EXPECT_EQ(atlas->getReferences(), 1);
        EXPECT_EQ(RVFONT::getNumberOfFonts(), fonts + 1);
        EXPECT_EQ(RVFONT::findById(id), font);
    }
    EXPECT_EQ(atlas->getReferences(), 1);
    EXPECT_EQ(RVFONT::getNumberOfFonts(), fonts + 1);
    delete assigned;
    const unsigned int next = zlfNewId();
    EXPECT_EQ(next, assignedId) << "the identifier that it was created with is free";
    releaseId(next);
    EXPECT_EQ(RVFONT::getNumberOfFonts(), fonts);
    EXPECT_EQ(RVFONT::findById(id), font);
}

TEST_F(Font, TheCacheIsMemoryOfTheRunningEngine) {
    for (unsigned int i = 0; i < 6144; ++i)
        ASSERT_EQ((*reach(FontIndices()))[i], i);
    EXPECT_TRUE(RVFONT::init()) << "in place of the first";
    EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putString(0, 0, "a"); })), "a 0 0");
    EXPECT_TRUE(RVFONT::free());
    EXPECT_TRUE(RVFONT::free());
    EXPECT_EQ(*reach(FontVertices()), nullptr);
    EXPECT_EQ(*reach(FontIndices()), nullptr);
    const auto draw = [this] {
        EXPECT_FALSE(font->putChar(0, 0, 'a', false));
        EXPECT_FALSE(font->putChar(0, 0, 'a', true));
        EXPECT_FALSE(font->putString(0, 0, "a"));
    };
    EXPECT_TRUE(callsOf(draw).empty());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Font, WithoutMemoryForOneArrayTheOthersStay) {
    const struct {
        const char *what;
        std::size_t bytes;
        unsigned int after;
    } cases[] = {{"vertices", 49152, 0},
                 {"texture coordinates", 49152, 1},
                 {"colours", 24576, 2},
                 {"indices", 12288, 3}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        RVFONT::free();
        recorder.failAllocation(c.bytes, c.after, 1);
        EXPECT_FALSE(RVFONT::init());
        recorder.allocationsWork();
        zlfFree(nullptr); // the refused block counts as live
        EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVFONT::init\n");
        EXPECT_EQ(*reach(FontVertices()) == nullptr, c.after == 0);
        EXPECT_EQ(*reach(FontIndices()) == nullptr, c.after == 3);
        EXPECT_FALSE(font->putChar(0, 0, 'a', false));
        EXPECT_FALSE(font->putString(0, 0, "a"));
        EXPECT_TRUE(RVFONT::init());
        EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putString(0, 0, "a"); })), "a 0 0");
    }
}

} // namespace
