#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace ovel::fuzz {

// Bytes as a C string literal would spell them, so a finding's message can be pasted into a test.
inline std::string escaped(std::string_view bytes) {
    static constexpr char hex[] = "0123456789abcdef";
    std::string text;
    for (const char ch : bytes) {
        const auto c = static_cast<unsigned char>(ch);
        if (c == '\\' || c == '"') {
            text += '\\';
            text += ch;
        } else if (c >= 0x20 && c < 0x7F) {
            text += ch;
        } else {
            text += "\\x";
            text += hex[c >> 4];
            text += hex[c & 0x0F];
        }
    }
    return text;
}

// A wrong answer is a finding just like a crash: say which promise broke and abort, so libFuzzer
// keeps the input that broke it.
inline void check(bool holds, std::string_view promise, std::string_view detail = {}) {
    if (holds) {
        return;
    }
    std::fprintf(stderr, "\nBROKEN: %.*s\n  with: \"%s\"\n", static_cast<int>(promise.size()),
                 promise.data(), escaped(detail).c_str());
    std::abort();
}

} // namespace ovel::fuzz
