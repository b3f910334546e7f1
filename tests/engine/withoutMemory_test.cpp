// A whole run of the engine in which one allocation of the library fails, each in turn: no
// exception is thrown to the application, the end and another start work, nothing is left.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/RVWINDOW.h"
#include "ravolt/zlf.h"
#include "tests/engine/resetEffects.h"
#include "tests/faults/world.h"
#include "tests/models/modelScenes.h"
#include "tests/support/create.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"
#include "tests/support/heap.h"
#include "tools/writers/tgaWriter.h"

#include <functional>
#include <set>
#include <string>

namespace ravolt::test {
namespace {

// Longer than a label.
constexpr const char *longText =
    "abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz "
    "abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz "
    "abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz "
    "abcdefghijklmnopqrstuvwxyz";

// Each element and each property that allocates.
constexpr const char *interfaceOfEverything = R"(<root>
<!-- in the log -->
<font><name value="file"/><texture value="wall_d.tga"/><kerning value="kerning.txt"/></font>
<box><name value="below"/><texture value="wall_n.tga"/><color r="0" g="0" b="0" a="0.5"/></box>
<window><title value="title"/><size width="96" height="20"/><usefont ref="file"/>
<write value="more than the lines of the window"/>
<button><title value="caption"/><kind value="switch"/><usefont ref="file"/></button>
<text><position x="0" y="64"/><usefont ref="file"/></text>
<label><usefont ref="file"/><write value="100%%"/></label>
<hslider/></window>
<vslider/></root>)";

constexpr unsigned int endless = 1'000'000; // counted down, so that it shows

class WithoutMemory : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        const unsigned char pixels[4 * 3] = {};
        TgaPicture picture;
        picture.width = picture.height = 2;
        picture.pixels = pixels;
        ASSERT_TRUE(writeTga("wall_d.tga", picture));
        ASSERT_TRUE(writeTga("wall_n.tga", picture));
        writeFile("life.rve", bytesOf(sceneOfEverything("wall_d.tga")));
        writeFile("gui.xml", interfaceOfEverything);
        writeFile("kerning.txt", "RAVOLT_kerning_i=5\nRAVOLT_kerning_SPACE=7\n");
        writeFile("ownVS.glsl", Bytes{' '});
        writeFile("ownPS.glsl", Bytes{' '});
        settings.setShaders(true);
        zlfSetConsoleEcho(false);
        ASSERT_TRUE(endsInOrder()); // and so from here on
    }
    void TearDown() override {
        recorder.allocationsWork();
        RAVOLT::free();
        resetEffects();
        zlfSetConsoleEcho(true);
        SilentTest::TearDown();
    }

    void textures() {
        auto *texture = create<RVTEXTURE>();
        texture->incReferences();
        texture->load("wall_d.tga");
        texture->update();
        texture->setFilter(true, true, true);
        texture->unload(true);
        texture->reload();
        texture->unload(true);
        texture->render(nullptr);
        const char pixels[8 * 8 * 4] = {};
        texture->create(8, 8, 4);
        texture->unload(true);
        texture->modify(pixels, true);
        RVTEXTURE::garbageCollect(0);
    }

    void resources() {
        textures();
        auto *program = create<RVSHADER>();
        program->load("ownVS.glsl", "ownPS.glsl", false);
        auto *material = create<RVMATERIAL>();
        auto *copy = create<RVMATERIAL>();
        copy->clone(material);
        auto *clip = create<RVANIM>();
        clip->save("life.rva");
        clip->load("life.rva");
        auto *video = create<RVVIDEO>();
        video->load("life.rve"); // no video, but a file
        video->play();
        video->update(2);
        video->load(nullptr); // closes the file, which the destructor does not
    }

    static void tree() {
        auto *root = create<RVNODE>(), *middle = create<RVNODE>();
        middle->link(root);
        for (int child = 0; child < 3; ++child)
            create<RVNODE>()->link(middle);
        middle->remove();
        middle->link(root);
        middle->unlink();
    }

    static void frame(RVNODE *root) {
        auto *camera = create<RVCAMERA>();
        allEffectsOn();
        for (int number = 0; number < 2; ++number) {
            drawFrame(camera, root);
            RAVOLT::select(1, 1);
            drawFrame2D(root);
            RAVOLT::swap();
        }
    }

    void life() {
        if (!RAVOLT::init(&settings))
            return;
        RVNODE *const root = RAVOLT::load("life.rve");
        resources();
        tree();
        frame(root);
        RAVOLT::free();
    }

    template <class Widget> static Widget *add(RVNODE *parent) {
        Widget *const widget = create<Widget>();
        widget->link(parent);
        return widget;
    }

    static RVFONT *makeFont() {
        RVFONT *const font = create<RVFONT>();
        auto *const atlas = create<RVTEXTURE>();
        atlas->create(16, 16, RV_TEXTURE_RGBA);
        font->setTexture(atlas);
        font->loadKerning("kerning.txt");
        return font;
    }

    static RVNODE *widgets() {
        RVFONT *const font = makeFont();
        auto *const root = create<RVNODE>();
        auto *const window = add<RVWINDOW>(root);
        window->setFont(font);
        window->setCaption("title");
        window->write("%s", longText);
        window->format();
        for (RVBUTTON *button : {add<RVBUTTON>(window), add<RVBUTTON>(root)})
            button->setFont(font);
        auto *const field = add<RVTEXTFIELD>(root);
        field->setFont(font);
        field->manageKey('a');
        auto *const label = add<RVLABEL>(window);
        label->setFont(font);
        label->write("%s", longText);
        for (RVBOX *bar : {static_cast<RVBOX *>(add<RVHSCROLLBAR>(root)),
                           static_cast<RVBOX *>(add<RVVSCROLLBAR>(window))})
            bar->setForemost(0);
        add<RVBOX>(root)->setTexture(RVTEXTURE::getFirst());
        return root;
    }

    // A press on whatever is at each point, and its release.
    static void operate() {
        for (const int at : {10, 25, 40})
            for (const int left : {1, 1, 0}) {
                unsigned int event;
                RVELEMENT::manageGUIEvents('b', at, at, left, 0, &event);
            }
    }

    void interfaceLife() {
        if (!RAVOLT::init(&settings))
            return;
        for (RVNODE *root : {widgets(), RAVOLT::load("gui.xml")})
            for (int number = 0; number < 2; ++number) {
                drawFrame2D(root);
                operate();
                RAVOLT::swap();
            }
        RAVOLT::free();
    }

    // What the other lives leave out: terrain, water, sky, particles, targets, helpers.
    void lifeOfEverything() {
        if (!RAVOLT::init(&settings))
            return;
        const World world = makeWorld();
        allEffectsOn();
        for (int number = 0; number < 2; ++number)
            drawWorld(world);
        RAVOLT::select(1, 1);
        if (world.terrain)
            world.terrain->load("land.xml"); // once more, into what there is
        RVSETTINGS().load("kerning.txt");
        RAVOLT::free();
    }

    // A run with these allocations failing. Returns whether any failed.
    bool lifeWithout(const std::function<void()> &run, unsigned int after, unsigned int times) {
        const LogMark mark = logMark();
        const unsigned int blocks = heap.failedMallocs;
        recorder.failAllocation(1, after, times);
        try {
            run();
        } catch (...) {
            ADD_FAILURE() << "an exception was thrown";
        }
        const bool failed = heap.failure.after == 0 && heap.failure.times != times;
        recorder.allocationsWork();
        for (const std::string &line : problemsSince(mark))
            problems.insert(line);
        RAVOLT::free();
        EXPECT_FALSE(RAVOLT::isActive());
        expectNothingLeft();
        // A block whose allocation failed is never subtracted from the ratio.
        EXPECT_EQ(finalMemoryRatio() - ratio, static_cast<int>(heap.failedMallocs - blocks));
        ratio += static_cast<int>(heap.failedMallocs - blocks);
        return failed;
    }

    // So many allocations fail from each one on, beginning after `first` of them. The number of
    // allocations of a life.
    unsigned int failFromEach(const std::function<void()> &run, unsigned int times,
                              unsigned int first = 0) {
        unsigned int after = first;
        for (; lifeWithout(run, after, times) && !HasFailure(); ++after)
            EXPECT_TRUE(endsInOrder());
        EXPECT_FALSE(HasFailure()) << "at allocation " << after;
        return after;
    }

    bool endsInOrder() {
        const bool started = RAVOLT::init(&settings);
        const bool ended = RAVOLT::free();
        ratio = finalMemoryRatio();
        return started && ended;
    }

    RVSETTINGS settings = smallSettings();
    int ratio = 0;
    std::set<std::string> problems;
};

TEST_F(WithoutMemory, EachAllocationMayFailByItself) {
    EXPECT_GT(failFromEach([this] { life(); }, 1), 80u) << "more than the start was run";
    for (const char *line :
         {"   [!] Out of memory for the splash picture @ RVSETTINGS::init",
          "   [!] Out of memory @ RVOPENGL::init", "   [!] Out of memory @ RVSHADER::init",
          "   [!] Out of memory @ RVNODE::link", "   [!] Out of memory @ RVNODE::remove"})
        EXPECT_EQ(problems.count(line), 1u) << line;
}

TEST_F(WithoutMemory, AllAllocationsMayFailFromEachOn) {
    failFromEach([this] { life(); }, endless);
}

TEST_F(WithoutMemory, EachAllocationOfAnInterfaceMayFail) {
    const unsigned int start = failFromEach([this] { RAVOLT::init(&settings); }, 1);
    for (const unsigned int times : {1u, endless})
        EXPECT_GT(failFromEach([this] { interfaceLife(); }, times), start + 20);
    for (const char *line :
         {"   [!] Out of memory for the title bar @ RVWINDOW::RVWINDOW",
          "   [!] Out of memory for the scroll bar @ RVWINDOW::RVWINDOW",
          "   [!] Out of memory for the cursor @ RVSCROLLBAR::RVSCROLLBAR",
          "   [!] Out of memory for file gui.xml @ RAVOLT::loadXML",
          "   [!] Out of memory @ RVFONT::init", "   [!] Out of memory @ RVNODE::link"})
        EXPECT_EQ(problems.count(line), 1u) << line;
}

// The start itself is the first test's.
class WithoutMemoryForEverything : public WithoutMemory {
  protected:
    void SetUp() override {
        WithoutMemory::SetUp();
        writeWorldFiles();
        recorder.failAllocation(1, endless);
        RAVOLT::init(&settings);
        start = endless - heap.failure.after;
        recorder.allocationsWork();
        RAVOLT::free();
        ASSERT_TRUE(endsInOrder());
        ASSERT_GT(start, 20u);
    }
    unsigned int start = 0; // allocations of it
};

TEST_F(WithoutMemoryForEverything, EachAllocationMayFailByItself) {
    EXPECT_GT(failFromEach([this] { lifeOfEverything(); }, 1, start), start + 100);
    for (const char *line :
         {"   [!] Out of memory @ RVTERRAIN::load", "   [!] Out of memory @ RVEMITTER::load",
          "   [!] Out of memory @ RVSKYDOME::RVSKYDOME"})
        EXPECT_EQ(problems.count(line), 1u) << line;
}

TEST_F(WithoutMemoryForEverything, AllAllocationsMayFailFromEachOn) {
    EXPECT_GT(failFromEach([this] { lifeOfEverything(); }, endless, start), start + 100);
}

} // namespace
} // namespace ravolt::test
