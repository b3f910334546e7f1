#include "tools/guard.h"

#include "tools/failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <sys/wait.h>
#include <unistd.h>

namespace ravolt::tool {

namespace {

// What went wrong in the job; empty when nothing did.
std::string complaintOf(const std::function<void()> &job) {
    try {
        job();
        return "";
    } catch (const std::bad_alloc &) {
        return "out of memory";
    } catch (const std::exception &error) {
        return *error.what() ? error.what() : "failed without a reason";
    }
}

[[noreturn]] void beChild(int tellParent, const std::function<void()> &job) {
    const std::string complaint = complaintOf(job);
    std::fflush(nullptr);
    std::size_t told = 0;
    while (told < complaint.size()) {
        const ssize_t count = write(tellParent, complaint.data() + told, complaint.size() - told);
        if (count <= 0 && errno != EINTR)
            break;
        told += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    // Past all destructors of the program: they are the parent's business.
    _exit(complaint.empty() ? 0 : 1);
}

std::string readAll(int source) {
    std::string text;
    char part[1024];
    for (ssize_t count; (count = read(source, part, sizeof part)) != 0;) {
        if (count > 0)
            text.append(part, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            break;
    }
    return text;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

} // namespace

void runGuarded(const std::string &file, const std::function<void()> &job) {
    int ends[2];
    std::fflush(nullptr);
    if (pipe(ends) != 0)
        throw Failure(std::string("cannot make a pipe: ") + std::strerror(errno));
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        beChild(ends[1], job);
    }
    close(ends[1]);
    const std::string complaint = child > 0 ? readAll(ends[0]) : "";
    close(ends[0]);
    if (child < 0)
        throw Failure(std::string("cannot start a process: ") + std::strerror(errno));
    const int status = waitFor(child);
    if (WIFSIGNALED(status))
        throw Failure(file, std::string("the reader of such models crashed on it (") +
                                strsignal(WTERMSIG(status)) + ")");
    if (!complaint.empty())
        throw Failure(complaint);
    if (status != 0)
        throw Failure(file, "the reader of such models gave up on it");
}

} // namespace ravolt::tool
