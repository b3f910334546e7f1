// A conversion that fails changes no file of an earlier one.

#include "kit/files/fileTransaction.h"
#include "tests/support/fileLimit.h"
#include "tests/tools/fileFaults.h"
#include "tests/tools/support.h"

#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace tool_test;
using ravolt::FileTransaction;
using ravolt::test::FileFaults;
using ravolt::test::FileLimit;
using Files = std::map<std::string, std::string>;

Files filesIn(const fs::path &folder) {
    Files files;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder))
        files[entry.path().filename().string()] = readText(entry.path());
    return files;
}

Files withoutTemporaries(Files files) {
    std::erase_if(files, [](const auto &file) { return file.first.rfind(".ravolt-", 0) == 0; });
    return files;
}

// A model with a texture and a clip, each of which changes with `value`.
void writeModel(char value) {
    writeFile("model/wood.ppm", std::string("P6 1 1 255\n") + value + value + value);
    writeMovingSquare("model/m.x", R"(    MeshMaterialList {
      1; 1; 0;;
      Material {
        1.0;1.0;1.0;1.0;; 1.0; 0.0;0.0;0.0;; 0.0;0.0;0.0;;
        TextureFilename { "wood.ppm"; }
      }
    }
    MeshTextureCoords { 4; 0.0;0.0;, 0.0;1.0;, 1.0;1.0;, 1.0;0.0;; }
)",
                      value);
}

void convert(double scale) {
    ConvertOptions options = optionsOf("model/m.x", "out/scene.rve");
    options.scale = scale;
    writeScene(options);
}

// The files of an earlier run, then a model of which other ones are to be made.
class Conversion : public ::testing::Test {
  protected:
    Conversion() {
        fs::remove_all("out");
        fs::create_directory("out");
        writeModel('2');
        convert(2);
        former = filesIn("out");
        writeModel('1');
        convert(1);
        latter = filesIn("out");
        writeFormer();
    }

    void writeFormer() const {
        for (const auto &[name, bytes] : former)
            writeFile("out/" + name, bytes);
    }

    Files former, latter;
};

TEST_F(Conversion, ReplacesAllItsFiles) {
    ASSERT_EQ(former.size(), 3u);
    for (const char *name : {"scene.rve", "scene.rise.rva", "wood_d.tga"})
        EXPECT_FALSE(former[name] == latter[name]) << name;
    convert(1);
    EXPECT_TRUE(filesIn("out") == latter);
}

TEST_F(Conversion, KilledAtAnyCallPreservesTheFormerFiles) {
    int killed = 0, status = 0;
    for (unsigned int number = 1; number < 100; ++number) {
        FileFaults faults(FileFaults::Kind::kill, number);
        const pid_t child = fork();
        if (child == 0) {
            convert(1);
            _exit(0);
        }
        waitpid(child, &status, 0);
        if (WIFEXITED(status))
            break;
        ++killed;
        const Files found = withoutTemporaries(filesIn("out"));
        ASSERT_EQ(found.size(), former.size()) << number;
        EXPECT_TRUE(found == former || FileFaults::renames() > 0) << number;
        for (const auto &[name, bytes] : found) // whole, whenever it was
            EXPECT_TRUE(bytes == former[name] || bytes == latter[name]) << number << " " << name;
        writeFormer();
    }
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_GE(killed, 12) << "a write, a sync, a link and a rename of three files";
    EXPECT_TRUE(withoutTemporaries(filesIn("out")) == latter);
}

TEST_F(Conversion, PreservesTheFormerFilesWhereAnyCallFails) {
    int failed = 0;
    for (unsigned int number = 1; number < 100; ++number) {
        const FileFaults faults(FileFaults::Kind::failure, number);
        const std::string failure = failureOf([] { convert(1); });
        if (!FileFaults::reached())
            break;
        EXPECT_TRUE(filesIn("out") == (failure.empty() ? latter : former)) << number;
        failed += !failure.empty();
        writeFormer();
    }
    EXPECT_EQ(failed, 9) << "a write, a sync and a rename of three files";
}

TEST_F(Conversion, PreservesTheFormerFilesOnAFullDisk) {
    for (rlim_t bytes = 0; bytes < latter["scene.rve"].size(); bytes += 8) {
        const FileLimit limit(RLIMIT_FSIZE, bytes);
        const std::string failure = failureOf([] { convert(1); });
        EXPECT_TRUE(failure.ends_with(": cannot be written")) << bytes << failure;
        EXPECT_TRUE(filesIn("out") == former) << bytes;
    }
}

TEST_F(Conversion, RefusesReadOnlyFilesBeforeItReplacesAny) {
    for (const auto &[name, bytes] : former) {
        const fs::path file = fs::path("out") / name;
        fs::permissions(file, fs::perms(0444));
        EXPECT_EQ(failureOf([] { convert(1); }), file.string() + ": is read-only");
        EXPECT_TRUE(filesIn("out") == former) << name;
        fs::permissions(file, fs::perms(0644));
    }
}

TEST_F(Conversion, WritesThroughLinksAndPreservesTheMode) {
    fs::create_directories("elsewhere");
    fs::remove("elsewhere/real.rve");
    fs::rename("out/scene.rve", "elsewhere/real.rve");
    fs::create_symlink("../elsewhere/real.rve", "out/scene.rve");
    fs::permissions("elsewhere/real.rve", fs::perms(0640));
    convert(1);
    EXPECT_TRUE(fs::is_symlink("out/scene.rve"));
    EXPECT_TRUE(readText("elsewhere/real.rve") == latter["scene.rve"]);
    EXPECT_EQ(fs::status("elsewhere/real.rve").permissions(), fs::perms(0640));
}

TEST(FileTransaction, MakesNewFilesOnCommitAlone) {
    fs::create_directory("fresh");
    fs::create_symlink("target.txt", "fresh/link.txt");
    for (const bool commits : {false, true}) {
        FileTransaction files;
        EXPECT_EQ(files.stage("fresh/a.txt", {'a'}), "");
        EXPECT_EQ(files.stage("fresh/link.txt", {'b'}), "");
        EXPECT_TRUE(withoutTemporaries(filesIn("fresh")) == (Files{{"link.txt", ""}}));
        if (commits) {
            EXPECT_EQ(files.commit(), "");
        }
    }
    EXPECT_EQ(readText("fresh/a.txt") + readText("fresh/target.txt"), "ab");
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(fs::status("fresh/a.txt").permissions(), fs::perms(0666 & ~mask));
}

TEST(FileTransaction, RemovesWhatItMadeWhenALaterFileFails) {
    writeFile("mixed/old.txt", "old");
    FileTransaction files;
    for (const char *file : {"mixed/new.txt", "mixed/old.txt", "mixed/folder"})
        EXPECT_EQ(files.stage(file, {'x'}), "");
    fs::create_directory("mixed/folder");
    EXPECT_EQ(files.commit(), "mixed/folder: is a folder");
    EXPECT_EQ(readText("mixed/old.txt"), "old");
    EXPECT_FALSE(fs::exists("mixed/new.txt"));
}

} // namespace
