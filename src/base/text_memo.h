// Remembered formatted texts. Many cells of a long export repeat: the same
// status columns, the same thickness, the same pair of values. Formatting
// them again gives the same text, so a small fixed table keeps the texts
// that a format made, keyed on every input of that format, and a later cell
// with the same inputs copies the text instead of formatting it again.
//
// The table is direct-mapped: a key has exactly one slot, and a new text
// replaces whatever the slot held. Nothing is allocated.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ugf {

template <std::size_t KeyWords, std::size_t TextSize, std::size_t Slots>
struct TextMemo {
    static_assert(Slots > 0 && (Slots & (Slots - 1)) == 0, "slot count must be a power of two");
    using Key = std::array<std::uint64_t, KeyWords>;

    struct Entry {
        Key key{};
        bool filled = false;
        std::size_t length = 0;
        std::array<char, TextSize> text{};

        std::string_view view() const { return {text.data(), length}; }
    };

    std::array<Entry, Slots> entries{};

    // The one slot of `key`.
    Entry& slot(const Key& key) {
        std::uint64_t h = 0x9E3779B97F4A7C15ull;
        for (std::uint64_t word : key) {
            h ^= word;
            h *= 0xBF58476D1CE4E5B9ull;
            h ^= h >> 31;
        }
        return entries[static_cast<std::size_t>(h) & (Slots - 1)];
    }
};

// Whether `entry` holds the text of `key`.
template <typename Entry, typename Key>
bool memo_holds(const Entry& entry, const Key& key) {
    return entry.filled && entry.key == key;
}

// Stores the terminated text at `text` (at most TextSize - 1 characters are
// kept) as the text of `key` in `entry`.
template <typename Entry, typename Key>
void memo_store(Entry& entry, const Key& key, const char* text) {
    const std::size_t n = std::min(std::strlen(text), entry.text.size() - 1);
    std::memcpy(entry.text.data(), text, n);
    entry.text[n] = '\0';
    entry.length = n;
    entry.key = key;
    entry.filled = true;
}

// The texts that the reading rows of the detailed form remember: the status
// columns of each gauge, the two pieces of the measurement pairs, and whole
// rests of rows (status, pairs and line end) keyed on the keys of the three.
inline constexpr std::size_t ROW_TEXT_SIZE = 100;
inline constexpr std::size_t PIECE_TEXT_SIZE = 64;
inline constexpr std::size_t REST_TEXT_SIZE = ROW_TEXT_SIZE + 2 * PIECE_TEXT_SIZE;

struct RowMemos {
    TextMemo<2, ROW_TEXT_SIZE, 64> corrosion_status;
    TextMemo<1, ROW_TEXT_SIZE, 64> precision_status;
    TextMemo<1, PIECE_TEXT_SIZE, 64> first_pair;
    TextMemo<3, PIECE_TEXT_SIZE, 256> second_pairs;
    TextMemo<6, REST_TEXT_SIZE, 256> row_rest;
};

}  // namespace ugf
