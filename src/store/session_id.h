// Identifier services of the open session: from a storage index to the
// finished text of a test point, or of one of its dimensions, by the rules of
// the file type. Row and column titles, the file rows' first and last points
// and the detailed rows all take their texts from here.
#pragma once

#include <cstdint>

#include "file/session.h"

namespace ugf {

// The identifier that types 8 and 9 keep in the slot behind the record (a
// text of 21 bytes at slot offset 16), into out (ID_TEXT_SIZE bytes). A
// record that can't be read empties out; a text that can't be read leaves
// out as it was.
void session_stored_id(DlSession& session, std::int64_t storage_index, char* out);

// The whole identifier of the test point at the storage index, into out
// (ID_TEXT_SIZE bytes), with the prefix when with_prefix is 1. Moves the
// cursor to that index.
void session_point_id(DlSession& session, std::int64_t storage_index, char* out, int with_prefix);

// The text of one dimension at the storage index, into out (ID_TEXT_SIZE
// bytes): a counted text, a custom point label or a manual label; in BOILER
// files with_unit 1 puts the elevation unit behind dimension 1. Moves the
// cursor to that index.
void session_dimension_text(DlSession& session, std::int64_t storage_index, char* out,
                            int dimension, int with_unit);

}  // namespace ugf
