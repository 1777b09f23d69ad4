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
    // The text is compacted in place in one pass: bytes [0, out) are the rewritten text, bytes
    // [in, size) the part not yet scanned. Since the text only shrinks, out never passes in, and a
    // long text with many markers costs no more than one copy.
    const std::size_t size = Text.size();
    // Reads never go past the end: the position after the last byte reads as the terminating zero.
    auto at = [&Text, size](std::size_t i) { return i < size ? Text[i] : '\0'; };
    bool literal = false;
    std::size_t in = 0;
    std::size_t out = 0;
    try {
        for (char c = at(in); c != '\0'; c = at(in)) {
            if (c == ':' && !literal && at(in + 1) != ':') {
                std::size_t stop = in;
                bool quoted = false;
                while (c != '\0' && (literal || !IsNameDelimiter(c))) {
                    c = at(++stop);
                    if (IsLiteral(c)) {
                        literal = !literal;
                        if (stop == in + 1) {
                            quoted = true;
                        }
                    }
                }
                std::string name = Text.substr(in + 1, stop - in - 1);
                if (quoted) {
                    name = StripLiterals(std::move(name));
                }
                if (OnMarker) {
                    OnMarker(name);
                }
                Text[out++] = '?';
                in = stop;
                if (c == '\0') {
                    break;
                }
                // The character that ended the name is taken over without being examined.
                Text[out++] = Text[in++];
            } else if (c == ':' && !literal) {
                // "::" outside a literal stands for one literal colon.
                Text[out++] = ':';
                in += 2;
            } else if (!literal && c == '-' && at(in + 1) == '-') {
                // A line comment is copied as it is, up to its line feed: no marker, no literal.
                while (at(in) != '\0' && at(in) != '\n') {
                    Text[out++] = Text[in++];
                }
            } else if (!literal && c == '/' && at(in + 1) == '*') {
                // So is a block comment, up to and including its "*/".
                std::size_t end = in + 2;
                while (at(end) != '\0' && !(at(end) == '*' && at(end + 1) == '/')) {
                    ++end;
                }
                end = at(end) == '\0' ? end : end + 2;
                while (in < end) {
                    Text[out++] = Text[in++];
                }
            } else {
                if (IsLiteral(c)) {
                    literal = !literal;
                }
                Text[out++] = Text[in++];
            }
        }
    } catch (...) {
        // A throwing handler leaves the markers before it rewritten and the rest untouched.
        Text.erase(out, in - out);
        throw;
    }
    // Whatever follows a zero byte is kept as it is.
    Text.erase(out, in - out);
}

void CreateParams(TODBCParams* Params, std::string& Text) {
    if (!Params) {
        ScanParamMarkers(Text, nullptr);
        return;
    }
    ScanParamMarkers(Text, [Params](const std::string& Name) { Params->CreateParam(ftUnknown, Name); });
}

} // namespace quorda
