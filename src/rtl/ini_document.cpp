#include "quorda/rtl/ini_document.h"

#include "quorda/rtl/string_utils.h"

#include <algorithm>
#include <charconv>

namespace quorda {

namespace {

enum class TTextKind { Section, Key, Value };

bool IsBlank(char C) {
    return C == ' ' || C == '\t';
}

std::string_view TrimBlanks(std::string_view S) {
    while (!S.empty() && (IsBlank(S.front()) || S.front() == '\r')) {
        S.remove_prefix(1);
    }
    while (!S.empty() && (IsBlank(S.back()) || S.back() == '\r')) {
        S.remove_suffix(1);
    }
    return S;
}

bool NeedsHexEscape(std::string_view S, std::size_t Index, TTextKind Kind) {
    const auto C = static_cast<unsigned char>(S[Index]);
    if (C < 0x20 || C == 0x7F) {
        return true;
    }
    if (IsBlank(S[Index]) && (Index == 0 || Index + 1 == S.size())) {
        return true;
    }
    switch (Kind) {
    case TTextKind::Section:
        return C == ']';
    case TTextKind::Key:
        return C == '=' || (Index == 0 && (C == '[' || C == ';' || C == '#'));
    case TTextKind::Value:
        return false;
    }
    return false;
}

std::string Escape(std::string_view S, TTextKind Kind) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string Result;
    Result.reserve(S.size());
    for (std::size_t I = 0; I < S.size(); ++I) {
        if (S[I] == '\\') {
            Result += "\\\\";
        } else if (NeedsHexEscape(S, I, Kind)) {
            const auto C = static_cast<unsigned char>(S[I]);
            Result += "\\x";
            Result += kHex[C >> 4];
            Result += kHex[C & 0x0F];
        } else {
            Result += S[I];
        }
    }
    return Result;
}

// The byte of two hexadecimal digits at Text, or -1.
int HexByte(std::string_view Text) {
    unsigned Value = 0;
    const auto [End, Error] = std::from_chars(Text.data(), Text.data() + 2, Value, 16);
    return Error == std::errc() && End == Text.data() + 2 ? static_cast<int>(Value) : -1;
}

std::string Unescape(std::string_view S) {
    std::string Result;
    Result.reserve(S.size());
    for (std::size_t I = 0; I < S.size(); ++I) {
        if (S[I] == '\\' && I + 1 < S.size()) {
            if (S[I + 1] == '\\') {
                Result += '\\';
                ++I;
                continue;
            }
            if (S[I + 1] == 'x' && I + 3 < S.size()) {
                if (const int Byte = HexByte(S.substr(I + 2, 2)); Byte >= 0) {
                    Result += static_cast<char>(Byte);
                    I += 3;
                    continue;
                }
            }
        }
        Result += S[I];
    }
    return Result;
}

} // namespace

TIniDocument TIniDocument::Parse(std::string_view Text) {
    TIniDocument Document;
    TSection* Current = nullptr;
    while (!Text.empty()) {
        const std::size_t End = Text.find('\n');
        const std::string_view Raw = Text.substr(0, End);
        Text.remove_prefix(End == std::string_view::npos ? Text.size() : End + 1);

        const std::string_view Line = TrimBlanks(Raw);
        const std::size_t Close = Line.rfind(']');
        if (!Line.empty() && Line.front() == '[' && Close != std::string_view::npos) {
            const std::string Name = Unescape(TrimBlanks(Line.substr(1, Close - 1)));
            Current = Document.FindSection(Name);
            if (Current == nullptr) {
                Current = &Document.FSections.emplace_back(TSection{Name, {}});
            }
            continue;
        }
        TLine Item;
        const std::size_t Equal = Line.find('=');
        const bool Comment = !Line.empty() && (Line.front() == ';' || Line.front() == '#');
        if (Current != nullptr && !Comment && Equal != std::string_view::npos &&
            !TrimBlanks(Line.substr(0, Equal)).empty()) {
            Item.IsEntry = true;
            Item.Key = Unescape(TrimBlanks(Line.substr(0, Equal)));
            Item.Value = Unescape(TrimBlanks(Line.substr(Equal + 1)));
        } else if (Current == nullptr) {
            Document.FPreamble.emplace_back(Raw);
            continue;
        } else {
            Item.Raw = std::string(Raw);
        }
        Current->Lines.push_back(std::move(Item));
    }
    return Document;
}

std::string TIniDocument::Text() const {
    std::string Result;
    for (const std::string& Line : FPreamble) {
        Result += Line;
        Result += '\n';
    }
    for (const TSection& Section : FSections) {
        Result += '[';
        Result += Escape(Section.Name, TTextKind::Section);
        Result += "]\n";
        for (const TLine& Line : Section.Lines) {
            if (Line.IsEntry) {
                Result += Escape(Line.Key, TTextKind::Key);
                Result += '=';
                Result += Escape(Line.Value, TTextKind::Value);
            } else {
                Result += Line.Raw;
            }
            Result += '\n';
        }
    }
    return Result;
}

const TIniDocument::TSection* TIniDocument::FindSection(std::string_view Name) const {
    const auto Found = std::find_if(FSections.begin(), FSections.end(),
                                    [&](const TSection& Section) { return SameText(Section.Name, Name); });
    return Found == FSections.end() ? nullptr : &*Found;
}

TIniDocument::TSection* TIniDocument::FindSection(std::string_view Name) {
    return const_cast<TSection*>(std::as_const(*this).FindSection(Name));
}

bool TIniDocument::SectionExists(std::string_view Section) const {
    return FindSection(Section) != nullptr;
}

const std::string* TIniDocument::Find(std::string_view Section, std::string_view Ident) const {
    const TSection* Found = FindSection(Section);
    if (Found == nullptr) {
        return nullptr;
    }
    for (const TLine& Line : Found->Lines) {
        if (Line.IsEntry && SameText(Line.Key, Ident)) {
            return &Line.Value;
        }
    }
    return nullptr;
}

std::vector<std::string> TIniDocument::SectionNames() const {
    std::vector<std::string> Names;
    for (const TSection& Section : FSections) {
        Names.push_back(Section.Name);
    }
    return Names;
}

std::vector<std::pair<std::string, std::string>> TIniDocument::Entries(std::string_view Section) const {
    std::vector<std::pair<std::string, std::string>> Result;
    if (const TSection* Found = FindSection(Section)) {
        for (const TLine& Line : Found->Lines) {
            const bool Seen = std::any_of(Result.begin(), Result.end(),
                                          [&](const auto& Entry) { return SameText(Entry.first, Line.Key); });
            if (Line.IsEntry && !Seen) {
                Result.emplace_back(Line.Key, Line.Value);
            }
        }
    }
    return Result;
}

void TIniDocument::SetValue(std::string_view Section, std::string_view Ident, std::string_view Value) {
    TSection* Target = FindSection(Section);
    if (Target == nullptr) {
        Target = &FSections.emplace_back(TSection{std::string(Section), {}});
    }
    auto& Lines = Target->Lines;
    const auto Same = [&](const TLine& Line) { return Line.IsEntry && SameText(Line.Key, Ident); };
    const auto First = std::find_if(Lines.begin(), Lines.end(), Same);
    if (First == Lines.end()) {
        Lines.push_back(TLine{true, std::string(Ident), std::string(Value), {}});
        return;
    }
    First->Value = std::string(Value);
    Lines.erase(std::remove_if(std::next(First), Lines.end(), Same), Lines.end());
}

bool TIniDocument::DeleteKey(std::string_view Section, std::string_view Ident) {
    TSection* Target = FindSection(Section);
    if (Target == nullptr) {
        return false;
    }
    auto& Lines = Target->Lines;
    const auto Before = Lines.size();
    Lines.erase(std::remove_if(Lines.begin(), Lines.end(),
                               [&](const TLine& Line) { return Line.IsEntry && SameText(Line.Key, Ident); }),
                Lines.end());
    return Lines.size() != Before;
}

bool TIniDocument::EraseSection(std::string_view Section) {
    const auto Before = FSections.size();
    FSections.erase(std::remove_if(FSections.begin(), FSections.end(),
                                   [&](const TSection& Item) { return SameText(Item.Name, Section); }),
                    FSections.end());
    return FSections.size() != Before;
}

} // namespace quorda
