// The row of values under the fact columns of a detailed file: the file's
// name and type, the extent of the survey as first and last identifiers or
// dimension sizes, the walk, and the counts; then a blank line.
#pragma once

#include <cstddef>
#include <cstdint>

#include "file/session.h"
#include "base/console.h"

namespace ugf {

// Upper-cases `name` in place and writes "NAME,TYPE,29," through the buffer.
// 1, or 0 when the write fails.
int write_row_head(char* buffer, std::size_t size, char* name, std::int32_t file_type, CsvSink& sink);

// The value row of the session's file type (every type with an export). 1,
// or 0 when a read or a write fails, or for a type without a row.
int write_header_values(DlSession& session, CsvSink& sink);

}  // namespace ugf
