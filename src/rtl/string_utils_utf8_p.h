#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorda::utf8 {

// A code point outside Unicode that stands for one byte of invalid UTF-8, so such bytes still
// compare and copy consistently.
constexpr char32_t kInvalidBase = 0x110000;

// Decodes the code point at Pos and advances Pos; invalid sequences yield kInvalidBase + byte and
// advance by one byte.
char32_t Decode(std::string_view S, std::size_t& Pos);
// Appends the UTF-8 form of C (an invalid-byte stand-in is appended as that byte).
void Encode(char32_t C, std::string& Out);

} // namespace quorda::utf8
