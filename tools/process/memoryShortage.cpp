#include "tools/process/memoryShortage.h"

#include "tools/process/logRedirect.h"

namespace ravolt::tool {

namespace {

// "Out of memory for file a.xml" of "   [!] Out of memory for file a.xml @ RAVOLT::loadXML"; empty
// for other lines.
std::string shortageIn(const std::string &line) {
    for (const std::string &before : {std::string("[!] "), std::string("zlfOpenParser: ")})
        for (const char *words : {"Out of memory", "out of memory"})
            if (const std::size_t at = line.find(before + words); at != std::string::npos) {
                const std::size_t start = at + before.size();
                return line.substr(start, line.find(" @ ", start) - start);
            }
    return "";
}

} // namespace

MemoryShortage::MemoryShortage() : log(LogRedirect::log()) {}

std::string MemoryShortage::next() {
    std::string found;
    for (std::string line; found.empty() && std::getline(log, line);) {
        part += line;
        if (log.eof())
            break;
        found = shortageIn(part);
        part.clear();
    }
    log.clear(); // more may be written
    return found;
}

} // namespace ravolt::tool
