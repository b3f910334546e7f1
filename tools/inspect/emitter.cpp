// Emitters: the values of the elements in their order.

#include "effects/emitterFile.h"
#include "ravolt/RVEMITTER.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <set>
#include <string>
#include <vector>

namespace ravolt::tool::inspect {

namespace {

Json valueOf(const EmitterElement &element) {
    switch (element.attributes) {
    case EmitterAttributes::integer:
        return element.integer;
    case EmitterAttributes::real:
        return number(element.x);
    case EmitterAttributes::text:
        return utf8(element.text);
    case EmitterAttributes::xy:
        return Json::array({number(element.x), number(element.y)});
    case EmitterAttributes::xyz:
        return Json::array({number(element.x), number(element.y), number(element.z)});
    }
    return nullptr;
}

Place placeOf(const EmitterElement &element) { return atLine(element.line, element.column); }

// The factors of glBlendFunc.
bool isBlendFactor(int factor) {
    return factor == 0 || factor == 1 || (factor >= 0x0300 && factor <= 0x0308);
}

void checkValue(const EmitterElement &element, Inspection &inspection) {
    const std::string value = std::to_string(element.integer);
    switch (element.key) {
    case EmitterKey::type:
        if (element.integer < 0 || element.integer > 2)
            inspection.warn(placeOf(element),
                            "type " + value + " is neither 0 (point), 1 (plane) nor 2 (disc)");
        break;
    case EmitterKey::texture:
        inspection.requireCompanion(placeOf(element), "the texture", element.text);
        break;
    case EmitterKey::nbOfParticles:
        if (element.integer < 1 || element.integer > static_cast<int>(RV_EMITTER_PARTICLES))
            inspection.warn(placeOf(element), value + " particles: there are 1 to " +
                                                  std::to_string(RV_EMITTER_PARTICLES) +
                                                  " in all emitters together");
        break;
    case EmitterKey::blendingSrc:
    case EmitterKey::blendingDst:
        if (!isBlendFactor(element.integer))
            inspection.warn(placeOf(element), value + " is no factor of glBlendFunc");
        break;
    default:
        break;
    }
}

void warnOfSkipped(const EmitterRemarks &remarks, Inspection &inspection) {
    for (const auto &[name, known, line, column] : remarks.skipped)
        inspection.warn(atLine(line, column), known ? quoted(name) + " lacks an attribute"
                                                    : "nothing reads the element " + quoted(name));
}

// Particles are born with the values before them.
void checkOrder(const std::vector<EmitterElement> &elements, Inspection &inspection) {
    std::set<EmitterKey> found;
    const EmitterElement *afterBirth = nullptr;
    for (const EmitterElement &element : elements) {
        const bool births = element.key == EmitterKey::nbOfParticles;
        if (!found.insert(element.key).second && !births)
            inspection.warn(placeOf(element),
                            quoted(element.name) + " a second time: the last one is used");
        if (births)
            afterBirth = nullptr;
        else if (!afterBirth && found.count(EmitterKey::nbOfParticles))
            afterBirth = &element;
    }
    if (afterBirth)
        inspection.warn(placeOf(*afterBirth), quoted(afterBirth->name) +
                                                  " after nbOfParticles: the particles are born "
                                                  "without it");
    if (!found.count(EmitterKey::nbOfParticles))
        inspection.warn({}, "no nbOfParticles, so that it emits nothing");
    if (!found.count(EmitterKey::texture))
        inspection.warn({}, "no texture, which each frame logs");
}

} // namespace

void inspectEmitter(Inspection &inspection) {
    std::vector<EmitterElement> elements;
    EmitterRemarks remarks;
    if (!readEmitterFile(inspection.file.c_str(), elements, &remarks)) {
        inspection.error(remarks.problem.line ? atLine(remarks.problem.line, remarks.problem.column)
                                              : Place{},
                         remarks.problem.text);
        return;
    }
    Json values = Json::object();
    for (const EmitterElement &element : elements) {
        values[element.name] = valueOf(element);
        checkValue(element, inspection);
    }
    inspection.content["values"] = values;
    warnOfSkipped(remarks, inspection);
    checkOrder(elements, inspection);
}

} // namespace ravolt::tool::inspect
