// Tests a reader of files with names that have no readable file.

#include "tests/support/missingFiles.h"

#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <filesystem>

#include <unistd.h>

static bool everyFileExists = false;

extern "C" {
bool __real__Z13zlfFileExistsPKc(const char *filename);
bool __wrap__Z13zlfFileExistsPKc(const char *filename) {
    return everyFileExists || __real__Z13zlfFileExistsPKc(filename);
}
}

namespace ravolt::test {

void expectNamesWithoutAFileAreRefused(const FileReader &reader) {
    const auto expectRefused = [&](const char *name, const std::string &log,
                                   std::size_t failingBytes = ~std::size_t{0}) {
        markLog();
        Recorder::instance().failAllocation(failingBytes, 0, 1);
        const bool loaded = reader.load(name);
        Recorder::instance().allocationsWork();
        EXPECT_FALSE(loaded) << (name ? name : "NULL");
        EXPECT_LOGGED_EXACTLY(log) << (name ? name : "NULL");
    };
    std::filesystem::create_directory("folder");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string pipeName = "/dev/fd/" + std::to_string(ends[0]);
    for (const char *name :
         {pipeName.c_str(), "", "missing", "missing/", "folder", "folder/", (const char *)nullptr})
        expectRefused(name, reader.notFound);
    for (const int end : ends)
        close(end);

    reader.setPath(std::string(250, 'p').c_str()); // is not needed for NULL
    expectRefused(nullptr, reader.notFound, 200);
    reader.setPath("folder/");
    expectRefused(nullptr, reader.notFound);
    const std::string longName(600, 'n');
    std::string outOfMemory = reader.outOfMemory;
    outOfMemory.replace(outOfMemory.find("%s"), 2, "folder/" + longName);
    expectRefused(longName.c_str(), outOfMemory, longName.size());
    everyFileExists = true;
    expectRefused("missing", reader.unopened);
    everyFileExists = false;
    reader.setPath(nullptr);
}

} // namespace ravolt::test
