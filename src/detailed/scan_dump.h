// The dumps of stored scans in the detailed output: behind the row of a
// reading that carries one, the two waveform lists of an A-scan with its
// display settings, or the point table of a B-scan.
//
// Every dump line has an empty first cell, so a dump stands one column to the
// right of the identifiers. The value lists end with "\n,", which already
// writes the first cell of the line after them. A dump that more readings
// follow ends with the title row of the reading table again.
//
// The dumps read only what read_reading left in the scan store: its A-scan or
// B-scan record and their lists.
#pragma once

#include <cstdint>

#include "file/session.h"
#include "file/setup.h"
#include "present/number_format.h"
#include "base/console.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

// The A-scan of a corrosion or precision gauge reading (store.ascan with its
// two lists): "MAX DATA" and "MIN DATA" with their values, the settings line
// of the gage type and its line end; then, when `more` is 1, the titles.
// 1, or 0 when a write gave 0.
int write_ascan_dump_thickness(const DlSession& session, const ScanStore& store, CsvSink& sink,
                               int more);

// The A-scan of a flaw detector reading: the two lists under titles of four
// numbers, then the flaw scan block with `setup`, the reading's setup (the
// entry that flaw_setup_number of the merged reading selects).
int write_ascan_dump_flaw(const DlSession& session, const ScanStore& store,
                          const FlawSetup& setup, CsvSink& sink, int more);

// The first sample_count values of a list, "%d," each as unsigned 16-bit,
// ten to a line; every line, the last one too (even when empty), ends in
// "\n,". A count beyond the list's 320 entries stops at the list's end.
int write_sample_values(const AscanRecord& ascan, const SampleStore& values, CsvSink& sink);

// The settings line of a corrosion gauge A-scan, "DELAY=...,...,WAVEFORM=..."
// with no comma at its end.
int write_ascan_settings_corrosion(const AscanRecord& ascan, CsvSink& sink);

// The settings line of a precision gauge A-scan, with the measurement mode of
// the reading's setup deciding the scale and the units; it ends in a comma.
int write_ascan_settings_precision(const DlSession& session, const AscanRecord& ascan,
                                   CsvSink& sink);

// What follows the lists of a flaw detector A-scan (store.ascan): the peak
// list when the head shows it, the four gate lines, and when the head shows
// it the DAC table with the depth of each stored point.
int write_flaw_scan_block(const ScanStore& store, const FlawSetup& setup, CsvSink& sink);

// How the points of a B-scan print: the number format and unit label of the
// setup of the reading, by gage type.
struct PointFormat {
    std::uint32_t units = 0;
    std::uint32_t resolution = 0;
    DigitLayout layout = LAYOUT_STANDARD;
    std::uint32_t doubled = 0;
    std::uint32_t meas_mode = 0;
    const char* unit = "";
    LengthForm length{};  // of the fields above
};

PointFormat point_format(const DlSession& session, const ReadingRecord& reading);

// The thickness text of a B-scan point: "--.---" for a lost signal, nothing
// for a position without a reading, else the thickness.
void point_value_text(char* out, std::size_t size, const BscanPoint& p, const PointFormat& f);
// The same, returning the length of the text.
std::size_t point_value_length(char* out, std::size_t size, const BscanPoint& p, const PointFormat& f);

// The point table of a B-scan (store.bscan and its points) under its title
// line, in the number format of the merged reading's setup; then, when `more`
// is 1, the titles.
int write_bscan_dump(const DlSession& session, const ReadingRecord& reading,
                     const ScanStore& store, CsvSink& sink, int more);

}  // namespace ugf
