// Console lines and the one path of all CSV text.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace ugf {

// The write end of an export: the output stream (text mode) and the echo
// choice of the command line. Every writer receives it and passes it on.
struct CsvSink {
    std::FILE* stream = nullptr;
    int verbose_output = 0;
};

// Formatted print to standard output: status, error and usage lines.
void print_console(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Formatted print into buf of `size` bytes, always terminated. The callers size
// their buffers for the text; the bound only guards against overrun.
// Returns the number of characters written, or -1 on a formatting error.
int format_text(char* buf, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Bounded formatted print: at most size - 1 characters and a terminator.
// Returns the length the whole text would need, or -1 on a formatting error.
int format_text_bounded(char* buf, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Writes one piece of CSV text: to the console first when verbose, then to
// the output stream. The text passes once more as a format with no values,
// so every "%%" comes out as "%"; a lone "%" is written unchanged and nothing
// in the text is ever read as a value. Always returns 1.
int csv_write(std::string_view text, CsvSink& sink);

// The "%%" to "%" pass of csv_write into `out` (which holds at least
// text.size() characters); returns the length written. Exposed for tests.
std::size_t collapse_percent_pairs(std::string_view text, char* out);

}  // namespace ugf
