#pragma once

// The models of assimp's test collection (Debian's package assimp-testmodels), and the tables of
// what is expected of them.

#include "tests/tools/support.h"

#include <cctype>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

namespace tool_test {

const fs::path collection = "/usr/share/assimp/models";

// All files but those that accompany models.
inline Lines modelsIn(const std::string &folder) {
    const std::set<std::string> companions = {".png", ".jpg",  ".tga",  ".bin",  ".md", ".txt",
                                              ".mtl", ".vert", ".frag", ".glsl", ".zip"};
    Lines models;
    for (const auto &entry : fs::recursive_directory_iterator(collection / folder)) {
        std::string ending = entry.path().extension().string();
        std::transform(ending.begin(), ending.end(), ending.begin(), ::tolower);
        if (entry.is_regular_file() && !companions.count(ending) &&
            entry.path().filename() != "LICENSE")
            models.push_back(fs::relative(entry.path(), collection).string());
    }
    std::sort(models.begin(), models.end());
    return models;
}

// The rows of a table of a folder's models: the first columns, and the rest.
inline std::map<std::string, std::string> rowsOf(const char *table, const std::string &folder,
                                                 int columns) {
    std::map<std::string, std::string> rows;
    std::ifstream stream(table);
    for (std::string line; std::getline(stream, line);) {
        std::size_t end = 0;
        for (int i = 0; i < columns; ++i)
            end = line.find('\t', end + 1);
        if (line.rfind(folder + "/", 0) == 0)
            rows[line.substr(0, end)] = line.substr(end + 1);
    }
    return rows;
}

// Where the environment names a file, new rows are appended to it.
inline std::ofstream renewedRows(const char *variable) {
    std::ofstream stream;
    if (const char *file = std::getenv(variable))
        stream.open(file, std::ios::app);
    return stream;
}

class CollectionTest : public ::testing::TestWithParam<const char *> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(fs::exists(collection)) << "no models: install assimp-testmodels";
    }
};

inline std::string nameOf(const ::testing::TestParamInfo<const char *> &folder) {
    return (std::isdigit(folder.param[0]) ? "Folder" : "") + std::string(folder.param);
}

} // namespace tool_test
