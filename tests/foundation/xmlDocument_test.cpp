// XML files: what is accepted, and the limits that keep TinyXML's recursion within the stack.

#include "foundation/xmlDocument.h"

#include "tests/support/shortReads.h"

#include <tinyxml.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

using namespace ravolt;

namespace {

std::string repeated(std::size_t times, const std::string &text) {
    std::string all;
    for (; times > 0; --times)
        all += text;
    return all;
}

class XmlDocument : public testing::Test {
  protected:
    // Whether the text can be loaded; its tree is in `document` then.
    bool load(const std::string &text) {
        std::ofstream("file.xml", std::ios::binary) << text;
        document.Clear();
        document.ClearError();
        return loadXml("file.xml", document);
    }

    std::string attribute() {
        const TiXmlElement *root = document.FirstChildElement("a");
        const char *value = root ? root->Attribute("v") : nullptr;
        return value ? value : "(none)";
    }

    TiXmlDocument document;
};

TEST_F(XmlDocument, WellFormedFilesLoad) {
    EXPECT_TRUE(load("<a v='1'/>"));
    EXPECT_EQ(attribute(), "1");
    EXPECT_TRUE(
        load("  <?xml version=\"1.0\" encoding='UTF-8' standalone=\"yes\"?>\r\n"
             "<!DOCTYPE a><!-- <b> \" ' -->\n<a  v = \"x>y</a>\" w=2 >t<b/><![CDATA[ </a> ]]>"
             "<c ></c ></a>\n<!-- end -->"));
    EXPECT_EQ(attribute(), "x>y</a>");
    ASSERT_NE(document.FirstChildElement("a")->FirstChildElement("c"), nullptr);
}

TEST_F(XmlDocument, ElementsHaveTheirPositionsInTheFile) {
    for (const std::string &start :
         {std::string("\n\n "), std::string("\xef\xbb\xbf\n\n "),
          std::string("<?xml\nversion='1.0'\n?>"), std::string("<?xml\r\nversion='1.0'\r\n?>")}) {
        ASSERT_TRUE(load(start + "\n<a>\n  <b/></a>")) << start;
        const TiXmlElement *root = document.FirstChildElement("a");
        EXPECT_EQ(root->Row(), 4);
        EXPECT_EQ(root->FirstChildElement("b")->Row(), 5);
        EXPECT_EQ(root->FirstChildElement("b")->Column(), 3);
    }
}

TEST_F(XmlDocument, MalformedFilesDoNot) {
    EXPECT_FALSE(loadXml("none.xml", document));
    for (const char *text :
         {"", "text", "<a>", "<a", "<a v", "<a v=", "<a v='1", "<a></b>", "<a><b></a></b>",
          "<a><!-- </a>", "<a><![CDATA[ </a>", "<a / >", "<a 1='2'/>", "<a v=x'y/>", "<a v=x\"y/>",
          "<a v=x", "<a></a", "<?xml version='1.0'", "<?xml version='1.0?><a/>"})
        EXPECT_FALSE(load(text)) << text;
    EXPECT_FALSE(load(std::string("<a>\0</a>", 8)));
}

// What TinyXML reads of a file, although not all of it is XML.
TEST_F(XmlDocument, DeclarationsAnywhereAndWhatFollowsTheRootDoNotMatter) {
    for (const char *text :
         {"<?xml version='1.0'?><?xml-stylesheet href='b>c.xsl'?><a v='1'/>",
          "<!-- first --><?xml version='1.0'?>\n<a v='1'/>", "<?xml?><a v='1'><?xml ?><b/></a>",
          "<a v='1'/><", "<a v='1'/>\n<!x"}) {
        EXPECT_TRUE(load(text)) << text;
        EXPECT_EQ(attribute(), "1") << text;
    }
    EXPECT_TRUE(load(std::string("<a v='1'/>\0<b>", 14)));
    EXPECT_EQ(attribute(), "1");
}

TEST_F(XmlDocument, TheFirstDeclarationNamesTheEncodingAlsoBehindAComment) {
    EXPECT_TRUE(load("<!-- \xc3\xa9 --><?xml version='1.0'?><?xml encoding='ISO-8859-1'?>"
                     "<a v='&#233;'/>"));
    EXPECT_EQ(attribute(), "\xc3\xa9");
}

TEST_F(XmlDocument, FileThatCannotBeReadWholeDoesNotLoad) {
    ASSERT_TRUE(load("<a/>"));
    document.Clear();
    XmlProblem problem;
    const ravolt::test::ShortReads shortReads;
    EXPECT_FALSE(loadXml("file.xml", document, &problem));
    EXPECT_EQ(problem.text, "it cannot be read, or is larger than 4 MiB");
    EXPECT_EQ(document.RootElement(), nullptr);
}

TEST_F(XmlDocument, NamesStartWithALetterAndGoOnWithDigitsAndSigns) {
    for (const std::string name : {"a", "A", "z", "Z", "_", "\x7f", "\xc3\xa4", "a1-b.c:d_9Z"}) {
        ASSERT_TRUE(load("<" + name + " " + name + "='1'></" + name + ">")) << name;
        EXPECT_EQ(document.RootElement()->Value(), name);
        ASSERT_NE(document.RootElement()->Attribute(name.c_str()), nullptr) << name;
    }
    for (const std::string start : {"1", "-", ".", ":", "@", "[", "`", "{", "/"}) {
        EXPECT_FALSE(load("<a " + start + "b='1'/>")) << start;
        EXPECT_TRUE(load("<" + start + "b>")) << "a tag of no element: " << start;
        EXPECT_EQ(document.RootElement(), nullptr) << start;
    }
    for (const std::string more : {"1", "-", ".", ":"})
        EXPECT_FALSE(load("<b" + more + "></b>")) << "another name: b" << more;
    for (const std::string end : {"@", "[", "`", "{"})
        EXPECT_FALSE(load("<b" + end + "></b>")) << end;
}

TEST_F(XmlDocument, ValuesWithoutQuotesEndAtABlankOrATag) {
    for (const char *text :
         {"<a v=x w=2/>", "<a v=x\n/>", "<a v=x/>", "<a v=x></a>", "<a v = x />"}) {
        EXPECT_TRUE(load(text)) << text;
        EXPECT_EQ(attribute(), "x") << text;
    }
}

TEST_F(XmlDocument, DepthIsLimitedTo256Levels) {
    EXPECT_TRUE(load(repeated(256, "<a>") + repeated(256, "</a>")));
    EXPECT_FALSE(load(repeated(257, "<a>") + repeated(257, "</a>")));
    EXPECT_FALSE(load(repeated(256, "<a>") + "<a/>" + repeated(256, "</a>")));
    EXPECT_FALSE(load(repeated(100000, "<a>")));
    EXPECT_TRUE(load("<a>" + repeated(5000, "<b/><c></c>") + "</a>")) << "in one level";
}

TEST_F(XmlDocument, SizeIsLimitedTo4MiB) {
    const auto fileOf = [](std::size_t bytes) {
        return "<a>" + std::string(bytes - 7, ' ') + "</a>";
    };
    EXPECT_TRUE(load(fileOf(4 << 20)));
    EXPECT_FALSE(load(fileOf((4 << 20) + 1)));
}

TEST_F(XmlDocument, AttributesOfAnElementAreLimited) {
    const auto elementWith = [](std::size_t number) {
        std::string text = "<a";
        for (std::size_t index = 0; index < number; ++index)
            text += " v" + std::to_string(index) + "='1'";
        return text + "/>";
    };
    EXPECT_TRUE(load(elementWith(256)));
    EXPECT_FALSE(load(elementWith(257)));
}

// Ways to hide levels from a count.
TEST_F(XmlDocument, HiddenLevelsAreFound) {
    for (const char *hiding :
         {"<?xml version=\"></a>\"?>", "<?XML encoding='></a>'?>", "<!-- </a> -->",
          "<![CDATA[</a>]]>", "<b v='</a>'/>", "<b v='\xf0'></a>' w='/>", "<b v=\"&#x</a>;\"/>"})
        for (const char *start : {"", "<?xml version='1.0'?>", "\xef\xbb\xbf"})
            EXPECT_FALSE(load(start + repeated(1000, std::string("<a>") + hiding))) << hiding;
}

TEST_F(XmlDocument, WhatOnlyLooksDeepIsFlat) {
    for (const char *element : {"<a>\xf0</a>", "<a><!x '></a>", "<a>\xe9</a>"})
        for (const char *start : {"", "<?xml version='1.0'?>", "\xef\xbb\xbf"}) {
            ASSERT_TRUE(load(start + repeated(1000, element))) << element;
            EXPECT_EQ(document.FirstChildElement("a")->FirstChildElement(), nullptr) << element;
        }
}

// Bytes above 127 in a file that is no UTF-8 are not changed, also before a quote.
TEST_F(XmlDocument, BytesOfOtherEncodingsAreUnchanged) {
    for (const char *start : {"", "<?xml version='1.0'?>", "<?xml encoding='ISO-8859-1'?>"}) {
        EXPECT_TRUE(load(std::string(start) + "<a v='caf\xe9'/>"));
        EXPECT_EQ(attribute(), "caf\xe9") << start;
    }
}

// As a character of UTF-8 each would include the quote.
TEST_F(XmlDocument, IncompleteCharactersAreThoseOfAnotherEncoding) {
    for (const char *bytes : {"\xc3", "\xe2\x82", "\xf0\x9f\x98"}) {
        EXPECT_TRUE(load(std::string("<?xml version='1.0'?><a v='") + bytes + "'/>"));
        EXPECT_EQ(attribute(), bytes);
    }
}

TEST_F(XmlDocument, CharacterReferencesHaveTheEncodingOfTheFile) {
    const std::pair<const char *, const char *> rows[] = {
        {"<?xml version='1.0'?>", "\xc3\xa9"},
        {"<?xml version='1.0' encoding=\"utf-8\"?>", "\xc3\xa9"},
        {"<?xml version='1.0' encoding=\"utf8\"?>", "\xc3\xa9"},
        {"<?xml version='1.0' encoding?>", "\xc3\xa9"},
        {"\xef\xbb\xbf", "\xc3\xa9"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?>", "\xe9"},
        {"", "\xe9"}};
    for (const auto &[start, expected] : rows) {
        EXPECT_TRUE(load(start + std::string("<a v='&#233;'/>")));
        EXPECT_EQ(attribute(), expected) << start;
    }
}

// As UTF-8 only a text counts whose characters are as long as their first bytes say.
TEST_F(XmlDocument, BytesThatAreNoUtf8MakeAFileOfAnotherEncoding) {
    const auto reference = [this](const std::string &text) {
        EXPECT_TRUE(load("\xef\xbb\xbf<a v='&#233;'/><!--" + text + "-->"));
        return attribute();
    };
    for (const char *text :
         {"", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80",
          "\xf4\x8f\xbf\xbf", "\x80", "\xc1", "\xf5", "\xff"})
        EXPECT_EQ(reference(text), "\xc3\xa9") << testing::PrintToString(text);
    for (const char *text : {"\xc2", "\xdfx", "\xe0\xa0", "\xe0x\x80", "\xef\xbf\xc0",
                             "\xf0\x90\x80", "\xf4\x8f\xbfx"})
        EXPECT_EQ(reference(text), "\xe9") << testing::PrintToString(text);
}

} // namespace
