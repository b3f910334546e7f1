// Finding the further files of a model within its folders.

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

    using Names = std::vector<std::pair<std::string, std::string>>; // stated, found

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
    for (const auto &[stated, file] : Names{
             {"wall.png", "models/a/wall.png"},
             {"./wall.png", "models/a/wall.png"},
             {"deep/er/leaf.tga", "models/a/deep/er/leaf.tga"},
             {"../a/wall.png", "models/a/wall.png"},
             {"../textures/wood.jpg", "models/textures/wood.jpg"},
             {fs::absolute("models/a/wall.png"), "models/a/wall.png"},
             // by paths of other systems
             {"textures\\brick.png", "models/a/Textures/Brick.PNG"},
             {"file:///home/who/models/a/wall.png", "models/a/wall.png"},
             {"file://localhost" + fs::absolute("models/a/wall.png").string(), "models/a/wall.png"},
             {"file:wall.png", "models/a/wall.png"},
             {"with%20space.png", "models/a/with space.png"},
             {"a%20b.png", "models/a/a%20b.png"},
             {"C:\\work\\house\\wall.png", "models/a/wall.png"},
             {"/nowhere/Textures/Brick.PNG", "models/a/Textures/Brick.PNG"},
             // in folders of textures
             {"brick.png", "models/a/Textures/Brick.PNG"},
             {"D:\\models\\b\\wood.jpg", "models/textures/wood.jpg"},
             {"gold.png", ""},
             // with other extensions
             {"wall", "models/a/wall.png"},
             {"Wall.tga", "models/a/wall.png"},
             {"x\\ROOF.RGB", "models/a/roof.jpg"},
             {"roof.v2", "models/a/roof.jpg"}, // as if .v2 were the extension
             {"wood.png", "models/textures/wood.jpg"},
             // none
             {"", ""},
             {"missing.png", ""},
             {"Textures", ""}, // a folder
             {"%zz%", ""},
             {std::string("wall.png\0x", 10), ""},
             {"wall%00.png", ""}}) {
        EXPECT_EQ(find(stated), file) << stated;
        EXPECT_FALSE(found.outside) << stated;
    }
}

TEST_F(FilesOfAModel, AreFoundInFoldersThatTheCallerNames) {
    options.textureFolders = {"shelf"};
    EXPECT_EQ(find("x\\more\\gold.png"), "shelf/more/gold.png");
    EXPECT_EQ(find("wall.png"), "models/a/wall.png"); // the model's own come first
    options.textureFolders = {"shelf", "shelf/more"};
    EXPECT_EQ(find("gold.png"), "shelf/more/gold.png");
    options.textureFolders = {"missing"};
    EXPECT_EQ(failureOf([&] { find("gold.png"); }), "missing: no such folder");
}

TEST_F(FilesOfAModel, AreNeverOutsideItsFolders) {
    fs::create_symlink(fs::absolute("far/secret.png"), "models/a/link.png");
    const std::string far = fs::absolute("far/secret.png").string();
    for (const std::string &stated :
         {std::string("../../far/secret.png"), std::string("..%2F..%2Ffar/secret.png"),
          std::string("../b/other.png"), std::string("../alone.png"),
          std::string("deep/../../alone.png"), std::string("..\\alone.png"),
          std::string("link.png"), far, "file://" + far, "FILE:" + far}) {
        EXPECT_EQ(find(stated), "") << stated;
        EXPECT_TRUE(found.outside) << stated;
    }
    EXPECT_EQ(find("../../far/wall.png"), "models/a/wall.png");
    EXPECT_TRUE(found.outside);
    options.follow = true;
    EXPECT_EQ(find("link.png"), "far/secret.png");
}

TEST_F(FilesOfAModel, AreNotReachedThroughLinkedFolders) {
    fs::create_directory_symlink(fs::absolute("far"), "models/a/folder");
    fs::create_symlink("wall.png", "models/a/near.png");
    EXPECT_EQ(find("folder/secret.png"), "");
    EXPECT_EQ(find("FOLDER/Secret.png"), "");
    EXPECT_EQ(find("near.png"), "models/a/wall.png");
    fs::create_directory_symlink(fs::absolute("far"), "models/a/TEXTURES");
    EXPECT_EQ(find("secret.png"), "");
}

TEST_F(FilesOfAModel, AreAnywhereOnRequest) {
    options.follow = true;
    for (const auto &[stated, file] :
         Names{{"../../far/secret.png", "far/secret.png"},
               {"../../far/wall.png", "far/wall.png"},
               {"file://" + fs::absolute("far/wall.png").string(), "far/wall.png"},
               {"..\\..\\FAR\\Secret.png", "far/secret.png"},
               {"D:\\models\\B\\other.png", "models/b/other.png"},
               {"alone.png", ""}}) {
        EXPECT_EQ(find(stated), file) << stated;
        EXPECT_FALSE(found.outside) << stated;
    }
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
              Lines{"file '../../far/secret.png' lies outside the model's folders: left out; "
                    "--follow opens it"});
    EXPECT_EQ(files.opened(), (std::vector<fs::path>{fs::canonical("models/a/scene.obj"),
                                                     fs::canonical("models/a/wall.png"),
                                                     fs::canonical("models/textures/wood.jpg")}));
}

// ---- conversions -----------------------------------------------------------------------------

// Its warnings and, in front of them, the files in the output.
Lines makeIn(const fs::path &model, bool follow = false) {
    fs::remove_all("out");
    fs::create_directory("out");
    ConvertOptions options = optionsOf(model, "out/scene.rve");
    options.sources.follow = follow;
    const Lines warnings = make(options).report.warnings();
    Lines lines;
    for (const auto &entry : fs::directory_iterator("out"))
        lines.push_back(entry.path().filename().string());
    lines.insert(lines.end(), warnings.begin(), warnings.end());
    return lines;
}

TEST(Sources, OfAModelDoNotLeakPicturesIntoTheOutput) {
    writeFile("secret.ppm", fourColors());
    writeFile("m/wall.ppm", fourColors());
    const std::string secret = fs::absolute("secret.ppm").string();
    for (const std::string &name : {std::string("../secret.ppm"), secret, "file://" + secret,
                                    std::string("..\\secret.ppm")}) {
        writeSquare("Kd 1 1 1\nmap_Kd " + name + "\n", "m/m.obj");
        EXPECT_EQ(makeIn("m/m.obj"),
                  Lines{"texture '" + name +
                        "' lies outside the model's folders, which --follow allows: the "
                        "material's colours are used"});
        EXPECT_EQ(makeIn("m/m.obj", true), Lines{"secret_d.tga"}) << name;
    }
    writeFile("wall.ppm", "");
    writeSquare("Kd 1 1 1\nmap_Kd ../wall.ppm\n", "m/m.obj");
    EXPECT_EQ(makeIn("m/m.obj"),
              (Lines{"wall_d.tga", "texture '../wall.ppm' lies outside the model's folders: '" +
                                       fs::canonical("m/wall.ppm").string() +
                                       "' is used in its place; --follow opens it"}));
}

TEST(Sources, OfTheReaderAreConfinedToo) {
    writeFile("far.mtl", "newmtl a\nKd 1 0 0\n");
    writeFile("m/m.obj", squareObj("../far.mtl", "a"));
    ConvertOptions options = optionsOf("m/m.obj");
    for (const bool follow : {false, true}) {
        options.sources.follow = follow;
        const Made made = make(options);
        EXPECT_EQ(contains(made.report.warnings(), "file '../far.mtl' lies outside the model's "
                                                   "folders: left out; --follow opens it"),
                  !follow)
            << joined(made.report.warnings());
        EXPECT_EQ(made.scene.materials.at(0).diffuse == ravolt::RveColor({1, 0, 0, 1}), follow);
    }
}

} // namespace
