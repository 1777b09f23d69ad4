#pragma once

#include "quorda/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorda {

// Case-insensitive comparison of UTF-8 text with Unicode simple case folding (Latin-1, Latin
// Extended, Greek, Cyrillic and more); negative, zero or positive like strcmp.
QUORDA_API int CompareText(std::string_view A, std::string_view B);
QUORDA_API bool SameText(std::string_view A, std::string_view B);
// Byte-wise comparison; negative, zero or positive.
QUORDA_API int CompareStr(std::string_view A, std::string_view B);
// True when S begins with Prefix, ignoring case as SameText does.
QUORDA_API bool StartsText(std::string_view Prefix, std::string_view S);
QUORDA_API bool EndsText(std::string_view Suffix, std::string_view S);

// Unicode upper/lower case of UTF-8 text (invalid bytes pass through unchanged).
QUORDA_API std::string AnsiUpperCase(std::string_view S);
QUORDA_API std::string AnsiLowerCase(std::string_view S);
// ASCII letters only; every other byte is kept.
QUORDA_API std::string UpperCase(std::string_view S);
QUORDA_API std::string LowerCase(std::string_view S);

// Remove leading and/or trailing bytes <= ' '.
QUORDA_API std::string Trim(std::string_view S);
QUORDA_API std::string TrimLeft(std::string_view S);
QUORDA_API std::string TrimRight(std::string_view S);

QUORDA_API std::string IntToStr(std::int64_t Value);
// Upper-case hexadecimal, zero-padded to at least Digits digits (negative values as two's complement).
QUORDA_API std::string IntToHex(std::int64_t Value, int Digits);

// The next name of a ';'-separated field list, trimmed, starting at Pos (0-based). Pos moves past the
// separator; at the end of the text Pos equals Fields.size() and the result is empty.
QUORDA_API std::string ExtractFieldName(const std::string& Fields, std::size_t& Pos);

// 'text' with embedded quotes doubled.
QUORDA_API std::string QuotedStr(std::string_view S);
QUORDA_API std::string AnsiQuotedStr(std::string_view S, char Quote);
// Removes the quotes AnsiQuotedStr adds; text without a leading Quote is returned unchanged.
QUORDA_API std::string AnsiDequotedStr(std::string_view S, char Quote);

enum TReplaceFlag : unsigned { rfReplaceAll = 1, rfIgnoreCase = 2 };
using TReplaceFlags = unsigned;
QUORDA_API std::string StringReplace(std::string_view S, std::string_view OldPattern,
                                     std::string_view NewPattern, TReplaceFlags Flags);

// Number of code points of UTF-8 text (each invalid byte counts as one).
QUORDA_API std::size_t Utf8Length(std::string_view S);

// Simple case mapping of one code point.
QUORDA_API char32_t UnicodeToUpper(char32_t C);
QUORDA_API char32_t UnicodeToLower(char32_t C);

} // namespace quorda
