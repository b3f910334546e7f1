// Settings and kerning files: text lines of keys and values, read by the engine's own functions.

#include "gui/kerningFile.h"
#include "ravolt/zlf.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace ravolt::tool::inspect {

namespace {

constexpr std::string_view prefix = "RAVOLT_";

// A line without its comment, its blanks and its tabs, as the engine compares it.
struct Line {
    int number;
    std::string text;

    // The first key in it: as many letters as a name has. Empty for none.
    std::string key() const {
        const std::size_t start = text.find(prefix);
        if (start == text.npos)
            return {};
        std::size_t end = start + prefix.size();
        while (end < text.size() &&
               (std::isalnum(static_cast<unsigned char>(text[end])) || text[end] == '_'))
            ++end;
        return text.substr(start, end - start);
    }
};

std::vector<Line> linesOf(const FileBytes &file) {
    std::istringstream stream(
        std::string(reinterpret_cast<const char *>(file.data()), file.size()));
    std::vector<Line> lines;
    int number = 0;
    for (std::string text; std::getline(stream, text);) {
        text.resize(std::min(text.size(), text.find('#')));
        std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\r'; });
        lines.push_back({++number, text});
    }
    return lines;
}

// The parser of the engine on a file, with its comments removed.
class KeyParser {
  public:
    explicit KeyParser(const char *path) {
        if (!zlfOpenParser(&parser, path))
            parser = {};
        zlfRemoveComments(&parser, '#');
    }
    KeyParser(const KeyParser &) = delete;
    KeyParser &operator=(const KeyParser &) = delete;
    ~KeyParser() {
        if (parser.data)
            zlfCloseParser(&parser);
    }

    zlfPARSER *get() { return &parser; }

  private:
    zlfPARSER parser = {};
};

struct SettingKey {
    const char *name;
    bool isText;
};

constexpr SettingKey settingKeys[] = {
#define RV_SETTING_NUMBER(field) {"RAVOLT_" #field, false},
#define RV_SETTING_FLAG(field, flag) {"RAVOLT_" #field, false},
#define RV_SETTING_TEXT(field) {"RAVOLT_" #field, true},
#include "engine/state/settingsKeys.inc"
};

bool isSettingKey(const std::string &name) {
    return std::any_of(std::begin(settingKeys), std::end(settingKeys),
                       [&](const SettingKey &key) { return name == key.name; });
}

void readSetting(const SettingKey &key, zlfPARSER *parser, Json &values) {
    int value = 0;
    if (!zlfGetInt(parser, key.name, &value))
        return;
    char text[256] = "";
    if (!key.isText)
        values[key.name] = value;
    else if (zlfGetString(parser, key.name, text))
        values[key.name] = utf8(text);
}

// A line of which the engine reads nothing.
void warnOfLines(const std::vector<Line> &lines, const char *what,
                 const std::function<bool(const std::string &)> &isKnown, Inspection &inspection) {
    std::set<std::string> found;
    for (const Line &line : lines) {
        const std::string key = line.key();
        if (line.text.empty())
            continue;
        if (!isKnown(key))
            inspection.warn(atLine(line.number),
                            key.empty()
                                ? "nothing reads this line: it has no key"
                                : "nothing reads " + quoted(key) + ": it is no key of " + what);
        else if (!found.insert(key).second)
            inspection.warn(atLine(line.number),
                            quoted(key) + " a second time: the first line is read");
    }
}

// A path is put in front of names as it stands.
void warnOfPath(const std::string &key, const std::string &value, int line,
                Inspection &inspection) {
    if (key.ends_with("Path") && !value.empty() && value.back() != '/')
        inspection.warn(atLine(line), quoted(key) + " does not end with a slash, and names are "
                                                    "appended to it as they are");
}

// --- Kerning

// The text of the key for a character; NULL for those that have their own letter.
const char *nameOfCharacter(char c) {
    return c == ' ' ? "SPACE" : c == '#' ? "DIESIS" : c == '=' ? "EQUAL" : nullptr;
}

constexpr std::string_view kerningPrefix = "RAVOLT_kerning_";

// The key in a line: the name of a character, or one letter of any kind.
std::string kerningKey(const Line &line) {
    const std::size_t start = line.text.find(kerningPrefix);
    if (start == line.text.npos)
        return {};
    const std::string rest = line.text.substr(start + kerningPrefix.size());
    for (const char c : {' ', '#', '='})
        if (rest.starts_with(nameOfCharacter(c)))
            return nameOfCharacter(c);
    return rest.substr(0, 1);
}

bool isKerningKey(const std::string &key) {
    return key.size() > 1 || (key.size() == 1 && key[0] > ' ' && key[0] <= '~');
}

// On purpose: as the engine reads it, the line of a name counts for its first letter too.
void warnOfKerning(const std::vector<Line> &lines, Inspection &inspection) {
    std::set<std::string> found;
    for (const Line &line : lines) {
        if (line.text.empty())
            continue;
        const std::string key = kerningKey(line);
        if (!isKerningKey(key)) {
            inspection.warn(atLine(line.number),
                            "nothing reads this line: it has no character from 0x20 to 0x7E");
            continue;
        }
        if (key.size() > 1 && !found.count(key.substr(0, 1)))
            inspection.warn(atLine(line.number), key + " is read for the letter " + key[0] +
                                                     " too, which has no line before it");
        if (!found.insert(key).second)
            inspection.warn(atLine(line.number),
                            quoted(key) + " a second time: the first line is read");
        const std::size_t value = line.text.find(kerningPrefix) + kerningPrefix.size() + key.size();
        const long number =
            std::strtol(line.text.c_str() + std::min(value + 1, line.text.size()), nullptr, 10);
        if (number < -128 || number > 127)
            inspection.warn(atLine(line.number), std::to_string(number) +
                                                     " is not within -128 to 127, and its low "
                                                     "byte is used");
    }
}

// Entries that the file sets are equal, whatever they were before.
Json charactersOf(const signed char *first, const signed char *second) {
    Json characters = Json::object();
    for (unsigned int i = 0; i < kerningFileEntries; ++i)
        if (first[i] == second[i])
            characters[std::string(1, static_cast<char>(' ' + i))] = first[i];
    return characters;
}

} // namespace

void inspectSettings(Inspection &inspection) {
    FileBytes file;
    readBytes(inspection, file);
    Json values = Json::object();
    if (file.size() == 0) {
        inspection.warn({}, "it is empty, so that nothing is read of it");
    } else {
        KeyParser parser(inspection.file.c_str());
        for (const SettingKey &key : settingKeys)
            readSetting(key, parser.get(), values);
    }
    inspection.content["values"] = values;
    const std::vector<Line> lines = linesOf(file);
    warnOfLines(lines, "settings", isSettingKey, inspection);
    for (const Line &line : lines) {
        const std::string key = line.key();
        if (!isSettingKey(key))
            continue;
        const auto *row =
            std::find_if(std::begin(settingKeys), std::end(settingKeys),
                         [&](const SettingKey &candidate) { return key == candidate.name; });
        if (row->isText && !values.contains(key))
            inspection.warn(atLine(line.number), quoted(key) + " has no text in double quotes");
        else if (row->isText)
            warnOfPath(key, values[key].get<std::string>(), line.number, inspection);
    }
}

void inspectKerning(Inspection &inspection) {
    FileBytes file;
    readBytes(inspection, file);
    signed char first[kerningFileEntries], second[kerningFileEntries];
    std::fill(std::begin(first), std::end(first), static_cast<signed char>(0));
    std::fill(std::begin(second), std::end(second), static_cast<signed char>(1));
    // The reader would log an empty file.
    if (file.size() == 0 || !readKerningFile(inspection.file.c_str(), first) ||
        !readKerningFile(inspection.file.c_str(), second)) {
        inspection.error({}, "it is empty");
        return;
    }
    const Json characters = charactersOf(first, second);
    inspection.content["characters"] = characters;
    warnOfKerning(linesOf(file), inspection);
    if (characters.empty())
        inspection.warn({}, "no line of it sets a character");
}

} // namespace ravolt::tool::inspect
