#pragma once

#include "quorda/export.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorda {

// The text of a settings file: [section] headers followed by key=value lines. Reading never fails:
// lines it does not understand (comments, garbage, values before the first section) are kept as they
// are and written back unchanged, so a hand-edited or damaged file loses nothing it still has.
//
// Names and values round-trip any bytes. In the text a backslash is written "\\", and "\xHH" stands
// for a byte that would otherwise break the line structure: control bytes, leading or trailing
// blanks, "=" in a key, "]" in a section name, a key starting with "[", ";" or "#". Any other
// backslash is read literally. Section and key names compare ignoring case; a section named twice
// is read as one, in file order, and the first of two equal keys counts.
class QUORDA_API TIniDocument {
public:
    static TIniDocument Parse(std::string_view Text);
    // One line per header, entry and kept line, each ending in "\n".
    std::string Text() const;

    bool SectionExists(std::string_view Section) const;
    // The value of a key, or null when the section or the key is absent.
    const std::string* Find(std::string_view Section, std::string_view Ident) const;
    std::vector<std::string> SectionNames() const;
    // The keys of a section and their values, in file order (first of equal keys only).
    std::vector<std::pair<std::string, std::string>> Entries(std::string_view Section) const;

    // Replaces the first equal key (dropping later ones) or appends the key; adds the section at
    // the end when it is new.
    void SetValue(std::string_view Section, std::string_view Ident, std::string_view Value);
    // Both return whether something was removed.
    bool DeleteKey(std::string_view Section, std::string_view Ident);
    bool EraseSection(std::string_view Section);

private:
    struct TLine {
        bool IsEntry = false;
        std::string Key;
        std::string Value;
        // The line as read, for lines that are not entries.
        std::string Raw;
    };
    struct TSection {
        std::string Name;
        std::vector<TLine> Lines;
    };

    const TSection* FindSection(std::string_view Name) const;
    TSection* FindSection(std::string_view Name);

    std::vector<std::string> FPreamble;
    std::vector<TSection> FSections;
};

} // namespace quorda
