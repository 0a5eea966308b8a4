// The reading of a flaw detector. Such a reading stores no thickness: it
// stores the values of the three measurement boxes that its setup had on the
// screen. A grid cell shows box 1; a detailed row shows the units, the three
// boxes with their names, the setup number, the notes, the scan marks and
// the two gate alarms, the second of them worked out here from the A-scan
// and the distance-amplitude curve, since the instrument doesn't store it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "file/session.h"
#include "file/setup.h"
#include "base/console.h"
#include "file/records.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

// Every piece of a row is built in a buffer of this size.
inline constexpr std::size_t FLAW_PIECE_SIZE = 52;

// Writes a flaw detector reading: with full 0 the grid cell of box 1 (","
// for an empty slot or a box that is off), with full 1 the 13 cells of the
// detailed row behind the identifier and the line end (11 commas and the line
// end for an empty slot). `scan` is the reading's A-scan or nullptr; `store`
// holds its DAC points (nullptr: none). 1, or 0 when a write fails.
int print_flaw_reading(const DlSession& session, const ReadingRecord& reading, CsvSink& sink,
                       int full, const AscanRecord* scan, const ScanStore* store);

// The amplitude in percent of full scale that box kinds 35 and 36 show
// behind their soundpath: from the A-scan's gate amplitude (kind 35 gate 1,
// 36 gate 2) for an A-scan reading, 0 for a B-scan reading, and otherwise
// the seven bits kept in word0 bits 15 to 13 and word1 bits 3 to 0.
std::int32_t amplitude_percent(const ReadingRecord& reading, std::uint32_t box_kind,
                               std::uint32_t rectification, const AscanRecord* scan);

// The alarm state of gate 2 (0 off, 1 high, 2 low, 5 armed): without a scan
// only whether the setup's alarm has a test; with one, the test of the
// gate's peak, against the curve drawn from `dac_points` where the alarm
// compares with a curve.
int evaluate_gate2_alarm(const FlawSetup& setup, const AscanRecord* scan,
                         std::span<const DacPoint, DAC_POINT_COUNT> dac_points);

// "OFF", "HIGH", "LOW", "WARNING HIGH", "WARNING LOW", "ON" for the alarm
// codes 0 to 5; the empty text for any other code.
const char* alarm_state_text(std::uint32_t code);

}  // namespace ugf
