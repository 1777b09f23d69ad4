#include "quorda/tools/text_transfer.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quorda {

namespace {

struct TEscapePair {
    std::string_view Plain;
    std::string_view Escaped;
};

// Tried in this order in both directions: the first pair whose search text stands at the position wins.
constexpr std::array<TEscapePair, 5> kEscapes{{
    {"'", "''"},
    {"\\", "\\\\"},
    {std::string_view("\0", 1), "\\x00"},
    {"\r", "\\x0D"},
    {"\n", "\\x0A"},
}};

} // namespace

void ConverString(const std::string& Text, bool Encode, std::string& Result) {
    Result.clear();
    Result.reserve(Text.size());
    const std::string_view text(Text);
    // The first characters of the texts searched for: runs without them are copied whole.
    static constexpr std::string_view kEncodeStarts("'\\\0\r\n", 5);
    const std::string_view starts = Encode ? kEncodeStarts : std::string_view("'\\");
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
            const std::string_view search = Encode ? pair.Plain : pair.Escaped;
            if (text.compare(pos, search.size(), search) == 0) {
                Result += Encode ? pair.Escaped : pair.Plain;
                pos += search.size();
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
