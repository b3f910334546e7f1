// `ravolt terrain` as its users run it.

#include "tests/tools/cli.h"
#include "tests/tools/heightPictures.h"
#include "tests/tools/terrainFile.h"

#include <cmath>
#include <set>

namespace {

using namespace tool_test;
using terrain_test::File;
using terrain_test::pngOf;
using terrain_test::textsOf;

// Two hills, 8 or 16 bits.
std::string hillsPng(unsigned int side, unsigned int bits) {
    std::vector<unsigned int> values;
    const double high = bits == 8 ? 255 : 65535;
    for (unsigned int j = 0; j < side; ++j)
        for (unsigned int i = 0; i < side; ++i) {
            const double u = i / (side - 1.0), v = j / (side - 1.0);
            values.push_back(static_cast<unsigned int>(
                high * (0.5 + 0.5 * std::sin(9 * u + 1) * std::sin(7 * v))));
        }
    return pngOf(side, bits, values);
}

std::set<std::string> namesIn(const fs::path &folder) {
    std::set<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

const std::set<std::string> allNames = {
    "fire.tga",   "fire.xml",   "grass_d.tga", "grass_n.tga",   "rock_d.tga",     "rock_n.tga",
    "sand_d.tga", "sand_n.tga", "sky_day.tga", "sky_night.tga", "smoke.tga",      "smoke.xml",
    "snow_d.tga", "snow_n.tga", "terrain.geo", "terrain.xml",   "water_dudv.tga", "water_n.tga"};

constexpr const char *small = " --texture-size 64"; // for speed

class TerrainCommand : public testing::Test {
  protected:
    void SetUp() override {
        fs::remove_all("out");
        writeFile("hills.png", hillsPng(200, 16));
    }

    static File made(const std::string &folder = "out") {
        return terrain_test::parse(readText(folder + "/terrain.geo"));
    }
    static std::string config() { return readText("out/terrain.xml"); }

    // One line, status and no folder.
    static void expectRefused(const std::string &arguments, int code, const std::string &line) {
        const Outcome result = run("terrain " + arguments);
        EXPECT_EQ(result.code, code) << arguments;
        EXPECT_EQ(result.err, "ravolt: " + line + "\n") << arguments;
        EXPECT_EQ(result.out, "") << arguments;
        EXPECT_FALSE(fs::exists("out")) << arguments;
    }
};

TEST_F(TerrainCommand, MakesAFolderWithAllThatTheEngineLoads) {
    const Outcome result = run("terrain hills.png -o out" + std::string(small));
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(startsWith(result.out, "out/terrain.xml: 16 chunks of 65 x 65 vertices, 199 x 199 "
                                       "units"))
        << result.out;
    EXPECT_EQ(lines(result.out), 1u);
    EXPECT_EQ(namesIn("out"), allNames);
    for (const char *element : {"TEXTURE32_DIFFUSE_HEIGHT", "TEXTURE32_NORMAL_GLOSS",
                                "TEXTURE24_DUDV", "TEXTURE24_NORMAL", "TEXTURE24_DIFFUSE"})
        for (const std::string &name : textsOf(config(), element))
            EXPECT_TRUE(allNames.count(name)) << name;
    EXPECT_EQ(textsOf(config(), "GEOMETRY"), std::vector<std::string>{"out/terrain.geo"});
    EXPECT_EQ(textsOf(config(), "TEXTURE32_DIFFUSE_HEIGHT").size(), 4u);
    EXPECT_EQ(textsOf(config(), "TEXTURE32_NORMAL_GLOSS").size(), 4u);
    EXPECT_EQ(textsOf(config(), "LEVEL").size(), 5u);
    EXPECT_EQ(textsOf(config(), "REPEAT").size(), 5u); // four layers and the water
    EXPECT_LT(config().find("GEOMETRY"), config().find("TERRAIN"));
    const File file = made();
    EXPECT_EQ(file.chunks.size() % 2, 0u);
    EXPECT_EQ(file.bytesAfterwards, 0u);
}

TEST_F(TerrainCommand, DefaultsCreateATerrainWithWaterAndLand) {
    ASSERT_EQ(run("terrain hills.png -o out --no-textures").code, 0);
    std::size_t below = 0, all = 0;
    float lowest = 0, highest = 0;
    for (const terrain_test::Chunk &chunk : made().chunks)
        for (const terrain_test::Vertex &vertex : chunk.vertices) {
            below += vertex.position[1] < -2; // where it is drawn, two units higher
            lowest = std::min(lowest, vertex.position[1]);
            highest = std::max(highest, vertex.position[1]);
            ++all;
        }
    EXPECT_NEAR(static_cast<double>(below) / static_cast<double>(all), 0.2, 0.03);
    EXPECT_NEAR(highest - lowest, 199 / 6.0, 1);
}

TEST_F(TerrainCommand, LevelsInTheFileFitItsChunks) {
    ASSERT_EQ(run("terrain hills.png -o out --no-textures --size 1025 --height 150").code, 0);
    const File file = made();
    double longest = 0;
    for (const terrain_test::Chunk &chunk : file.chunks)
        for (const unsigned int neighbour : chunk.neighbours)
            if (neighbour) {
                const auto a = chunk.center(file), b = file.chunks[neighbour - 1].center(file);
                longest = std::max(longest, std::hypot(double(a[0]) - b[0], double(a[1]) - b[1],
                                                       double(a[2]) - b[2]));
            }
    const std::vector<std::string> levels = textsOf(config(), "LEVEL");
    for (std::size_t k = 0; k + 1 < levels.size(); ++k)
        EXPECT_GE(std::sqrt(std::atof(levels[k + 1].c_str())) -
                      std::sqrt(std::atof(levels[k].c_str())),
                  longest);
}

TEST_F(TerrainCommand, UnitsAreThoseOfTheOptions) {
    ASSERT_EQ(run("terrain hills.png -o out --no-textures --spacing 2 --height-scale 0.001 "
                  "--sea-level 30000 --detail 77 --geometry-path media/")
                  .code,
              0);
    const File file = made();
    EXPECT_NEAR(file.scale * static_cast<float>(file.sizeX - 1), 398, 0.1);
    float lowest = 0, highest = 0;
    for (const terrain_test::Chunk &chunk : file.chunks) {
        lowest = std::min(lowest, chunk.minHeight);
        highest = std::max(highest, chunk.maxHeight);
    }
    EXPECT_NEAR(lowest, -30, 0.1);
    EXPECT_NEAR(highest, 35.535, 0.1);
    EXPECT_NEAR(std::atof(textsOf(config(), "LEVEL")[0].c_str()), 77 * 77, 1e-3);
    EXPECT_EQ(textsOf(config(), "GEOMETRY"), std::vector<std::string>{"media/terrain.geo"});
    EXPECT_EQ(namesIn("out"), (std::set<std::string>{"terrain.geo", "terrain.xml"}));
}

TEST_F(TerrainCommand, TheUpperEdgeIsTheNorth) {
    std::vector<unsigned int> values(129 * 129, 10);
    values[3] = 60000; // fourth of the first row
    writeFile("peak.png", pngOf(129, 16, values));
    ASSERT_EQ(run("terrain peak.png -o out --no-textures --exact --height 100").code, 0);
    for (const terrain_test::Chunk &chunk : made().chunks)
        for (const terrain_test::Vertex &vertex : chunk.vertices)
            if (vertex.position[1] > 50) {
                EXPECT_EQ(vertex.position[0], 3);
                EXPECT_EQ(vertex.position[2], 0);
            }
}

TEST_F(TerrainCommand, ExactTakesLegalSizesAsTheyAre) {
    writeFile("exact.png", hillsPng(129, 16));
    ASSERT_EQ(run("terrain exact.png -o out --no-textures --exact").code, 0);
    EXPECT_EQ(made().sizeX, 129u);
    EXPECT_EQ(made().scale, 1);
    fs::remove_all("out");
    expectRefused(
        "hills.png -o out --exact", 1,
        "hills.png: has 200 x 200 values, which make no even number of whole chunks of 65 "
        "a side; 257 x 257 would");
}

TEST_F(TerrainCommand, TakesRawValuesAndTiles) {
    std::string raw;
    for (int i = 0; i < 70 * 90; ++i)
        raw += {'\1', static_cast<char>(i / 70)};
    writeFile("m.raw", raw);
    EXPECT_EQ(run("terrain m.raw -o out --no-textures --raw-size 70x90").code, 0);
    fs::remove_all("out");
    std::string tile(std::size_t(2) * 1201 * 1201, '\0');
    for (std::size_t i = 0; i < tile.size(); i += 2) {
        const double u = static_cast<double>(i / 2 % 1201) / 1200;
        const int height = static_cast<int>(1500 * std::sin(5 * u) * std::sin(5 * u)) - 100;
        tile[i] = static_cast<char>(height >> 8 & 255);
        tile[i + 1] = static_cast<char>(height & 255);
    }
    tile[40000] = '\x80', tile[40001] = '\0';
    writeFile("N45E007.hgt", tile);
    const Outcome result = run("terrain N45E007.hgt -o out --no-textures --size 257");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(
        result.err,
        "ravolt: warning: N45E007.hgt: 1 value is missing, and filled in from those around\n");
    float lowest = 0, highest = 0;
    for (const terrain_test::Chunk &chunk : made().chunks) {
        lowest = std::min(lowest, chunk.minHeight);
        highest = std::max(highest, chunk.maxHeight);
    }
    EXPECT_NEAR(highest, 1400 / 92.6, 0.2); // its true proportions
    EXPECT_NEAR(lowest, -100 / 92.6, 0.1);
}

TEST_F(TerrainCommand, CreatesAnIslandAndPrintsThePositionOfItsSquare) {
    const Outcome result = run("terrain --island 20 -o out --no-textures");
    EXPECT_EQ(result.code, 0) << result.err;
    double x = 0, y = 0, z = 0, radius = 0;
    const std::size_t at = result.out.find("level ground at ");
    ASSERT_NE(at, std::string::npos) << result.out;
    ASSERT_EQ(std::sscanf(result.out.c_str() + at, "level ground at %lf, %lf, %lf, radius %lf", &x,
                          &y, &z, &radius),
              4);
    for (const terrain_test::Chunk &chunk : made().chunks)
        for (const terrain_test::Vertex &vertex : chunk.vertices)
            if (std::hypot(vertex.position[0] - x, vertex.position[2] - z) < radius - 0.1) {
                ASSERT_NEAR(vertex.position[1], y, 1e-3);
            }
}

TEST_F(TerrainCommand, QuietPrintsNothing) {
    const Outcome result = run("terrain hills.png -o out --no-textures -q");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(TerrainCommand, HelpShowsHowToMakeAMapOfOtherData) {
    const Outcome result = run("terrain --help");
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.out.find("gdal_translate -of PNG -ot UInt16 -scale INPUT map.png"),
              std::string::npos);
}

TEST_F(TerrainCommand, RefusesWhatMakesNoSense) {
    const std::string see = " (see ravolt terrain --help)";
    expectRefused("-o out", 2, "HEIGHTS is required, or --island" + see);
    expectRefused("hills.png", 2, "--output is required" + see);
    expectRefused("hills.png -o ''", 2, "--output: the name is empty");
    expectRefused("hills.png -o -", 2, "--output -: a terrain is a folder of files; name one");
    expectRefused("hills.png -o out --raw-size 12", 2,
                  "--raw-size 12: expected WIDTHxDEPTH, each from 2 to 16384");
    expectRefused("hills.png -o out --raw-size 0x9", 2,
                  "--raw-size 0x9: expected WIDTHxDEPTH, each from 2 to 16384");
    for (const std::string wrong :
         {"--chunk 64", "--size 64", "--spacing 0", "--spacing nan", "--height -1", "--steep 90",
          "--detail 0", "--texture-size 100", "--format tiff", "--island -1", "--island 3",
          "--height 5 --height-scale 2", "--exact --size 129", "--sea-level inf", "--shore x",
          "--high 1e9", "--max-memory 1"}) {
        const Outcome result = run("terrain hills.png -o out " + wrong);
        EXPECT_EQ(result.code, 2) << wrong;
        EXPECT_EQ(lines(result.err), 1u) << result.err;
        EXPECT_NE(result.err.find(see), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists("out")) << wrong;
    }
}

TEST_F(TerrainCommand, RefusesWhatItCannotReadOrWriteAndMakesNoFolder) {
    expectRefused("none.png -o out", 1, "none.png: no such file");
    writeFile("broken.png", hillsPng(200, 16).substr(0, 5000));
    expectRefused("broken.png -o out", 1, "broken.png: is broken (outofdata)");
    expectRefused("hills.png -o no/such/folder", 1,
                  "no/such/folder: cannot be made: No such file or directory");
    expectRefused("hills.png -o hills.png", 1, "hills.png: is no folder");
    writeFile("large.raw", std::string(2 * 3000 * 3000, '\1'));
    expectRefused("large.raw -o out --max-memory 16", 1,
                  "large.raw: ran out of memory, of which it may take 16 MB (--max-memory)");
}

TEST_F(TerrainCommand, NeedsMemoryForTheHeightsAndNotForTheGeometry) {
    writeFile("large.raw", std::string(2 * 1025 * 1025, '\1'));
    expectSuccess("terrain large.raw -o out --exact --no-textures --max-memory 16 -q");
    EXPECT_GT(fs::file_size("out/terrain.geo"), 32u << 20);
}

TEST_F(TerrainCommand, ReplacesAllFilesOrNone) {
    fs::create_directory("out");
    writeFile("out/terrain.geo", "before");
    writeFile("out/own.txt", "mine");
    fs::create_directory("out/water_n.tga"); // a folder, which no file can replace
    Outcome result = run("terrain hills.png -o out" + std::string(small));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "ravolt: out/water_n.tga: is a folder\n");
    EXPECT_EQ(readText("out/terrain.geo"), "before");
    EXPECT_EQ(namesIn("out"), (std::set<std::string>{"own.txt", "terrain.geo", "water_n.tga"}));
    fs::remove("out/water_n.tga");
    result = run("terrain hills.png -o out" + std::string(small));
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(readText("out/terrain.geo"), "before");
    EXPECT_EQ(readText("out/own.txt"), "mine");
}

TEST_F(TerrainCommand, WritesThroughNoLinkAndOverNoInput) {
    fs::create_directory("out");
    writeFile("outside.tga", "outside");
    fs::create_symlink("../outside.tga", "out/rock_d.tga");
    Outcome result = run("terrain hills.png -o out" + std::string(small));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "ravolt: out/rock_d.tga: is a link; remove it first\n");
    EXPECT_EQ(readText("outside.tga"), "outside");
    fs::remove("out/rock_d.tga");

    fs::copy_file("hills.png", "out/terrain.geo");
    result = run("terrain out/terrain.geo -o out" + std::string(small));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "ravolt: out/terrain.geo: is read by this command; choose another folder\n");
    EXPECT_EQ(readText("out/terrain.geo"), readText("hills.png"));
}

} // namespace
