#include "ident/id_text.h"

#include <cstring>

namespace ugf {
namespace {

// Only "A"-"Z" and "0"-"9" count; no case folding, no locale.
bool is_letter(char c) { return c >= 'A' && c <= 'Z'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_zero_char(char c) { return c == 'A' || c == '0'; }

// Length of s, but never more than ID_TEXT_MAX + 1: enough to tell an
// acceptable text from one that is too long without walking a long string.
std::size_t bounded_length(const char* s) {
    std::size_t n = 0;
    while (n <= ID_TEXT_MAX && s[n] != '\0') ++n;
    return n;
}

// Index of the first character behind the last "-" (0 when there is none).
std::size_t tail_start_of(const char* text, std::size_t length) {
    for (std::size_t i = length; i > 0; --i) {
        if (text[i - 1] == '-') return i;
    }
    return 0;
}

// Value of a result text, leading zero characters skipped (an all-zero
// result reaches the value as the empty text, 0).
std::int64_t value_without_leading_zeros(const char* text) {
    while (is_zero_char(*text)) ++text;
    return id_text_value(text);
}

}  // namespace

std::int64_t id_text_value(const char* tail) {
    if (tail == nullptr) return -1;
    std::size_t length = std::strlen(tail);
    // The weight stops growing once it passes the limit: a position that far
    // left may only hold a zero character, so its exact weight never matters
    // and the product can't overflow.
    std::int64_t weight = 1;
    std::int64_t sum = 0;
    for (std::size_t i = length; i > 0; --i) {
        char c = tail[i - 1];
        std::int64_t count = 0;
        std::int64_t radix = 0;
        if (is_letter(c)) {
            count = c - 'A';
            radix = 26;
        } else if (is_digit(c)) {
            count = c - '0';
            radix = 10;
        } else {
            return -1;
        }
        if (count != 0) {
            if (weight > ID_VALUE_MAX) return -1;
            sum += count * weight;  // at most 25 x 500,000,000 + 500,000,000
            if (sum > ID_VALUE_MAX) return -1;
        }
        if (weight <= ID_VALUE_MAX) weight *= radix;
    }
    return sum;
}

int id_texts_match(const char* a, const char* b) {
    if (a == nullptr || b == nullptr) return 0;
    std::size_t length = std::strlen(a);
    if (length == 0 || std::strlen(b) != length) return 0;
    for (std::size_t i = 0; i < length; ++i) {
        char x = a[i];
        char y = b[i];
        bool same_class = (is_letter(x) && is_letter(y)) || (is_digit(x) && is_digit(y)) ||
                          (x == '-' && y == '-');
        if (!same_class) return 0;
    }
    return a[length - 1] == '-' ? 0 : 1;
}

int id_text_add(const char* first, const char* second, std::int64_t* value,
                std::int32_t* carry, char* result) {
    if (first == nullptr || second == nullptr || value == nullptr || carry == nullptr ||
        result == nullptr) {
        return 0;
    }
    *value = 0;
    *carry = 0;
    std::size_t length = bounded_length(first);
    if (length > ID_TEXT_MAX || bounded_length(second) > ID_TEXT_MAX) return 0;
    if (id_texts_match(first, second) == 0) return 0;

    std::memset(result, 0, ID_TEXT_SIZE);
    char sum[ID_TEXT_SIZE] = {};  // the tail's digits, from its first position
    std::size_t tail = tail_start_of(first, length);
    int running = 0;
    for (std::size_t i = length; i > tail; --i) {
        char a = first[i - 1];
        char b = second[i - 1];
        bool letter = is_letter(a);
        char base = letter ? 'A' : '0';
        int radix = letter ? 26 : 10;
        int count = (a - base) + (b - base) + running;
        running = 0;
        if (count >= radix) {
            count -= radix;
            running = 1;
        }
        sum[i - 1 - tail] = static_cast<char>(base + count);
    }
    // The carry out of the tail's first position is reported, not written:
    // the text keeps its length.
    *carry = running;

    std::int64_t v = value_without_leading_zeros(sum);
    if (v < 0) {
        *carry = 0;
        return 0;
    }
    *value = v;
    std::memcpy(result, first, tail);
    std::memcpy(result + tail, sum, length - tail);
    return 1;
}

int id_borrow(char* work, std::size_t position, std::size_t tail_start) {
    if (work == nullptr || work[position] == '\0') return -1;
    if (position <= tail_start) return -1;
    if (is_zero_char(work[position - 1])) {
        if (id_borrow(work, position - 1, tail_start) < 0) return -1;
    }
    work[position - 1] = static_cast<char>(work[position - 1] - 1);
    // The class is read before the radix is added; the character then lies
    // above "Z" or "9" until the subtraction brings it back.
    int radix = is_letter(work[position]) ? 26 : 10;
    work[position] = static_cast<char>(work[position] + radix);
    return 0;
}

int id_text_subtract(const char* minuend, const char* subtrahend, std::int64_t* value,
                     char* result) {
    if (minuend == nullptr || subtrahend == nullptr || value == nullptr || result == nullptr) return 0;
    *value = 0;
    std::size_t length = bounded_length(subtrahend);
    if (bounded_length(minuend) > ID_TEXT_MAX || length > ID_TEXT_MAX) return 0;
    if (id_texts_match(subtrahend, minuend) == 0) return 0;

    char difference[ID_TEXT_SIZE] = {};
    char work[ID_TEXT_SIZE] = {};
    char sub[ID_TEXT_SIZE] = {};
    std::memcpy(work, minuend, length);
    std::memcpy(sub, subtrahend, length);

    std::size_t tail = tail_start_of(sub, length);
    for (std::size_t i = length; i > tail; --i) {
        std::size_t at = i - 1;
        if (work[at] < sub[at]) {
            if (id_borrow(work, at, tail) < 0) return 0;
        }
        char base = is_letter(sub[at]) ? 'A' : '0';
        difference[at - tail] = static_cast<char>(work[at] - sub[at] + base);
    }

    std::int64_t v = value_without_leading_zeros(difference);
    if (v < 0) return 0;  // result is left as it was
    *value = v;
    std::memset(result, 0, ID_TEXT_SIZE);
    std::memcpy(result, sub, tail);
    std::memcpy(result + tail, difference, length - tail);
    return 1;
}

}  // namespace ugf
