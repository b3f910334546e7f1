// Interfaces: the widgets and fonts that their elements make, in the order in which the engine
// makes them, and the properties that have no effect.

#include "foundation/xmlDocument.h"
#include "models/interfaceFormat.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <tinyxml.h>

namespace ravolt::tool::inspect {

namespace {

namespace format = ravolt::interface;

bool isWidget(std::string_view tag) {
    return std::find(std::begin(format::widgets), std::end(format::widgets), tag) !=
           std::end(format::widgets);
}

const format::Property *propertyOf(std::string_view tag) {
    const auto *found =
        std::find_if(std::begin(format::properties), std::end(format::properties),
                     [tag](const format::Property &property) { return property.tag == tag; });
    return found == std::end(format::properties) ? nullptr : found;
}

// The elements in which a property has an effect; a widget of any kind where none are stated.
struct Use {
    std::string_view property;
    std::set<std::string_view> elements;
};
const Use uses[] = {
    {"title", {"window", "button"}},
    {"usefont", {"window", "button", "text", "label"}},
    {"kerning", {"font"}},
    {"write", {"label", "window"}},
    {"kind", {"button"}},
};

bool hasEffect(std::string_view property, std::string_view element) {
    for (const Use &use : uses)
        if (use.property == property)
            return use.elements.count(element) != 0;
    return isWidget(element) || property == "name" || property == "texture";
}

Place placeOf(const TiXmlNode &xml) { return atLine(xml.Row(), xml.Column()); }

bool isNumber(const char *text) {
    char *end = nullptr;
    std::strtod(text, &end);
    return end != text && *end == '\0';
}

// A percent sign that is not doubled.
bool hasConversion(std::string_view text) {
    for (std::size_t at = 0; (at = text.find('%', at)) != text.npos; at += 2)
        if (text.substr(at, 2) != "%%")
            return true;
    return false;
}

class InterfaceCheck {
  public:
    explicit InterfaceCheck(Inspection &result) : inspection(result) {
        inspection.content["widgets"] = Json::array();
        inspection.content["fonts"] = Json::array();
    }

    void visitChildren(const TiXmlNode &parent, std::size_t level) {
        for (const TiXmlNode *child = parent.FirstChild(); child; child = child->NextSibling())
            if (const TiXmlElement *element = child->ToElement())
                visit(*element, level);
            else if (child->ToText())
                inspection.warn(placeOf(*child), "nothing reads this text");
    }

  private:
    void visit(const TiXmlElement &xml, std::size_t level) {
        const std::string tag = xml.Value();
        if (isWidget(tag) || tag == format::font) {
            Json described =
                tag == format::font ? Json::object() : Json({{"level", level}, {"element", tag}});
            applyProperties(xml, tag, described);
            inspection.content[tag == format::font ? "fonts" : "widgets"].push_back(described);
        } else if (!propertyOf(tag)) {
            inspection.warn(placeOf(xml), "nothing reads the element " + quoted(tag));
        } else if (xml.Parent() && !isCreating(*xml.Parent())) {
            inspection.warn(placeOf(xml), quoted(tag) + " is in no widget");
        }
        visitChildren(xml, level + isWidget(tag));
    }

    static bool isCreating(const TiXmlNode &xml) {
        return isWidget(xml.Value()) || xml.Value() == format::font;
    }

    void applyProperties(const TiXmlElement &xml, const std::string &element, Json &described) {
        for (const TiXmlElement *child = xml.FirstChildElement(); child;
             child = child->NextSiblingElement())
            if (const format::Property *property = propertyOf(child->Value()))
                applyProperty(*child, *property, element, described);
        if (element == format::font && !described.contains("texture"))
            inspection.warn(placeOf(xml), "a font without a texture");
    }

    void applyProperty(const TiXmlElement &xml, const format::Property &property,
                       const std::string &element, Json &described) {
        const std::string tag(property.tag);
        warnOfAttributes(xml, property);
        for (const char *name : property.attributes)
            if (name && !xml.Attribute(name)) {
                inspection.warn(placeOf(xml), quoted(tag) + " lacks the attribute " + name);
                return;
            }
        if (!hasEffect(property.tag, element)) {
            inspection.warn(placeOf(xml), quoted(tag) + " has no effect on a " + element);
            return;
        }
        described[tag] = valueOf(xml, property);
        checkValue(xml, tag, element);
    }

    static Json valueOf(const TiXmlElement &xml, const format::Property &property) {
        if (!property.attributes[1])
            return utf8(xml.Attribute(property.attributes[0]));
        Json values = Json::array();
        for (const char *name : property.attributes)
            if (name && property.tag == "color")
                values.push_back(number(std::strtof(xml.Attribute(name), nullptr)));
            else if (name)
                values.push_back(xmlInteger(xml.Attribute(name)));
        return values;
    }

    void warnOfAttributes(const TiXmlElement &xml, const format::Property &property) {
        for (const TiXmlAttribute *attribute = xml.FirstAttribute(); attribute;
             attribute = attribute->Next())
            if (std::none_of(std::begin(property.attributes), std::end(property.attributes),
                             [&](const char *name) {
                                 return name && std::string_view(name) == attribute->Name();
                             }))
                inspection.warn(placeOf(xml), "nothing reads the attribute " +
                                                  quoted(attribute->Name()) + " of " +
                                                  quoted(xml.Value()));
    }

    void checkValue(const TiXmlElement &xml, const std::string &tag, const std::string &element) {
        const Place place = placeOf(xml);
        const char *value = xml.Attribute("value");
        if (tag == "name" && element == format::font)
            fonts.insert(value);
        else if (tag == "usefont" && !fonts.count(xml.Attribute("ref")))
            inspection.warn(place, "no font " + quoted(xml.Attribute("ref")) + " before this line");
        else if (tag == "texture")
            inspection.requireCompanion(place, "the texture", value);
        else if (tag == "kerning")
            inspection.requireCompanion(place, "the kerning file", value);
        else if (tag == "write" && hasConversion(value))
            inspection.warn(place, "a percent sign that is not doubled");
        else if (tag == "kind" && std::string_view(value) != "normal" &&
                 std::string_view(value) != "inverted" && std::string_view(value) != "switch")
            inspection.warn(place, quoted(value) + " is neither normal, inverted nor switch");
        else if (tag == "position" || tag == "size" || tag == "color")
            checkNumbers(xml);
    }

    void checkNumbers(const TiXmlElement &xml) {
        for (const TiXmlAttribute *attribute = xml.FirstAttribute(); attribute;
             attribute = attribute->Next())
            if (!isNumber(attribute->Value()))
                inspection.warn(placeOf(xml), quoted(attribute->Value()) + " is no number");
    }

    Inspection &inspection;
    std::set<std::string> fonts;
};

} // namespace

void inspectInterface(Inspection &inspection) {
    TiXmlDocument document;
    XmlProblem problem;
    if (!loadXml(inspection.file.c_str(), document, &problem)) {
        inspection.error(problem.line ? atLine(problem.line, problem.column) : Place{},
                         problem.text);
        return;
    }
    const TiXmlElement *root = document.FirstChildElement(format::root);
    if (!root) {
        inspection.error(atLine(1), "no element root");
        return;
    }
    if (const TiXmlElement *other = root->NextSiblingElement(format::root))
        inspection.warn(placeOf(*other), "nothing reads a second element root");
    InterfaceCheck(inspection).visitChildren(*root, 0);
}

} // namespace ravolt::tool::inspect
