#pragma once

// A limit of the process on its files, so that opening or writing fails whoever runs the tests.

#include <csignal>

#include <sys/resource.h>

namespace ravolt::test {

// While one is alive, RLIMIT_NOFILE (files that can be open) or RLIMIT_FSIZE (bytes of a file) is
// `maximum`.
class FileLimit {
  public:
    FileLimit(__rlimit_resource limited, rlim_t maximum) : resource(limited) {
        std::signal(SIGXFSZ, SIG_IGN); // the write itself is to fail
        getrlimit(resource, &former);
        const rlimit limit{maximum, former.rlim_max};
        setrlimit(resource, &limit);
    }
    ~FileLimit() { setrlimit(resource, &former); }
    FileLimit(const FileLimit &) = delete;
    FileLimit &operator=(const FileLimit &) = delete;

  private:
    __rlimit_resource resource;
    rlimit former{};
};

} // namespace ravolt::test
