// The child reports to its parent in records: a letter, the length of a text, and the text.

#include "tools/process/guard.h"

#include "tools/common/failure.h"
#include "tools/process/signals.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ravolt::tool {

namespace {

enum class Record : char { staged = 'S', input = 'I', closingMessage = 'W', error = 'C' };

bool memoryRanOut = false;

[[noreturn]] void recordOutOfMemory() {
    memoryRanOut = true;
    throw std::bad_alloc();
}

std::string megabytesText(const Limits &limits) {
    return "ran out of memory, of which it may take " + std::to_string(limits.megabytes) +
           " MB (--max-memory)";
}

// The error of the job; empty if there was none.
std::string errorOf(const std::string &file, const Limits &limits,
                    const std::function<void()> &job) {
    try {
        job();
        return "";
    } catch (const std::bad_alloc &) {
        return file + ": " + megabytesText(limits);
    } catch (const std::exception &error) {
        if (memoryRanOut) // however the reader reports it
            return file + ": " + megabytesText(limits);
        return *error.what() ? error.what() : "failed without a reason";
    }
}

void writeAll(int target, const void *data, std::size_t size) {
    const char *bytes = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t count = write(target, bytes, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            _exit(1); // the parent has ended
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
}

void writeRecord(int target, Record record, const std::string &text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    writeAll(target, &record, sizeof record);
    writeAll(target, &length, sizeof length);
    writeAll(target, text.data(), text.size());
}

using Staged = FileTransaction::Staged;

std::string textOf(const Staged &file) {
    return file.path + '\0' + file.target + '\0' + file.temporary + '\0' +
           (file.replaced ? "r" : "");
}

Staged stagedFrom(const std::string &text) {
    const std::size_t first = text.find('\0'), second = text.find('\0', first + 1);
    const std::size_t third = text.find('\0', second + 1);
    Staged file;
    file.path = text.substr(0, first);
    file.target = text.substr(first + 1, second - first - 1);
    file.temporary = text.substr(second + 1, third - second - 1);
    file.replaced = third + 1 < text.size();
    return file;
}

// The address space that this process takes now, in bytes.
rlim_t sizeNow() {
    std::ifstream state("/proc/self/statm");
    rlim_t pages = 0;
    state >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void setLimit(__rlimit_resource resource, rlim_t maximum) {
    rlimit limit;
    getrlimit(resource, &limit);
    limit.rlim_cur = std::min(maximum, limit.rlim_max);
    setrlimit(resource, &limit);
}

void setLimits(const Limits &limits) {
    std::set_new_handler(recordOutOfMemory);
    setLimit(RLIMIT_CORE, 0); // no core dump
    setLimit(RLIMIT_CPU, limits.seconds);
#ifndef __SANITIZE_ADDRESS__ // which reserves more than any machine has
    setLimit(RLIMIT_AS, sizeNow() + (rlim_t(limits.megabytes) << 20));
#endif
}

[[noreturn]] void runChild(int parent, const std::string &file, const Limits &limits,
                           const std::function<void(GuardedJob &)> &job) {
    ignoreSignals();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setLimits(limits);
    GuardedJob own;
    own.files.onStage = [&](const Staged &staged) {
        writeRecord(parent, Record::staged, textOf(staged));
    };
    const std::string error = errorOf(file, limits, [&] { job(own); });
    std::fflush(nullptr);
    if (error.empty()) {
        for (const InputFiles::Identity &input : own.inputs.all())
            writeRecord(parent, Record::input,
                        std::string(reinterpret_cast<const char *>(&input), sizeof input));
        writeRecord(parent, Record::closingMessage, own.closingMessage);
    } else {
        writeRecord(parent, Record::error, error);
    }
    // Without destructors: the files belong to the parent.
    _exit(error.empty() ? 0 : 1);
}

// Reads records until the child has closed its end.
class Reader {
  public:
    Reader(int from, GuardedJob &target) : source(from), done(target) {}

    // False when a signal has come before the end.
    bool read();
    const std::string &error() const { return childError; }

  private:
    void takeRecords();
    void take(Record record, const std::string &text);

    int source;
    GuardedJob &done;
    std::string bytes, childError;
};

bool Reader::read() {
    constexpr int timeout = 100; // milliseconds: a signal may arrive just before `poll`
    char part[4096];
    while (!receivedSignal()) {
        pollfd waiting = {source, POLLIN, 0};
        if (poll(&waiting, 1, timeout) <= 0)
            continue;
        const ssize_t count = ::read(source, part, sizeof part);
        if (count == 0 || (count < 0 && errno != EINTR))
            return true;
        if (count > 0)
            bytes.append(part, static_cast<std::size_t>(count));
        takeRecords();
    }
    return false;
}

void Reader::takeRecords() {
    constexpr std::size_t header = sizeof(Record) + sizeof(std::uint32_t);
    while (bytes.size() >= header) {
        std::uint32_t length = 0;
        std::memcpy(&length, bytes.data() + sizeof(Record), sizeof length);
        if (bytes.size() < header + length)
            return;
        take(static_cast<Record>(bytes[0]), bytes.substr(header, length));
        bytes.erase(0, header + length);
    }
}

void Reader::take(Record record, const std::string &text) {
    InputFiles::Identity identity;
    switch (record) {
    case Record::staged:
        done.files.adopt(stagedFrom(text));
        break;
    case Record::input:
        std::memcpy(&identity, text.data(), std::min(sizeof identity, text.size()));
        done.inputs.add(identity);
        break;
    case Record::closingMessage:
        done.closingMessage = text;
        break;
    case Record::error:
        childError = text;
        break;
    }
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void endChild(pid_t child) {
    kill(child, SIGKILL);
    waitFor(child);
    if (isatty(STDERR_FILENO))
        std::fputs("\r\033[K", stderr); // its progress bar
}

void throwIfFailed(const std::string &file, const Limits &limits, int status,
                   const std::string &error) {
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU)
        throw Failure(file, "took more than " + std::to_string(limits.seconds) +
                                " seconds of processor time (--max-time)");
    if (WIFSIGNALED(status))
        throw Failure(file, std::string("the reader of such models crashed on it (") +
                                strsignal(WTERMSIG(status)) + ")");
    if (!error.empty())
        throw Failure(error);
    if (status != 0)
        throw Failure(file, "the reader of such models gave up on it");
}

} // namespace

void runGuarded(const std::string &file, const Limits &limits,
                const std::function<void(GuardedJob &)> &job, GuardedJob &done) {
    int ends[2];
    std::fflush(nullptr);
    if (pipe(ends) != 0)
        throw Failure(std::string("cannot make a pipe: ") + std::strerror(errno));
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        runChild(ends[1], file, limits, job);
    }
    const int reason = errno;
    close(ends[1]);
    Reader reader(ends[0], done);
    const bool whole = child > 0 && reader.read();
    if (child > 0 && !whole)
        endChild(child);
    close(ends[0]);
    if (child < 0)
        throw Failure(std::string("cannot start a process: ") + std::strerror(reason));
    const int status = whole ? waitFor(child) : 0;
    throwIfInterrupted();
    throwIfFailed(file, limits, status, reader.error());
    if (done.beforeCommit)
        done.beforeCommit();
    const std::string error = done.files.commit();
    if (!error.empty())
        throw Failure(error);
}

} // namespace ravolt::tool
