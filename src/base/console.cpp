#include "base/console.h"

#include <cstdarg>
#include <cstring>

namespace ugf {

namespace {
void print_to_standard_output(void*, const char* text) { std::fputs(text, stdout); }
}  // namespace

Console standard_output_console() { return {print_to_standard_output, nullptr}; }

int format_text(char* buf, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int n = std::vsnprintf(buf, size, format, args);
    va_end(args);
    if (n < 0) return -1;
    if (size == 0) return 0;
    return static_cast<std::size_t>(n) < size ? n : static_cast<int>(size - 1);
}

int format_text_bounded(char* buf, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int n = std::vsnprintf(buf, size, format, args);
    va_end(args);
    return n < 0 ? -1 : n;
}

void stored_cell(StoredCell& cell, const char* text, const CsvSink& sink) {
    cell.text = text;
    cell.extra = 0;
    if (sink.quote == 0 || std::strpbrk(text, ",\"\r\n") == nullptr) return;
    const std::size_t length = std::strlen(text);
    if (length > STORED_TEXT_MAX) return;
    std::size_t n = 0;
    cell.quoted[n++] = '"';
    for (std::size_t i = 0; i < length; ++i) {
        if (text[i] == '"') cell.quoted[n++] = '"';
        cell.quoted[n++] = text[i];
    }
    cell.quoted[n++] = '"';
    cell.quoted[n] = '\0';
    cell.text = cell.quoted;
    cell.extra = n - length;
}

std::size_t collapse_percent_pairs(std::string_view text, char* out) {
    std::size_t n = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        out[n++] = text[i];
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return n;
}

namespace {

// Writes n characters to a stream, or to the sink's function. A stream
// belongs to one conversion and so to one thread at a time: where the C
// library offers a write that skips the stream's lock, it is used.
struct Out {
    std::FILE* stream;
    void (*write)(void* context, const char* text, std::size_t n);
    void* context;
};

void put_text(const char* data, std::size_t n, const Out& out) {
    if (out.write != nullptr) {
        out.write(out.context, data, n);
        return;
    }
#if defined(__GLIBC__)
    fwrite_unlocked(data, 1, n, out.stream);
#else
    std::fwrite(data, 1, n, out.stream);
#endif
}

// Writes text to one output with the percent pass, without copying the text:
// the pieces between the pairs "%%" go out as they stand, and a "%" without
// a partner stays in its piece.
void write_collapsed(std::string_view text, const Out& stream) {
    std::size_t start = 0;
    std::size_t from = 0;
    while (from < text.size()) {
        const void* hit = std::memchr(text.data() + from, '%', text.size() - from);
        if (hit == nullptr) break;
        const auto at = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
        if (at + 1 < text.size() && text[at + 1] == '%') {
            // Write up to and including this "%" and skip its partner.
            put_text(text.data() + start, at + 1 - start, stream);
            start = at + 2;
            from = start;
        } else {
            from = at + 1;
        }
    }
    if (start < text.size()) put_text(text.data() + start, text.size() - start, stream);
}

}  // namespace

int csv_write(std::string_view text, CsvSink& sink) {
    if (sink.verbose_output != 0) write_collapsed(text, Out{stdout, nullptr, nullptr});
    if (sink.write != nullptr || sink.stream != nullptr) {
        write_collapsed(text, Out{sink.stream, sink.write, sink.context});
    }
    return 1;
}

}  // namespace ugf
