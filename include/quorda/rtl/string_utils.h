#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorda {

// Case-insensitive comparison of UTF-8 text with Unicode simple case folding (Latin-1, Latin
// Extended, Greek, Cyrillic and more); negative, zero or positive like strcmp.
int CompareText(std::string_view A, std::string_view B);
bool SameText(std::string_view A, std::string_view B);
// Byte-wise comparison; negative, zero or positive.
int CompareStr(std::string_view A, std::string_view B);
// True when S begins with Prefix, ignoring case as SameText does.
bool StartsText(std::string_view Prefix, std::string_view S);
bool EndsText(std::string_view Suffix, std::string_view S);

// Unicode upper/lower case of UTF-8 text (invalid bytes pass through unchanged).
std::string AnsiUpperCase(std::string_view S);
std::string AnsiLowerCase(std::string_view S);
// ASCII letters only; every other byte is kept.
std::string UpperCase(std::string_view S);
std::string LowerCase(std::string_view S);

// Remove leading and/or trailing bytes <= ' '.
std::string Trim(std::string_view S);
std::string TrimLeft(std::string_view S);
std::string TrimRight(std::string_view S);

std::string IntToStr(std::int64_t Value);
// Upper-case hexadecimal, zero-padded to at least Digits digits (negative values as two's complement).
std::string IntToHex(std::int64_t Value, int Digits);

// The next name of a ';'-separated field list, trimmed, starting at Pos (0-based). Pos moves past the
// separator; at the end of the text Pos equals Fields.size() and the result is empty.
std::string ExtractFieldName(const std::string& Fields, std::size_t& Pos);

// 'text' with embedded quotes doubled.
std::string QuotedStr(std::string_view S);
std::string AnsiQuotedStr(std::string_view S, char Quote);
// Removes the quotes AnsiQuotedStr adds; text without a leading Quote is returned unchanged.
std::string AnsiDequotedStr(std::string_view S, char Quote);

enum TReplaceFlag : unsigned { rfReplaceAll = 1, rfIgnoreCase = 2 };
using TReplaceFlags = unsigned;
std::string StringReplace(std::string_view S, std::string_view OldPattern, std::string_view NewPattern,
                          TReplaceFlags Flags);

// Number of code points of UTF-8 text (each invalid byte counts as one).
std::size_t Utf8Length(std::string_view S);

// Simple case mapping of one code point.
char32_t UnicodeToUpper(char32_t C);
char32_t UnicodeToLower(char32_t C);

} // namespace quorda
