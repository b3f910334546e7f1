#include "tests/tools/cli.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace tool_test {

std::string contentsOf(const fs::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

Outcome run(const std::string &arguments, const std::string &before) {
    const fs::path folder = fs::temp_directory_path() / ("ravolt-cli-" + std::to_string(getpid()));
    fs::create_directories(folder);
    const std::string command = before + " '" RAVOLT_TOOL "' " + arguments + " >'" +
                                (folder / "out").string() + "' 2>'" + (folder / "err").string() +
                                "' </dev/null";
    Outcome result;
    const int status = std::system(command.c_str());
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = contentsOf(folder / "out");
    result.err = contentsOf(folder / "err");
    fs::remove_all(folder);
    return result;
}

} // namespace tool_test
