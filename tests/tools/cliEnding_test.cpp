// How the program ends: by a signal, at a limit, on a full disk. Former files are preserved, and no
// temporary file remains.

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
bool catches(pid_t process, int number) {
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

// Its faces meet in one point, where the reader compares the normal of each with all others, which
// takes seconds.
void writeSlowModel() {
    constexpr int faces = 40000;
    std::string model;
    for (int i = 0; i < faces; ++i) {
        const std::string height = std::to_string(i * 1e-4);
        model += "v 0 0 0\nv 1 " + height + " 0\nv 0 1 " + height + "\n";
    }
    for (int i = 1; i < 3 * faces; i += 3)
        model += "f " + std::to_string(i) + " " + std::to_string(i + 1) + " " +
                 std::to_string(i + 2) + "\n";
    writeFile("slow.obj", model);
}

// With a folder for temporary files.
class Ending : public ::testing::Test {
  protected:
    Ending() {
        fs::remove_all("temporary");
        fs::create_directory("temporary");
        writeSquare();
    }

    // Starts the program, sends `number` as soon as it is time, and returns the exit code.
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
        for (int i = 0; i < 6000 && !(catches(child, number) && isTime(child)); ++i)
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

    // Whether the program has started its work.
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
        EXPECT_FALSE(fs::exists("turn_8999.png") || hasTemporaries());
    }
    for (const fs::directory_entry &entry : fs::directory_iterator("."))
        EXPECT_TRUE(entry.path().extension() != ".png" ||
                    readText(entry.path()).ends_with(std::string("IEND\xae\x42\x60\x82")))
            << entry.path();
}

TEST_F(Ending, StopsViewOnASignal) {
    for (const int number : {SIGINT, SIGTERM})
        EXPECT_EQ(
            signalled(number, {"view", "m.obj", "--size", "64x48"}, [&](pid_t) { return works(); }),
            128 + number);
    EXPECT_FALSE(hasTemporaries());
}

// A reader that is stopped does nothing by itself, nor does it handle a signal.
TEST_F(Ending, StopsConvertOnASignalWhateverTheReaderDoes) {
    writeSlowModel();
    writeFile("scene.rve", "former");
    for (const int number : {SIGINT, SIGTERM}) {
        pid_t reader = 0;
        EXPECT_EQ(signalled(number, {"convert", "slow.obj", "-o", "scene.rve"},
                            [&](pid_t program) {
                                reader = readerOf(program);
                                return reader && kill(reader, SIGSTOP) == 0;
                            }),
                  128 + number);
        EXPECT_TRUE(reader);
        EXPECT_NE(kill(reader, 0), 0) << "is still there";
    }
    EXPECT_EQ(readText("scene.rve"), "former");
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Ending, StopsAllModelsOfConvertOnASignal) {
    writeSlowModel();
    fs::create_directories("other");
    fs::copy_file("slow.obj", "other/slower.obj", fs::copy_options::overwrite_existing);
    for (const int number : {SIGINT, SIGTERM}) {
        pid_t worker = 0, reader = 0;
        EXPECT_EQ(signalled(number, {"convert", "slow.obj", "other/slower.obj", "m.obj", "-j", "2"},
                            [&](pid_t program) {
                                worker = readerOf(program);
                                reader = worker ? readerOf(worker) : 0;
                                return reader != 0;
                            }),
                  128 + number);
        EXPECT_TRUE(reader);
        EXPECT_NE(kill(reader, 0), 0) << "is still there";
        EXPECT_NE(kill(worker, 0), 0) << "is still there";
    }
    EXPECT_FALSE(fs::exists("slow.rve") || fs::exists("slower.rve") || fs::exists("m.rve"));
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Ending, PreservesIgnoredSignals) {
    EXPECT_EQ(
        run("shot m.obj -o m.png --size 64x48 & sleep 0.3; kill -HUP $!; wait $!", "trap '' HUP; ")
            .code,
        0);
}

TEST_F(Ending, RefusesAPipeAsAModel) {
    ASSERT_EQ(mkfifo("endless.obj", 0600), 0);
    for (const char *command : {"shot endless.obj -o x.png", "convert endless.obj -o x.rve"})
        expectFailure(command, 1, "endless.obj: is no regular file\n");
}

TEST_F(Ending, PreservesTheFormerPicture) {
    writeFile("old.png", "former");
    const std::string old = fs::absolute("old.png").string();
    expectFailure("shot m.obj -o old.png --size 640x480", 1, old + ": cannot be written\n",
                  "ulimit -f 1; ");
    EXPECT_EQ(readText("old.png"), "former");
    EXPECT_FALSE(hasTemporaries());
    fs::permissions("old.png", fs::perms(0444));
    expectFailure("shot m.obj -o old.png --size 64x48", 1, old + ": is read-only\n");
    // One that was read for the new one.
    writeFile("wood.png", fourColors());
    writeSquare("Kd 1 1 1\nmap_Kd wood.png\n");
    fs::create_hard_link("wood.png", "other.png");
    for (const char *file : {"wood.png", "other.png"}) {
        expectFailure("shot m.obj --size 64x48 -o " + std::string(file), 1,
                      fs::absolute(file).string() +
                          ": is a file that was read for the picture; name another one\n");
        EXPECT_EQ(readText(file), fourColors());
    }
}

TEST_F(Ending, PreservesTheFormerFilesOfAConversionThatFails) {
    writeMovingSquare("move.x");
    expectSuccess("convert move.x -o moved.rve -q");
    const std::string scene = readText("moved.rve"), clip = readText("moved.rise.rva");
    for (const auto &[before, complaint] : std::vector<std::pair<std::string, std::string>>{
             {"(ulimit -f 0; exec", "ravolt: moved.rise.rva: cannot be written\n"},
             {"(chmod 444 moved.rve; exec", "ravolt: moved.rve: is read-only\n"}}) {
        // By a pipe, as the limit would apply to a file.
        run("convert move.x -o moved.rve --scale 2) 2>&1 | cat >said; true", before);
        EXPECT_EQ(readText("said"), complaint);
        EXPECT_EQ(readText("moved.rve"), scene) << before;
        EXPECT_EQ(readText("moved.rise.rva"), clip) << before;
    }
    EXPECT_FALSE(hasTemporaries());
    fs::permissions("moved.rve", fs::perms(0644));
}

#ifndef __SANITIZE_ADDRESS__
TEST_F(Ending, ReportsThatAModelOrATextureExceedsTheMemory) {
    writeFile("vast.off", "OFF\n353535235358 6 0\n0 0 0\n");
    const std::string line = ": ran out of memory, of which it may take ";
    for (const std::string command : {"convert vast.off -o x.rve", "shot vast.off -o x.png"})
        expectFailure(command + " --max-memory 64", 1,
                      "vast.off" + line + "64 MB (--max-memory)\n");
    EXPECT_FALSE(hasTemporaries());
    // Not a texture that is broken.
    constexpr unsigned int side = 4096;
    const std::vector<unsigned char> pixels(std::size_t(3) * side * side, 9);
    ASSERT_TRUE(ravolt::writeTga("vast.tga", {side, side, 3, false, pixels.data()},
                                 ravolt::TgaEncoding::runLength));
    writeSquare("Kd 1 1 1\nmap_Kd vast.tga\n");
    expectFailure("convert m.obj -o x.rve --max-memory 40", 1,
                  "m.obj" + line + "40 MB (--max-memory)\n");
}
#endif

TEST_F(Ending, ReportsThatAModelExceedsTheTime) {
    writeSlowModel();
    expectFailure("convert slow.obj -o x.rve --max-time 1", 1,
                  "slow.obj: took more than 1 seconds of processor time (--max-time)\n");
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Ending, WritesOnePictureToStandardOutput) {
    expectSuccess("shot m.obj -o m.png --size 64x48");
    const Outcome result = run("shot m.obj -o - --size 64x48");
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.out == readText("m.png"));
    run("shot m.obj -o - --size 64x48 2>said 1>/dev/full; true");
    EXPECT_EQ(readText("said"), "ravolt: standard output: cannot be written\n");
    EXPECT_FALSE(fs::exists("-"));
}

} // namespace
