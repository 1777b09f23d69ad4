#include "quorda/core/connection_string.h"

#include "connection_string_p.h"

#include <algorithm>
#include <cctype>

namespace quorda {
namespace {

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsBlank(std::string_view text) {
    return TrimBlanks(text).empty();
}

// The end of a value that starts at Pos: a braced value runs to its closing "}" (a doubled "}}" is an
// escaped brace), then on to the next ";".
std::size_t ValueEnd(std::string_view Text, std::size_t Pos) {
    std::size_t start = Pos;
    while (start < Text.size() && Text[start] == ' ') {
        ++start;
    }
    if (start < Text.size() && Text[start] == '{') {
        std::size_t i = start + 1;
        while (i < Text.size()) {
            if (Text[i] == '}') {
                if (i + 1 < Text.size() && Text[i + 1] == '}') {
                    i += 2;
                    continue;
                }
                break;
            }
            ++i;
        }
        Pos = std::min(i, Text.size());
    }
    const std::size_t end = Text.find(';', Pos);
    return end == std::string_view::npos ? Text.size() : end;
}

} // namespace

bool SameConnectionKey(std::string_view A, std::string_view B) {
    return A.size() == B.size() && std::equal(A.begin(), A.end(), B.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) ==
                      std::toupper(static_cast<unsigned char>(y));
           });
}

void ForEachConnectionAttribute(std::string_view Text,
                                const std::function<void(const TConnectionAttribute&)>& OnAttribute) {
    std::size_t pos = 0;
    while (pos < Text.size()) {
        const std::size_t equals = Text.find('=', pos);
        const std::size_t semicolon = Text.find(';', pos);
        if (equals == std::string_view::npos) {
            break;
        }
        if (semicolon < equals) {
            pos = semicolon + 1; // an attribute without "=" carries nothing
            continue;
        }
        const std::size_t end = ValueEnd(Text, equals + 1);
        OnAttribute({TrimBlanks(Text.substr(pos, equals - pos)), Text.substr(equals + 1, end - equals - 1),
                     equals + 1});
        pos = end + 1;
    }
}

std::string ConnectionAttributeValue(std::string_view RawValue) {
    const std::string_view trimmed = TrimBlanks(RawValue);
    if (trimmed.empty() || trimmed.front() != '{') {
        return std::string(RawValue);
    }
    std::string value;
    for (std::size_t i = 1; i < trimmed.size(); ++i) {
        if (trimmed[i] == '}') {
            if (i + 1 < trimmed.size() && trimmed[i + 1] == '}') {
                value += '}';
                ++i;
                continue;
            }
            break;
        }
        value += trimmed[i];
    }
    return value;
}

bool NamesDataSource(std::string_view Text) {
    bool names = false;
    ForEachConnectionAttribute(Text, [&names](const TConnectionAttribute& a) {
        if ((SameConnectionKey(a.Key, "DRIVER") || SameConnectionKey(a.Key, "DSN") ||
             SameConnectionKey(a.Key, "FILEDSN")) &&
            !IsBlank(ConnectionAttributeValue(a.RawValue))) {
            names = true;
        }
    });
    return names;
}

std::string_view BlankDataSourceKey(std::string_view Text) {
    std::string_view found;
    ForEachConnectionAttribute(Text, [&found](const TConnectionAttribute& a) {
        if (found.empty() && (SameConnectionKey(a.Key, "DRIVER") || SameConnectionKey(a.Key, "DSN")) &&
            IsBlank(ConnectionAttributeValue(a.RawValue))) {
            found = a.Key;
        }
    });
    return found;
}

std::string MaskConnectionPassword(std::string_view Text) {
    std::string masked;
    std::size_t copied = 0;
    ForEachConnectionAttribute(Text, [&](const TConnectionAttribute& a) {
        if ((SameConnectionKey(a.Key, "PWD") || SameConnectionKey(a.Key, "PASSWORD")) &&
            !a.RawValue.empty()) {
            masked.append(Text.substr(copied, a.ValueOffset - copied));
            masked += "****";
            copied = a.ValueOffset + a.RawValue.size();
        }
    });
    masked.append(Text.substr(copied));
    return masked;
}

} // namespace quorda
