// The message and the exit code of a job that has ended, also without memory.

#include "tools/process/exitCode.h"

#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include <unistd.h>

namespace ravolt::tool {

int exitCodeOf(const std::function<int()> &job) {
    try {
        return job();
    } catch (const std::bad_alloc &) {
        sayError("out of memory");
    } catch (const Interrupted &end) {
        return 128 + end.signal();
    } catch (const WrongOptions &error) {
        sayError(error.what());
        return 2;
    } catch (const std::exception &error) {
        if (receivedSignal()) // which has cut short what failed
            return 128 + receivedSignal();
        sayError(error.what());
    }
    return 1;
}

namespace {

[[noreturn]] void endWithoutMemory() {
    constexpr std::string_view line = "ravolt: out of memory\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
    LogRedirect::clear();
    _exit(1);
}

// Where a function of the standard library must not throw, such as the increment of
// std::filesystem::directory_iterator, the exception is on its way, and cannot be caught to see
// what it is. Such functions throw where memory runs out.
[[noreturn]] void endProcess() {
    try {
        if (std::current_exception())
            throw;
    } catch (const std::bad_alloc &) {
        endWithoutMemory();
    } catch (...) {
        std::abort();
    }
    if (std::uncaught_exceptions() > 0)
        endWithoutMemory();
    std::abort();
}

} // namespace

void endOrderlyWithoutMemory() { std::set_terminate(endProcess); }

} // namespace ravolt::tool
