#include "tools/convert/modelFiles.h"

#include "tests/tools/support.h"

#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tool_test;

// A folder `models/a` of a model with files in it, beside it and far away. The far ones are real.
class FilesOfAModel : public ::testing::Test {
  protected:
    FilesOfAModel() {
        for (const char *file :
             {"models/a/scene.obj", "models/a/wall.png", "models/a/Textures/Brick.PNG",
              "models/a/with space.png", "models/a/a%20b.png", "models/a/deep/er/leaf.tga",
              "models/a/roof.jpg", "models/a/roof.v2.bmp", "models/textures/wood.jpg",
              "models/b/wood.jpg", "models/b/other.png", "models/alone.png", "shelf/more/gold.png",
              "shelf/wall.png", "far/secret.png", "far/wall.png"})
            writeFile(file, "");
    }

    std::string find(const std::string &stated) {
        ModelFiles files("models/a/scene.obj", options, report);
        found = files.texture(stated);
        return found.file.empty() ? "" : fs::relative(found.file).string();
    }

    SourceOptions options;
    Report report;
    ModelFiles::Found found;
};

TEST_F(FilesOfAModel, AreFoundAsTheyAreNamed) {
    EXPECT_EQ(find("wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("./wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("deep/er/leaf.tga"), "models/a/deep/er/leaf.tga");
    EXPECT_EQ(find("../a/wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("../textures/wood.jpg"), "models/textures/wood.jpg");
    EXPECT_EQ(find(fs::absolute("models/a/wall.png")), "models/a/wall.png");
    EXPECT_FALSE(found.outside);
}

TEST_F(FilesOfAModel, AreFoundByPathsOfOtherSystems) {
    EXPECT_EQ(find("textures\\brick.png"), "models/a/Textures/Brick.PNG");
    EXPECT_EQ(find("file:///home/who/models/a/wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("file://localhost" + fs::absolute("models/a/wall.png").string()),
              "models/a/wall.png");
    EXPECT_EQ(find("file:wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("with%20space.png"), "models/a/with space.png");
    EXPECT_EQ(find("a%20b.png"), "models/a/a%20b.png");
    EXPECT_EQ(find("C:\\work\\house\\wall.png"), "models/a/wall.png");
    EXPECT_EQ(find("/nowhere/Textures/Brick.PNG"), "models/a/Textures/Brick.PNG");
    EXPECT_FALSE(found.outside);
}

TEST_F(FilesOfAModel, AreFoundInFoldersOfTextures) {
    EXPECT_EQ(find("brick.png"), "models/a/Textures/Brick.PNG");
    EXPECT_EQ(find("D:\\models\\b\\wood.jpg"), "models/textures/wood.jpg");
    EXPECT_EQ(find("gold.png"), "");
    options.textureFolders = {"shelf"};
    EXPECT_EQ(find("x\\more\\gold.png"), "shelf/more/gold.png");
    EXPECT_EQ(find("wall.png"), "models/a/wall.png"); // the model's own come first
    options.textureFolders = {"shelf", "shelf/more"};
    EXPECT_EQ(find("gold.png"), "shelf/more/gold.png");
    options.textureFolders = {"missing"};
    EXPECT_EQ(failureOf([&] { find("gold.png"); }), "missing: no such folder");
}

TEST_F(FilesOfAModel, AreFoundWithOtherExtensions) {
    EXPECT_EQ(find("wall"), "models/a/wall.png");
    EXPECT_EQ(find("Wall.tga"), "models/a/wall.png");
    EXPECT_EQ(find("x\\ROOF.RGB"), "models/a/roof.jpg");
    EXPECT_EQ(find("roof.v2"), "models/a/roof.jpg"); // as if .v2 were the extension
    EXPECT_EQ(find("wood.png"), "models/textures/wood.jpg");
}

TEST_F(FilesOfAModel, AreNeverOutsideItsFolders) {
    for (const std::string stated :
         {"../../far/secret.png", "..%2F..%2Ffar/secret.png", "../b/other.png", "../alone.png",
          "deep/../../alone.png", "..\\alone.png"}) {
        EXPECT_EQ(find(stated), "") << stated;
        EXPECT_TRUE(found.outside) << stated;
    }
    const std::string far = fs::absolute("far/secret.png").string();
    for (const std::string &stated : {far, "file://" + far, "FILE:" + far}) {
        EXPECT_EQ(find(stated), "") << stated;
        EXPECT_TRUE(found.outside) << stated;
    }
    EXPECT_EQ(find("../../far/wall.png"), "models/a/wall.png");
    EXPECT_TRUE(found.outside);
}

TEST_F(FilesOfAModel, AreNotReachedThroughLinks) {
    fs::create_symlink(fs::absolute("far/secret.png"), "models/a/link.png");
    fs::create_directory_symlink(fs::absolute("far"), "models/a/folder");
    fs::create_symlink("wall.png", "models/a/near.png");
    EXPECT_EQ(find("link.png"), "");
    EXPECT_TRUE(found.outside);
    EXPECT_EQ(find("folder/secret.png"), "");
    EXPECT_EQ(find("FOLDER/Secret.png"), "");
    EXPECT_EQ(find("near.png"), "models/a/wall.png");
    fs::create_directory_symlink(fs::absolute("far"), "models/a/TEXTURES");
    EXPECT_EQ(find("secret.png"), "");
    options.follow = true;
    EXPECT_EQ(find("link.png"), "far/secret.png");
}

TEST_F(FilesOfAModel, AreAnywhereOnRequest) {
    options.follow = true;
    EXPECT_EQ(find("../../far/secret.png"), "far/secret.png");
    EXPECT_EQ(find("../../far/wall.png"), "far/wall.png");
    EXPECT_EQ(find("file://" + fs::absolute("far/wall.png").string()), "far/wall.png");
    EXPECT_EQ(find("..\\..\\FAR\\Secret.png"), "far/secret.png");
    EXPECT_EQ(find("D:\\models\\B\\other.png"), "models/b/other.png");
    EXPECT_FALSE(found.outside);
    EXPECT_EQ(find("alone.png"), "");
}

TEST_F(FilesOfAModel, AreNotWhereNothingIs) {
    EXPECT_EQ(find(""), "");
    EXPECT_EQ(find("missing.png"), "");
    EXPECT_EQ(find("Textures"), ""); // a folder
    EXPECT_EQ(find("%zz%"), "");
    EXPECT_EQ(find(std::string("wall.png\0x", 10)), "");
    EXPECT_EQ(find("wall%00.png"), "");
    EXPECT_FALSE(found.outside);
}

TEST_F(FilesOfAModel, GoToTheReaderOfItsFormatByTheSameRule) {
    ModelFiles files("models/a/scene.obj", options, report);
    const std::unique_ptr<Assimp::IOSystem> io(files.makeIoSystem());
    EXPECT_TRUE(io->Exists("models/a/scene.obj"));
    EXPECT_TRUE(io->Exists("models/a/WALL.png"));
    EXPECT_TRUE(io->Exists("models/a/../textures/wood.jpg"));
    EXPECT_FALSE(io->Exists("models/a/wall.jpg")); // no other extension here
    EXPECT_FALSE(io->Exists("models/a/Textures"));
    EXPECT_TRUE(report.warnings().empty()) << joined(report.warnings());
    EXPECT_FALSE(io->Exists("models/a/../../far/secret.png"));
    EXPECT_FALSE(io->Open("models/a/../../far/secret.png", "rb"));
    EXPECT_FALSE(io->Open("models/a/wall.png", "wb"));
    EXPECT_FALSE(io->Open("models/a/wall.png", "r+b"));
    EXPECT_FALSE(io->Open("models/a/new.png", "w"));
    EXPECT_FALSE(fs::exists("models/a/new.png"));
    Assimp::IOStream *stream = io->Open("models/a/wall.png", "rb");
    EXPECT_TRUE(stream);
    io->Close(stream);
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"file '../../far/secret.png' lies outside the model's "
                                        "folders: left out; --follow opens it"}));
    EXPECT_EQ(files.opened(), (std::vector<fs::path>{fs::canonical("models/a/scene.obj"),
                                                     fs::canonical("models/a/wall.png"),
                                                     fs::canonical("models/textures/wood.jpg")}));
}

// The whole way: what the output holds, and what is said.

std::vector<std::string> filesIn(const fs::path &folder) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

Made makeIn(const fs::path &model, const SourceOptions &sources = {}) {
    fs::remove_all("out");
    fs::create_directory("out");
    ConvertOptions options;
    options.model = model;
    options.scene = "out/scene.rve";
    options.sources = sources;
    return make(options);
}

TEST(Sources, OfAModelDoNotLeakPicturesIntoTheOutput) {
    writeFile("secret.ppm", fourColors());
    writeFile("m/wall.ppm", fourColors());
    const std::string secret = fs::absolute("secret.ppm").string();
    for (const std::string &name : {std::string("../secret.ppm"), secret, "file://" + secret,
                                    std::string("..\\secret.ppm")}) {
        writeFile("m/m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd " + name + "\n");
        writeFile("m/m.obj", squareObj("m.mtl", "a"));
        const Made made = makeIn("m/m.obj");
        EXPECT_EQ(filesIn("out"), std::vector<std::string>{}) << name;
        EXPECT_EQ(made.report.warnings(),
                  (std::vector<std::string>{"texture '" + name +
                                            "' lies outside the model's folders, which --follow "
                                            "allows: the material's colours are used"}));
        SourceOptions follow;
        follow.follow = true;
        EXPECT_TRUE(makeIn("m/m.obj", follow).report.warnings().empty());
        EXPECT_EQ(filesIn("out"), std::vector<std::string>{"secret_d.tga"}) << name;
    }
    writeFile("wall.ppm", "");
    writeFile("m/m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd ../wall.ppm\n");
    EXPECT_EQ(
        makeIn("m/m.obj").report.warnings(),
        (std::vector<std::string>{"texture '../wall.ppm' lies outside the model's folders: '" +
                                  fs::canonical("m/wall.ppm").string() +
                                  "' is used in its place; --follow opens it"}));
    EXPECT_EQ(filesIn("out"), std::vector<std::string>{"wall_d.tga"});
}

TEST(Sources, OfTheReaderAreConfinedToo) {
    writeFile("far.mtl", "newmtl a\nKd 1 0 0\n");
    writeFile("m/m.obj", squareObj("../far.mtl", "a"));
    const Made made = makeIn("m/m.obj");
    EXPECT_TRUE(contains(made.report.warnings(), "file '../far.mtl' lies outside the model's "
                                                 "folders: left out; --follow opens it"))
        << joined(made.report.warnings());
    EXPECT_NE(made.scene.materials.at(0).diffuse, (ravolt::RveColor{1, 0, 0, 1}));
    SourceOptions follow;
    follow.follow = true;
    EXPECT_EQ(makeIn("m/m.obj", follow).scene.materials.at(0).diffuse,
              (ravolt::RveColor{1, 0, 0, 1}));
}

} // namespace
