// Interfaces from XML files: each creating element makes a widget, linked to the one around it, or
// a font; its other child elements are properties, in their order.

#include "foundation/text.h"
#include "foundation/xmlDocument.h"
#include "gui/boxNodes.h"
#include "models/interfaceFormat.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/RVWINDOW.h"
#include "ravolt/zlf.h"

#include <tinyxml.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

namespace {

// What the properties of an element act on: `font` where the element is a font.
struct Subject {
    RVNODE *node;
    RVFONT *font = nullptr;
};

// NULL for a tag of no widget.
RVNODE *createWidget(std::string_view tag) {
    RVNODE *widget = nullptr;
    if (tag == "window") {
        widget = new RVWINDOW;
        zlfLog("   + create a window\n");
    } else if (tag == "button") {
        widget = new RVBUTTON;
        zlfLog("   + create a button\n");
    } else if (tag == "text") {
        widget = new RVTEXTFIELD;
        zlfLog("   + create a textfield\n");
    } else if (tag == "label") {
        widget = new RVLABEL;
        zlfLog("   + create a label\n");
    } else if (tag == "box") {
        widget = new RVBOX;
        zlfLog("   + create a box\n");
    } else if (tag == "vslider") {
        widget = new RVVSCROLLBAR;
        zlfLog("   + create a vertical slider\n");
    } else if (tag == "hslider") {
        widget = new RVHSCROLLBAR;
        zlfLog("   + create a horizontal slider\n");
    }
    return widget;
}

// The parent itself for a tag that creates nothing.
Subject create(std::string_view tag, RVNODE *parent) {
    Subject subject{parent};
    if (RVNODE *widget = createWidget(tag)) {
        widget->link(parent);
        subject.node = widget;
    } else if (tag == "font") {
        subject.font = new RVFONT;
        zlfLog("   + create a font\n");
    }
    return subject;
}

// A font directly below the root has no box around it.
RVBOX *boxOf(const Subject &subject, const TiXmlElement &property) {
    RVBOX *const box = ravolt::asBox(subject.node);
    if (!box)
        zlfLog("   [!] %s of what is no box is ignored @ RAVOLT::loadXML\n", property.Value());
    return box;
}

// Whether a file names a file that it may name.
bool mayName(const char *name) {
    if (!RAVOLT::isConfiningFiles() || ravolt::staysBelowPath(name))
        return true;
    zlfLog("   [!] File name %s leaves its path: refused @ RAVOLT::loadXML\n", name);
    return false;
}

void setName(const Subject &subject, const TiXmlElement &property) {
    const char *value = property.Attribute("value");
    if (subject.font)
        subject.font->setName(value);
    else
        subject.node->setName(value);
}

void setTitle(const Subject &subject, const TiXmlElement &property) {
    const char *value = property.Attribute("value");
    if (RVWINDOW *window = ravolt::asWindow(subject.node))
        window->setCaption(value);
    else if (RVBUTTON *button = ravolt::asButton(subject.node))
        button->setCaption(value);
}

void setPosition(const Subject &subject, const TiXmlElement &property) {
    const char *x = property.Attribute("x"), *y = property.Attribute("y");
    if (x && y)
        subject.node->setPosition(static_cast<float>(ravolt::xmlInteger(x)),
                                  static_cast<float>(ravolt::xmlInteger(y)));
}

void setSize(const Subject &subject, const TiXmlElement &property) {
    const char *width = property.Attribute("width"), *height = property.Attribute("height");
    if (!width || !height)
        return;
    const int x = ravolt::xmlInteger(width), y = ravolt::xmlInteger(height);
    if (RVWINDOW *window = ravolt::asWindow(subject.node))
        window->setSizes(x, y);
    else if (RVBOX *box = boxOf(subject, property))
        box->setSizes(x, y);
}

// A name that is not found means no font.
void useFont(const Subject &subject, const TiXmlElement &property) {
    const char *ref = property.Attribute("ref");
    if (!ref)
        return;
    RVFONT *const font = RVFONT::findByName(ref);
    if (RVWINDOW *window = ravolt::asWindow(subject.node))
        window->setFont(font);
    else if (RVTEXTFIELD *field = ravolt::asTextField(subject.node))
        field->setFont(font);
    else if (RVBUTTON *button = ravolt::asButton(subject.node))
        button->setFont(font);
    else if (RVLABEL *label = ravolt::asLabel(subject.node))
        label->setFont(font);
}

// The filter of a texture that is already loaded does not change.
void setTexture(const Subject &subject, const TiXmlElement &property) {
    const char *value = property.Attribute("value");
    RVBOX *const box = !value || subject.font ? nullptr : boxOf(subject, property);
    if (!value || !(subject.font || box) || !mayName(value))
        return;
    RVTEXTURE *texture = RVTEXTURE::findByFilename(value);
    if (!texture) {
        texture = new RVTEXTURE;
        texture->load(value);
        if (subject.font)
            texture->setFilter(false, false, false);
    }
    if (subject.font)
        subject.font->setTexture(texture);
    else
        box->setTexture(texture);
}

void loadKerning(const Subject &subject, const TiXmlElement &property) {
    const char *value = property.Attribute("value");
    if (subject.font && value && mayName(value))
        subject.font->loadKerning(value);
}

// The text is a format without arguments, as everywhere in widgets.
void writeText(const Subject &subject, const TiXmlElement &property) {
    const char *value = property.Attribute("value");
    if (!value)
        return;
    std::string text(std::strlen(value), '\0');
    ravolt::applyFormat(text.data(), value);
    if (RVLABEL *label = ravolt::asLabel(subject.node)) {
        label->write("%s", text.c_str());
    } else if (RVWINDOW *window = ravolt::asWindow(subject.node)) {
        window->clear();
        window->write("%s", text.c_str());
        window->format();
    }
}

void setColor(const Subject &subject, const TiXmlElement &property) {
    const char *const names[] = {"r", "g", "b", "a"};
    float color[4];
    for (int i = 0; i < 4; ++i) {
        const char *text = property.Attribute(names[i]);
        if (!text)
            return;
        color[i] = std::strtof(text, nullptr);
    }
    if (RVBOX *box = boxOf(subject, property))
        box->setColor(color[0], color[1], color[2], color[3]);
}

void setKind(const Subject &subject, const TiXmlElement &property) {
    RVBUTTON *const button = ravolt::asButton(subject.node);
    const char *value = property.Attribute("value");
    if (!button || !value)
        return;
    const std::string_view word = value;
    if (word == "normal")
        button->setEventType(RV_BUTTON_NORMAL);
    else if (word == "inverted")
        button->setEventType(RV_BUTTON_INVERTED);
    else if (word == "switch")
        button->setEventType(RV_BUTTON_SWITCH);
}

constexpr struct {
    std::string_view tag;
    void (*apply)(const Subject &subject, const TiXmlElement &property);
} properties[] = {
    {"name", setName},    {"title", setTitle},     {"position", setPosition}, {"size", setSize},
    {"usefont", useFont}, {"texture", setTexture}, {"kerning", loadKerning},  {"write", writeText},
    {"color", setColor},  {"kind", setKind},
};

constexpr bool hasEveryProperty() {
    for (std::size_t i = 0; i < std::size(properties); ++i)
        if (properties[i].tag != ravolt::interface::properties[i].tag)
            return false;
    return std::size(properties) == std::size(ravolt::interface::properties);
}
static_assert(hasEveryProperty());

void applyProperty(const Subject &subject, const TiXmlElement &element) {
    for (const auto &property : properties)
        if (property.tag == element.Value())
            property.apply(subject, element);
}

void logProblem(const ravolt::XmlProblem &problem) {
    if (problem.line > 0)
        zlfLog("   [!] Line %d, column %d: %s @ RAVOLT::loadXML\n", problem.line, problem.column,
               problem.text.c_str());
}

} // namespace

// What was made before memory runs out stays in the registries.
RVNODE *RAVOLT::loadXML(const char *fileName) try {
    TiXmlDocument document;
    ravolt::XmlProblem problem;
    if (!fileName || !ravolt::loadXml(fileName, document, &problem)) {
        logProblem(problem);
        zlfLog("   [!] Unable to open file %s @ RAVOLT::loadXML\n", fileName ? fileName : "");
        return nullptr;
    }
    zlfLog("\n   Loading XML file '%s'...\n", fileName);
    TiXmlElement *const root =
        document.FirstChildElement(ravolt::interface::root); // no comment of that text
    if (!root) {
        zlfLog("   [!] Root not found in file %s @ RAVOLT::loadXML\n", fileName);
        return nullptr;
    }
    auto *const node = new RVNODE;
    node->setName(fileName);
    for (TiXmlNode *child = root->FirstChild(); child; child = child->NextSibling())
        recursiveLoadXML(node, child);
    return node;
} catch (const std::bad_alloc &) {
    zlfLog("   [!] Out of memory for file %s @ RAVOLT::loadXML\n", fileName);
    return nullptr;
}

RVNODE *RAVOLT::recursiveLoadXML(RVNODE *parent, void *xmlNode) {
    auto *const xml = static_cast<TiXmlNode *>(xmlNode);
    if (xml->ToComment())
        zlfLog("   [XML] %s\n", xml->Value());
    if (!xml->ToElement())
        return parent;
    const Subject subject = create(xml->Value(), parent);
    for (TiXmlElement *property = xml->FirstChildElement(); property;
         property = property->NextSiblingElement())
        applyProperty(subject, *property);
    for (TiXmlNode *child = xml->FirstChild(); child; child = child->NextSibling())
        recursiveLoadXML(subject.node, child);
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the registry owns the font
    return subject.node;
}
