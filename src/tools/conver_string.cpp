#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quorda {

namespace {

struct TEscapePair {
    std::string_view Plain;
    std::string_view Escaped;
};

// Decoding tries them in this order: the first pair whose escaped text stands at the position wins.
constexpr std::array<TEscapePair, 5> kEscapes{{
    {"'", "''"},
    {"\\", "\\\\"},
    {std::string_view("\0", 1), "\\x00"},
    {"\r", "\\x0D"},
    {"\n", "\\x0A"},
}};

// Encoding replaces single characters: the escaped form of each, indexed by the byte (empty: kept).
constexpr auto kEncoded = [] {
    std::array<std::string_view, 256> table{};
    for (const TEscapePair& pair : kEscapes) {
        table[static_cast<unsigned char>(pair.Plain[0])] = pair.Escaped;
    }
    return table;
}();

} // namespace

void AppendEncoded(std::string& Line, std::string_view Text) {
    std::size_t plain = 0; // start of the run not yet copied
    for (std::size_t i = 0; i < Text.size(); ++i) {
        const std::string_view escaped = kEncoded[static_cast<unsigned char>(Text[i])];
        if (!escaped.empty()) {
            Line.append(Text.substr(plain, i - plain));
            Line.append(escaped);
            plain = i + 1;
        }
    }
    Line.append(Text.substr(plain));
}

void ConverString(const std::string& Text, bool Encode, std::string& Result) {
    Result.clear();
    Result.reserve(Text.size());
    if (Encode) {
        AppendEncoded(Result, Text);
        return;
    }
    const std::string_view text(Text);
    // The first characters of the texts searched for: runs without them are copied whole.
    const std::string_view starts("'\\");
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t next = std::min(text.find_first_of(starts, pos), text.size());
        Result.append(text, pos, next - pos);
        pos = next;
        if (pos == text.size()) {
            break;
        }
        bool replaced = false;
        for (const TEscapePair& pair : kEscapes) {
            if (text.compare(pos, pair.Escaped.size(), pair.Escaped) == 0) {
                Result += pair.Plain;
                pos += pair.Escaped.size();
                replaced = true;
                break;
            }
        }
        if (!replaced) {
            Result += text[pos++];
        }
    }
}

std::string ConverString(const std::string& Text, bool Encode) {
    std::string result;
    ConverString(Text, Encode, result);
    return result;
}

} // namespace quorda
