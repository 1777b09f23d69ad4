#include "quorda/rtl/string_utils.h"

#include "quorda/rtl/exception.h"
#include "string_utils_utf8_p.h"

#include <algorithm>
#include <vector>

namespace quorda {

namespace utf8 {

char32_t Decode(std::string_view S, std::size_t& Pos) {
    const auto lead = static_cast<unsigned char>(S[Pos]);
    if (lead < 0x80) {
        ++Pos;
        return lead;
    }
    int length = 0;
    char32_t c = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        c = lead & 0x1F;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        c = lead & 0x0F;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        c = lead & 0x07;
        minimum = 0x10000;
    } else {
        ++Pos;
        return kInvalidBase + lead;
    }
    if (Pos + static_cast<std::size_t>(length) > S.size()) {
        ++Pos;
        return kInvalidBase + lead;
    }
    for (int i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(S[Pos + static_cast<std::size_t>(i)]);
        if ((next & 0xC0) != 0x80) {
            ++Pos;
            return kInvalidBase + lead;
        }
        c = (c << 6) | (next & 0x3F);
    }
    if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        ++Pos;
        return kInvalidBase + lead;
    }
    Pos += static_cast<std::size_t>(length);
    return c;
}

void Encode(char32_t C, std::string& Out) {
    if (C < 0x80) {
        Out += static_cast<char>(C);
    } else if (C < 0x800) {
        Out += static_cast<char>(0xC0 | (C >> 6));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else if (C < 0x10000) {
        Out += static_cast<char>(0xE0 | (C >> 12));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else if (C <= 0x10FFFF) {
        Out += static_cast<char>(0xF0 | (C >> 18));
        Out += static_cast<char>(0x80 | ((C >> 12) & 0x3F));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else {
        Out += static_cast<char>(C - kInvalidBase);
    }
}

} // namespace utf8

namespace {

char32_t Fold(char32_t C) {
    if (C >= utf8::kInvalidBase) {
        return C;
    }
    return UnicodeToUpper(UnicodeToLower(C));
}

char AsciiUpper(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
}
char AsciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
}

bool IsBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}

template <typename Map>
std::string MapText(std::string_view S, Map map) {
    std::string result;
    result.reserve(S.size());
    for (std::size_t pos = 0; pos < S.size();) {
        utf8::Encode(map(utf8::Decode(S, pos)), result);
    }
    return result;
}

// Length in bytes of the case-insensitive match of Pattern at S[Start], or npos.
std::size_t MatchTextAt(std::string_view S, std::size_t Start, std::string_view Pattern) {
    std::size_t i = Start;
    std::size_t j = 0;
    while (j < Pattern.size()) {
        if (i >= S.size()) {
            return std::string_view::npos;
        }
        if (Fold(utf8::Decode(S, i)) != Fold(utf8::Decode(Pattern, j))) {
            return std::string_view::npos;
        }
    }
    return i - Start;
}

} // namespace

int CompareText(std::string_view A, std::string_view B) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < A.size() && j < B.size()) {
        const auto a = static_cast<unsigned char>(A[i]);
        const auto b = static_cast<unsigned char>(B[j]);
        if (a < 0x80 && b < 0x80) {
            const auto ua = static_cast<unsigned char>(AsciiUpper(static_cast<char>(a)));
            const auto ub = static_cast<unsigned char>(AsciiUpper(static_cast<char>(b)));
            if (ua != ub) {
                return ua < ub ? -1 : 1;
            }
            ++i;
            ++j;
            continue;
        }
        const char32_t fa = Fold(utf8::Decode(A, i));
        const char32_t fb = Fold(utf8::Decode(B, j));
        if (fa != fb) {
            return fa < fb ? -1 : 1;
        }
    }
    if (i < A.size()) {
        return 1;
    }
    return j < B.size() ? -1 : 0;
}

bool SameText(std::string_view A, std::string_view B) {
    return CompareText(A, B) == 0;
}

int CompareStr(std::string_view A, std::string_view B) {
    const int result = A.compare(B);
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

bool StartsText(std::string_view Prefix, std::string_view S) {
    return MatchTextAt(S, 0, Prefix) != std::string_view::npos;
}

bool EndsText(std::string_view Suffix, std::string_view S) {
    // Case mapping may change byte lengths, so compare folded code points from the end.
    std::vector<char32_t> suffix;
    std::vector<char32_t> text;
    for (std::size_t pos = 0; pos < Suffix.size();) {
        suffix.push_back(Fold(utf8::Decode(Suffix, pos)));
    }
    for (std::size_t pos = 0; pos < S.size();) {
        text.push_back(Fold(utf8::Decode(S, pos)));
    }
    return suffix.size() <= text.size() && std::equal(suffix.rbegin(), suffix.rend(), text.rbegin());
}

std::string AnsiUpperCase(std::string_view S) {
    return MapText(S, [](char32_t c) { return c >= utf8::kInvalidBase ? c : UnicodeToUpper(c); });
}

std::string AnsiLowerCase(std::string_view S) {
    return MapText(S, [](char32_t c) { return c >= utf8::kInvalidBase ? c : UnicodeToLower(c); });
}

std::string UpperCase(std::string_view S) {
    std::string result(S);
    std::transform(result.begin(), result.end(), result.begin(), AsciiUpper);
    return result;
}

std::string LowerCase(std::string_view S) {
    std::string result(S);
    std::transform(result.begin(), result.end(), result.begin(), AsciiLower);
    return result;
}

std::string Trim(std::string_view S) {
    return TrimRight(TrimLeft(S));
}

std::string TrimLeft(std::string_view S) {
    std::size_t start = 0;
    while (start < S.size() && IsBlank(S[start])) {
        ++start;
    }
    return std::string(S.substr(start));
}

std::string TrimRight(std::string_view S) {
    std::size_t end = S.size();
    while (end > 0 && IsBlank(S[end - 1])) {
        --end;
    }
    return std::string(S.substr(0, end));
}

std::string IntToStr(std::int64_t Value) {
    return std::to_string(Value);
}

std::string IntToHex(std::int64_t Value, int Digits) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    auto bits = static_cast<std::uint64_t>(Value);
    std::string result;
    do {
        result += kDigits[bits & 0xF];
        bits >>= 4;
    } while (bits != 0);
    while (static_cast<int>(result.size()) < Digits) {
        result += '0';
    }
    std::reverse(result.begin(), result.end());
    return result;
}

std::string ExtractFieldName(const std::string& Fields, std::size_t& Pos) {
    if (Pos >= Fields.size()) {
        Pos = Fields.size();
        return {};
    }
    std::size_t end = Fields.find(';', Pos);
    if (end == std::string::npos) {
        end = Fields.size();
    }
    std::string result = Trim(std::string_view(Fields).substr(Pos, end - Pos));
    Pos = end < Fields.size() ? end + 1 : end;
    return result;
}

std::string QuotedStr(std::string_view S) {
    return AnsiQuotedStr(S, '\'');
}

std::string AnsiQuotedStr(std::string_view S, char Quote) {
    std::string result;
    result.reserve(S.size() + 2);
    result += Quote;
    for (char c : S) {
        result += c;
        if (c == Quote) {
            result += Quote;
        }
    }
    result += Quote;
    return result;
}

std::string AnsiDequotedStr(std::string_view S, char Quote) {
    if (S.empty() || S[0] != Quote) {
        return std::string(S);
    }
    std::string result;
    for (std::size_t i = 1; i < S.size(); ++i) {
        if (S[i] == Quote) {
            if (i + 1 < S.size() && S[i + 1] == Quote) {
                result += Quote;
                ++i;
            } else {
                break;
            }
        } else {
            result += S[i];
        }
    }
    return result;
}

std::string StringReplace(std::string_view S, std::string_view OldPattern, std::string_view NewPattern,
                          TReplaceFlags Flags) {
    if (OldPattern.empty()) {
        return std::string(S);
    }
    const bool all = (Flags & rfReplaceAll) != 0;
    const bool ignoreCase = (Flags & rfIgnoreCase) != 0;
    std::string result;
    std::size_t pos = 0;
    while (pos < S.size()) {
        std::size_t start = std::string_view::npos;
        std::size_t length = OldPattern.size();
        if (!ignoreCase) {
            start = S.find(OldPattern, pos);
        } else {
            for (std::size_t i = pos; i < S.size(); ++i) {
                if ((static_cast<unsigned char>(S[i]) & 0xC0) == 0x80) {
                    continue; // not the start of a code point
                }
                const std::size_t matched = MatchTextAt(S, i, OldPattern);
                if (matched != std::string_view::npos) {
                    start = i;
                    length = matched;
                    break;
                }
            }
        }
        if (start == std::string_view::npos) {
            break;
        }
        result.append(S.substr(pos, start - pos));
        result.append(NewPattern);
        pos = start + length;
        if (!all) {
            break;
        }
    }
    if (pos < S.size()) {
        result.append(S.substr(pos));
    }
    return result;
}

std::size_t Utf8Length(std::string_view S) {
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < S.size();) {
        utf8::Decode(S, pos);
        ++count;
    }
    return count;
}

} // namespace quorda
