// Broken files, and a second, simpler reader to compare with, which copies every line and follows
// the documented steps in their order.

#include "tests/foundation/ownLog.h"

#include <cstring>
#include <random>
#include <vector>

namespace ravolt::test {
namespace {

class PlainReader {
  public:
    explicit PlainReader(const std::string &file) : text(file) {}

    bool readLine(std::string &line) {
        if (position >= text.size())
            return false;
        const std::string rest = text.substr(position).c_str(); // up to a zero byte
        if (const std::size_t feed = rest.find('\n'); feed != rest.npos) {
            line = rest.substr(0, feed);
            position += feed + 1;
        } else if (const std::size_t cr = rest.find('\r'); cr != rest.npos) {
            line = rest.substr(0, cr);
            if (!line.empty())
                line.pop_back();
            position += cr + 1;
        } else {
            line = rest;
            position = text.size();
        }
        line = line.substr(0, 255);
        return true;
    }

    bool readToken(std::string &token) {
        if (!readLine(token))
            return false;
        std::erase_if(token, [](char c) { return c == ' ' || c == '\t'; });
        return true;
    }

    bool value(const std::string &key, std::string &result) const {
        PlainReader reader(text);
        for (std::string token; reader.readToken(token);)
            if (const std::size_t at = token.find(key); at != token.npos) {
                result = token.substr(std::min(at + key.size() + 1, token.size()));
                return true;
            }
        return false;
    }

  private:
    std::string text;
    std::size_t position = 0;
};

const std::vector<std::string> keys = {"width", "title", "t", "=", "\"", "", "depth", "\r", "wid"};

// A buffer that shows a write past its 256 bytes, and that is full of no zeros.
struct Guarded {
    char text[256];
    char guard[8];
    Guarded() { std::memset(this, 'g', sizeof *this); }
    bool whole() const {
        return std::memchr(text, 0, 256) && std::memcmp(guard, "gggggggg", 8) == 0;
    }
};

void compareLines(zlfPARSER &parser, const std::string &bytes) {
    PlainReader lines(bytes);
    std::string expected;
    for (;;) {
        Guarded line;
        const bool more = lines.readLine(expected);
        ASSERT_EQ(zlfReadLine(&parser, line.text), more);
        if (!more)
            return;
        ASSERT_TRUE(line.whole());
        ASSERT_EQ(line.text, expected);
    }
}

void compareKeys(zlfPARSER &parser, const std::string &bytes) {
    const PlainReader reader(bytes);
    for (const std::string &key : keys) {
        std::string expected;
        const bool there = reader.value(key, expected);
        int number = -99;
        float real = -99.0f;
        Guarded text;
        ASSERT_EQ(zlfGetInt(&parser, key.c_str(), &number), there) << key;
        ASSERT_EQ(zlfGetFloat(&parser, key.c_str(), &real), there) << key;
        const bool quoted = zlfGetString(&parser, key.c_str(), text.text);
        if (!there) {
            ASSERT_EQ(number, -99);
            ASSERT_FALSE(quoted);
            continue;
        }
        ASSERT_EQ(number, static_cast<int>(std::strtol(expected.c_str(), nullptr, 10))) << key;
        ASSERT_EQ(real, static_cast<float>(std::strtod(expected.c_str(), nullptr))) << key;
        ASSERT_TRUE(text.whole());
        const std::size_t first = expected.find('"'), last = expected.rfind('"');
        ASSERT_EQ(quoted, first != last) << key;
        ASSERT_EQ(text.text, quoted ? expected.substr(first + 1, last - first - 1) : expected);
    }
}

class BrokenFiles : public OwnLog {
  protected:
    // Opens the bytes as a file and compares everything that can be read.
    void compare(std::string bytes) {
        writeFile("keys.txt", bytes);
        zlfPARSER parser;
        ASSERT_EQ(zlfOpenParser(&parser, "keys.txt"), !bytes.empty());
        if (bytes.empty())
            return;
        ASSERT_NO_FATAL_FAILURE(compareKeys(parser, bytes));
        ASSERT_NO_FATAL_FAILURE(compareLines(parser, bytes));
        zlfRemoveComments(&parser, '#');
        bytes.assign(parser.data, bytes.size());
        parser.position = 0;
        ASSERT_NO_FATAL_FAILURE(compareKeys(parser, bytes));
        ASSERT_NO_FATAL_FAILURE(compareLines(parser, bytes));
        ASSERT_TRUE(zlfCloseParser(&parser));
    }
};

const std::string sample = "# settings\n"
                           "width = 640\r\n"
                           "title=\"A  window\"\t# its title\n"
                           "d e p t h : -16.5\r"
                           "widths\n"
                           "t\r"
                           "last=\"no end";

TEST_F(BrokenFiles, CutAtEveryByte) {
    for (std::size_t length = 0; length <= sample.size(); ++length)
        ASSERT_NO_FATAL_FAILURE(compare(sample.substr(0, length))) << length;
}

TEST_F(BrokenFiles, WithEveryByteChanged) {
    for (std::size_t at = 0; at < sample.size(); ++at)
        for (const int value : {0, 1, 127, 128, 255, int('\r'), int('\n'), int('"'), int(' ')}) {
            std::string bytes = sample;
            bytes[at] = static_cast<char>(value);
            ASSERT_NO_FATAL_FAILURE(compare(bytes)) << at << " is " << value;
        }
}

TEST_F(BrokenFiles, OfRandomBytes) {
    const std::string alphabet("\n\r\t =\"#tit widdepth012-.e\0\xFF", 28);
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes(1 + random() % 60, ' ');
        for (char &c : bytes)
            c = alphabet[random() % alphabet.size()];
        if (round % 10 == 0) // and a line that is too long
            bytes.insert(random() % bytes.size(), std::string(230 + random() % 40, 'w'));
        ASSERT_NO_FATAL_FAILURE(compare(bytes)) << testing::PrintToString(bytes);
    }
}

} // namespace
} // namespace ravolt::test
