// Counting with identifier texts: letter positions count in base 26 ("A" is
// 0), digit positions in base 10, and only the tail behind the last "-" is
// counted; the head is carried along.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ugf {

inline constexpr std::size_t ID_TEXT_MAX = 20;          // characters of an identifier text
inline constexpr std::size_t ID_TEXT_SIZE = ID_TEXT_MAX + 1;
inline constexpr std::int64_t ID_VALUE_MAX = 500000000;  // largest value accepted

// Value of a tail (a text without "-"); -1 when it exceeds ID_VALUE_MAX or
// holds a character that isn't "A"-"Z" or "0"-"9". The empty text is 0.
std::int64_t id_text_value(const char* tail);

// 1 when the two texts have the same shape: same length, not empty, letters
// against letters, digits against digits, "-" against "-", not ending in "-".
int id_texts_match(const char* a, const char* b);

// first + second, position by position over the tail of `first`. On success
// (1) `result` (ID_TEXT_SIZE bytes) holds the head of `first` and the whole
// sum, *value the value of the sum and *carry the carry out of the tail's
// first position.
int id_text_add(const char* first, const char* second, std::int64_t* value,
                std::int32_t* carry, char* result);

// minuend - subtrahend over the tail. On success (1) `result` (ID_TEXT_SIZE
// bytes) holds the head of the subtrahend and the whole difference, *value
// its value; on failure it is left as it was.
int id_text_subtract(const char* minuend, const char* subtrahend, std::int64_t* value,
                     char* result);

// Borrow for `position` of the working copy `work`, whose tail begins at
// `tail_start`. 0 on success, -1 when nothing is left to borrow from.
int id_borrow(char* work, std::size_t position, std::size_t tail_start);

}  // namespace ugf
