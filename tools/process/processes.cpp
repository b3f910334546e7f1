// What a process prints goes to files without names, which its parent copies when it is the
// process's turn. A byte in a pipe tells a process that its turn has come.

#include "tools/process/processes.h"

#include "tools/common/failure.h"
#include "tools/process/exitCode.h"
#include "tools/process/signals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

constexpr int pollMilliseconds = 10;

int opened(int file) {
    if (file < 0)
        throw Failure(std::string("cannot start a process: ") + std::strerror(errno));
    return file;
}

// The parent's view of a process.
class Process {
  public:
    Process() = default;
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    Process(Process &&other) noexcept
        : output(std::exchange(other.output, -1)), errors(std::exchange(other.errors, -1)),
          turn(std::exchange(other.turn, {-1, -1})), id(std::exchange(other.id, 0)),
          status(other.status) {}
    ~Process() {
        for (const int file : {output, errors, turn[0], turn[1]})
            if (file >= 0)
                close(file);
    }

    // `job` gets the function that waits for its turn.
    void start(const std::function<int(const std::function<void()> &)> &job);
    bool isRunning() const { return id > 0; }
    // Whether it is the process of that id, which has ended.
    bool end(pid_t ended, int endStatus);
    void giveTurn() const;
    void terminate() const;
    void print() const;
    bool hasFailed() const { return !WIFEXITED(status) || WEXITSTATUS(status) != 0; }

  private:
    void awaitTurn() const;

    int output = -1, errors = -1;
    std::array<int, 2> turn = {-1, -1};
    pid_t id = 0;
    int status = 0;
};

void Process::start(const std::function<int(const std::function<void()> &)> &job) {
    output = opened(memfd_create("output", MFD_CLOEXEC));
    errors = opened(memfd_create("errors", MFD_CLOEXEC));
    opened(pipe(turn.data()));
    std::fflush(nullptr);
    id = opened(fork());
    if (id > 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    const int code = exitCodeOf([&] { return job([this] { awaitTurn(); }); });
    std::fflush(nullptr);
    _exit(code); // without destructors of what the parent owns
}

void Process::awaitTurn() const {
    for (;;) {
        throwIfInterrupted();
        pollfd waiting = {turn[0], POLLIN, 0};
        if (poll(&waiting, 1, pollMilliseconds) > 0)
            return;
    }
}

bool Process::end(pid_t ended, int endStatus) {
    if (id != ended)
        return false;
    id = 0;
    status = endStatus;
    return true;
}

void Process::giveTurn() const {
    const char byte = 0;
    while (write(turn[1], &byte, 1) < 0 && errno == EINTR) {
    }
}

void Process::terminate() const { kill(id, SIGTERM); }

void copyAll(int from, std::FILE *to) {
    std::array<char, 4096> part;
    lseek(from, 0, SEEK_SET);
    for (ssize_t count; (count = read(from, part.data(), part.size())) > 0;)
        std::fwrite(part.data(), 1, static_cast<std::size_t>(count), to);
    std::fflush(to);
}

void Process::print() const {
    copyAll(errors, stderr);
    copyAll(output, stdout);
}

void endAll(std::vector<Process> &processes) {
    for (Process &process : processes)
        if (process.isRunning())
            process.terminate();
    for (int status = 0; waitpid(-1, &status, 0) > 0 || errno == EINTR;) {
    }
}

// Waits for the end of one of them.
void awaitEnd(std::vector<Process> &processes) {
    for (;;) {
        if (receivedSignal())
            endAll(processes);
        throwIfInterrupted();
        int status = 0;
        if (const pid_t ended = waitpid(-1, &status, WNOHANG); ended > 0) {
            for (Process &process : processes)
                if (process.end(ended, status))
                    return;
        }
        poll(nullptr, 0, pollMilliseconds);
    }
}

} // namespace

std::size_t runInProcesses(
    std::size_t number, std::size_t atOnce,
    const std::function<int(std::size_t index, const std::function<void()> &awaitTurn)> &job) {
    std::vector<Process> processes; // those started
    std::size_t printed = 0, running = 0, failed = 0;
    while (printed < number) {
        for (; running < atOnce && processes.size() < number; ++running) {
            const std::size_t index = processes.size();
            processes.emplace_back();
            processes.back().start(
                [&](const std::function<void()> &awaitTurn) { return job(index, awaitTurn); });
            if (index == printed)
                processes.back().giveTurn();
        }
        awaitEnd(processes);
        --running;
        for (; printed < processes.size() && !processes[printed].isRunning(); ++printed) {
            processes[printed].print();
            failed += processes[printed].hasFailed();
            if (printed + 1 < processes.size())
                processes[printed + 1].giveTurn();
        }
    }
    return failed;
}

} // namespace ravolt::tool
