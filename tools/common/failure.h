#pragma once

// A job of the tool that cannot be done. The text is one line that names the file and the reason;
// the program prints it and ends with exit code 1.

#include <stdexcept>
#include <string>

namespace ravolt::tool {

class Failure : public std::runtime_error {
  public:
    Failure(const std::string &file, const std::string &reason)
        : std::runtime_error(file + ": " + reason) {}
    explicit Failure(const std::string &reason) : std::runtime_error(reason) {}
};

// A command line that makes no sense; the program ends with exit code 2.
class WrongOptions : public Failure {
  public:
    using Failure::Failure;
};

} // namespace ravolt::tool
