#include "base/text_builder.h"

namespace ugf {

void TextBuilder::put_int(std::int64_t value, int width, int precision, bool left) {
    // The digits, last first, of the magnitude (which the unsigned negation
    // gives for the most negative value too).
    char digits[20];
    int n = 0;
    std::uint64_t magnitude =
        value < 0 ? 0u - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    while (magnitude != 0) {
        digits[n++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    }
    if (precision < 0) precision = 1;
    const int zeros = precision > n ? precision - n : 0;
    const std::int64_t body = (value < 0 ? 1 : 0) + zeros + n;
    // A width of INT_MIN asks for more blanks than any buffer holds; the
    // 64-bit negation keeps it a count.
    std::int64_t w = width;
    if (w < 0) {
        left = true;
        w = -w;
    }
    std::int64_t blanks = w > body ? w - body : 0;
    if (!left) {
        for (; blanks > 0 && len + 1 < size; --blanks) put(' ');
    }
    if (value < 0) put('-');
    for (int k = 0; k < zeros && len + 1 < size; ++k) put('0');
    while (n > 0) put(digits[--n]);
    if (left) {
        for (; blanks > 0 && len + 1 < size; --blanks) put(' ');
    }
}

}  // namespace ugf
