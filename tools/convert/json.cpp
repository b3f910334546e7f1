#include "tools/convert/json.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ravolt::tool {

namespace {

void appendUtf8(std::string &text, unsigned int code) {
    const auto append = [&](unsigned int byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        append(code);
    } else if (code < 0x800) {
        append(0xc0 | code >> 6);
        append(0x80 | (code & 63));
    } else if (code < 0x10000) {
        append(0xe0 | code >> 12);
        append(0x80 | (code >> 6 & 63));
        append(0x80 | (code & 63));
    } else {
        append(0xf0 | code >> 18);
        append(0x80 | (code >> 12 & 63));
        append(0x80 | (code >> 6 & 63));
        append(0x80 | (code & 63));
    }
}

// The four hexadecimal digits from there on, which are passed.
unsigned int hexadecimal(const std::string &text, std::size_t &at) {
    const std::size_t length = std::min<std::size_t>(4, text.size() - at);
    unsigned int code = 0;
    std::from_chars(text.data() + at, text.data() + at + length, code, 16);
    at += length;
    return code;
}

bool isHalf(unsigned int code, unsigned int which) { return (code & 0xfc00) == which; }

} // namespace

std::string unescaped(const std::string &text) {
    const std::string letters = "bfnrt", values = "\b\f\n\r\t";
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i++];
            continue;
        }
        const char kind = text[i + 1];
        i += 2;
        if (kind != 'u') {
            const std::size_t which = letters.find(kind);
            result += which == std::string::npos ? kind : values[which];
            continue;
        }
        unsigned int code = hexadecimal(text, i);
        if (isHalf(code, 0xd800) && text.compare(i, 2, "\\u") == 0) {
            i += 2;
            code = 0x10000 + ((code & 0x3ff) << 10 | (hexadecimal(text, i) & 0x3ff));
        }
        appendUtf8(result, code);
    }
    return result;
}

bool Json::vector(std::array<float, 3> &numbers) {
    blanks();
    const char *const before = at;
    bool good = take('[');
    for (std::size_t i = 0; i < 3 && good; ++i) {
        blanks();
        const auto [rest, error] = std::from_chars(at, end, numbers[i]);
        good = error == std::errc();
        at = rest;
        good = good && take(i < 2 ? ',' : ']');
    }
    if (!good) {
        at = before;
        skip();
    }
    return good;
}

bool Json::number(std::size_t &value) {
    blanks();
    std::size_t found = 0;
    const bool good = std::from_chars(at, end, found).ec == std::errc();
    if (good)
        value = found;
    skip();
    return good;
}

std::string Json::text() {
    if (!take('"'))
        return stop(), "";
    const char *const first = at;
    while (at < end && *at != '"')
        at += *at == '\\' && at + 1 < end ? 2 : 1;
    const std::string result(first, at);
    take('"');
    return result;
}

bool Json::isText() {
    blanks();
    return at < end && *at == '"';
}

void Json::skip() {
    int depth = 0;
    do {
        blanks();
        if (at == end)
            return;
        if (*at == '"') {
            text();
        } else if (std::strchr("{[", *at)) {
            ++depth, ++at;
        } else if (std::strchr("}]", *at)) {
            --depth, ++at;
        } else if (std::strchr(",:", *at)) {
            ++at;
        } else {
            at = std::find_if(at, end, [](char c) { return std::strchr(",:{}[]\" \t\r\n", c); });
        }
    } while (depth > 0);
}

void Json::blanks() {
    at = std::find_if(at, end, [](char c) { return !c || !std::strchr(" \t\r\n", c); });
}

bool Json::take(char expected) {
    blanks();
    if (at == end || *at != expected)
        return false;
    ++at;
    return true;
}

} // namespace ravolt::tool
