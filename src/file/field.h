// Field access to a datalogger image: big-endian numbers and terminated texts
// at absolute offsets.
//
// The file is never walked: every field is fetched by its own offset. Reads
// go through a page cache, so a field costs no system call of its own, while
// each read still behaves as a one-byte read of the file would: a byte at or
// past the end of the file prints "ERROR: FS_READ_ERROR.\n" and fails, and a
// wide read stops at its first failed byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace ugf {

struct DlStream {
    std::FILE* file = nullptr;
    std::uint32_t generation = 0;  // tags this stream's pages in the cache
};

// Opens the file with the mode "r+b" (it is only ever read). 1 or 0.
int dl_open(DlStream& stream, const char* path);
void dl_close(DlStream& stream);

// Length of the file in bytes (0 when it can't be told).
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
// one cached page that the file fills. Otherwise returns 0 having printed
// nothing; the caller then reads field by field, which reports what fails.
int read_in_page(DlStream& stream, std::uint64_t offset, std::uint8_t* dst, std::size_t n);

// Copies up to n bytes from the offset into dst, silently, and returns how
// many there were before the end of the file.
std::size_t read_block(DlStream& stream, std::uint64_t offset, std::uint8_t* dst,
                       std::size_t n);

}  // namespace ugf
