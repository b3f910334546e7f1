// The commands `info` and `check`: their output, their exit codes, and what our own tools write.

#include "tests/tools/cli.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

using namespace tool_test;
using nlohmann::json;

namespace {

const std::string colorModel = "mtllib m.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\n"
                               "vt 0 0\nvt 1 0\nvt 0 1\nf 1/1/1 2/2/1 3/3/1\n";

class InspectCommand : public testing::Test {
  protected:
    void SetUp() override {
        writeFile("m.mtl", "newmtl m\nKd 1 0 0\n");
        writeFile("m.obj", colorModel);
        expectSuccess("convert m.obj -o m.rve -q");
        writeFile("cut.rve", readText("m.rve").substr(0, 100));
        writeFile("warn.txt", "RAVOLT_windowZ=3\n");
    }
};

TEST_F(InspectCommand, CheckPrintsALineForEachFindingAndNothingForAGoodFile) {
    expectSuccess("check m.rve");
    const Outcome damaged = run("check cut.rve m.rve warn.txt");
    EXPECT_EQ(damaged.code, 1);
    EXPECT_EQ(lines(damaged.out), 2u) << damaged.out;
    EXPECT_TRUE(startsWith(damaged.out, "cut.rve:97: error: it ends early\n")) << damaged.out;
    EXPECT_TRUE(has(damaged.out, "\nwarn.txt:1:1: warning: nothing reads 'RAVOLT_windowZ'"));
    EXPECT_EQ(damaged.err, "ravolt: 1 of 3 files would be refused\n");
}

TEST_F(InspectCommand, WarningsCountWithStrict) {
    EXPECT_EQ(run("check warn.txt").code, 0);
    const Outcome strict = run("check --strict warn.txt m.rve");
    EXPECT_EQ(strict.code, 1);
    EXPECT_EQ(strict.err, "ravolt: 1 of 2 files with warnings\n");
    EXPECT_EQ(run("check --strict m.rve").code, 0);
}

TEST_F(InspectCommand, FilesThatCannotBeInspectedAreErrors) {
    fs::create_directory("folder");
    const Outcome result = run("check none.rve folder m.obj m.rve");
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(startsWith(result.out, "none.rve: error: no such file\n"
                                       "folder: error: is no regular file\n"
                                       "m.obj: error: is of no known kind; state it: --as scene,"))
        << result.out;
    EXPECT_EQ(result.err, "ravolt: 3 of 4 files would be refused\n");
}

TEST_F(InspectCommand, KindCanBeStated) {
    EXPECT_EQ(run("check --as scene m.obj").out,
              "m.obj:0: error: it starts neither with \"RVE file v1.6a\" nor with \"RVE file "
              "v1.5a\"\n");
    expectFailure("check --as model m.rve", 2, "--as model: expected scene, clip,");
    expectFailure("info --as model m.rve", 2, "--as model: expected scene, clip,");
}

TEST_F(InspectCommand, CompanionsAreSearchedInTheStatedFolders) {
    writeFile("e.xml", "<emitter><texture value='f.tga'/><nbOfParticles value='1'/></emitter>");
    EXPECT_TRUE(has(run("check e.xml").out, "the texture 'f.tga' is missing"));
    fs::create_directory("images");
    writeTexture("images/f.tga", 2, Alphas(16));
    expectSuccess("check e.xml --path nowhere --path images");
}

TEST_F(InspectCommand, InfoPrintsWhatAFileHolds) {
    const Outcome info = run("info m.rve");
    EXPECT_EQ(info.code, 0);
    EXPECT_TRUE(startsWith(info.out, "file: m.rve\nkind: scene\nbytes: ")) << info.out;
    EXPECT_TRUE(has(info.out, "    vertices: 3\n")) << info.out;
    EXPECT_TRUE(has(info.out, "    name m, ambient ")) << info.out;
    EXPECT_EQ(info.err, "");
    expectFailure("info cut.rve", 1, "cut.rve:97: error: it ends early\n");
    expectFailure("info none.rve", 1, "none.rve: no such file\n");
    expectFailure("info", 2, "FILE is required");
}

TEST_F(InspectCommand, InfoOfAModelIsThatOfItsSceneAndItsClips) {
    const json model = json::parse(run("info --json m.obj").out),
               scene = json::parse(run("info --json m.rve").out);
    EXPECT_EQ(model["kind"], "model");
    EXPECT_EQ(model["bytes"], fs::file_size("m.obj"));
    EXPECT_EQ(model["content"]["materials"], scene["content"]["materials"]);
    EXPECT_EQ(model["content"]["counts"], scene["content"]["counts"]);
    EXPECT_EQ(model["content"]["clips"], json::array());
    writeFile("words.obj", "words");
    expectFailure("info words.obj", 1, "words.obj: ");
    const fs::path animated = "/usr/share/assimp/models/X/Testwuson.X";
    if (!fs::exists(animated))
        return;
    const json clips = json::parse(run("info --json " + animated.string()).out)["content"]["clips"];
    EXPECT_TRUE(std::any_of(clips.begin(), clips.end(), [](const json &clip) {
        return clip["frames"] > 1;
    })) << clips;
}

TEST_F(InspectCommand, JsonHasTheSame) {
    const json info = json::parse(run("info --json m.rve").out);
    EXPECT_EQ(info["kind"], "scene");
    EXPECT_EQ(info["bytes"], fs::file_size("m.rve"));
    EXPECT_EQ(info["content"]["materials"][0]["diffuse"], json({1.0, 0.0, 0.0, 1.0}));
    const json files = json::parse(run("check --json cut.rve none.rve").out)["files"];
    EXPECT_EQ(files[0]["accepted"], false);
    EXPECT_EQ(files[0]["findings"],
              json::parse(R"([{"severity": "error", "offset": 97, "reason": "it ends early"}])"));
    EXPECT_EQ(files[1]["kind"], nullptr);
}

// No display, and no library of OpenGL's driver is loaded.
TEST_F(InspectCommand, NeedsNoDisplay) {
    const std::string withoutDisplay = "env -u DISPLAY SDL_VIDEODRIVER=none";
    expectSuccess("check m.rve", "", withoutDisplay);
    for (const char *info : {"info m.rve", "info --json m.rve", "info m.obj"}) {
        const Outcome outcome = run(info, withoutDisplay);
        EXPECT_EQ(outcome.code, 0) << info;
        EXPECT_EQ(outcome.err, "") << info;
        EXPECT_EQ(outcome.out, run(info).out) << info;
        EXPECT_TRUE(has(outcome.out, "vertices")) << outcome.out;
    }
}

TEST_F(InspectCommand, HelpShowsTheExitCodes) {
    for (const char *command : {"info", "check"}) {
        const Outcome help = run(std::string(command) + " --help");
        EXPECT_EQ(help.code, 0);
        EXPECT_TRUE(has(help.out, "--json")) << help.out;
        EXPECT_TRUE(has(help.out, "Exit codes: 0 done, 1 the job failed")) << help.out;
    }
    EXPECT_TRUE(has(run("check --help").out, "FILE:LINE:COLUMN"));
}

// --- What our own tools write

TEST_F(InspectCommand, TerrainsOfTheToolHaveNoFindings) {
    ASSERT_EQ(run("terrain --island 20 --size 129 -o island -q").code, 0);
    std::string files;
    for (const auto &entry : fs::directory_iterator("island"))
        files += " '" + entry.path().string() + "'";
    expectSuccess("check --strict" + files);
}

TEST_F(InspectCommand, FontsOfTheToolHaveNoFindings) {
    const fs::path font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    if (!fs::exists(font))
        GTEST_SKIP() << "no " << font;
    ASSERT_EQ(run("font " + font.string() + " -q -o f.tga").code, 0);
    expectSuccess("check --strict f.tga f.txt");
}

TEST_F(InspectCommand, ConvertedModelsHaveNoFindings) {
    const fs::path models = "/usr/share/assimp/models";
    if (!fs::exists(models))
        GTEST_SKIP() << "no " << models;
    unsigned int checked = 0;
    for (const char *model :
         {"OBJ/spider.obj", "OBJ/box.obj", "FBX/spider.fbx",
          "glTF2/BoxTextured-glTF/BoxTextured.gltf", "X/test.x", "Collada/duck.dae", "PLY/cube.ply",
          "MD5/SimpleCube.md5mesh", "3DS/fels.3ds", "X/Testwuson.X",
          "glTF2/simple_skin/simple_skin.gltf", "Collada/cameras.dae"}) {
        const fs::path name = fs::path(model).stem();
        const fs::path folder = "converted-" + name.string();
        fs::create_directory(folder);
        const Outcome converted = run("convert '" + (models / model).string() + "' -q -o '" +
                                      (folder / name).string() + ".rve'");
        if (converted.code != 0) // is not there, or is refused as corpus.tsv states
            continue;
        std::string files;
        for (const auto &entry : fs::directory_iterator(folder))
            files += " '" + entry.path().string() + "'";
        expectSuccess("check --strict" + files);
        ++checked;
    }
    EXPECT_GE(checked, 10u);
}

} // namespace
