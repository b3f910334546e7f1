// Contents and findings as text and as JSON. Objects are lines of names and values, indented by
// their depth; a list of objects has a line for each, indented by its level in a tree.

#include "tools/inspect/text.h"

#include "tools/inspect/files.h"
#include "tools/inspect/names.h"

namespace ravolt::tool::inspect {

namespace {

std::string valueText(const Json &value);

std::string inlineObject(const Json &object) {
    std::string text;
    for (const auto &[name, value] : object.items())
        if (name != "level")
            text += (text.empty() ? "" : ", ") + name + " " + valueText(value);
    return text;
}

std::string valueText(const Json &value) {
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_null())
        return "no number";
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_object())
        return inlineObject(value);
    if (!value.is_array())
        return value.dump();
    std::string text;
    for (const Json &item : value)
        text += (text.empty() ? "" : " ") + valueText(item);
    return text;
}

bool isListOfObjects(const Json &value) {
    return value.is_array() && !value.empty() && value.front().is_object();
}

void appendLines(const Json &object, const std::string &indent, std::string &text) {
    for (const auto &[name, value] : object.items()) {
        if (value.is_object() && !value.empty()) {
            text += indent + name + ":\n";
            appendLines(value, indent + "  ", text);
        } else if (isListOfObjects(value)) {
            text += indent + name + ":\n";
            for (const Json &item : value)
                text += indent + std::string(2 * (1 + item.value("level", std::size_t{0})), ' ') +
                        inlineObject(item) + "\n";
        } else if (value.empty() && !value.is_null()) {
            text += indent + name + ": none\n";
        } else {
            text += indent + name + ": " + valueText(value) + "\n";
        }
    }
}

std::string placeText(const Place &place) {
    if (place.offset)
        return ":" + std::to_string(*place.offset);
    if (place.line)
        return ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
    return "";
}

std::uintmax_t sizeOf(const std::filesystem::path &file) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    return error ? 0 : size;
}

} // namespace

std::string textOf(const Json &content) {
    std::string text;
    appendLines(content, "", text);
    return text;
}

std::string textOf(const std::filesystem::path &file, const Finding &finding) {
    return file.string() + placeText(finding.place) +
           (finding.isError ? ": error: " : ": warning: ") + finding.reason;
}

Json infoOf(const Inspection &inspection) {
    return {{"file", utf8(inspection.file.string())},
            {"kind", nameOf(inspection.kind)},
            {"bytes", sizeOf(inspection.file)},
            {"content", inspection.content}};
}

Json checkOf(const Inspection &inspection) {
    Json findings = Json::array();
    for (const Finding &finding : inspection.findings) {
        Json described = {{"severity", finding.isError ? "error" : "warning"}};
        if (finding.place.offset)
            described["offset"] = *finding.place.offset;
        if (finding.place.line) {
            described["line"] = finding.place.line;
            described["column"] = finding.place.column;
        }
        described["reason"] = finding.reason;
        findings.push_back(described);
    }
    return {{"file", utf8(inspection.file.string())},
            {"kind", nameOf(inspection.kind)},
            {"accepted", !inspection.hasErrors()},
            {"findings", findings}};
}

} // namespace ravolt::tool::inspect
