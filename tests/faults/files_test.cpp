// Hostile files and failing disks: for each kind of file that the engine reads, one that is
// missing, empty, a folder, a loop of links, unreadable, or cut, and one whose n-th opening or read
// fails. Each costs the object that was to be loaded, with a line in the log; no other object, no
// descriptor, and no other file. The names in files lead nowhere else while files are confined.

#include "tests/faults/fileShim.h"

#include "ravolt.h"
#include "tests/effects/terrainScene.h"
#include "tests/faults/world.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/fileLimit.h"
#include "tests/support/files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace ravolt::test {
namespace {

// Deletes the object that has failed to load.
template <class T> bool loads(bool (T::*load)(const char *), const std::string &name) {
    T *const object = new T;
    const bool loaded = std::invoke(load, object, name.c_str());
    delete object;
    return loaded;
}

template <class T> bool deletes(T *object) {
    if (!object)
        return false;
    RVNODE::cleanUp();
    return true;
}

bool showsVideo(const std::string &name) {
    auto *const video = new RVVIDEO;
    const bool loaded = video->load(name.c_str());
    video->play();
    video->update(1000);
    video->load(nullptr); // closes the file, which the destructor does not
    delete video;
    return loaded;
}

bool loadsProgram(const std::string &name) {
    auto *const program = new RVSHADER;
    const bool loaded = program->loadVertexShader(name.c_str(), nullptr);
    delete program;
    return loaded;
}

bool loadsSettings(const std::string &name) {
    RVSETTINGS settings;
    return settings.load(name.c_str());
}

struct Reader {
    const char *kind, *file;
    // The file that has the faults, where it is another one that names it.
    const char *named;
    // Loads a file of that name, and deletes what it has made.
    std::function<bool(const std::string &)> load;
    // What is damaged is reported in the log, but the result is as if it had been read.
    bool toleratesContents = false;
    bool isKeyFile = false;

    const char *target() const { return named ? named : file; }
};

const std::vector<Reader> &readers() {
    const auto terrain = [](const std::string &name) {
        const bool loaded = loads(&RVTERRAIN::load, name);
        RVNODE::cleanUp(); // its sky and water
        return loaded;
    };
    static const std::vector<Reader> all = {
        {"settings", "settings.txt", nullptr, loadsSettings, true, true},
        {"scene", "scene.rve", nullptr,
         [](const std::string &name) { return deletes(RAVOLT::load(name.c_str())); }},
        {"clip", "clip.rva", nullptr,
         [](const std::string &name) { return loads(&RVANIM::load, name); }},
        {"texture", "d1.tga", nullptr,
         [](const std::string &name) { return loads(&RVTEXTURE::load, name); }},
        {"kerning", "kerning.txt", nullptr,
         [](const std::string &name) { return loads(&RVFONT::loadKerning, name); }, false, true},
        {"interface", "gui.xml", nullptr,
         [](const std::string &name) {
             const bool loaded = deletes(RAVOLT::loadXML(name.c_str()));
             RVFONT::cleanUp();
             return loaded;
         },
         false},
        {"emitter", "smoke.xml", nullptr,
         [](const std::string &name) {
             auto *const emitter = new RVEMITTER;
             const bool loaded = emitter->load(name.c_str());
             delete emitter->getTexture();
             emitter->setNumberOfParticles(0);
             delete emitter;
             return loaded;
         },
         false},
        {"terrain", "land.xml", nullptr, terrain},
        {"geometry", "land.xml", "land.geo", terrain},
        {"program", "ownVS.glsl", nullptr, loadsProgram},
        {"video", "video.m1v", nullptr, showsVideo, true},
    };
    return all;
}

// A whole number of open files: those of the process.
std::size_t openFiles() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

class ReaderTest : public SilentEngineTest, public testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        settings.setShaders(true);
        SilentEngineTest::SetUp();
        writeWorldFiles();
        writeFile("settings.txt", "RAVOLT_windowX=7\n");
        writeFile("video.m1v", std::string(20000, '\1'));
        files = openFiles();
    }

    static const Reader &reader() {
        for (const Reader &each : readers())
            if (each.kind == GetParam())
                return each;
        throw std::logic_error("no such reader");
    }

    // A load that may fail costs nothing else. Returns whether it failed.
    bool fails(const std::string &what) {
        SCOPED_TRACE(what);
        markLog();
        const LogMark mark = logMark();
        const bool loaded = reader().load(reader().file);
        if (!loaded) {
            EXPECT_FALSE(linesSince(mark).empty()) << "no line in the log";
        }
        expectNothingElse();
        return !loaded;
    }

    void expectNothingElse() {
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
        EXPECT_EQ(RVFONT::getNumberOfFonts(), 0u);
        EXPECT_EQ(RVANIM::getNumberOfAnims(), 0u);
        EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 0u);
        EXPECT_EQ(openFiles(), files) << "an open file is left";
    }

    void expectLoads() {
        markLog();
        EXPECT_TRUE(reader().load(reader().file)) << logText();
    }

    std::size_t files = 0;
};

// Replaces the file by something else until the end of the block.
class Replaced {
  public:
    explicit Replaced(const std::string &file) : name(file), aside(file + ".aside") {
        fs::rename(name, aside);
    }
    ~Replaced() {
        fs::remove_all(name);
        fs::rename(aside, name);
    }
    Replaced(const Replaced &) = delete;
    Replaced &operator=(const Replaced &) = delete;

  private:
    std::string name, aside;
};

TEST_P(ReaderTest, RefusesWhatIsNoFile) {
    const std::string file = reader().target();
    const std::vector<std::pair<const char *, std::function<void()>>> replacements = {
        {"missing", [] {}},
        {"a folder", [&] { fs::create_directory(file); }},
        {"a link to nothing", [&] { fs::create_symlink("nothing", file); }},
        {"a link to itself", [&] { fs::create_symlink(file, file); }},
        {"a pipe", [&] { ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); }},
        {"a device", [&] { fs::create_symlink("/dev/zero", file); }},
    };
    for (const auto &[what, replace] : replacements) {
        const Replaced replaced(file);
        replace();
        EXPECT_TRUE(fails(what)) << what;
    }
    expectLoads();
}

TEST_P(ReaderTest, RefusesAnEmptyFile) {
    const std::string file = reader().target();
    {
        const Replaced replaced(file);
        writeFile(file, "");
        // An empty text of a stage compiles on no driver but the simulated one.
        const bool tolerated = reader().toleratesContents || file == "ownVS.glsl";
        EXPECT_EQ(fails("empty"), !tolerated);
    }
    expectLoads();
}

TEST_P(ReaderTest, FailsWhereAFileCannotBeOpened) {
    for (const int error : {EACCES, EMFILE, ENFILE, EIO, ELOOP, ENOMEM}) {
        unsigned int number = 1;
        for (;; ++number) {
            const ScopedFileFault fault(FileFault::notOpened, reader().target(), number, error);
            const bool failed = fails("opening " + std::to_string(number));
            if (!ScopedFileFault::occurred())
                break;
            EXPECT_TRUE(failed || reader().toleratesContents) << number;
        }
        EXPECT_GT(number, 1u) << "nothing was opened";
    }
    {
        const FileLimit limit(RLIMIT_NOFILE, 0);
        markLog();
        EXPECT_FALSE(reader().load(reader().file)) << "out of descriptors";
    }
    expectNothingElse();
    expectLoads();
}

TEST_P(ReaderTest, FailsWhereAReadFails) {
    for (const FileFault kind : {FileFault::readError, FileFault::shortRead}) {
        unsigned int number = 1;
        for (;; ++number) {
            const ScopedFileFault fault(kind, reader().target(), number);
            const bool failed = fails("read " + std::to_string(number));
            if (!ScopedFileFault::occurred())
                break;
            // The C++ library, which reads the geometry, goes on after a short read.
            const bool goesOn = kind == FileFault::shortRead && reader().named;
            EXPECT_NE(failed, reader().toleratesContents || goesOn) << number;
            if (reader().isKeyFile)
                zlfFree(nullptr); // On purpose: its block is not counted as released.
        }
        EXPECT_GT(number, 1u) << "nothing was read";
    }
    expectLoads();
}

// At each length, or at 200 of them. What remains may be a valid file (of texts and XML).
TEST_P(ReaderTest, SurvivesACutFile) {
    const std::string file = reader().target();
    const Bytes whole = readFile(file);
    const std::size_t step = std::max<std::size_t>(whole.size() / 200, 1);
    const Replaced replaced(file);
    for (std::size_t length = 0; length < whole.size(); length += step) {
        writeFile(file, Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
        fails("cut to " + std::to_string(length));
    }
}

// Names of any length and of any bytes name that file, or none.
TEST_P(ReaderTest, TakesNamesOfAnyLengthAndBytes) {
    const std::string file = reader().file;
    const std::string extension = fs::path(file).extension();
    const auto name = [&](std::size_t length) {
        return std::string(length - extension.size(), 'n') + extension;
    };
    fs::create_directory("folder");
    for (const std::string &existing :
         {name(255), "new\nline\t\x7f" + extension, " " + extension, "%s%n" + extension,
          "\xff\xfe" + extension, "./folder/.././" + name(200), fs::absolute(name(100)).string()}) {
        fs::copy_file(file, existing);
        markLog();
        EXPECT_TRUE(reader().load(existing)) << existing << '\n' << logText();
        fs::remove(existing);
    }
    const std::string nothing;
    for (const std::string &missing :
         {name(256), "folder/" + name(5000), std::string(4096, '/') + "a", "folder/" + name(4096),
          std::string("folder/"), std::string("."), std::string("/"), nothing}) {
        markLog();
        const LogMark mark = logMark();
        EXPECT_FALSE(reader().load(missing)) << missing;
        EXPECT_FALSE(linesSince(mark).empty());
    }
    expectNothingElse();
    expectLoads();
}

std::vector<std::string> kinds() {
    std::vector<std::string> names;
    for (const Reader &reader : readers())
        names.emplace_back(reader.kind);
    return names;
}
INSTANTIATE_TEST_SUITE_P(Of, ReaderTest, testing::ValuesIn(kinds()),
                         [](const auto &test) { return test.param; });

// --- Names in files

// While files are confined, whatever a file names, nothing is opened outside of the paths.
class ConfinedFilesTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        settings.setShaders(true);
        SilentEngineTest::SetUp();
        fs::create_directory("work");
        writeWorldFiles();
        for (const char *secret : {"secret_d.tga", "secret_n.tga"})
            fs::copy_file("d1.tga", secret, fs::copy_options::overwrite_existing);
        for (const char *secret : {"secretVS.glsl", "secretPS.glsl", "secret.txt", "secret.geo"})
            writeFile(secret, "a");
        outside = fs::current_path();
        readLogOf((outside / "ravolt_log.txt").string());
        fs::current_path("work");
        writeWorldFiles();
        RAVOLT::confineFilesOn();
    }
    void TearDown() override {
        fileShim().recording = false;
        RAVOLT::confineFilesOff();
        RVNODE::cleanUp();
        RVFONT::cleanUp();
        fs::current_path(outside);
        readLogOf("ravolt_log.txt");
        SilentEngineTest::TearDown();
    }

    // Names of the file "secret" with this end in all forms.
    std::vector<std::string> names(const std::string &end) const {
        const std::string secret = "secret" + end;
        return {"../" + secret,
                (outside / secret).string(),
                "./../" + secret,
                "a/../../" + secret,
                "a/b/../../../" + secret,
                ".//../" + secret,
                "..\\" + secret,
                "\\" + secret,
                "C:\\" + secret,
                "c:" + secret,
                "file://" + (outside / secret).string(),
                "//" + (outside / secret).string(),
                "../../../../../../../../etc/passwd"};
    }

    // What a load opens outside of the working directory.
    std::vector<std::string> openedOutside(const std::function<void()> &load) const {
        fileShim().opened.clear();
        fileShim().recording = true;
        load();
        fileShim().recording = false;
        const std::string allowed = fs::current_path().string() + '/';
        std::vector<std::string> found;
        for (const std::string &path : fileShim().opened)
            if (fs::absolute(path).lexically_normal().string().rfind(allowed, 0) != 0 &&
                path != "/proc/meminfo")
                found.push_back(path);
        EXPECT_FALSE(fileShim().opened.empty()) << "the shim works";
        return found;
    }

    fs::path outside;
    UncomparedLoads uncompared; // the inspection opens files, and confines none
};

TEST_F(ConfinedFilesTest, OfAScene) {
    for (const std::string &name : names("_d.tga")) {
        RveScene scene{{materialNamed("wall " + name)},
                       rootOver({squareMesh("a", "wall " + name)})};
        scene.materials[0].texture = name;
        writeFile("scene.rve", bytesOf(scene));
        EXPECT_EQ(openedOutside([] { EXPECT_TRUE(RAVOLT::load("scene.rve")); }),
                  std::vector<std::string>())
            << name;
    }
    for (const std::string &name : names("")) {
        RveScene scene{{materialNamed("lit " + name)}, rootOver({squareMesh("a", "lit " + name)})};
        scene.materials[0].shader = name;
        writeFile("scene.rve", bytesOf(scene));
        EXPECT_EQ(openedOutside([] { EXPECT_TRUE(RAVOLT::load("scene.rve")); }),
                  std::vector<std::string>())
            << name;
    }
}

TEST_F(ConfinedFilesTest, OfAnInterface) {
    for (const auto &[element, end] :
         {std::pair("texture", "_d.tga"), std::pair("kerning", ".txt")})
        for (const std::string &name : names(end)) {
            const std::string property = std::string("<") + element + " value=\"" + name + "\"/>";
            writeFile("gui.xml",
                      "<root><font>" + property + "</font><box>" + property + "</box></root>");
            EXPECT_EQ(openedOutside([] { RAVOLT::loadXML("gui.xml"); }), std::vector<std::string>())
                << name;
        }
}

TEST_F(ConfinedFilesTest, OfAnEmitter) {
    for (const std::string &name : names("_d.tga")) {
        writeFile("smoke.xml",
                  "<?xml version=\"1.0\"?>\n<emitter><texture value=\"" + name + "\"/></emitter>");
        auto *const emitter = new RVEMITTER;
        markLog();
        EXPECT_EQ(openedOutside([&] { EXPECT_TRUE(emitter->load("smoke.xml")); }),
                  std::vector<std::string>())
            << name;
        const bool refused = name.rfind("file:", 0) != 0; // which is below the working directory
        EXPECT_LOGGED_TIMES(refused, "   [!] File name " + name +
                                         " leaves its path: refused @ RVEMITTER::load");
        EXPECT_EQ(openedOutside([&] {
                      drawFrame(nullptr, emitter);
                      std::ifstream("smoke.xml").get();
                  }),
                  std::vector<std::string>())
            << "no frame loads it either";
        delete emitter->getTexture();
    }
}

TEST_F(ConfinedFilesTest, OfATerrain) {
    const std::string good = geometryXml + layersXml() + waterXml + skyXml;
    for (const auto &[file, end] :
         {std::pair("land.geo", ".geo"), std::pair("d2.tga", "_d.tga"),
          std::pair("n3.tga", "_d.tga"), std::pair("bump.tga", "_d.tga"),
          std::pair("dudv.tga", "_d.tga"), std::pair("sky.tga", "_d.tga")})
        for (const std::string &name : names(end)) {
            std::string config = good;
            config.replace(config.find(file), std::string(file).size(), name);
            writeTerrainConfig(config);
            auto *const terrain = new RVTERRAIN;
            markLog();
            EXPECT_EQ(openedOutside([&] { terrain->load("land.xml"); }), std::vector<std::string>())
                << name;
            const bool refused = name.rfind("file:", 0) != 0;
            EXPECT_LOGGED_TIMES(refused, "   [!] File name " + name +
                                             " leaves its path: refused @ RVTERRAIN::load");
            RVNODE::cleanUp();
        }
}

// The geometry's name has no path in front of it.
TEST_F(ConfinedFilesTest, OfATerrainMayBeAbsoluteInTheWorkingDirectory) {
    std::string config = geometryXml;
    const std::string folder = std::filesystem::current_path().string();
    config.replace(config.find("land.geo"), 8, folder + "/land.geo");
    writeTerrainConfig(config);
    EXPECT_TRUE((new RVTERRAIN)->load("land.xml"));
    RVNODE::cleanUp();
    config.replace(config.find(folder), folder.size(), folder + "/../" + "gone");
    writeTerrainConfig(config);
    markLog();
    EXPECT_FALSE((new RVTERRAIN)->load("land.xml"));
    EXPECT_LOGGED("   [!] File name " + folder +
                  "/../gone/land.geo leaves its path: refused @ RVTERRAIN::load");
    RVNODE::cleanUp();
}

// By default each of them is opened.
TEST_F(ConfinedFilesTest, NothingIsRefusedByDefault) {
    RAVOLT::confineFilesOff();
    writeFile("smoke.xml", "<?xml version=\"1.0\"?>\n<emitter><texture "
                           "value=\"../secret_d.tga\"/></emitter>");
    EXPECT_EQ(openedOutside([] { (new RVEMITTER)->load("smoke.xml"); }),
              std::vector<std::string>{"../secret_d.tga"});
    std::string config = geometryXml;
    config.replace(config.find("land.geo"), 8, "../land.geo");
    writeTerrainConfig(config);
    EXPECT_EQ(openedOutside([] { EXPECT_TRUE((new RVTERRAIN)->load("land.xml")); }),
              std::vector<std::string>{"../land.geo"});
}

} // namespace
} // namespace ravolt::test
