#include "quorda/core/param_markers.h"

#include "quorda/core/odbc_params.h"

#include <cstddef>

namespace quorda {
namespace {

bool IsNameDelimiter(char c) {
    return c == '\n' || c == '\r' || c == ' ' || c == ')' || c == ',' || c == ';';
}

bool IsLiteral(char c) {
    return c == '"' || c == '\'';
}

// A quoted name loses one leading and one trailing apostrophe, then one leading and one trailing
// double quote, each only where present.
std::string StripLiterals(std::string Name) {
    for (char quote : {'\'', '"'}) {
        if (!Name.empty() && Name.front() == quote) {
            Name.erase(0, 1);
        }
        if (!Name.empty() && Name.back() == quote) {
            Name.pop_back();
        }
    }
    return Name;
}

} // namespace

void ScanParamMarkers(std::string& Text, const TParamMarkerHandler& OnMarker) {
    // Reads never go past the end: the position after the last byte reads as the terminating zero.
    auto at = [&Text](std::size_t i) { return i < Text.size() ? Text[i] : '\0'; };
    bool literal = false;
    std::size_t pos = 0;
    for (char c = at(pos); c != '\0'; c = at(pos)) {
        if (c == ':' && !literal && at(pos + 1) != ':') {
            const std::size_t colon = pos;
            bool quoted = false;
            while (c != '\0' && (literal || !IsNameDelimiter(c))) {
                c = at(++pos);
                if (IsLiteral(c)) {
                    literal = !literal;
                    if (pos == colon + 1) {
                        quoted = true;
                    }
                }
            }
            std::string name = Text.substr(colon + 1, pos - colon - 1);
            if (quoted) {
                name = StripLiterals(std::move(name));
            }
            // The handler runs before the text changes, so a throwing handler leaves this marker intact.
            if (OnMarker) {
                OnMarker(name);
            }
            Text[colon] = '?';
            Text.erase(colon + 1, pos - colon - 1);
            // The stopping character now follows the "?"; it is skipped without being examined.
            pos = colon + 1;
            if (c == '\0') {
                break;
            }
        } else if (c == ':' && !literal) {
            // "::" outside a literal stands for one literal colon.
            Text.erase(pos, 1);
        } else if (IsLiteral(c)) {
            literal = !literal;
        }
        ++pos;
    }
}

void CreateParams(TODBCParams* Params, std::string& Text) {
    if (!Params) {
        ScanParamMarkers(Text, nullptr);
        return;
    }
    ScanParamMarkers(Text, [Params](const std::string& Name) { Params->CreateParam(ftUnknown, Name); });
}

} // namespace quorda
