// How the program ends: by a signal, at a limit, on a full disk. What stood there before stands
// there still, and nothing made for passing use stays.

#include "tests/tools/cli.h"
#include "tools/writers/tgaWriter.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace tool_test;

// Whether the process has set a handler for the signal.
bool notes(pid_t process, int number) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (startsWith(line, "SigCgt:"))
            return std::stoull(line.substr(7), nullptr, 16) >> (number - 1) & 1;
    return false;
}

// The process that the program reads models in; 0 while there is none.
pid_t readerOf(pid_t program) {
    const std::string number = std::to_string(program);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    pid_t child = 0;
    children >> child;
    return child;
}

// Of so many points every one is looked for among all, which takes seconds.
void writeSlowModel() {
    constexpr int points = 3000000, faces = points / 3;
    std::string model = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(points) +
                        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                        std::to_string(faces) +
                        "\nproperty list uchar int vertex_index\nend_header\n";
    for (int i = 0; i < points; ++i)
        model += std::to_string(i % 977) + " " + std::to_string(i % 1009) + " 0.5\n";
    for (int i = 0; i < faces; ++i)
        model += "3 " + std::to_string(3 * i) + " " + std::to_string(3 * i + 1) + " " +
                 std::to_string(3 * i + 2) + "\n";
    writeFile("slow.ply", model);
}

// A folder for what the program makes for passing use.
class Ending : public ::testing::Test {
  protected:
    Ending() {
        fs::remove_all("temporary");
        fs::create_directory("temporary");
        writeSquare();
    }

    // Starts the program, sends `number` as soon as it is time, and gives the exit code.
    int signalled(int number, const std::vector<std::string> &arguments,
                  const std::function<bool(pid_t)> &isTime) {
        const pid_t child = fork();
        if (child == 0) {
            setenv("TMPDIR", place.c_str(), 1);
            std::vector<char *> all = {const_cast<char *>(RAVOLT_TOOL)};
            for (const std::string &argument : arguments)
                all.push_back(const_cast<char *>(argument.c_str()));
            all.push_back(nullptr);
            signal(number, SIG_DFL);
            execv(RAVOLT_TOOL, all.data());
            _exit(127);
        }
        using namespace std::chrono_literals;
        for (int i = 0; i < 6000 && !(notes(child, number) && isTime(child)); ++i)
            std::this_thread::sleep_for(5ms);
        kill(child, number);
        int status = 0;
        for (int i = 0; i < 6000 && waitpid(child, &status, WNOHANG) == 0; ++i)
            std::this_thread::sleep_for(5ms);
        if (kill(child, 0) == 0) {
            ADD_FAILURE() << "still running";
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Whether the program works, and notes signals.
    bool works() const { return !fs::is_empty(place); }

    bool hasTemporaries() const {
        for (const fs::directory_entry &entry : fs::directory_iterator("."))
            if (entry.path().filename().string().rfind(".ravolt-", 0) == 0)
                return true;
        return !fs::is_empty(place);
    }

    fs::path place = fs::absolute("temporary");
};

TEST_F(Ending, StopsShotBetweenTwoPicturesOnASignal) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        fs::remove("turn_0001.png");
        EXPECT_EQ(signalled(number,
                            {"shot", "m.obj", "-o", "turn_%04d.png", "--frames", "9000", "--size",
                             "64x48"},
                            [](pid_t) { return fs::exists("turn_0001.png"); }),
                  128 + number);
        EXPECT_TRUE(isPng("turn_0001.png"));
        EXPECT_FALSE(fs::exists("turn_8999.png"));
        EXPECT_FALSE(hasTemporaries());
    }
    for (const fs::directory_entry &entry : fs::directory_iterator("."))
        EXPECT_TRUE(entry.path().extension() != ".png" ||
                    contentsOf(entry.path()).ends_with(std::string("IEND\xae\x42\x60\x82")))
            << entry.path();
}

TEST_F(Ending, StopsViewOnASignal) {
    for (const int number : {SIGINT, SIGTERM})
        EXPECT_EQ(
            signalled(number, {"view", "m.obj", "--size", "64x48"}, [&](pid_t) { return works(); }),
            128 + number);
    EXPECT_FALSE(hasTemporaries());
}

// A reader that is halted does nothing by itself, nor does it take a signal.
TEST_F(Ending, StopsConvertOnASignalWhateverTheReaderDoes) {
    writeSlowModel();
    writeFile("scene.rve", "former");
    for (const int number : {SIGINT, SIGTERM}) {
        pid_t reader = 0;
        EXPECT_EQ(signalled(number, {"convert", "slow.ply", "-o", "scene.rve"},
                            [&](pid_t program) {
                                reader = readerOf(program);
                                return reader && kill(reader, SIGSTOP) == 0;
                            }),
                  128 + number);
        EXPECT_TRUE(reader);
        EXPECT_NE(kill(reader, 0), 0) << "is left behind";
    }
    EXPECT_EQ(contentsOf("scene.rve"), "former");
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Ending, RefusesAPipeAsAModel) {
    ASSERT_EQ(mkfifo("endless.obj", 0600), 0);
    for (const char *command : {"shot endless.obj -o x.png", "convert endless.obj -o x.rve"})
        EXPECT_EQ(run(command).err, "ravolt: endless.obj: is no regular file\n");
}

TEST_F(Ending, KeepsSignalsIgnoredThatWereIgnored) {
    EXPECT_EQ(
        run("shot m.obj -o m.png --size 64x48 & sleep 0.3; kill -HUP $!; wait $!", "trap '' HUP; ")
            .code,
        0);
}

TEST_F(Ending, KeepsTheFormerPictureOnAFullDisk) {
    writeFile("old.png", "former");
    const Outcome result = run("shot m.obj -o old.png --size 640x480", "ulimit -f 1; ");
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(result.err.ends_with("old.png: cannot be written\n")) << result.err;
    EXPECT_EQ(lines(result.err), 1u) << result.err;
    EXPECT_EQ(contentsOf("old.png"), "former");
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Ending, RefusesAReadOnlyPicture) {
    writeFile("old.png", "former");
    fs::permissions("old.png", fs::perms(0444));
    const Outcome result = run("shot m.obj -o old.png --size 64x48");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "ravolt: " + fs::absolute("old.png").string() + ": is read-only\n");
    EXPECT_EQ(contentsOf("old.png"), "former");
}

TEST_F(Ending, KeepsTheFormerFilesOfAConversionThatFails) {
    writeMovingSquare("move.x");
    EXPECT_EQ(run("convert move.x -o moved.rve").code, 0);
    const std::string scene = contentsOf("moved.rve"), clip = contentsOf("moved.rise.rva");
    for (const auto &[before, complaint] : std::vector<std::pair<std::string, std::string>>{
             {"(ulimit -f 0; exec", "ravolt: moved.rise.rva: cannot be written\n"},
             {"(chmod 444 moved.rve; exec", "ravolt: moved.rve: is read-only\n"}}) {
        // By a pipe, as the limit would hold for a file.
        run("convert move.x -o moved.rve --scale 2) 2>&1 | cat >said; true", before);
        EXPECT_EQ(contentsOf("said"), complaint);
        EXPECT_EQ(contentsOf("moved.rve"), scene) << before;
        EXPECT_EQ(contentsOf("moved.rise.rva"), clip) << before;
    }
    EXPECT_FALSE(hasTemporaries());
    fs::permissions("moved.rve", fs::perms(0644));
}

#ifndef __SANITIZE_ADDRESS__
TEST_F(Ending, SaysInOneLineThatAModelTakesTooMuchMemory) {
    writeFile("vast.off", "OFF\n353535235358 6 0\n0 0 0\n");
    for (const char *command : {"convert vast.off -o vast.rve", "shot vast.off -o vast.png"}) {
        const Outcome result = run(std::string(command) + " --max-memory 64");
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "ravolt: vast.off: ran out of memory, of which it may take 64 MB "
                              "(--max-memory)\n");
    }
    EXPECT_FALSE(fs::exists("vast.rve") || hasTemporaries());
}

// Not a texture that is broken.
TEST_F(Ending, SaysInOneLineThatATextureTakesTooMuchMemory) {
    constexpr unsigned int side = 4096;
    const std::vector<unsigned char> pixels(std::size_t(3) * side * side, 9);
    ASSERT_TRUE(ravolt::writeTga("vast.tga", {side, side, 3, false, pixels.data()},
                                 ravolt::TgaEncoding::runLength));
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd vast.tga\n");
    const Outcome result = run("convert m.obj -o m.rve --max-memory 40");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "ravolt: m.obj: ran out of memory, of which it may take 40 MB "
                          "(--max-memory)\n");
}
#endif

TEST_F(Ending, SaysInOneLineThatAModelTakesTooMuchTime) {
    writeSlowModel();
    const Outcome result = run("convert slow.ply -o slow.rve --max-time 1");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "ravolt: slow.ply: took more than 1 seconds of processor time (--max-time)\n");
    EXPECT_FALSE(fs::exists("slow.rve") || hasTemporaries());
}

TEST_F(Ending, WritesOnePictureToStandardOutput) {
    EXPECT_EQ(run("shot m.obj -o m.png --size 64x48").code, 0);
    const Outcome result = run("shot m.obj -o - --size 64x48");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.out == contentsOf("m.png"));
    EXPECT_FALSE(fs::exists("-"));
    EXPECT_EQ(run("shot m.obj -o - --frames 2").err,
              "ravolt: --output -: standard output takes one picture, not many\n");
    run("shot m.obj -o - --size 64x48 2>said 1>/dev/full; true");
    EXPECT_EQ(contentsOf("said"), "ravolt: standard output: cannot be written\n");
    const Outcome scene = run("convert m.obj -o -");
    EXPECT_EQ(scene.code, 2);
    EXPECT_EQ(scene.err, "ravolt: --output -: a scene has files beside it, so it cannot go to "
                         "standard output; name a file\n");
    EXPECT_FALSE(fs::exists("-"));
}

TEST_F(Ending, StartsEveryComplaintOfAnOptionWithItsName) {
    for (const auto &[arguments, line] : std::vector<std::pair<std::string, std::string>>{
             {"convert", "ravolt: MODEL is required (see ravolt convert --help)\n"},
             {"shot a.obj", "ravolt: --output is required (see ravolt shot --help)\n"},
             {"convert a -o b -q -v",
              "ravolt: --quiet excludes --verbose (see ravolt convert --help)\n"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, 2) << arguments;
        EXPECT_EQ(result.err, line);
    }
    for (const char *arguments :
         {"convert a.obj -o b.rve --nonsense", "--nonsense",
          "convert a.obj -o b.rve --max-texture 5000", "view m.obj --max-time 0",
          "shot a.obj -o b.png --max-memory 1"}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, 2) << arguments;
        EXPECT_TRUE(startsWith(result.err, "ravolt: ")) << result.err;
        EXPECT_EQ(lines(result.err), 1u) << result.err;
    }
}

TEST_F(Ending, RefusesAPictureThatWasReadForIt) {
    writeFile("wood.png", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd wood.png\n");
    fs::create_hard_link("wood.png", "other.png");
    for (const char *file : {"wood.png", "other.png"}) {
        const Outcome result = run("shot m.obj --size 64x48 -o " + std::string(file));
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "ravolt: " + fs::absolute(file).string() +
                                  ": is a file that was read for the picture; name another one\n");
        EXPECT_EQ(contentsOf(file), fourColors());
    }
}

} // namespace
