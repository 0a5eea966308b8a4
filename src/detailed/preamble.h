// The head of a detailed file: the "UFH:" row, the names of the file's fact
// columns, the identity rows, the note list and the label lists of manual
// files.
#pragma once

#include <cstddef>
#include <cstdint>

#include "file/session.h"
#include "base/console.h"

namespace ugf {

// The model text of the instrument of a gage type, as the head shows it; 31
// blanks for an unknown type.
const char* product_text(std::int32_t gage_type);

// The converter's version, shown in the first row.
inline constexpr const char* CONVERTER_VERSION = "V3.03.03";

// The array that carries the preamble and the column names: large enough for
// every file type; header_buffer_size gives the part that a type uses.
inline constexpr std::size_t HEADER_BUFFER_MAX = 230;
std::size_t header_buffer_size(std::int32_t file_type);

// "UFH: 1,PRODUCT: ...,VERSION: ...\n", then "FILENAME,TYPE,FILE VERSION,"
// with no line end: the column names continue that line. 1.
int write_file_preamble(char* buffer, std::size_t size, std::int32_t gage_type, const char* version,
                        CsvSink& sink);

// The rest of the second line: the names of the fact columns of the file
// type, formatted into the buffer. 1, or 0 for a type without them (6, 7, 9
// and above 12), which writes nothing.
int write_column_names(char* buffer, std::size_t size, std::int32_t file_type, CsvSink& sink);

// "DESCRIPTION:", "LOCATION:" and "INSPECTOR ID:" rows. 1 or 0.
int write_identity_rows(DlSession& session, CsvSink& sink);

// A blank line, the title row and one row for each of the 16 notes, read
// from the file at their whole stored length. 1, or 0 when a read fails.
int write_note_list(DlSession& session, CsvSink& sink);

// Manual files: the labels of each dimension that has any, the highest
// dimension first, read from the file. 1, or 0 when a read fails.
int write_dimension_labels(DlSession& session, CsvSink& sink, std::int32_t file_type);

}  // namespace ugf
