// Runs the tool as a process, and checks its output.

#include "tests/tools/cli.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace tool_test {

Outcome run(const std::string &arguments, const std::string &before) {
    const fs::path folder = fs::temp_directory_path() / ("ravolt-cli-" + std::to_string(getpid()));
    fs::create_directories(folder);
    const std::string command = before + " '" RAVOLT_TOOL "' " + arguments + " >'" +
                                (folder / "out").string() + "' 2>'" + (folder / "err").string() +
                                "' </dev/null";
    Outcome result;
    const int status = std::system(command.c_str());
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = readText(folder / "out");
    result.err = readText(folder / "err");
    fs::remove_all(folder);
    return result;
}

void expectSuccess(const std::string &arguments, const std::string &err,
                   const std::string &before) {
    SCOPED_TRACE(before + " ravolt " + arguments);
    const Outcome result = run(arguments, before);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, err);
}

void expectFailure(const std::string &arguments, int code, const std::string &start,
                   const std::string &before) {
    SCOPED_TRACE(before + " ravolt " + arguments);
    const Outcome result = run(arguments, before);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(startsWith(result.err, "ravolt: " + start)) << result.err;
    EXPECT_EQ(lines(result.err), 1u) << result.err;
    EXPECT_FALSE(fs::exists("x.rve") || fs::exists("x.png"));
}

} // namespace tool_test
