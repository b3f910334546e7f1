// The commands of the program, their options and what they report.

#include "tests/support/limitedDriver.h"
#include "tests/tools/cli.h"
#include "tests/tools/gltfData.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;

const std::string withoutDisplay = "env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER "
                                   "-u LD_LIBRARY_PATH";

// ---- help and wrong options ------------------------------------------------------------------

void expectWords(const std::string &text, const Lines &words) {
    for (const std::string &word : words)
        EXPECT_TRUE(has(text, word)) << word;
}

TEST(CommandLine, ShowsItsVersionAndTheHelpOfEachCommand) {
    const Outcome version = run("--version");
    EXPECT_EQ(version.code, 0);
    EXPECT_TRUE(startsWith(version.out, "ravolt 1.6")) << version.out;
    EXPECT_EQ(lines(version.out), 1u);
    EXPECT_EQ(run("").code, 2);
    const auto helpOf = [](const std::string &command) {
        const Outcome help = run(command + " --help");
        EXPECT_EQ(help.code, 0) << command;
        return help.out;
    };
    expectWords(helpOf(""), {"convert", "view", "shot", "Exit codes"});
    const std::string convert = helpOf("convert"), shot = helpOf("shot"), view = helpOf("view");
    for (const std::string &help : {convert, shot, view})
        expectWords(help, {"Exit codes: 0 done, 1 the job failed, 2 wrong options, 128 + N ended "
                           "by signal N."});
    for (const std::string &help : {shot, view})
        expectWords(help,
                    {"--per-pixel ", "--spot ", "--spot-yaw ", "--spot-pitch ", "--spot-distance ",
                     "--spot-angle ", "--spot-fade ", "--shadows ", "--shadow-map ", "--floor ",
                     "--bloom ", "--bloom-intensity ", "--tone-mapping ", "--exposure ",
                     "--depth-of-field ", "--focus ", "--focus-depth ", "--brightness "});
    expectWords(view, {"wireframe",
                       "normals",
                       "bounding boxes",
                       "next light rig",
                       "screenshot",
                       "wheel ",
                       "Escape",
                       "  1         per-pixel lighting\n",
                       "  2         spot light\n",
                       "  3         shadows\n",
                       "  4         floor\n",
                       "  5         bloom\n",
                       "  6         tone mapping\n",
                       "  7         depth of field\n",
                       "  Tab       ",
                       "  ]         ",
                       "  F1, h     ",
                       "  F3, i     ",
                       "  PgUp      ",
                       "  PgDown    ",
                       "  Drop      ",
                       "On a terrain:\n",
                       "  g         walk"});
}

TEST(CommandLine, ReportsWrongOptionsInOneLine) {
    writeSquare();
    const std::string shot = "shot m.obj -o x.png ", convert = "convert m.obj -o x.rve ",
                      number = ": expected ";
    for (const auto &[arguments, start] : std::vector<std::pair<std::string, std::string>>{
             {"bogus",
              "no command 'bogus': there are convert, view, shot, terrain, font, info and check\n"},
             {"--nonsense", ""},
             {"convert", "MODEL is required (see ravolt convert --help)\n"},
             {"shot m.obj", "--output is required (see ravolt shot --help)\n"},
             {convert + "-q -v", "--quiet excludes --verbose (see ravolt convert --help)\n"},
             {convert + "--nonsense", ""},
             {convert + "--max-texture 5000", ""},
             {convert + "--scale much", ""},
             {convert + "--scale nan", "--scale nan" + number},
             {convert + "--scale 0", "--scale 0" + number},
             {convert + "--alpha half", ""},
             {convert + "--fps 0", "--fps 0: expected a number from 0.1 to 1000\n"},
             {convert + "--fps -1", "--fps -1: expected a number from 0.1 to 1000\n"},
             {convert + "--fps 1001", "--fps 1001: expected a number from 0.1 to 1000\n"},
             {convert + "--fps nan", "--fps nan: expected a number from 0.1 to 1000\n"},
             {"convert '' -o x.rve", "MODEL: the name is empty\n"},
             {"convert m.obj -o ''", "--output: the name is empty\n"},
             {"convert m.obj -o -", "--output -: a scene has files beside it, so it cannot go to "
                                    "standard output; name a file\n"},
             {shot + "--frames 0", ""},
             {shot + "--size 0x10", "--size 0x10: "},
             {shot + "--size big", "--size big: "},
             {shot + "--rig 99", "--rig 99" + number},
             {shot + "--rig 4", "no light rig 4: there are 0 to 3\n"},
             {shot + "--yaw nan", "--yaw nan" + number},
             {shot + "--yaw inf", "--yaw inf" + number},
             {shot + "--pitch 90", "--pitch 90" + number},
             {shot + "--zoom inf", "--zoom inf" + number},
             {shot + "--zoom 0", "--zoom 0" + number},
             {shot + "--bloom=2", ""},
             {shot + "--bloom-intensity 9", "--bloom-intensity 9: expected a number from 0 to 8\n"},
             {shot + "--focus nan", "--focus nan" + number},
             {shot + "--shadow-map 32", "--shadow-map 32: expected a number from 64 to 4096\n"},
             {shot + "--shadow-map 100000000000", ""},
             {shot + "--bloom --size 4097x16",
              "--size 4097x16: with bloom, tone mapping or depth of field at most 4096 pixels in "
              "each direction\n"},
             {shot + "--max-memory 1", ""},
             {"shot '' -o x.png", "SCENE: the name is empty\n"},
             {"shot m.obj -o ''", "--output: the name is empty\n"},
             {"shot m.obj -o x.jpg", "--output x.jpg: expected a name that ends in .png\n"},
             {"shot m.obj -o - --frames 2",
              "--output -: standard output takes one picture, not many\n"},
             {"view ''", "SCENE: the name is empty\n"},
             {"view m.obj --seconds nan", ""},
             {"view m.obj --size 1x", "--size 1x: "},
             {"view m.obj --exposure much", ""},
             {"view m.obj --max-time 0", ""},
             {"view m.obj --spot-pitch 90", "--spot-pitch 90" + number}})
        expectFailure(arguments, 2, start);
    EXPECT_FALSE(fs::exists("-"));
}

TEST(CommandLine, ReportsAJobThatFailsInOneLine) {
    writeFile("junk.fbx", "junk");
    writeFile("empty.obj", "");
    fs::create_directory("folder");
    writeSquare();
    for (const auto &[arguments, start] : std::vector<std::pair<std::string, std::string>>{
             {"convert missing.obj -o x.rve", "missing.obj: no such file\n"},
             {"convert junk.fbx -o x.rve", "junk.fbx: "},
             {"convert folder -o x.rve", "folder: is a folder, not a model\n"},
             {"convert m.obj -o no/x.rve", "no: no such folder\n"},
             {"convert m.obj -o x.rve --textures gone", "gone: no such folder\n"},
             {"shot missing.rve -o x.png", "missing.rve: no such file\n"},
             {"shot m.obj -o no/x.png", ""},
             {"convert empty.obj -o x.rve", "empty.obj: is empty\n"},
             {"shot empty.obj -o x.png", "empty.obj: is empty\n"}})
        expectFailure(arguments, 1, start);
}

TEST(CommandLine, ReportsWhatIsWrongWithAClipAndItsFrames) {
    writeMovingSquare("move.x");
    writeSquare();
    writeFile("broken.rva", "no clip");
    const std::string broken = fs::absolute("broken.rva").string(),
                      gone = fs::absolute("gone.rva").string(),
                      range = ": the clip 'rise' has frames 0 to 3",
                      form = ": expected a number from 1 to 10000, or FIRST..LAST",
                      order = ": expected FIRST..LAST, from 0 to 1023";
    struct Case {
        int code;
        std::string arguments, line;
    };
    for (const Case &c : std::vector<Case>{
             {2, "move.x --clip fall", "no clip 'fall': there are rise"},
             {2, "m.obj --clip fall", "no clip 'fall': there are none"},
             {1, "move.x --clip broken.rva", broken + ": is no clip that can be played"},
             {1, "move.x --clip gone.rva", gone + ": no such file"},
             {2, "move.x --clip rise --frame 4", "--frame 4" + range},
             {2, "move.x --clip rise --frames 1..4", "--frames 1..4" + range},
             {2, "move.x --clip rise --frames 9..", "--frames 9.." + range},
             {2, "move.x --clip rise --frames 3..1", "--frames 3..1" + order},
             {2, "move.x --clip rise --frames 0..1024", "--frames 0..1024" + order},
             {2, "move.x --frames 0..", "--frames 0..: only a clip has an end"},
             {2, "move.x --frames 5..100000",
              "--frames 5..100000: expected FIRST..LAST, from 0 to 99999"},
             {2, "move.x --turn 8", "--turn 8: only with --frames FIRST..LAST"},
             {2, "move.x --turn 8 --frames 8", "--turn 8: only with --frames FIRST..LAST"},
             {2, "move.x --frame 1", "which clip? There is no --clip"},
             {2, "move.x --frames 1x", "--frames 1x" + form},
             {2, "move.x --clip rise --frame 2 --frames 0..1",
              "--frame 2: --frames 0..1 tells the frames already"},
             {2, "move.x --clip ''", "--clip: the name is empty"},
             {2, "move.x --frames ''", "--frames " + form},
             {2, "move.x --fps 0", "--fps 0: expected a number from 0.1 to 1000"}})
        expectFailure("shot " + c.arguments + " --size 64x48 -o x.png", c.code, c.line + "\n");
}

// ---- convert ---------------------------------------------------------------------------------

TEST(CommandLine, ConvertsAndStatesWhatItMade) {
    writeSquare();
    const Outcome result = run("convert m.obj -o m.rve");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(startsWith(result.out, "m.rve: ")) << result.out;
    EXPECT_TRUE(
        has(result.out, "1 mesh, 2 triangles, 4 vertices, 0 lights, 1 material, 0 textures"))
        << result.out;
    EXPECT_TRUE(startsWith(readText("m.rve"), "RVE file v1.6a"));
    expectSuccess("convert m.obj -o m.rve -q");
}

TEST(CommandLine, ConvertsClipsBesideTheScene) {
    writeMovingSquare("move.x");
    const Outcome done = run("convert move.x -o moved.rve");
    EXPECT_EQ(done.code, 0) << done.err;
    EXPECT_TRUE(has(done.out, ", 1 clip\n")) << done.out;
    const std::string usual = readText("moved.rise.rva");
    EXPECT_TRUE(startsWith(usual, "RVA file v1.6a"));
    EXPECT_EQ(usual[17], 4);
    expectSuccess("convert move.x -o moved.rve --fps 100 -q");
    EXPECT_EQ(readText("moved.rise.rva")[17], 11);

    fs::create_directories("full");
    fs::create_symlink("/dev/full", "full/scene.rve");
    expectFailure("convert move.x -o full/scene.rve", 1,
                  "full/scene.rve: is no regular file, so the clips cannot stand beside it\n");
    EXPECT_FALSE(fs::exists("full/scene.rise.rva"));
}

TEST(CommandLine, WarnsOfABrokenTextureAndContinues) {
    writeFile("broken.png", "junk");
    writeSquare("Kd 1 1 1\nmap_Kd broken.png\n");
    const Outcome result = run("convert m.obj -o m.rve");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(startsWith(result.err, "ravolt: warning: texture 'broken.png' ")) << result.err;
    EXPECT_EQ(lines(result.err), 1u);
    expectSuccess("convert m.obj -o m.rve -q");
}

TEST(CommandLine, ReadsTexturesElsewhereOnRequestAlone) {
    writeFile("far/wall.ppm", fourColors());
    writeSquare("Kd 1 1 1\nmap_Kd ../far/wall.ppm\n", "m/m.obj");
    EXPECT_EQ(run("convert m/m.obj -o y.rve").err,
              "ravolt: warning: texture '../far/wall.ppm' lies outside the model's folders, which "
              "--follow allows: the material's colours are used\n");
    EXPECT_FALSE(fs::exists("wall_d.tga"));
    for (const std::string command :
         {"convert m/m.obj -o y.rve", "shot m/m.obj -o y.png --size 32x32"})
        for (const std::string option : {" --follow", " --textures m --textures far"})
            EXPECT_EQ(run(command + option).err, "") << command << option;
    EXPECT_TRUE(fs::exists("wall_d.tga"));
}

TEST(CommandLine, UsesTheAlphaOfTexturesAsTheCallerRequests) {
    writeAlphas("leaf.tga", {255, 120, 130, 0});
    writeSquare("Kd 1 1 1\nmap_Kd leaf.tga\n");
    for (const auto &[word, alphas] :
         std::vector<std::pair<std::string, Alphas>>{{"opaque", {255, 255, 255, 255}},
                                                     {"cutout", {0, 0, 255, 255}},
                                                     {"blend", {0, 120, 130, 255}},
                                                     {"auto", {0, 120, 130, 255}}}) {
        expectSuccess("convert m.obj -o m.rve -q --alpha " + word);
        EXPECT_EQ(alphasIn("leaf_d.tga"), alphas) << word;
        expectSuccess("shot m.obj -o " + word + ".png --size 32x32 --alpha " + word);
        EXPECT_EQ(areEqual(word + ".png", "blend.png"), word == "blend" || word == "auto");
    }
}

// assimp 5.2 crashes on a skin that leaves out its optional matrices.
TEST(CommandLine, SurvivesACrashOfTheReader) {
    GltfData data;
    data.square();
    data.joints({0, 0, 0, 0});
    data.roots = "0,1";
    data.nodes = R"({"mesh":0,"skin":0},{"name":"bone"})";
    data.members = R"(,"skins":[{"joints":[1]}])";
    writeFile("skin.gltf", data.text());
    for (const char *command : {"convert skin.gltf -o x.rve", "shot skin.gltf -o x.png"})
        expectFailure(command, 1, "skin.gltf: ");
}

// ---- shot ------------------------------------------------------------------------------------

TEST(CommandLine, ShootsEffects) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    expectSuccess("shot m.obj -o plain.png --size 64x48");
    for (const std::string option :
         {"--per-pixel --spot-angle 10", "--spot", "--shadow-map 64", "--floor",
          "--bloom --brightness 4", "--exposure 2", "--focus 3 --focus-depth 0.1"}) {
        expectSuccess("shot m.obj -o m.png --size 64x48 " + option);
        EXPECT_FALSE(areEqual("m.png", "plain.png")) << option;
    }
}

TEST(CommandLine, ShootsVisibleBloomWithoutABrightness) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    const std::string shot = "shot m.obj --size 64x48 --yaw 0 -o ";
    expectSuccess(shot + "plain.png --per-pixel");
    expectSuccess(shot + "bloom.png --bloom");
    expectSuccess(shot + "stated.png --bloom --brightness 1");
    EXPECT_FALSE(areEqual("bloom.png", "plain.png"));
    EXPECT_TRUE(areEqual("stated.png", "plain.png"));
}

TEST(CommandLine, ShootsSmoothPicturesByDefault) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    for (const std::string option : {"", " --bloom", " --wireframe"}) { // lines would fade
        expectSuccess("shot m.obj --size 64x48 -o smooth.png" + option);
        expectSuccess("shot m.obj --size 64x48 -o jagged.png --no-smooth" + option);
        EXPECT_EQ(areEqual("smooth.png", "jagged.png"), option == " --wireframe") << option;
    }
}

TEST(CommandLine, ShootsWithAsManySamplesAsRequested) {
    writeSquare();
    const std::string shot = "shot m.obj --size 64x48 -o ";
    expectSuccess(shot + "default.png");
    expectSuccess(shot + "plain.png --no-smooth");
    std::vector<std::string> earlier;
    for (const std::string samples : {"1", "4", "9", "16"}) {
        const std::string file = samples + ".png";
        expectSuccess(shot + file + " --samples " + samples);
        EXPECT_EQ(areEqual(file, "plain.png"), samples == "1") << samples;
        EXPECT_EQ(areEqual(file, "default.png"), samples == "4") << samples;
        for (const std::string &other : earlier)
            EXPECT_FALSE(areEqual(file, other)) << file << " and " << other;
        earlier.push_back(file);
    }
    expectSuccess(shot + "lines.png --wireframe");
    expectSuccess(shot + "faded.png --wireframe --samples 4");
    EXPECT_FALSE(areEqual("lines.png", "faded.png"));
}

TEST(CommandLine, WarnsOfSamplesThatThePictureIsTooLargeFor) {
    writeSquare();
    expectSuccess("shot m.obj --size 4200x8 -o x.png"); // not stated, so no warning
    expectSuccess("shot m.obj --size 2500x8 --samples 16 -o x.png",
                  "ravolt: warning: --samples 16: the picture is too large, drawn with 9\n");
    expectSuccess("shot m.obj --size 4200x8 --samples 4 -o x.png",
                  "ravolt: warning: --samples 4: the picture is too large, drawn with 1\n");
}

TEST(CommandLine, WarnsOfWhatTheDisplayDoesNotSupport) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    const std::string bloom = "shot m.obj -o m.png --size 64x48 --bloom --floor";
    for (const auto &[hidden, arguments, lacking] : std::vector<std::array<std::string, 3>>{
             {"GL_ARB_texture_float", bloom, "bloom"},
             {"GL_ARB_shadow", "shot m.obj -o m.png --size 64x48 --shadows", "shadows"},
             {"GL_ARB_fragment_shader", bloom, "per-pixel lighting, bloom"},
             {"GL_ARB_texture_float", "view m.obj --seconds 0.1 --depth-of-field",
              "depth of field"}})
        expectSuccess(arguments,
                      "ravolt: warning: this display cannot do " + lacking + ": drawn without\n",
                      "MESA_EXTENSION_OVERRIDE=-" + hidden);
    EXPECT_TRUE(isPng("m.png"));
}

TEST(CommandLine, DrawsWithFewerSamplesWhereTheDisplayHasNoTargetForThem) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    const std::string small = "ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 "
                              "LD_PRELOAD='" RAVOLT_SMALL_TEXTURES "'";
    const std::string shot = "shot m.obj --bloom --size ";
    expectSuccess(shot + "600x40 --no-smooth -o plain.png");
    expectSuccess(shot + "600x40 -o small.png",
                  "ravolt: warning: the display has no target for 4 samples: drawn with 1\n",
                  small);
    EXPECT_TRUE(areEqual("small.png", "plain.png"));
    expectFailure(shot + "1200x80 -o x.png", 1,
                  "the display cannot draw effects into a picture of that size\n", small);
}

TEST(CommandLine, UsesNoLogInTheFolder) {
    writeSquare();
    expectSuccess("convert m.obj -o m.rve -q");
    expectSuccess("shot m.rve -o m.png");
    EXPECT_FALSE(has(readText("ravolt_log.txt"), "m.rve"));
    const Outcome verbose = run("shot m.rve -o m.png -v");
    EXPECT_TRUE(has(verbose.err, "Loading RVE file"));
    EXPECT_EQ(verbose.out, "");
    writeFile("bad.rve", "RVE file v9.9z");
    const Outcome result = run("shot bad.rve -o x.png -v");
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(has(result.err, "   [!] Invalid header in file bad.rve")) << result.err;
    EXPECT_TRUE(has(result.err, "ravolt: bad.rve: ")) << result.err;
}

TEST(CommandLine, WritesItsLogWhereTemporaryFilesGo) {
    writeSquare();
    const fs::path folder = fs::absolute("logs");
    fs::create_directory(folder);
    run("view m.obj --seconds 0.5 --size 64x48 & for i in $(seq 200); do "
        "ls logs | grep ravolt-log >seen && break; sleep 0.05; done; wait; true",
        "TMPDIR=" + folder.string());
    EXPECT_TRUE(startsWith(readText("seen"), "ravolt-log-"));
    EXPECT_TRUE(fs::is_empty(folder));
}

// A texture outside the scene's folder is not opened either.
TEST(CommandLine, DrawsWithoutTexturesThatCannotBeLoadedAndWarns) {
    SKIP_ON_LIMITED_DRIVER();
    writeFile("picture.ppm", fourColors());
    writeSquare("Kd 0.9 0.9 0.9\nmap_Kd picture.ppm\n");
    writeSquare("Kd 0.9 0.9 0.9\n", "bare.obj");
    fs::create_directory("scene");
    expectSuccess("convert m.obj -o scene/m.rve -q");
    const std::string effects[] = {"", " --per-pixel"}, shot = "shot scene/m.rve -o m.png";
    for (const std::size_t i : {0, 1})
        expectSuccess("shot bare.obj --size 64x48 -o bare" + std::to_string(i) + ".png" +
                      effects[i]);
    expectSuccess(shot + " --size 64x48");
    const std::string texture = "picture_d.tga", outside = "../secret.tga",
                      file = "scene/" + texture;
    std::string scene = readText("scene/m.rve");
    for (const std::string fault :
         {"File corrupted picture_d.tga", "File name ../secret.tga leaves its path: refused",
          "Unable to open file picture_d.tga"}) {
        if (has(fault, "corrupted")) {
            fs::copy_file(file, "secret.tga");
            fs::resize_file(file, 20);
        } else if (has(fault, outside)) {
            std::string other = scene;
            writeFile("scene/m.rve", other.replace(other.find(texture), texture.size(), outside));
        } else {
            writeFile("scene/m.rve", scene);
            fs::remove(file);
        }
        for (const std::size_t i : {0, 1}) {
            expectSuccess(shot + " --size 64x48" + effects[i],
                          "ravolt: warning: " + fault + ": drawn without\n");
            EXPECT_TRUE(areEqual("m.png", "bare" + std::to_string(i) + ".png")) << fault << i;
        }
    }
    expectSuccess("view scene/m.rve --seconds 0.1",
                  "ravolt: warning: Unable to open file picture_d.tga: drawn without\n");
    expectSuccess(shot + " --size 64x48 -q");
}

TEST(CommandLine, WarnsOfAnEmptyPicture) {
    writeSquare();
    expectSuccess("shot m.obj -o m.png --size 64x48");
    expectSuccess("shot m.obj -o m.png --size 64x48 --yaw 180",
                  "ravolt: warning: nothing is seen from here; try --two-sided or --yaw\n");
    expectSuccess("shot m.obj -o m.png --size 64x48 --yaw 180 --two-sided");
}

TEST(CommandLine, ReportsAFullDisk) {
    if (!fs::is_character_file("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    writeSquare();
    fs::create_symlink("/dev/full", "full.png");
    expectFailure("shot m.obj -o full.png --size 64x48", 1,
                  fs::absolute("full.png").string() + ": cannot be written\n");
    EXPECT_TRUE(fs::is_symlink("full.png"));
}

// The width and the height in the header of a PNG file.
std::string pngHeader(std::initializer_list<int> bytes) {
    std::string header = "IHDR";
    for (const int byte : bytes)
        header += static_cast<char>(byte);
    return header;
}

// Off screen the screen is 1024 pixels wide.
TEST(CommandLine, ShootsPicturesLargerThanTheScreen) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    for (const auto &[arguments, header] : std::vector<std::pair<std::string, std::string>>{
             {"1100x800", pngHeader({0, 0, 0x04, 0x4c, 0, 0, 0x03, 0x20})},
             {"8192x16", pngHeader({0, 0, 0x20, 0, 0, 0, 0, 0x10})},
             {"16x8192", pngHeader({0, 0, 0, 0x10, 0, 0, 0x20, 0})},
             {"1100x80 --bloom --focus 0.5", pngHeader({0, 0, 0x04, 0x4c, 0, 0, 0, 0x50})}})
        for (const std::string &before : {std::string(), withoutDisplay}) {
            expectSuccess("shot m.obj -o large.png --size " + arguments, "", before);
            EXPECT_EQ(readText("large.png").substr(12, 12), header) << arguments;
        }
}

TEST(CommandLine, ShootsScenesAndModelsAlike) {
    writeSquare();
    expectSuccess("convert m.obj -o m.rve -q");
    expectSuccess("shot m.rve -o scene.png --size 64x48");
    expectSuccess("shot m.obj -o model.png --size 64x48");
    EXPECT_TRUE(isPng("scene.png"));
    EXPECT_TRUE(areEqual("scene.png", "model.png"));
}

TEST(CommandLine, ShootsFramesOfClips) {
    writeMovingSquare("move.x");
    const std::string shot = "shot move.x --size 64x48 --two-sided --clip rise -o ";
    expectSuccess(shot + "first.png");
    expectSuccess(shot + "last.png --frame 3");
    EXPECT_FALSE(areEqual("first.png", "last.png"));

    expectSuccess(shot + "all.png --frames 0..");
    EXPECT_TRUE(areEqual("all_0000.png", "first.png"));
    EXPECT_TRUE(areEqual("all_0003.png", "last.png"));
    EXPECT_FALSE(fs::exists("all_0004.png"));
    expectSuccess(shot + "part%02d_x.png --frames 2..3");
    EXPECT_TRUE(areEqual("part01_x.png", "last.png"));
    EXPECT_FALSE(fs::exists("part02_x.png"));
    // Clips beside a scene, or any.
    fs::create_directories("clips");
    expectSuccess("convert move.x --two-sided -o moved.rve -q");
    expectSuccess("shot moved.rve --size 64x48 --clip rise --frame 3 -o beside.png");
    fs::rename("moved.rise.rva", "clips/any.rva");
    expectSuccess("shot moved.rve --size 64x48 --clip clips/any.rva --frame 3 -o named.png");
    EXPECT_TRUE(areEqual("beside.png", "named.png"));
}

TEST(CommandLine, WarnsOfAClipOfAnotherModel) {
    writeMovingSquare("move.x");
    writeSquare();
    expectSuccess("convert move.x -o moved.rve -q");
    const std::string shot = "shot m.obj -o m.png --size 64x48 --clip moved.rise.rva";
    for (const std::string &arguments :
         {shot, std::string("view m.obj --seconds 0.1 --clip moved.rise.rva")})
        expectSuccess(arguments,
                      "ravolt: warning: clip 'rise' moves 1 node that the scene does not have\n");
    expectSuccess(shot + " -q");
}

// Word for word but for the names, which are placeholders.
TEST(CommandLine, MakesAVideoAsInTheHelp) {
    writeMovingSquare("move.x");
    const std::string help = run("shot --help").out;
    const auto lineFrom = [&](const std::string &start) {
        const std::size_t at = help.find("\n  " + start);
        EXPECT_NE(at, std::string::npos) << start;
        return help.substr(at + 3, help.find('\n', at + 1) - at - 3);
    };
    EXPECT_EQ(lineFrom("ravolt shot "),
              "ravolt shot MODEL --clip NAME --frames 0.. -o video_%04d.png");
    expectSuccess("shot move.x --clip rise --frames 0.. -o video_%04d.png");
    fs::remove("video.mp4");
    const std::string command = lineFrom("ffmpeg ");
    ASSERT_EQ(std::system((command + " >video.log 2>&1 </dev/null").c_str()), 0)
        << readText("video.log");
    ASSERT_EQ(std::system("ffprobe -v error -count_frames -show_entries stream=nb_read_frames "
                          "-of csv=p=0 video.mp4 >video.txt"),
              0);
    EXPECT_EQ(readText("video.txt"), "4\n");
}

TEST(CommandLine, ShootsATurnAndRemovesItsTemporaryFolders) {
    writeSquare();
    const fs::path folder = fs::absolute("temporary");
    fs::create_directory(folder);
    expectSuccess("shot m.obj -o turn.png --frames 3 --size 64x48", "",
                  "TMPDIR=" + folder.string());
    EXPECT_TRUE(fs::is_empty(folder));
    for (const char *file : {"turn_000.png", "turn_001.png", "turn_002.png"})
        EXPECT_TRUE(isPng(file)) << file;
    EXPECT_FALSE(fs::exists("turn.png") || fs::exists("turn_003.png"));
    EXPECT_FALSE(areEqual("turn_000.png", "turn_001.png"));
}

TEST(CommandLine, ShootsWithoutADisplay) {
    writeSquare();
    const Outcome result = run("shot m.obj -o m.png --size 64x48 -v", withoutDisplay);
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(has(result.err, "ravolt: note: no display: drawing off screen with "));
    EXPECT_TRUE(isPng("m.png"));
    expectFailure("view m.obj", 1, "no display to open a window on. ", withoutDisplay);
    expectFailure("shot m.obj -o x.png --sdl /nowhere", 1,
                  "/nowhere: no library to draw with off screen", withoutDisplay);
}

TEST(CommandLine, ViewsForAWhile) {
    SKIP_ON_LIMITED_DRIVER();
    writeSquare();
    for (const std::string options : {"", " --spin --normals --boxes", " --wireframe --rig 2",
                                      " --shadows --floor --tone-mapping --depth-of-field"})
        expectSuccess("view m.obj --seconds 0.1 --size 160x120" + options);
}

} // namespace
