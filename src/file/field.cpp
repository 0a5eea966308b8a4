#include "file/field.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/files.h"

namespace ugf {

namespace {

int seek_to(std::FILE* file, std::uint64_t offset) {
#if defined(_WIN32)
    return _fseeki64(file, static_cast<__int64>(offset), SEEK_SET) == 0;
#else
    if (offset > static_cast<std::uint64_t>(INT64_MAX)) return 0;
    return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0;
#endif
}

// The bytes of one page of the input: a view into the caller's memory, or a
// page of the cache.
struct PageView {
    const std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
};

// Page `number` at `bytes` becomes the page of the last read.
PageView take_page(DlStream& stream, std::uint64_t number, const std::uint8_t* bytes, std::size_t length) {
    stream.last_page = number + 1;
    stream.last_bytes = bytes;
    stream.last_length = length;
    return {bytes, length};
}

// The page holding `offset` when it is not the last one taken: the caller's
// memory, or a page of the cache, read into it when it isn't there; no
// bytes when the seek fails.
[[gnu::noinline]] PageView fetch_page_slow(DlStream& stream, std::uint64_t offset) {
    const std::uint64_t number = offset / FILE_PAGE_SIZE;
    if (stream.memory != nullptr) {
        // Beyond what a file offset can name, as a seek of a file would fail.
        if (offset > static_cast<std::uint64_t>(INT64_MAX)) return {};
        const std::uint64_t start = number * FILE_PAGE_SIZE;
        if (start >= stream.memory_size) return {stream.memory, 0};
        const std::uint64_t left = stream.memory_size - start;
        return take_page(stream, number, stream.memory + start,
                         static_cast<std::size_t>(left < FILE_PAGE_SIZE ? left : FILE_PAGE_SIZE));
    }
    if (stream.file == nullptr || stream.cache == nullptr) return {};
    PageCache& cache = *stream.cache;
    // Page n has two entries: its home, n modulo the entries in use, and
    // the home's partner in the other half. Doubling the entries in use
    // keeps every home a page had within its new two.
    const std::size_t home = static_cast<std::size_t>(number & (cache.in_use - 1));
    std::size_t entry = home;
    if (cache.held[entry] != number + 1) entry = home ^ (cache.in_use / 2);
    if (cache.held[entry] != number + 1) {
        if (cache.in_use < FILE_PAGE_COUNT &&
            std::find(cache.replaced.begin(), cache.replaced.end(), number + 1) != cache.replaced.end()) {
            // Read again soon after it was replaced: the walk needs more pages.
            cache.in_use *= 2;
        }
        // The page goes home, as in a direct-mapped cache (which keeps most
        // of a walk that cycles over more pages than the cache holds),
        // unless the page there was taken among the last few moves of the
        // reads: then to the one of its two entries whose last read is the
        // older.
        entry = static_cast<std::size_t>(number & (cache.in_use - 1));
        const std::size_t partner = entry ^ (cache.in_use / 2);
        if (cache.held[entry] != 0 && cache.clock - cache.used[entry] < FILE_PAGES_RECENT &&
            cache.used[partner] < cache.used[entry]) {
            entry = partner;
        }
        if (!seek_to(stream.file, number * FILE_PAGE_SIZE)) return {};
        if (cache.held[entry] != 0) {
            cache.replaced[cache.next_replaced] = cache.held[entry];
            cache.next_replaced = (cache.next_replaced + 1) % FILE_PAGES_REPLACED;
        }
        cache.held[entry] = number + 1;
        cache.length[entry] = std::fread(cache.pages[entry].data(), 1, FILE_PAGE_SIZE, stream.file);
        std::clearerr(stream.file);
    }
    cache.used[entry] = ++cache.clock;
    return take_page(stream, number, cache.pages[entry].data(), cache.length[entry]);
}

// The page holding `offset`; no bytes when the seek to it fails. The page of
// the last read is taken at once, inline.
inline PageView fetch_page(DlStream& stream, std::uint64_t offset) {
    if (stream.last_page == offset / FILE_PAGE_SIZE + 1) return {stream.last_bytes, stream.last_length};
    return fetch_page_slow(stream, offset);
}

// Readies the stream for a new input: an empty cache.
int begin_input(DlStream& stream) {
    if (stream.cache == nullptr) {
        stream.cache = make_zeroed<PageCache>();
        if (stream.cache == nullptr) return 0;
    }
    PageCache& cache = *stream.cache;
    cache.held.fill(0);
    cache.clock = 0;
    cache.used.fill(0);
    cache.in_use = FILE_PAGES_FIRST;
    cache.replaced.fill(0);
    stream.last_page = 0;
    stream.error = nullptr;
    stream.error_offset = 0;
    return 1;
}

int open_input(DlStream& stream, const char* path, const char* mode) {
    dl_close(stream);
    if (begin_input(stream) == 0) return 0;
    stream.file = ugf::open_file(path, mode);
    if (stream.file == nullptr) return 0;
    // The cache does the buffering; stdio's own buffer would only copy twice.
    std::setvbuf(stream.file, nullptr, _IONBF, 0);
    stream.is_open = 1;
    return 1;
}

void fail_read(DlStream& stream, std::uint64_t offset, const char* line) {
    stream.error = line;
    stream.error_offset = offset;
    console_print(stream.console, line);
}

}  // namespace

int dl_open(DlStream& stream, const char* path) { return open_input(stream, path, "r+b"); }

int dl_open_read_only(DlStream& stream, const char* path) { return open_input(stream, path, "rb"); }

int dl_open_memory(DlStream& stream, const std::uint8_t* bytes, std::uint64_t size) {
    dl_close(stream);
    stream.error = nullptr;
    stream.error_offset = 0;
    stream.memory = bytes != nullptr ? bytes : reinterpret_cast<const std::uint8_t*>("");
    stream.memory_size = bytes != nullptr ? size : 0;
    stream.is_open = 1;
    return 1;
}

void dl_close(DlStream& stream) {
    if (stream.file != nullptr) std::fclose(stream.file);
    stream.last_page = 0;
    stream.file = nullptr;
    stream.memory = nullptr;
    stream.memory_size = 0;
    stream.is_open = 0;
}

std::uint64_t dl_file_size(DlStream& stream) {
    if (stream.memory != nullptr) return stream.memory_size;
    if (stream.file == nullptr) return 0;
#if defined(_WIN32)
    if (_fseeki64(stream.file, 0, SEEK_END) != 0) return 0;
    const __int64 end = _ftelli64(stream.file);
#else
    if (fseeko(stream.file, 0, SEEK_END) != 0) return 0;
    const off_t end = ftello(stream.file);
#endif
    return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

std::uint8_t read_u8(DlStream& stream, std::uint64_t offset, int* ok) {
    *ok = 0;
    const PageView page = fetch_page(stream, offset);
    if (page.bytes == nullptr) {
        fail_read(stream, offset, "ERROR: FS_SEEK_ERROR.\n");
        return 0;
    }
    const std::size_t at = static_cast<std::size_t>(offset % FILE_PAGE_SIZE);
    if (at >= page.length) {
        fail_read(stream, offset, "ERROR: FS_READ_ERROR.\n");
        return 0;
    }
    *ok = 1;
    return page.bytes[at];
}

namespace {

// n big-endian bytes, stopping at the first failed byte.
std::uint32_t read_be(DlStream& stream, std::uint64_t offset, int n, int* ok) {
    // The usual field lies inside one page that the file fills: take its
    // bytes at once. Anything else (a page boundary, the end of the file, a
    // failed seek) goes byte by byte below, so the error lines and the stop
    // at the first failed byte stay those of single-byte reads.
    const std::size_t at = static_cast<std::size_t>(offset % FILE_PAGE_SIZE);
    if (at + static_cast<std::size_t>(n) <= FILE_PAGE_SIZE) {
        const PageView page = fetch_page(stream, offset);
        if (page.bytes != nullptr && at + static_cast<std::size_t>(n) <= page.length) {
            std::uint32_t value = 0;
            for (int i = 0; i < n; ++i) value = (value << 8) | page.bytes[at + static_cast<std::size_t>(i)];
            *ok = 1;
            return value;
        }
    }
    std::uint32_t value = 0;
    for (int i = 0; i < n; ++i) {
        std::uint8_t byte = read_u8(stream, offset + static_cast<std::uint64_t>(i), ok);
        if (*ok == 0) return 0;
        value = (value << 8) | byte;
    }
    return value;
}

}  // namespace

std::uint16_t read_u16_be(DlStream& stream, std::uint64_t offset, int* ok) {
    return static_cast<std::uint16_t>(read_be(stream, offset, 2, ok));
}

std::uint32_t read_u24_be(DlStream& stream, std::uint64_t offset, int* ok) {
    return read_be(stream, offset, 3, ok);
}

std::uint32_t read_u32_be(DlStream& stream, std::uint64_t offset, int* ok) {
    return read_be(stream, offset, 4, ok);
}

std::uint64_t read_u40_be(DlStream& stream, std::uint64_t offset, int* ok) {
    std::uint32_t high = read_u32_be(stream, offset, ok);
    if (*ok == 0) return 0;
    std::uint8_t low = read_u8(stream, offset + 4, ok);
    if (*ok == 0) return 0;
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(high << 8) | low);
}

int read_text(DlStream& stream, std::uint64_t offset, char* dst, std::size_t dst_size,
              std::uint16_t max) {
    if (dst_size == 0) return 0;
    std::size_t kept = 0;
    int remaining = max == 0 ? 1 : max;
    for (std::uint64_t at = offset;; ++at) {
        int ok = 0;
        std::uint8_t c = read_u8(stream, at, &ok);
        if (ok == 0) {
            dst[kept] = '\0';
            return 0;
        }
        if (c == 0) {
            dst[kept] = '\0';
            return 1;
        }
        if (kept + 1 < dst_size) dst[kept++] = static_cast<char>(c);
        if (--remaining == 0) {
            dst[kept] = '\0';
            return 0;
        }
    }
}

int read_in_page(DlStream& stream, std::uint64_t offset, std::uint8_t* dst, std::size_t n) {
    const std::size_t at = static_cast<std::size_t>(offset % FILE_PAGE_SIZE);
    if (n > FILE_PAGE_SIZE - at) return 0;
    const PageView page = fetch_page(stream, offset);
    if (page.bytes == nullptr || at + n > page.length) return 0;
    std::memcpy(dst, page.bytes + at, n);
    return 1;
}

const std::uint8_t* bytes_in_other_page(DlStream& stream, std::uint64_t offset, std::size_t n) {
    const std::size_t at = static_cast<std::size_t>(offset % FILE_PAGE_SIZE);
    if (n > FILE_PAGE_SIZE - at) return nullptr;
    const PageView page = fetch_page(stream, offset);
    if (page.bytes == nullptr || at + n > page.length) return nullptr;
    return page.bytes + at;
}

std::size_t read_block(DlStream& stream, std::uint64_t offset, std::uint8_t* dst,
                       std::size_t n) {
    std::size_t done = 0;
    while (done < n) {
        const PageView page = fetch_page(stream, offset + done);
        if (page.bytes == nullptr) return done;
        const std::size_t at = static_cast<std::size_t>((offset + done) % FILE_PAGE_SIZE);
        if (at >= page.length) return done;
        std::size_t take = page.length - at;
        if (take > n - done) take = n - done;
        std::memcpy(dst + done, page.bytes + at, take);
        done += take;
    }
    return done;
}

}  // namespace ugf
