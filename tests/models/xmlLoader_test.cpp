// Interfaces from XML files: every element and property, the order in the file, and what is
// refused.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWINDOW.h"
#include "ravolt/zlf.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"
#include "tests/support/heap.h"

#include <filesystem>

using namespace ravolt::test;

namespace {

constexpr const char *loading = "\n   Loading XML file 'gui.xml'...\n";
constexpr const char *cannotOpen = "   [!] Unable to open file gui.xml @ RAVOLT::loadXML\n";

std::string repeated(std::size_t times, const std::string &text) {
    std::string all;
    for (; times > 0; --times)
        all += text;
    return all;
}

// A property of a node as a text.
using Getter = std::string (*)(RVNODE &);

RVBOX &box(RVNODE &node) { return static_cast<RVBOX &>(node); }
RVBUTTON &button(RVNODE &node) { return static_cast<RVBUTTON &>(node); }
RVBUTTON &title(RVNODE &node) { return *static_cast<RVWINDOW &>(node).getTitleBar(); }

std::string join(std::initializer_list<float> numbers) {
    std::string text;
    for (const float number : numbers) {
        char word[32];
        std::snprintf(word, sizeof word, "%s%g", text.empty() ? "" : " ", number);
        text += word;
    }
    return text;
}
std::string nameOf(RVFONT *font) { return font ? font->getName() : "none"; }

std::string name(RVNODE &node) { return node.getName(); }
std::string position(RVNODE &node) { return join({node.getPosition().x, node.getPosition().y}); }
std::string sizes(RVNODE &node) { return join({box(node).getSizes().x, box(node).getSizes().y}); }
std::string color(RVNODE &node) {
    const Z3MVECTOR4D value = box(node).getColor();
    return join({value.x, value.y, value.z, value.w});
}
std::string texture(RVNODE &node) {
    return box(node).getTexture() ? box(node).getTexture()->getFilename() : "none";
}
std::string font(RVNODE &node) { return nameOf(button(node).getFont()); }
std::string caption(RVNODE &node) { return button(node).getCaption(); }
std::string kind(RVNODE &node) {
    return std::to_string(static_cast<int>(button(node).getEventType()));
}
std::string titleCaption(RVNODE &node) { return title(node).getCaption(); }
std::string titleFont(RVNODE &node) { return nameOf(title(node).getFont()); }
std::string titleSizes(RVNODE &node) { return sizes(title(node)); }
std::string labelText(RVNODE &node) { return static_cast<RVLABEL &>(node).getText(); }
std::string children(RVNODE &node) { return std::to_string(node.getNumberOfChildren()); }

// Glyphs that a widget itself draws.
std::string glyphs(RVNODE &node) {
    RVELEMENT element;
    double indices = 0;
    for (const Call &call : callsOf([&] { node.render(&element); }).named("glDrawElements"))
        indices += call.arguments.at(1);
    return std::to_string(static_cast<int>(indices) / 6);
}

// Every load has a font "f" with a texture.
class XmlLoaderTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        writeFile("wall.tga", plainTga(2, 2));
        RVTEXTURE::setPath(nullptr);
        RVFONT::setPath(nullptr);
        prepared = new RVFONT;
        prepared->setName("f");
        auto *const atlas = new RVTEXTURE;
        atlas->load("wall.tga");
        prepared->setTexture(atlas);
    }

    void TearDown() override {
        RAVOLT::confineFilesOff();
        RAVOLT::setRVEPath(nullptr);
        SilentEngineTest::TearDown();
    }

    RVNODE *load(const std::string &text) {
        writeFile("gui.xml", text);
        mark = markLog();
        return RAVOLT::loadXML("gui.xml");
    }

    // The node that an element directly under the root makes.
    RVNODE *loadElement(const std::string &element) {
        RVNODE *root = load("<root>" + element + "</root>");
        return root && root->getNumberOfChildren() == 1 ? root->getChild(0) : nullptr;
    }

    RVFONT *prepared = nullptr;
    LogMark mark = 0; // of the last load
};

TEST_F(XmlLoaderTest, CreatingElementsMakeLinkedWidgetsAndLogThem) {
    const struct {
        std::string tag;
        RV_NODE_TYPE type;
        const char *log;
    } rows[] = {
        {"window", RV_NODE_TYPE_WINDOW, "   + create a window\n"},
        {"button", RV_NODE_TYPE_BUTTON, "   + create a button\n"},
        {"text", RV_NODE_TYPE_TEXTFIELD, "   + create a textfield\n"},
        {"label", RV_NODE_TYPE_LABEL, "   RVLABEL() called\n   + create a label\n"},
        {"box", RV_NODE_TYPE_BOX, "   + create a box\n"},
        {"vslider", RV_NODE_TYPE_VSCROLLBAR, "   + create a vertical slider\n"},
        {"hslider", RV_NODE_TYPE_HSCROLLBAR, "   + create a horizontal slider\n"},
    };
    for (const auto &row : rows) {
        RVNODE *node = loadElement("<" + row.tag + "/>");
        ASSERT_NE(node, nullptr) << row.tag;
        EXPECT_EQ(node->getType(), row.type);
        EXPECT_EQ(std::string(node->getParent()->getName()), "gui.xml");
        EXPECT_EQ(node->getParent()->getType(), RV_NODE_TYPE_NODE);
        EXPECT_LOGGED_EXACTLY(std::string(loading) + row.log);
    }
    for (const char *other : {"Window", "textfield", "windows", "position"}) {
        EXPECT_EQ(load(std::string("<root><") + other + "/></root>")->getNumberOfChildren(), 0u);
        EXPECT_LOGGED_EXACTLY(loading);
    }
}

TEST_F(XmlLoaderTest, PropertiesSetWhatTheyName) {
    const struct {
        const char *element;
        Getter get;
        std::string expected;
    } rows[] = {
        {"<box><name value='b'/></box>", name, "b"},
        {"<box><name value='b'/><name value='x'/></box>", name, "x"},
        {"<window><title value='Log'/></window>", titleCaption, "Log"},
        {"<window><title value='Log'/></window>", caption, ""},
        {"<button><title value='OK'/></button>", caption, "OK"},
        {"<box><position x='3' y='-4.9px'/></box>", position, "3 -4"},
        {"<box><position x='word' y='99999999999'/></box>", position, "0 2.14748e+09"},
        {"<label><size width='30' height='40'/></label>", sizes, "30 40"},
        {"<window><size width='200' height='90'/></window>", sizes, "200 90"},
        {"<window><size width='200' height='90'/></window>", titleSizes, "200 19"},
        {"<hslider><size width='80' height='6'/></hslider>", sizes, "80 6"},
        {"<window><usefont ref='f'/></window>", font, "f"},
        {"<window><usefont ref='f'/></window>", titleFont, "f"},
        {"<button><usefont ref='f'/></button>", font, "f"},
        {"<text><usefont ref='f'/></text>", font, "f"},
        {"<button><usefont ref='f'/><usefont ref='F'/></button>", font, "none"},
        {"<label><usefont ref='f'/><write value='a&amp;b'/></label>", labelText, "a&b"},
        {"<box><texture value='wall.tga'/></box>", texture, "wall.tga"},
        {"<box><color r='0.25' g='.5' b='1' a='5e-1'/></box>", color, "0.25 0.5 1 0.5"},
        {"<button><kind value='inverted'/></button>", kind, "1"},
        {"<button><kind value='switch'/></button>", kind, "2"},
        {"<button><kind value='switch'/><kind value='normal'/></button>", kind, "0"},
        {"<button><kind value='switch'/><kind value='Normal'/></button>", kind, "2"},
        {"<window><usefont ref='f'/><write value='four'/></window>", glyphs, "4"},
        {"<window><usefont ref='f'/><write value='four'/><write value='12'/></window>", glyphs,
         "2"},
        // Properties of an element that is unknown are those of the element around it.
        {"<box><group><position x='5' y='6'/></group></box>", position, "5 6"},
        {"<box><font><position x='5' y='6'/><size width='7' height='8'/></font></box>", position,
         "5 6"},
        {"<box><font><size width='7' height='8'/></font></box>", sizes, "7 8"},
        // Creating elements within properties and unknown elements.
        {"<box><name value='b'><button/></name><group><box/></group></box>", children, "2"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.element);
        RVNODE *node = loadElement(row.element);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(row.get(*node), row.expected);
        EXPECT_EQ(problemsSince(mark).size(), 0u);
    }
}

// The expected text is the default; # is replaced by the identifier.
TEST_F(XmlLoaderTest, MissingAttributesAndOtherKindsChangeNothing) {
    const struct {
        const char *element;
        Getter get;
        std::string expected;
    } rows[] = {
        {"<box><name/><name ref='x'/></box>", name, "[box #]"},
        {"<window><title/></window>", titleCaption, "[button #]"},
        {"<text><title value='x'/></text>", caption, "[button #]"},
        {"<box><position x='3'/><position y='3'/><position X='3' Y='4'/></box>", position, "0 0"},
        {"<box><size width='3'/><size height='3'/></box>", sizes, "64 64"},
        {"<window><size width='3'/></window>", titleSizes, "128 19"},
        {"<button><usefont value='f'/></button>", font, "none"},
        {"<box><texture/></box>", texture, "none"},
        {"<box><color r='1' g='1' b='1'/><color g='1' b='1' a='1'/></box>", color, "0.5 0.5 0.5 1"},
        {"<text><kind value='switch'/></text>", kind, "0"},
        {"<window><kind value='switch'/></window>", kind, "0"},
        {"<button><kind/></button>", kind, "0"},
        {"<button><write value='x'/></button>", caption, "[button #]"},
        {"<box><kerning value='none.txt'/><usefont ref='f'/></box>", name, "[box #]"},
        {"<box><font><kerning/></font></box>", name, "[box #]"},
        {"<label><usefont ref='f'/><write/></label>", labelText, ""},
        {"<window><write value='no font'/></window>", glyphs, "0"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.element);
        RVNODE *node = loadElement(row.element);
        ASSERT_NE(node, nullptr);
        const unsigned int id = row.get == titleCaption ? title(*node).getId() : node->getId();
        std::string expected = row.expected;
        if (const std::size_t hash = expected.find('#'); hash != std::string::npos)
            expected.replace(hash, 1, std::to_string(id));
        EXPECT_EQ(row.get(*node), expected);
        EXPECT_EQ(problemsSince(mark).size(), 0u);
    }
}

TEST_F(XmlLoaderTest, NestedElementsAreChildrenInTheOrderOfTheFile) {
    RVNODE *root = load("<root><box><name value='a'/></box>"
                        "<window><position x='10' y='20'/><button><position x='1' y='2'/>"
                        "<box/></button><label/></window></root>");
    ASSERT_EQ(root->getNumberOfChildren(), 2u);
    EXPECT_EQ(name(*root->getChild(0)), "a");
    RVNODE *window = root->getChild(1);
    ASSERT_EQ(window->getNumberOfChildren(), 4u) << "title bar, scroll bar, button, label";
    EXPECT_EQ(window->getChild(2)->getType(), RV_NODE_TYPE_BUTTON);
    EXPECT_EQ(position(*window->getChild(2)), "1 2") << "relative to the window";
    EXPECT_EQ(window->getChild(2)->getChild(0)->getType(), RV_NODE_TYPE_BOX);
    EXPECT_EQ(window->getChild(3)->getType(), RV_NODE_TYPE_LABEL);
}

TEST_F(XmlLoaderTest, FontsStayInTheRegistry) {
    writeFile("f.txt", "RAVOLT_kerning_A=5\n");
    RVNODE *window = loadElement("<window><usefont ref='late'/><font><name value='late'/>"
                                 "<texture value='wall.tga'/><kerning value='f.txt'/></font>"
                                 "<button><usefont ref='late'/></button></window>");
    EXPECT_LOGGED("   + create a font");
    RVFONT *made = RVFONT::findByName("late");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getKerning('A'), 5);
    ASSERT_EQ(window->getNumberOfChildren(), 3u) << "no child for the font";
    EXPECT_EQ(font(*window), "none") << "it was not there yet";
    EXPECT_EQ(font(*window->getChild(2)), "late");
    EXPECT_EQ(made->stringLength("A"), 11u);
    EXPECT_TRUE(made->putString(0, 0, "A")) << "it has the texture";
}

// What a texture is drawn with: the magnification filter of its upload.
TEST_F(XmlLoaderTest, NewTexturesOfFontsAreSharpAndOthersKeepTheirFilter) {
    writeFile("second.tga", plainTga(2, 2));
    const unsigned int before = RVTEXTURE::getNumberOfTextures();
    const auto filterOf = [](const char *file) {
        RVTEXTURE *found = RVTEXTURE::findByFilename(file);
        const Calls calls = callsOf([&] { found->update(); });
        for (const Call &call : calls.named("glTexParameteri"))
            if (call.arguments.at(1) == GL_TEXTURE_MAG_FILTER)
                return static_cast<int>(call.arguments.at(2));
        return 0;
    };
    load("<root><font><texture value='second.tga'/></font>"
         "<font><texture value='wall.tga'/></font></root>");
    EXPECT_EQ(filterOf("second.tga"), GL_NEAREST);
    EXPECT_EQ(filterOf("wall.tga"), GL_LINEAR) << "the fixture has loaded it";
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before + 1);
}

TEST_F(XmlLoaderTest, CommentsOfElementsAreLogged) {
    load("<!-- before --><!--root--><root><!-- 100% %s --><font><!--font--></font>"
         "<box><name value='x'><!--in a property--></name></box>text</root><!-- after -->");
    EXPECT_LOGGED_EXACTLY(std::string(loading) +
                          "   [XML]  100% %s \n   + create a font\n   [XML] font\n"
                          "   + create a box\n   [XML] in a property\n");
}

TEST_F(XmlLoaderTest, BoxPropertiesOfAFontUnderTheRootAreIgnoredWithALineEach) {
    RVNODE *root = load("<root><font><name value='g'/><position x='1' y='2'/>"
                        "<size width='3' height='4'/><color r='1' g='1' b='1' a='1'/>"
                        "<title value='x'/><write value='x'/><kind value='switch'/></font>"
                        "<group><texture value='wall.tga'/></group></root>");
    EXPECT_LOGGED_EXACTLY(std::string(loading) + "   + create a font\n" +
                          "   [!] size of what is no box is ignored @ RAVOLT::loadXML\n"
                          "   [!] color of what is no box is ignored @ RAVOLT::loadXML\n"
                          "   [!] texture of what is no box is ignored @ RAVOLT::loadXML\n");
    EXPECT_EQ(position(*root), "1 2") << "the plain node has one";
    EXPECT_EQ(name(*root), "gui.xml");
    EXPECT_NE(RVFONT::findByName("g"), nullptr);
}

// A text is the format of a call without arguments.
TEST_F(XmlLoaderTest, OnlyDoubledPercentSignsExpandInTexts) {
    const std::pair<std::string, std::string> rows[] = {
        {"50%%", "50%"}, {"50%", "50%"}, {"%s%n%d", "%s%n%d"}, {"%%%%", "%%"}, {"a %%s", "a %s"}};
    for (const auto &[text, expected] : rows) {
        RVNODE *label =
            loadElement("<label><usefont ref='f'/><write value='" + text + "'/></label>");
        EXPECT_EQ(labelText(*label), expected);
        RVNODE *window =
            loadElement("<window><usefont ref='f'/><write value='" + text + "'/></window>");
        EXPECT_EQ(glyphs(*window), std::to_string(expected == "%%" ? 1 : expected.size()));
    }
}

TEST_F(XmlLoaderTest, WidgetsReportWhatTheyRefuse) {
    const struct {
        std::string element;
        const char *line;
    } rows[] = {
        {"<label><write value='x'/></label>", "   [!] Font not specified @ RVLABEL::write"},
        {"<label><usefont ref='f'/><write value='" + std::string(300, 'x') + "'/></label>",
         "   [!] Text is cut at 255 bytes @ RVFONT::format"},
        {"<window><write value='" + std::string(4000, 'x') + "'/></window>",
         "   [!] Text overflow @ RVWINDOW::write"},
        {"<box><font><kerning value='none.txt'/></font></box>",
         "   [!] File not found (none.txt) @ RVFONT::loadKerning"},
        {"<box><texture value='none.tga'/></box>",
         "   [!] Unable to open file none.tga @ RVTEXTURE::loadTGA"},
    };
    for (const auto &row : rows) {
        EXPECT_NE(loadElement(row.element), nullptr);
        EXPECT_LOGGED(row.line);
    }
}

// --- Files

TEST_F(XmlLoaderTest, FilesThatCannotBeReadAreRefused) {
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    EXPECT_EQ(RAVOLT::loadXML("none.xml"), nullptr);
    EXPECT_EQ(RAVOLT::loadXML(nullptr), nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Unable to open file none.xml @ RAVOLT::loadXML\n"
                          "   [!] Unable to open file  @ RAVOLT::loadXML\n");
    const auto fileOf = [](std::size_t bytes) {
        return "<root>" + std::string(bytes - 13, ' ') + "</root>";
    };
    EXPECT_EQ(load(fileOf((4 << 20) + 1)), nullptr);
    EXPECT_LOGGED_EXACTLY(cannotOpen);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes);
    EXPECT_NE(load(fileOf(4 << 20)), nullptr);
}

TEST_F(XmlLoaderTest, MalformedFilesAreRefusedWithTheirLineAndColumn) {
    const std::string reason = "malformed, or more than 256 levels or attributes";
    const struct {
        std::string text, where, reason;
    } rows[] = {
        {"<root>\n  <box>\n</root>", "   [!] Line 3, column 3", reason},
        {"<root>\n  <box", "   [!] Line 2, column 7", reason},
        {"<?xml version='1.0'?>\n<root><box size=></root>", "   [!] Line 2, column 20", reason},
        {"<?xml version='1.0'?> <root a='1' a='2'/>", "   [!] Line 1, column 35",
         "Error parsing Element."},
        {"<root>\n <box a='1' a='2'/></root>", "   [!] Line 2, column 13",
         "Error parsing Element."},
        {"", "   [!] Line 1, column 1", "Error document empty."},
        {"\n<?xml version='1.0'?> words", "   [!] Line 2, column 22", "Error document empty."},
        {std::string("<root>\n\0</root>", 15), "   [!] Line 2, column 1", reason},
        {"<root>" + repeated(256, "<box>") + repeated(256, "</box>") + "</root>",
         "   [!] Line 1, column 1286", reason},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text.substr(0, 60));
        EXPECT_EQ(load(row.text), nullptr);
        EXPECT_LOGGED_EXACTLY(row.where + ": " + row.reason + " @ RAVOLT::loadXML\n" + cannotOpen);
    }
    EXPECT_NE(load("<root>" + repeated(255, "<box>") + repeated(255, "</box>") + "</root>"),
              nullptr);
}

TEST_F(XmlLoaderTest, AFileWithoutARootIsRefused) {
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    for (const char *text : {"<Root><box/></Root>", "<gui><root/></gui>", "<!--root-->"}) {
        EXPECT_EQ(load(text), nullptr) << text;
        EXPECT_LOGGED_EXACTLY(std::string(loading) +
                              "   [!] Root not found in file gui.xml @ RAVOLT::loadXML\n");
    }
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes);
    EXPECT_NE(load("<other/><root/>"), nullptr);
}

TEST_F(XmlLoaderTest, LoadForwardsNamesWithTheExtensionBehindThePath) {
    std::filesystem::create_directory("scenes");
    RAVOLT::setRVEPath("scenes/");
    for (const std::string file : {"gui.xml", "GUI.XML", "a.xml.bak"}) {
        writeFile("scenes/" + file, "<root><box/></root>");
        markLog();
        RVNODE *root = RAVOLT::load(file.c_str());
        ASSERT_NE(root, nullptr) << file;
        EXPECT_EQ(name(*root), "scenes/" + file);
        EXPECT_LOGGED_EXACTLY("\n   Loading XML file 'scenes/" + file +
                              "'...\n   + create a box\n");
    }
    writeFile("scenes/gui.Xml", "<root/>");
    EXPECT_EQ(RAVOLT::load("gui.Xml"), nullptr);
    EXPECT_LOGGED("   [!] Invalid header in file scenes/gui.Xml @ RAVOLT::load");
    const std::string longName = repeated(130, "./") + "gui.xml";
    writeFile("gui.xml", "<root/>");
    RVNODE *root = RAVOLT::loadXML(longName.c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(name(*root), "[node " + std::to_string(root->getId()) + "]");
}

TEST_F(XmlLoaderTest, ConfinedNamesMustStayBelowTheirPaths) {
    writeFile("f.txt", "RAVOLT_kerning_A=5\n");
    const std::string absolute = std::filesystem::current_path().string() + "/";
    const auto refused = [](const std::string &file) {
        return "   [!] File name " + file + " leaves its path: refused @ RAVOLT::loadXML";
    };
    const auto loadNames = [&](const std::string &folder) {
        load("<root><font><name value='g'/><texture value='" + folder +
             "wall.tga'/><kerning value='" + folder + "f.txt'/></font><box><texture value='" +
             folder + "wall.tga'/></box></root>");
    };
    for (const bool confined : {false, true}) {
        confined ? RAVOLT::confineFilesOn() : RAVOLT::confineFilesOff();
        for (const std::string &folder : {std::string("./"), absolute}) {
            const bool allowed = !confined || folder == "./";
            loadNames(folder);
            EXPECT_LOGGED_TIMES(allowed ? 0 : 2, refused(folder + "wall.tga"));
            EXPECT_LOGGED_TIMES(allowed ? 0 : 1, refused(folder + "f.txt"));
            RVFONT *made = RVFONT::findByName("g");
            EXPECT_EQ(made->getKerning('A'), allowed ? 5 : 0);
            EXPECT_EQ(made->putString(0, 0, "A"), allowed);
            delete made;
        }
    }
}

// Every allocation of a load fails by itself.
TEST_F(XmlLoaderTest, RunningOutOfMemoryReturnsWithALine) {
    writeFile("f.txt", "RAVOLT_kerning_A=5\n");
    writeFile("gui.xml", "<root><!--c--><font><texture value='wall.tga'/><kerning value='f.txt'/>"
                         "</font><window><usefont ref='f'/><title value='x'/>"
                         "<write value='words that do not fit into the string itself'/>"
                         "<button><box/></button><label/><vslider/></window></root>");
    unsigned int failures = 0;
    for (unsigned int after = 0;; ++after) {
        mark = markLog();
        const unsigned int blocks = heap.failedMallocs;
        recorder.failAllocation(1, after, 1);
        RVNODE *root = RAVOLT::loadXML("gui.xml");
        const bool failed = heap.failure.times == 0;
        recorder.allocationsWork();
        for (unsigned int i = blocks; i < heap.failedMallocs; ++i)
            zlfFree(nullptr); // the statistics count blocks whose allocation failed, too
        if (!failed) {
            EXPECT_NE(root, nullptr);
            break;
        }
        EXPECT_TRUE(!problemsSince(mark).empty() ||
                    logTextSince(mark).find("zlfOpenParser: out of memory") != std::string::npos)
            << after;
        if (!root) {
            ++failures;
            EXPECT_TRUE(logged("   [!] Out of memory for file gui.xml @ RAVOLT::loadXML") ||
                        logged("   [!] Unable to open file gui.xml @ RAVOLT::loadXML"));
        }
    }
    EXPECT_GE(failures, 10u);
    for (const char *part : {"   [!] Out of memory for the title bar @ RVWINDOW::RVWINDOW",
                             "   [!] Out of memory for the scroll bar @ RVWINDOW::RVWINDOW",
                             "   [!] Out of memory for the cursor @ RVSCROLLBAR::RVSCROLLBAR"})
        EXPECT_NE(logTextSince(startMark).find(part), std::string::npos) << part;
}

} // namespace
