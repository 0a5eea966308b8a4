// Texts from an instrument are bytes; names and open formats want Unicode.
// A valid UTF-8 sequence is taken as it is, and any other byte as Latin-1,
// so that every text converts and valid UTF-8 never changes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ugf {

// The character at text[i] and its length in bytes: a valid UTF-8 sequence
// (shortest form, no surrogate halves, nothing past U+10FFFF), or else the
// one byte read as Latin-1.
char32_t next_char(std::string_view text, std::size_t i, std::size_t& length);

// Appends the UTF-8 form of a character.
void append_utf8(std::string& out, char32_t c);

// The whole text as valid UTF-8.
std::string utf8_text(std::string_view bytes);

}  // namespace ugf
