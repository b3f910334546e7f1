// Writes the configuration file as indented XML.

#include "tools/terrain/configWriter.h"

#include <cstdio>

namespace ravolt::tool::terrain {

namespace {

// GEOMETRY is first: the other elements act on what it creates.
class Xml {
  public:
    void open(const char *name) {
        line(std::string("<") + name + ">");
        indent += 4;
    }
    void close(const char *name) {
        indent -= 4;
        line(std::string("</") + name + ">");
    }
    void value(const char *name, const std::string &words) {
        line(std::string("<") + name + ">" + escaped(words) + "</" + name + ">");
    }
    void value(const char *name, double number) {
        char words[40];
        std::snprintf(words, sizeof words, "%.9g", number);
        value(name, std::string(words));
    }

    const std::string &text() const { return lines; }

  private:
    void line(const std::string &words) { lines += std::string(indent, ' ') + words + "\n"; }

    static std::string escaped(const std::string &plain) {
        std::string result;
        for (const char c : plain) {
            if (c == '&')
                result += "&amp;";
            else if (c == '<')
                result += "&lt;";
            else
                result += c;
        }
        return result;
    }

    std::string lines;
    std::size_t indent = 0;
};

void writeLayers(Xml &xml, const TerrainConfig &config) {
    xml.open("TERRAIN");
    xml.value("SHADER_TYPE", std::string("COMPLEX"));
    for (const TerrainConfig::Layer &layer : config.layers) {
        xml.value("REPEAT", layer.repeat);
        xml.value("TEXTURE32_DIFFUSE_HEIGHT", layer.diffuse);
        xml.value("TEXTURE32_NORMAL_GLOSS", layer.normal);
    }
    xml.close("TERRAIN");
}

void writeWater(Xml &xml, const TerrainConfig &config) {
    xml.open("WATER");
    xml.value("SPEED", config.waterSpeed);
    xml.value("REPEAT", config.waterRepeat);
    xml.value("TEXTURE24_DUDV", config.waterDudv);
    xml.value("TEXTURE24_NORMAL", config.waterNormal);
    xml.close("WATER");
}

void writeSky(Xml &xml, const TerrainConfig &config) {
    xml.open("SKY");
    xml.value("SPEED", 0);
    xml.value("TEXTURE24_DIFFUSE", config.sky);
    xml.close("SKY");
}

void writeLod(Xml &xml, const TerrainConfig &config) {
    xml.open("LOD");
    xml.value("ENABLE", std::string("YES"));
    for (const double distance : config.lod)
        xml.value("LEVEL", distance * distance);
    xml.close("LOD");
}

} // namespace

std::string configText(const TerrainConfig &config) {
    Xml xml;
    xml.open("LANDSCAPE");
    xml.value("GEOMETRY", config.geometry);
    writeLayers(xml, config);
    writeWater(xml, config);
    writeSky(xml, config);
    writeLod(xml, config);
    xml.close("LANDSCAPE");
    return xml.text();
}

} // namespace ravolt::tool::terrain
