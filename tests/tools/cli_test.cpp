// The program itself, run as its users run it.

#include "tests/tools/cli.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>

namespace {

using namespace tool_test;

const std::string withoutDisplay = "env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER "
                                   "-u LD_LIBRARY_PATH";

TEST(CommandLine, ShowsHelp) {
    const Outcome help = run("--help");
    EXPECT_EQ(help.code, 0);
    for (const char *word : {"convert", "view", "shot", "Exit codes"})
        EXPECT_NE(help.out.find(word), std::string::npos) << word;
    EXPECT_EQ(run("").code, 2);
}

TEST(CommandLine, ShowsTheHelpOfEachCommandWithTheViewersKeys) {
    for (const char *command : {"convert", "view", "shot"}) {
        const Outcome help = run(std::string(command) + " --help");
        EXPECT_EQ(help.code, 0) << command;
        EXPECT_NE(
            help.out.find("Exit codes: 0 done, 1 the job failed, 2 wrong options, 128 + N ended by "
                          "signal N."),
            std::string::npos)
            << command;
    }
    const std::string keys = run("view --help").out;
    for (const char *word : {"wireframe", "normals", "bounding boxes", "next light rig",
                             "screenshot", "wheel to zoom", "Escape"})
        EXPECT_NE(keys.find(word), std::string::npos) << word;
}

TEST(CommandLine, HasTheSameEffectsInEachCommandThatDraws) {
    const std::string shot = run("shot --help").out, view = run("view --help").out;
    for (const char *option :
         {"--per-pixel ", "--spot ", "--spot-yaw ", "--spot-pitch ", "--spot-distance ",
          "--spot-angle ", "--spot-fade ", "--shadows ", "--shadow-map ", "--floor ", "--bloom ",
          "--bloom-intensity ", "--tone-mapping ", "--exposure ", "--depth-of-field ", "--focus ",
          "--focus-depth ", "--brightness "}) {
        EXPECT_NE(shot.find(option), std::string::npos) << option;
        EXPECT_NE(view.find(option), std::string::npos) << option;
    }
    for (const char *key :
         {"  1       per-pixel lighting\n", "  2       spot light\n", "  3       shadows\n",
          "  4       floor\n", "  5       bloom\n", "  6       tone mapping\n",
          "  7       depth of field\n", "  Tab     ", "  PgUp    ", "  PgDown  ", "  h       "})
        EXPECT_NE(view.find(key), std::string::npos) << key;
}

TEST(CommandLine, ConvertsClipsBesideTheScene) {
    writeMovingSquare("move.x");
    const Outcome done = run("convert move.x -o moved.rve");
    EXPECT_EQ(done.code, 0) << done.err;
    EXPECT_TRUE(done.out.find(", 1 clip\n") != std::string::npos) << done.out;
    const std::string usual = contentsOf("moved.rise.rva");
    EXPECT_TRUE(startsWith(usual, "RVA file v1.6a"));
    EXPECT_EQ(run("convert move.x -o moved.rve --fps 100").code, 0);
    const std::string fine = contentsOf("moved.rise.rva");
    EXPECT_EQ(usual[17], 4);
    EXPECT_EQ(fine[17], 11);
    for (const char *fps : {"0", "-1", "1001", "nan"}) {
        const Outcome wrong = run(std::string("convert move.x -o moved.rve --fps ") + fps);
        EXPECT_EQ(wrong.code, 2) << fps;
        EXPECT_EQ(wrong.err,
                  std::string("ravolt: --fps ") + fps + ": expected a number from 0.1 to 1000\n");
    }
}

TEST(CommandLine, LeavesNoClipBehindWhenTheSceneCannotBeWritten) {
    writeMovingSquare("move.x");
    fs::create_directories("full");
    std::error_code error;
    fs::remove("full/scene.rve", error);
    fs::create_symlink("/dev/full", "full/scene.rve");
    const Outcome failed = run("convert move.x -o full/scene.rve");
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.err, "ravolt: full/scene.rve: is no regular file, so the clips cannot stand "
                          "beside it\n");
    EXPECT_FALSE(fs::exists("full/scene.rise.rva"));
}

TEST(CommandLine, ShootsEffects) {
    writeSquare();
    EXPECT_EQ(run("shot m.obj -o plain.png --size 64x48").code, 0);
    for (const char *option :
         {"--per-pixel --spot-angle 10", "--spot", "--spot-angle 20", "--shadows --floor",
          "--shadow-map 64", "--floor", "--bloom --brightness 4", "--exposure 2",
          "--focus 3 --focus-depth 0.1"}) {
        const Outcome result = run("shot m.obj -o m.png --size 64x48 " + std::string(option));
        EXPECT_EQ(result.code, 0) << option;
        EXPECT_EQ(result.out + result.err, "") << option;
        EXPECT_FALSE(contentsOf("m.png") == contentsOf("plain.png")) << option;
    }
}

TEST(CommandLine, ShootsBloomThatIsSeenWithoutABrightness) {
    writeSquare();
    const std::string shot = "shot m.obj --size 64x48 --yaw 0 -o ";
    EXPECT_EQ(run(shot + "plain.png --per-pixel").code, 0);
    EXPECT_EQ(run(shot + "bloom.png --bloom").code, 0);
    EXPECT_EQ(run(shot + "stated.png --bloom --brightness 1").code, 0);
    EXPECT_FALSE(contentsOf("bloom.png") == contentsOf("plain.png"));
    EXPECT_TRUE(contentsOf("stated.png") == contentsOf("plain.png"));
}

TEST(CommandLine, ShootsSmoothPicturesUnlessToldNotTo) {
    writeSquare();
    for (const char *option : {"", " --bloom", " --wireframe"}) {
        const std::string shot = "shot m.obj --size 64x48 -o ";
        const bool lines = option == std::string(" --wireframe"); // which would fade
        EXPECT_EQ(run(shot + "smooth.png" + option).code, 0);
        EXPECT_EQ(run(shot + "jagged.png --no-smooth" + option).code, 0);
        EXPECT_EQ(contentsOf("smooth.png") == contentsOf("jagged.png"), lines) << option;
    }
}

TEST(CommandLine, SaysInOneLineWhatTheDisplayCannotDo) {
    writeSquare();
    const std::string bloom = "shot m.obj -o m.png --size 64x48 --bloom --floor";
    for (const auto &[hidden, arguments, lacking] : std::vector<std::array<std::string, 3>>{
             {"GL_ARB_texture_float", bloom, "bloom"},
             {"GL_ARB_shadow", "shot m.obj -o m.png --size 64x48 --shadows", "shadows"},
             {"GL_ARB_fragment_shader", bloom, "per-pixel lighting, bloom"},
             {"GL_ARB_texture_float", "view m.obj --seconds 0.2 --depth-of-field",
              "depth of field"}}) {
        const Outcome result = run(arguments, "MESA_EXTENSION_OVERRIDE=-" + hidden);
        EXPECT_EQ(result.code, 0) << arguments;
        EXPECT_EQ(result.err,
                  "ravolt: warning: this display cannot do " + lacking + ": drawn without\n");
    }
    EXPECT_TRUE(isPng("m.png"));
}

TEST(CommandLine, DrawsInPlainSizeWhereTheDisplayHasNoTargetOfTwiceTheSize) {
    writeSquare();
    const std::string small = "ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 "
                              "LD_PRELOAD='" RAVOLT_SMALL_TEXTURES "'";
    const std::string shot = "shot m.obj --bloom --size ";
    const Outcome plain = run(shot + "600x400 --no-smooth -o plain.png");
    EXPECT_EQ(plain.code, 0);
    const Outcome fallenBack = run(shot + "600x400 -o fallen.png", small);
    EXPECT_EQ(fallenBack.code, 0);
    EXPECT_EQ(fallenBack.err, "ravolt: warning: the display cannot draw effects at twice the size: "
                              "drawn as with --no-smooth\n");
    EXPECT_EQ(contentsOf("fallen.png"), contentsOf("plain.png"));
    const Outcome tooLarge = run(shot + "1200x800 -o large.png", small);
    EXPECT_EQ(tooLarge.code, 1);
    EXPECT_EQ(tooLarge.err,
              "ravolt: the display cannot draw effects into a picture of that size\n");
}

TEST(CommandLine, RefusesWrongOptions) {
    for (const char *arguments :
         {"nonsense", "convert", "convert a.obj", "convert a.obj -o b.rve --nonsense",
          "convert a.obj -o b.rve --max-texture 5000", "convert a.obj -o b.rve --scale much",
          "shot a.obj", "shot a.obj -o b.png --frames 0", "convert a -o b -q -v",
          "shot m.obj -o x.png --yaw inf", "shot m.obj -o x.png --pitch 90",
          "view m.obj --seconds nan", "view m.obj --size 1x", "view m.obj --exposure much",
          "shot m.obj -o x.png --bloom=2", "shot m.obj -o x.png --shadow-map 100000000000"}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, 2) << arguments;
        EXPECT_FALSE(result.err.empty()) << arguments;
    }
}

TEST(CommandLine, FailsWithOneLineThatNamesTheFile) {
    writeFile("junk.fbx", "junk");
    writeFile("empty.obj", "");
    fs::create_directory("folder");
    writeSquare();
    for (const auto &[arguments, start] : std::vector<std::pair<std::string, std::string>>{
             {"convert missing.obj -o x.rve", "ravolt: missing.obj: no such file\n"},
             {"convert junk.fbx -o x.rve", "ravolt: junk.fbx: "},
             {"convert folder -o x.rve", "ravolt: folder: is a folder, not a model\n"},
             {"convert m.obj -o no/x.rve", "ravolt: no: no such folder\n"},
             {"shot missing.rve -o x.png", "ravolt: missing.rve: no such file\n"},
             {"shot m.obj -o no/x.png", "ravolt: "},
             {"convert empty.obj -o x.rve", "ravolt: empty.obj: is empty\n"},
             {"shot empty.obj -o x.png", "ravolt: empty.obj: is empty\n"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, 1) << arguments;
        EXPECT_TRUE(startsWith(result.err, start)) << arguments << ": " << result.err;
        EXPECT_EQ(lines(result.err), 1u) << result.err;
        EXPECT_EQ(result.out, "") << arguments;
        EXPECT_FALSE(fs::exists("x.rve"));
        EXPECT_FALSE(fs::exists("x.png"));
    }
}

TEST(CommandLine, NamesWhatIsWrongWithAnOption) {
    writeSquare();
    for (const auto &[arguments, start] : std::vector<std::pair<std::string, std::string>>{
             {"bogus", "ravolt: no command 'bogus': there are convert, view and shot\n"},
             {"shot m.obj -o x.png --size 0x10", "ravolt: --size 0x10: "},
             {"shot m.obj -o x.png --size big", "ravolt: --size big: "},
             {"shot m.obj -o x.png --rig 99", "ravolt: --rig 99: expected "},
             {"shot m.obj -o x.png --rig 4", "ravolt: no light rig 4: there are 0 to 3\n"},
             {"shot m.obj -o x.png --yaw nan", "ravolt: --yaw nan: expected "},
             {"shot m.obj -o x.png --zoom inf", "ravolt: --zoom inf: expected "},
             {"shot m.obj -o x.png --zoom 0", "ravolt: --zoom 0: expected "},
             {"shot m.obj -o x.png --bloom-intensity 9",
              "ravolt: --bloom-intensity 9: expected a number from 0 to 8\n"},
             {"shot m.obj -o x.png --focus nan", "ravolt: --focus nan: expected "},
             {"shot m.obj -o x.png --shadow-map 32",
              "ravolt: --shadow-map 32: expected a number from 64 to 4096\n"},
             {"shot m.obj -o x.png --bloom --size 4097x16",
              "ravolt: --size 4097x16: with bloom, tone mapping or depth of field at most 4096 "
              "pixels in each direction\n"},
             {"view m.obj --spot-pitch 90", "ravolt: --spot-pitch 90: expected "},
             {"convert m.obj -o x.rve --scale nan", "ravolt: --scale nan: expected "},
             {"convert m.obj -o x.rve --scale 0", "ravolt: --scale 0: expected "},
             {"convert '' -o x.rve", "ravolt: MODEL: the name is empty\n"},
             {"convert m.obj -o ''", "ravolt: --output: the name is empty\n"},
             {"shot '' -o x.png", "ravolt: SCENE: the name is empty\n"},
             {"shot m.obj -o ''", "ravolt: --output: the name is empty\n"},
             {"shot m.obj -o x.jpg", "ravolt: --output x.jpg: expected a name that ends in .png\n"},
             {"view ''", "ravolt: SCENE: the name is empty\n"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, 2) << arguments;
        EXPECT_TRUE(startsWith(result.err, start)) << arguments << ": " << result.err;
        EXPECT_EQ(lines(result.err), 1u) << result.err;
        EXPECT_EQ(result.out, "") << arguments;
        EXPECT_FALSE(fs::exists("x.rve"));
        EXPECT_FALSE(fs::exists("x.png"));
    }
}

TEST(CommandLine, TellsItsVersion) {
    const Outcome result = run("--version");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(startsWith(result.out, "ravolt 1.6")) << result.out;
    EXPECT_EQ(lines(result.out), 1u);
}

TEST(CommandLine, ConvertsAndSaysWhatItMade) {
    writeSquare();
    const Outcome result = run("convert m.obj -o m.rve");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(startsWith(result.out, "m.rve: ")) << result.out;
    EXPECT_NE(result.out.find("1 mesh, 2 triangles, 4 vertices, 0 lights, 1 material, 0 textures"),
              std::string::npos)
        << result.out;
    EXPECT_TRUE(startsWith(contentsOf("m.rve"), "RVE file v1.6a"));
    EXPECT_EQ(run("convert m.obj -o m.rve -q").out, "");
}

TEST(CommandLine, WarnsOfABrokenTextureAndGoesOn) {
    writeFile("broken.png", "junk");
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd broken.png\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    const Outcome result = run("convert m.obj -o m.rve");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(startsWith(result.err, "ravolt: warning: texture 'broken.png' ")) << result.err;
    EXPECT_EQ(lines(result.err), 1u);
    EXPECT_EQ(run("convert m.obj -o m.rve -q").err, "");
}

TEST(CommandLine, ReadsTexturesElsewhereOnRequestAlone) {
    writeFile("far/wall.ppm", fourColors());
    writeFile("m/m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd ../far/wall.ppm\n");
    writeFile("m/m.obj", squareObj("m.mtl", "a"));
    EXPECT_EQ(run("convert m/m.obj -o x.rve").err,
              "ravolt: warning: texture '../far/wall.ppm' lies outside the model's folders, which "
              "--follow allows: the material's colours are used\n");
    EXPECT_FALSE(fs::exists("wall_d.tga"));
    for (const std::string command :
         {"convert m/m.obj -o x.rve", "shot m/m.obj -o x.png --size 32x32"})
        for (const std::string option : {" --follow", " --textures m --textures far"})
            EXPECT_EQ(run(command + option).err, "") << command << option;
    EXPECT_TRUE(fs::exists("wall_d.tga"));
    EXPECT_EQ(run("convert m/m.obj -o x.rve --textures gone").err,
              "ravolt: gone: no such folder\n");
}

TEST(CommandLine, UsesTheAlphaOfTexturesAsTheCallerSays) {
    writeAlphas("leaf.tga", {255, 120, 130, 0});
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd leaf.tga\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    using Alphas = std::vector<unsigned char>;
    for (const auto &[word, alphas] :
         std::vector<std::pair<std::string, Alphas>>{{"opaque", {255, 255, 255, 255}},
                                                     {"cutout", {0, 0, 255, 255}},
                                                     {"blend", {0, 120, 130, 255}},
                                                     {"auto", {0, 120, 130, 255}}}) {
        EXPECT_EQ(run("convert m.obj -o m.rve --alpha " + word).code, 0) << word;
        EXPECT_EQ(alphasIn("leaf_d.tga"), alphas) << word;
        EXPECT_EQ(run("shot m.obj -o " + word + ".png --size 32x32 --alpha " + word).code, 0);
    }
    EXPECT_FALSE(contentsOf("opaque.png") == contentsOf("blend.png"));
    EXPECT_FALSE(contentsOf("cutout.png") == contentsOf("blend.png"));
    EXPECT_TRUE(contentsOf("auto.png") == contentsOf("blend.png"));
    const Outcome wrong = run("convert m.obj -o m.rve --alpha half");
    EXPECT_EQ(wrong.code, 2);
    EXPECT_EQ(lines(wrong.err), 1u) << wrong.err;
}

// assimp 5.2 crashes on a skin that leaves out its optional matrices.
TEST(CommandLine, OutlivesACrashOfTheReader) {
    writeFile("skin.bin", std::string(156, '\0'));
    writeFile("skin.gltf", R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],
        "nodes":[{"mesh":0,"skin":0},{"name":"bone"}],"skins":[{"joints":[1]}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":2,"WEIGHTS_0":3},
          "indices":1}]}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3",
          "min":[0,0,0],"max":[1,1,0]},
          {"bufferView":1,"componentType":5123,"count":6,"type":"SCALAR"},
          {"bufferView":2,"componentType":5123,"count":4,"type":"VEC4"},
          {"bufferView":3,"componentType":5126,"count":4,"type":"VEC4"}],
        "bufferViews":[{"buffer":0,"byteLength":48},
          {"buffer":0,"byteOffset":48,"byteLength":12},
          {"buffer":0,"byteOffset":60,"byteLength":32},
          {"buffer":0,"byteOffset":92,"byteLength":64}],
        "buffers":[{"byteLength":156,"uri":"skin.bin"}]})");
    for (const char *command : {"convert skin.gltf -o skin.rve", "shot skin.gltf -o skin.png"}) {
        const Outcome result = run(command);
        EXPECT_EQ(result.code, 1) << command; // its triangles are all at one place anyway
        EXPECT_TRUE(startsWith(result.err, "ravolt: skin.gltf: ")) << result.err;
        EXPECT_EQ(lines(result.err), 1u) << result.err;
    }
    EXPECT_FALSE(fs::exists("skin.rve"));
}

TEST(CommandLine, LeavesNoLogBehind) {
    writeSquare();
    EXPECT_EQ(run("convert m.obj -o m.rve").code, 0);
    EXPECT_EQ(run("shot m.rve -o m.png").code, 0);
    EXPECT_FALSE(fs::exists("ravolt_log.txt") &&
                 contentsOf("ravolt_log.txt").find("m.rve") != std::string::npos);
    const Outcome verbose = run("shot m.rve -o m.png -v");
    EXPECT_NE(verbose.err.find("Loading RVE file"), std::string::npos);
    EXPECT_EQ(verbose.out, "");
}

TEST(CommandLine, ShowsTheEnginesLogOfAFailureOnRequest) {
    writeFile("bad.rve", "RVE file v9.9z");
    const Outcome result = run("shot bad.rve -o x.png -v");
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("   [!] Invalid header in file bad.rve"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("ravolt: bad.rve: "), std::string::npos) << result.err;
}

TEST(CommandLine, PutsItsLogWhereTemporaryFilesGo) {
    writeSquare();
    const fs::path place = fs::absolute("logs");
    fs::create_directory(place);
    run("view m.obj --seconds 1 --size 64x48 & for i in $(seq 200); do "
        "ls logs | grep ravolt-log >seen && break; sleep 0.05; done; wait; true",
        "TMPDIR=" + place.string());
    EXPECT_TRUE(startsWith(contentsOf("seen"), "ravolt-log-"));
    EXPECT_TRUE(fs::is_empty(place));
}

TEST(CommandLine, DrawsWithoutTexturesThatCannotBeLoadedAndSaysSo) {
    writeFile("picture.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 0.9 0.9 0.9\nmap_Kd picture.ppm\n");
    writeFile("bare.mtl", "newmtl a\nKd 0.9 0.9 0.9\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    writeFile("bare.obj", squareObj("bare.mtl", "a"));
    EXPECT_EQ(run("convert m.obj -o m.rve").code, 0);
    EXPECT_EQ(run("convert bare.obj -o bare.rve").code, 0);
    EXPECT_EQ(run("shot m.rve -o m.png --size 64x48").err, "");
    std::string line;
    for (const bool cut : {true, false}) {
        if (cut)
            fs::resize_file("picture_d.tga", 20);
        else
            fs::remove("picture_d.tga");
        line = std::string("ravolt: warning: ") + (cut ? "File corrupted" : "Unable to open file") +
               " picture_d.tga: drawn without\n";
        for (const char *effect : {"", " --per-pixel"}) {
            const std::string how = std::string(" --size 64x48") + effect;
            EXPECT_EQ(run("shot m.rve -o m.png" + how).err, line) << cut << how;
            EXPECT_EQ(run("shot bare.rve -o bare.png" + how).err, "");
            EXPECT_TRUE(contentsOf("m.png") == contentsOf("bare.png")) << cut << how;
        }
    }
    const Outcome seen = run("view m.rve --seconds 0.1");
    EXPECT_EQ(seen.code, 0);
    EXPECT_EQ(seen.err, line);
    EXPECT_EQ(run("shot m.rve -o m.png --size 64x48 -q").err, "");
}

// The texture is there, and would be seen.
TEST(CommandLine, OpensNoTextureOutsideTheScenesFolder) {
    writeFile("picture.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 0.9 0.9 0.9\nmap_Kd picture.ppm\n");
    writeFile("bare.mtl", "newmtl a\nKd 0.9 0.9 0.9\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    writeFile("bare.obj", squareObj("bare.mtl", "a"));
    fs::create_directory("scene");
    EXPECT_EQ(run("convert m.obj -o scene/m.rve").code, 0);
    EXPECT_EQ(run("convert bare.obj -o bare.rve").code, 0);
    fs::rename("scene/picture_d.tga", "secret.tga");
    std::string scene = contentsOf("scene/m.rve");
    const std::string usual = "picture_d.tga", outside = "../secret.tga";
    const std::size_t place = scene.find(usual);
    ASSERT_NE(place, std::string::npos);
    writeFile("scene/m.rve", scene.replace(place, usual.size(), outside));

    EXPECT_EQ(run("shot scene/m.rve -o m.png --size 64x48").err,
              "ravolt: warning: File name ../secret.tga leaves its path: refused: drawn without\n");
    EXPECT_EQ(run("shot bare.rve -o bare.png --size 64x48").err, "");
    EXPECT_TRUE(contentsOf("m.png") == contentsOf("bare.png"));
}

TEST(CommandLine, WarnsOfAnEmptyPicture) {
    writeSquare();
    EXPECT_EQ(run("shot m.obj -o m.png --size 64x48").err, "");
    const Outcome behind = run("shot m.obj -o m.png --size 64x48 --yaw 180");
    EXPECT_EQ(behind.code, 0);
    EXPECT_EQ(behind.err, "ravolt: warning: nothing is seen from here; try --two-sided or --yaw\n");
    EXPECT_EQ(run("shot m.obj -o m.png --size 64x48 --yaw 180 --two-sided").err, "");
}

TEST(CommandLine, NoticesAFullDisk) {
    if (!fs::is_character_file("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    writeSquare();
    fs::create_symlink("/dev/full", "full.png");
    const Outcome result = run("shot m.obj -o full.png --size 64x48");
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("full.png: cannot be written\n"), std::string::npos) << result.err;
    EXPECT_EQ(lines(result.err), 1u) << result.err;
    EXPECT_TRUE(fs::is_symlink("full.png"));
}

TEST(CommandLine, ShootsEffectsInPicturesLargerThanTheScreen) {
    writeSquare();
    const Outcome result = run("shot m.obj -o large.png --size 1920x1080 --bloom --focus 0.5");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(contentsOf("large.png").substr(12, 12),
              std::string("IHDR\0\0\x07\x80\0\0\x04\x38", 12));
}

// Off screen the screen is 1024 pixels wide.
TEST(CommandLine, ShootsPicturesLargerThanTheScreen) {
    writeSquare();
    for (const auto &[size, header] : std::vector<std::pair<std::string, std::string>>{
             {"1920x1080", std::string("IHDR\0\0\x07\x80\0\0\x04\x38", 12)},
             {"8192x16", std::string("IHDR\0\0\x20\0\0\0\0\x10", 12)},
             {"16x8192", std::string("IHDR\0\0\0\x10\0\0\x20\0", 12)}}) {
        for (const std::string &before : {std::string(), withoutDisplay}) {
            const Outcome result = run("shot m.obj -o large.png --size " + size, before);
            EXPECT_EQ(result.code, 0) << size;
            EXPECT_EQ(result.err, "") << size;
            EXPECT_EQ(contentsOf("large.png").substr(12, 12), header) << size;
        }
    }
}

TEST(CommandLine, ShootsScenesAndModels) {
    writeSquare();
    EXPECT_EQ(run("convert m.obj -o m.rve").code, 0);
    EXPECT_EQ(run("shot m.rve -o scene.png --size 64x48").code, 0);
    EXPECT_EQ(run("shot m.obj -o model.png --size 64x48").code, 0);
    EXPECT_TRUE(isPng("scene.png"));
    EXPECT_EQ(contentsOf("scene.png"), contentsOf("model.png"));
}

TEST(CommandLine, ShootsFramesOfClips) {
    writeMovingSquare("move.x");
    const std::string shot = "shot move.x --size 64x48 --two-sided ";
    EXPECT_EQ(run(shot + "-o still.png").code, 0);
    EXPECT_EQ(run(shot + "-o first.png --clip rise").code, 0);
    EXPECT_EQ(run(shot + "-o last.png --clip rise --frame 3").code, 0);
    EXPECT_FALSE(contentsOf("first.png") == contentsOf("last.png"));

    EXPECT_EQ(run(shot + "-o all.png --clip rise --frames 0..").code, 0);
    EXPECT_TRUE(contentsOf("all_0000.png") == contentsOf("first.png"));
    EXPECT_TRUE(contentsOf("all_0003.png") == contentsOf("last.png"));
    EXPECT_FALSE(fs::exists("all_0004.png"));
    EXPECT_EQ(run(shot + "-o part%02d_x.png --clip rise --frames 2..3").code, 0);
    EXPECT_TRUE(contentsOf("part01_x.png") == contentsOf("last.png"));
    EXPECT_FALSE(fs::exists("part02_x.png"));
}

TEST(CommandLine, FindsClipsBesideASceneOrWhereTheyAreNamed) {
    writeMovingSquare("move.x");
    fs::create_directories("clips");
    EXPECT_EQ(run("convert move.x --two-sided -o moved.rve").code, 0);
    EXPECT_EQ(run("shot moved.rve --size 64x48 --clip rise --frame 3 -o beside.png").code, 0);
    fs::rename("moved.rise.rva", "clips/any.rva");
    EXPECT_EQ(run("shot moved.rve --size 64x48 --clip clips/any.rva --frame 3 -o named.png").code,
              0);
    EXPECT_TRUE(contentsOf("beside.png") == contentsOf("named.png"));
}

TEST(CommandLine, SaysWhatIsWrongWithAClipAndItsFrames) {
    writeMovingSquare("move.x");
    writeSquare();
    writeFile("broken.rva", "no clip");
    const std::string broken = fs::absolute("broken.rva").string();
    for (const auto &[arguments, code, line] :
         std::vector<std::tuple<std::string, int, std::string>>{
             {"move.x --clip fall", 2, "no clip 'fall': there are rise"},
             {"m.obj --clip fall", 2, "no clip 'fall': there are none"},
             {"move.x --clip broken.rva", 1, broken + ": is no clip that can be played"},
             {"move.x --clip gone.rva", 1, fs::absolute("gone.rva").string() + ": no such file"},
             {"move.x --clip rise --frame 4", 2, "--frame 4: the clip 'rise' has frames 0 to 3"},
             {"move.x --clip rise --frames 1..4", 2,
              "--frames 1..4: the clip 'rise' has frames 0 to 3"},
             {"move.x --clip rise --frames 9..", 2,
              "--frames 9..: the clip 'rise' has frames 0 to 3"},
             {"move.x --clip rise --frames 3..1", 2,
              "--frames 3..1: expected FIRST..LAST, from 0 to 1023"},
             {"move.x --clip rise --frames 0..1024", 2,
              "--frames 0..1024: expected FIRST..LAST, from 0 to 1023"},
             {"move.x --frames 0..1", 2, "which clip? There is no --clip"},
             {"move.x --frame 1", 2, "which clip? There is no --clip"},
             {"move.x --frames 1x", 2,
              "--frames 1x: expected a number from 1 to 10000, or FIRST..LAST"},
             {"move.x --clip rise --frame 2 --frames 0..1", 2,
              "--frame 2: --frames 0..1 tells the frames already"},
             {"move.x --clip ''", 2, "--clip: the name is empty"},
             {"move.x --frames ''", 2,
              "--frames : expected a number from 1 to 10000, or FIRST..LAST"},
             {"move.x --fps 0", 2, "--fps 0: expected a number from 0.1 to 1000"}}) {
        const Outcome wrong = run("shot " + arguments + " --size 64x48 -o wrong.png");
        EXPECT_EQ(wrong.code, code) << arguments;
        EXPECT_EQ(wrong.err, "ravolt: " + line + "\n") << arguments;
        EXPECT_FALSE(fs::exists("wrong.png")) << arguments;
    }
}

TEST(CommandLine, WarnsOfAClipOfAnotherModel) {
    writeMovingSquare("move.x");
    writeSquare();
    EXPECT_EQ(run("convert move.x -o moved.rve").code, 0);
    const std::string line =
        "ravolt: warning: clip 'rise' moves 1 node that the scene does not have\n";
    for (const char *arguments : {"shot m.obj -o m.png --size 64x48", "view m.obj --seconds 0.1"})
        EXPECT_EQ(run(std::string(arguments) + " --clip moved.rise.rva").err, line) << arguments;
    EXPECT_EQ(run("shot m.obj -o m.png --size 64x48 --clip moved.rise.rva -q").err, "");
}

// Word for word but for the names, which are placeholders.
TEST(CommandLine, MakesAVideoAsTheHelpSays) {
    writeMovingSquare("move.x");
    const std::string help = run("shot --help").out;
    const auto lineFrom = [&](const std::string &start) {
        const std::size_t at = help.find("\n  " + start);
        EXPECT_NE(at, std::string::npos) << start;
        return help.substr(at + 3, help.find('\n', at + 1) - at - 3);
    };
    EXPECT_EQ(lineFrom("ravolt shot "),
              "ravolt shot MODEL --clip NAME --frames 0.. -o video_%04d.png");
    EXPECT_EQ(run("shot move.x --clip rise --frames 0.. -o video_%04d.png").code, 0);
    fs::remove("video.mp4");
    const std::string command = lineFrom("ffmpeg ");
    ASSERT_EQ(std::system((command + " >video.log 2>&1 </dev/null").c_str()), 0)
        << contentsOf("video.log");
    ASSERT_EQ(std::system("ffprobe -v error -count_frames -show_entries stream=nb_read_frames "
                          "-of csv=p=0 video.mp4 >video.txt"),
              0);
    EXPECT_EQ(contentsOf("video.txt"), "4\n");
}

TEST(CommandLine, ShootsATurn) {
    writeSquare();
    EXPECT_EQ(run("shot m.obj -o turn.png --frames 3 --size 64x48").code, 0);
    for (const char *file : {"turn_000.png", "turn_001.png", "turn_002.png"})
        EXPECT_TRUE(isPng(file)) << file;
    EXPECT_FALSE(fs::exists("turn.png"));
    EXPECT_FALSE(fs::exists("turn_003.png"));
    EXPECT_NE(contentsOf("turn_000.png"), contentsOf("turn_001.png"));
}

TEST(CommandLine, ShootsWithoutADisplay) {
    writeSquare();
    const Outcome result = run("shot m.obj -o m.png --size 64x48 -v", withoutDisplay);
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.err.find("ravolt: note: no display: drawing off screen with "),
              std::string::npos);
    EXPECT_TRUE(isPng("m.png"));
}

TEST(CommandLine, SaysWhatToDoWithoutADisplay) {
    writeSquare();
    const Outcome view = run("view m.obj", withoutDisplay);
    EXPECT_EQ(view.code, 1);
    EXPECT_TRUE(startsWith(view.err, "ravolt: no display to open a window on. ")) << view.err;
    EXPECT_EQ(lines(view.err), 1u);
    const Outcome shot = run("shot m.obj -o m.png --sdl /nowhere", withoutDisplay);
    EXPECT_EQ(shot.code, 1);
    EXPECT_TRUE(startsWith(shot.err, "ravolt: /nowhere: no library to draw with off screen"))
        << shot.err;
    EXPECT_EQ(lines(shot.err), 1u);
}

TEST(CommandLine, ViewsForAWhile) {
    writeSquare();
    for (const char *options : {"", " --spin --normals --boxes", " --wireframe --rig 2",
                                " --shadows --floor --tone-mapping --depth-of-field"}) {
        const Outcome result =
            run("view m.obj --seconds 0.4 --size 160x120" + std::string(options));
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
}

TEST(CommandLine, RemovesItsTemporaryFolders) {
    writeSquare();
    const fs::path place = fs::absolute("temporary");
    fs::create_directory(place);
    EXPECT_EQ(run("shot m.obj -o m.png --size 64x48", "TMPDIR=" + place.string()).code, 0);
    EXPECT_TRUE(fs::is_empty(place));
}

} // namespace
