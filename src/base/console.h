// Console lines and the one path of all CSV text.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace ugf {

// The two output forms of a survey.
inline constexpr int OUTPUT_GRID = 0;
inline constexpr int OUTPUT_DETAILED = 1;

// Where a session's status and error lines go. The library prints only
// through the console its caller gives it; an empty one prints nothing.
struct Console {
    void (*print)(void* context, const char* text) = nullptr;
    void* context = nullptr;
};

inline void console_print(const Console& console, const char* text) {
    if (console.print != nullptr) console.print(console.context, text);
}

// The write end of an export: the output stream (text mode) and the echo
// choice of the command line. Every writer receives it and passes it on.
// Instead of a stream, a caller may give a function that receives the text
// (memory outputs, the toolkit's writers); it then owns any failure.
struct CsvSink {
    std::FILE* stream = nullptr;
    int verbose_output = 0;  // 1: every text is echoed on standard output first
    void (*write)(void* context, const char* text, std::size_t n) = nullptr;
    void* context = nullptr;
    // 1: a cell that holds a stored text is quoted when it must be (RFC 4180),
    // so that the columns stay in place; the converter never sets it.
    int quote = 0;
};

// The text of a cell that holds a text stored in the file (a note, the
// description, a label, an identifier, a setup name): the text itself, or,
// with the sink's `quote` on and a comma, a double quote or a line end in
// it, the text in double quotes with its quotes doubled. `extra` is the
// number of characters the quotes added, by which a row buffer grows.
inline constexpr std::size_t STORED_TEXT_MAX = 64;  // longer texts are never quoted
inline constexpr std::size_t QUOTED_EXTRA_MAX = STORED_TEXT_MAX + 2;

struct StoredCell {
    const char* text = "";
    std::size_t extra = 0;
    char quoted[2 * STORED_TEXT_MAX + 3] = {};
};

void stored_cell(StoredCell& cell, const char* text, const CsvSink& sink);

// A Console that prints to standard output: the converter's status, error,
// usage and read error lines.
Console standard_output_console();

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
// the output. The text passes once more as a format with no values, so
// every "%%" comes out as "%"; a lone "%" is written unchanged and nothing
// in the text is ever read as a value. Always returns 1.
int csv_write(std::string_view text, CsvSink& sink);

// The "%%" to "%" pass of csv_write into `out` (which holds at least
// text.size() characters); returns the length written. Exposed for tests.
std::size_t collapse_percent_pairs(std::string_view text, char* out);

}  // namespace ugf
