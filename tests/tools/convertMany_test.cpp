// `ravolt convert` without a name for the scene, and with several models in one call.

#include "tests/tools/cli.h"

#include <vector>

namespace {

using namespace tool_test;

void writeSquareAs(const fs::path &file, const std::string &material = "Kd 1 1 1\n") {
    if (file.has_parent_path())
        fs::create_directories(file.parent_path());
    writeSquare(material, file);
}

class ConvertMany : public testing::Test {
  protected:
    ConvertMany() {
        for (const char *file : {"a", "b", "m"})
            fs::remove(std::string(file) + ".rve");
        for (const char *folder : {"one", "two", "out"})
            fs::remove_all(folder);
    }
};

TEST_F(ConvertMany, ASceneHasTheNameOfItsModelAndIsInTheCurrentFolder) {
    writeSquareAs("one/a.obj");
    const Outcome result = run("convert one/a.obj");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(startsWith(result.out, "a.rve: ")) << result.out;
    EXPECT_TRUE(fs::exists("a.rve"));
    EXPECT_FALSE(fs::exists("one/a.rve"));
    fs::create_directory("out");
    EXPECT_EQ(run("convert one/a.obj -o out").code, 0);
    EXPECT_TRUE(areEqual("out/a.rve", "a.rve"));
}

TEST_F(ConvertMany, AModelIsNeverReplacedByAScene) {
    writeSquareAs("a.rve");
    const std::string model = readText("a.rve");
    expectFailure("convert a.rve", 1, "a.rve: is the model itself; name another file\n");
    writeSquareAs("one/a.obj");
    expectFailure("convert one/a.obj a.rve", 2,
                  "one/a.obj and a.rve: both would be written to a.rve\n");
    writeSquareAs("b.obj");
    fs::create_hard_link("a.rve", "b.rve");
    expectFailure("convert b.obj a.rve", 2, "b.obj: would be written to b.rve, which is a model\n");
    EXPECT_EQ(readText("a.rve"), model);
}

TEST_F(ConvertMany, EachSucceedsOrFailsByItself) {
    writeSquareAs("a.obj", "Kd 1 1 1\nmap_Kd gone.png\n");
    writeFile("broken.obj", "nothing");
    writeSquareAs("one/b.obj");
    for (const std::string jobs : {"", " --jobs 2", " -j 8"}) {
        SCOPED_TRACE(jobs);
        fs::remove("a.rve");
        fs::remove("b.rve");
        const Outcome result = run("convert a.obj broken.obj missing.obj one/b.obj" + jobs);
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(startsWith(result.out, "a.rve: ")) << result.out;
        EXPECT_TRUE(has(result.out, "\nb.rve: ")) << result.out;
        EXPECT_EQ(lines(result.out), 2u);
        EXPECT_TRUE(startsWith(result.err, "ravolt: a.obj: warning: ")) << result.err;
        EXPECT_TRUE(has(result.err, "\nravolt: broken.obj: ")) << result.err;
        EXPECT_FALSE(has(result.err, "broken.obj: broken.obj")) << result.err;
        EXPECT_TRUE(has(result.err, "\nravolt: missing.obj: ")) << result.err;
        EXPECT_TRUE(result.err.ends_with("\nravolt: 2 of 4 models not converted\n")) << result.err;
        EXPECT_EQ(lines(result.err), 4u) << result.err;
        EXPECT_TRUE(fs::exists("a.rve") && fs::exists("b.rve"));
        EXPECT_FALSE(fs::exists("broken.rve") || fs::exists("missing.rve"));
    }
    expectSuccess("convert a.obj one/b.obj -q -j 2");
}

// The first model takes longer; both have a texture of the same name.
TEST_F(ConvertMany, FilesAreWrittenInTheOrderOfTheModels) {
    constexpr int faces = 3000;
    writeFile("one/wall.ppm", "P6 1 1 255\n\xff\x10\x10");
    writeFile("two/wall.ppm", "P6 1 1 255\n\x10\x10\xff");
    writeSquareAs("one/a.obj", "Kd 1 1 1\nmap_Kd wall.ppm\n");
    writeSquareAs("two/b.obj", "Kd 1 1 1\nmap_Kd wall.ppm\n");
    std::string points = readText("one/a.obj");
    for (int i = 0; i < faces; ++i)
        points += "v " + std::to_string(0.34321 * i) + " " + std::to_string(-0.8523 * i) +
                  " 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n";
    writeFile("one/a.obj", points);
    EXPECT_EQ(run("convert two/b.obj").code, 0);
    const std::string texture = readText("wall_d.tga");
    EXPECT_EQ(run("convert one/a.obj").code, 0);
    EXPECT_NE(readText("wall_d.tga"), texture);
    for (const std::string jobs : {"1", "2"}) {
        EXPECT_EQ(run("convert one/a.obj two/b.obj -j " + jobs).code, 0);
        EXPECT_EQ(readText("wall_d.tga"), texture) << jobs;
    }
}

TEST_F(ConvertMany, OutputsThatMakeNoSenseAreReportedBeforeAnyWork) {
    writeSquareAs("one/a.obj");
    writeSquareAs("two/a.obj");
    writeSquareAs("b.obj");
    for (const auto &[arguments, line] : std::vector<std::pair<std::string, std::string>>{
             {"one/a.obj two/a.obj", "one/a.obj and two/a.obj: both would be written to a.rve\n"},
             {"one/a.obj one/a.obj", "one/a.obj and one/a.obj: both would be written to a.rve\n"},
             {"one/a.obj b.obj -o x.rve",
              "--output x.rve: several models need a folder that exists\n"},
             {"one/a.obj '' b.obj", "MODEL: the name is empty\n"},
             {"one/a.obj b.obj -j 0", ""},
             {"b.obj --up x", ""}})
        expectFailure("convert " + arguments, 2, line);
    EXPECT_FALSE(fs::exists("a.rve") || fs::exists("b.rve"));
}

} // namespace
