// Parses emitter files by a table of their elements and the types of their values.

#include "effects/emitterFile.h"

#include "foundation/xmlDocument.h"

#include <tinyxml.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

namespace ravolt {

namespace {

using Attributes = EmitterAttributes;

struct Row {
    const char *name;
    EmitterKey key;
    Attributes attributes;
};

constexpr Row rows[] = {{"type", EmitterKey::type, Attributes::integer},
                        {"texture", EmitterKey::texture, Attributes::text},
                        {"nbOfParticles", EmitterKey::nbOfParticles, Attributes::integer},
                        {"maxEnergy", EmitterKey::maxEnergy, Attributes::integer},
                        {"maxVelocity", EmitterKey::maxVelocity, Attributes::integer},
                        {"maxAngle", EmitterKey::maxAngle, Attributes::real},
                        {"emitterSize", EmitterKey::emitterSize, Attributes::xy},
                        {"radius", EmitterKey::radius, Attributes::real},
                        {"maxParticleSize", EmitterKey::maxParticleSize, Attributes::integer},
                        {"maxSpin", EmitterKey::maxSpin, Attributes::integer},
                        {"spinning", EmitterKey::spinning, Attributes::real},
                        {"center", EmitterKey::center, Attributes::xyz},
                        {"gravity", EmitterKey::gravity, Attributes::xyz},
                        {"rotation", EmitterKey::rotation, Attributes::xyz},
                        {"upVector", EmitterKey::upVector, Attributes::xyz},
                        {"colorStart", EmitterKey::colorStart, Attributes::xyz},
                        {"colorEnd", EmitterKey::colorEnd, Attributes::xyz},
                        {"blendingSrc", EmitterKey::blendingSrc, Attributes::integer},
                        {"blendingDst", EmitterKey::blendingDst, Attributes::integer}};

bool readReal(const TiXmlElement &xml, const char *name, float &value) {
    const char *text = xml.Attribute(name);
    if (text)
        value = std::strtof(text, nullptr);
    return text;
}

bool readInteger(const TiXmlElement &xml, int &value) {
    const char *text = xml.Attribute("value");
    if (text)
        value = xmlInteger(text);
    return text;
}

bool readText(const TiXmlElement &xml, std::string &value) {
    const char *text = xml.Attribute("value");
    if (text)
        value = text;
    return text;
}

bool readAttributes(const TiXmlElement &xml, Attributes attributes, EmitterElement &element) {
    switch (attributes) {
    case Attributes::integer:
        return readInteger(xml, element.integer);
    case Attributes::real:
        return readReal(xml, "value", element.x);
    case Attributes::text:
        return readText(xml, element.text);
    case Attributes::xy:
        return readReal(xml, "x", element.x) && readReal(xml, "y", element.y);
    case Attributes::xyz:
        break;
    }
    return readReal(xml, "x", element.x) && readReal(xml, "y", element.y) &&
           readReal(xml, "z", element.z);
}

EmitterElement elementOf(const Row &row, const TiXmlElement &xml) {
    EmitterElement element{row.key};
    element.name = row.name;
    element.attributes = row.attributes;
    element.line = xml.Row();
    element.column = xml.Column();
    return element;
}

} // namespace

bool readEmitterFile(const char *path, std::vector<EmitterElement> &elements,
                     EmitterRemarks *remarks) try {
    EmitterRemarks ignored;
    EmitterRemarks &found = remarks ? *remarks : ignored;
    TiXmlDocument document;
    if (!loadXml(path, document, &found.problem))
        return false;
    const TiXmlElement *emitter = document.FirstChildElement("emitter");
    if (!emitter) {
        found.problem = {1, 1, "no element emitter"};
        return false;
    }
    for (const TiXmlElement *xml = emitter->FirstChildElement(); xml;
         xml = xml->NextSiblingElement()) {
        const Row *row =
            std::find_if(std::begin(rows), std::end(rows), [xml](const Row &candidate) {
                return std::strcmp(candidate.name, xml->Value()) == 0;
            });
        const bool known = row != std::end(rows);
        EmitterElement element = known ? elementOf(*row, *xml) : EmitterElement{EmitterKey::type};
        if (known && readAttributes(*xml, row->attributes, element))
            elements.push_back(element);
        else
            found.skipped.push_back({xml->Value(), known, xml->Row(), xml->Column()});
    }
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

} // namespace ravolt
