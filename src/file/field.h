// Field access to a datalogger image: big-endian numbers and terminated texts
// at absolute offsets.
//
// The file is never walked: every field is fetched by its own offset. Reads
// go through a page cache, so a field costs no system call of its own, while
// each read still behaves as a one-byte read of the file would: a byte at or
// past the end of the file prints "ERROR: FS_READ_ERROR.\n" on the stream's
// console and fails, and a wide read stops at its first failed byte. The
// image may also be bytes that the caller holds in memory; they are read in
// place and never copied.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "base/console.h"
#include "base/zeroed.h"

namespace ugf {

// Pages of 64 KiB: a walk through a large file reads it in few system calls.
inline constexpr std::size_t FILE_PAGE_SIZE = 65536;
inline constexpr std::size_t FILE_PAGE_COUNT = 32;  // 2 MiB of cache at most
// Every page of memory the cache fills costs a fault the first time (2 to
// 5 us a 4 KiB page, as much as converting a few dozen rows), so the cache
// begins with two pages, a page's home and its partner: a walk in storage
// order reads the file front by front, and the slot table's page stays
// beside the page of a scan. A page read again soon after it was replaced
// shows that the walk needs more: the pages in use then double.
inline constexpr std::size_t FILE_PAGES_FIRST = 2;
inline constexpr std::size_t FILE_PAGES_REPLACED = 64;  // replaced page numbers remembered
// A page taken within this many moves of the reads from page to page is
// not replaced: another entry is.
inline constexpr std::uint64_t FILE_PAGES_RECENT = 4;

// A cache of file pages. Page n goes to its home entry, n modulo the
// entries in use, as in a direct-mapped cache, which keeps most of a walk
// that cycles over more pages than the cache holds; but when the page at
// home was taken within the last few moves of the reads from page to page,
// the new page goes to the home's partner in the other half of the entries
// instead, if that was taken less recently. A walk that comes back to one
// page between reads of many others (the slot table's page between the
// B-scans, say) so keeps it. Each entry has the number of the page it holds
// and how many bytes of the page the file has: a page shorter than
// FILE_PAGE_SIZE is the end of the file. The small tables come first, so
// that a look-up touches none of the pages. All zero is an empty cache.
struct PageCache {
    std::array<std::uint64_t, FILE_PAGE_COUNT> held;  // 1 + the page number of each entry (0: none)
    std::array<std::size_t, FILE_PAGE_COUNT> length;
    std::array<std::uint64_t, FILE_PAGE_COUNT> used;  // the clock when the reads last moved to each entry
    std::uint64_t clock = 0;  // counts the moves of the reads from one page to another
    std::size_t in_use = 0;   // entries in use, a power of two (FILE_PAGES_FIRST after an opening)
    // 1 + the numbers of recently replaced pages (0: none), in a ring.
    std::array<std::uint64_t, FILE_PAGES_REPLACED> replaced;
    std::size_t next_replaced = 0;
    std::array<std::array<std::uint8_t, FILE_PAGE_SIZE>, FILE_PAGE_COUNT> pages;
};

// The input of a session: a file or bytes in memory, with its page cache and
// the console its read errors are printed on.
struct DlStream {
    std::FILE* file = nullptr;
    const std::uint8_t* memory = nullptr;  // the caller's bytes, when the input is in memory
    std::uint64_t memory_size = 0;
    int is_open = 0;
    ZeroedPtr<PageCache> cache;
    Console console{};
    // The last read that failed: its error line and the offset of the byte.
    const char* error = nullptr;
    std::uint64_t error_offset = 0;
    // The page of the last read, which most reads take again: 1 + its
    // number (0: none), its bytes, and how many of them the file has.
    std::uint64_t last_page = 0;
    const std::uint8_t* last_bytes = nullptr;
    std::size_t last_length = 0;
};

// Opens the file with the mode "r+b" (it is only ever read), as the converter
// does. 1 or 0.
int dl_open(DlStream& stream, const char* path);
// Opens the file for reading only. 1 or 0.
int dl_open_read_only(DlStream& stream, const char* path);
// Reads the `size` bytes at `bytes`, which the caller keeps until the stream
// is closed. 1, or 0 when no memory is left for the stream.
int dl_open_memory(DlStream& stream, const std::uint8_t* bytes, std::uint64_t size);
void dl_close(DlStream& stream);

// Length of the input in bytes (0 when it can't be told).
std::uint64_t dl_file_size(DlStream& stream);

std::uint8_t read_u8(DlStream& stream, std::uint64_t offset, int* ok);
std::uint16_t read_u16_be(DlStream& stream, std::uint64_t offset, int* ok);
std::uint32_t read_u24_be(DlStream& stream, std::uint64_t offset, int* ok);
std::uint32_t read_u32_be(DlStream& stream, std::uint64_t offset, int* ok);
// A u32 at the offset and a u8 behind it: (u32 << 8, in 32 bits) | u8. The
// first of the five bytes therefore has no effect.
std::uint64_t read_u40_be(DlStream& stream, std::uint64_t offset, int* ok);

// Reads a terminated text of at most `max` bytes (terminator included) into
// dst, which holds dst_size bytes. Returns 1 when a terminator was read.
// Returns 0 when `max` bytes were read with no terminator (no message), or
// when the end of the file came first (its error line is printed). dst is
// always terminated; characters beyond dst_size - 1 are read but not kept.
int read_text(DlStream& stream, std::uint64_t offset, char* dst, std::size_t dst_size,
              std::uint16_t max);

// Copies n bytes from the offset into dst and returns 1 when they all lie in
// one page that the file fills. Otherwise returns 0 having printed nothing;
// the caller then reads field by field, which reports what fails.
int read_in_page(DlStream& stream, std::uint64_t offset, std::uint8_t* dst, std::size_t n);

// The n bytes at the offset in place, when they all lie in one page that
// the file fills (as read_in_page copies them); else nullptr, having printed
// nothing. Valid until the next read of the stream. The page of the last
// read is taken inline, any other out of line.
const std::uint8_t* bytes_in_other_page(DlStream& stream, std::uint64_t offset, std::size_t n);
inline const std::uint8_t* bytes_in_page(DlStream& stream, std::uint64_t offset, std::size_t n) {
    const auto at = static_cast<std::size_t>(offset % FILE_PAGE_SIZE);
    if (stream.last_page == offset / FILE_PAGE_SIZE + 1 && n <= stream.last_length && at <= stream.last_length - n) {
        return stream.last_bytes + at;
    }
    return bytes_in_other_page(stream, offset, n);
}

// Copies up to n bytes from the offset into dst, silently, and returns how
// many there were before the end of the file.
std::size_t read_block(DlStream& stream, std::uint64_t offset, std::uint8_t* dst,
                       std::size_t n);

// A run of field reads relative to a base offset that stops at the first
// failure: once `ok` is 0 no further byte is touched and every read gives 0.
struct FieldRun {
    DlStream& stream;
    std::uint64_t base = 0;
    int ok = 1;

    std::uint8_t u8(std::uint64_t at) { return ok != 0 ? read_u8(stream, base + at, &ok) : 0; }
    std::uint16_t u16(std::uint64_t at) { return ok != 0 ? read_u16_be(stream, base + at, &ok) : 0; }
    std::uint32_t u24(std::uint64_t at) { return ok != 0 ? read_u24_be(stream, base + at, &ok) : 0; }
    std::uint32_t u32(std::uint64_t at) { return ok != 0 ? read_u32_be(stream, base + at, &ok) : 0; }
    std::uint64_t u40(std::uint64_t at) { return ok != 0 ? read_u40_be(stream, base + at, &ok) : 0; }
    // Signed fields are stored as the unsigned kinds of their width.
    std::int16_t i16(std::uint64_t at) { return static_cast<std::int16_t>(u16(at)); }
    std::int32_t i32(std::uint64_t at) { return static_cast<std::int32_t>(u32(at)); }
    // A terminated text of at most `max` bytes; a missing terminator fails.
    void text(std::uint64_t at, char* dst, std::size_t dst_size, std::uint16_t max) {
        if (ok != 0) ok = read_text(stream, base + at, dst, dst_size, max) != 0 ? 1 : 0;
    }
};

// `count` bits of a word from bit `low` up.
inline std::uint32_t word_bits(std::uint32_t word, int low, int count) {
    return (word >> low) & ((1u << count) - 1u);
}

}  // namespace ugf
