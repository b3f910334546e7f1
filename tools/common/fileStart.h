#pragma once

// What the kind of a file is found by: its first bytes.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace ravolt::tool {

// A file whose kind is sought, and a video, is read up to here.
constexpr std::size_t examinedBytes = 1 << 20;
constexpr std::string_view blanks = " \t\r\n";

// Throws Failure for what is no regular file.
void requireRegularFile(const std::filesystem::path &file);

// Throws Failure for what is no regular file, and when it cannot be read.
std::string startOf(const std::filesystem::path &file, std::size_t bytes = examinedBytes);

// Whether a text begins as XML does.
bool isXml(std::string_view text);

} // namespace ravolt::tool
