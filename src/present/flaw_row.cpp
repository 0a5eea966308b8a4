#include "present/flaw_row.h"

#include <array>

#include "present/dac_curve.h"
#include "present/meas_box.h"
#include "base/labels.h"
#include "base/text_table.h"

namespace ugf {

namespace {

constexpr std::uint32_t RECTIFICATION_RF = 0;  // amplitudes centred on 256

constexpr char ALARM_STATE_TEXTS[][13] = {
    "OFF", "HIGH", "LOW", "WARNING HIGH", "WARNING LOW", "ON",
};

// A row with no A-scan has no curve points.
constexpr DacPointStore NO_DAC_POINTS{};

using Piece = std::array<char, FLAW_PIECE_SIZE>;

bool is_off(std::uint32_t kind) { return kind == BOX_KIND_OFF || kind == BOX_KIND_OFF_TOO; }

bool is_amplitude_kind(std::uint32_t kind) {
    return kind == BOX_KIND_GATE1_AMPLITUDE || kind == BOX_KIND_GATE2_AMPLITUDE;
}

// Renders one box into `box`, whose text carries over from the box before:
// the kinds without a rule leave it as it was.
void render_box(MeasBox& box, std::uint32_t kind, std::uint32_t word, const FlawSetup& setup) {
    box.kind = static_cast<std::int32_t>(kind);
    box.value = box_kind_has_value(kind) ? word : 0u;
    render_box_value(box, units(setup), resolution(setup), meas_mode(setup) == FLAW_MEAS_MODE_THRU ? 1u : 0u);
}

// The name of a box kind in boxes 2 and 3, where kind 40 has its long name.
const char* later_box_name(std::uint32_t kind) {
    if (kind == BOX_KIND_COATING) return ui_text(UI_COATING_LONG);
    return box_kind_name(static_cast<std::int32_t>(kind));
}

int write_piece(const Piece& piece, CsvSink& sink) { return csv_write(piece.data(), sink); }

// Units, box 1 and its value.
void box1_piece(Piece& p, const ReadingRecord& reading, const FlawSetup& setup, const MeasBox& box,
                const AscanRecord* scan) {
    const std::uint32_t kind = box1_kind(setup);
    const char* u = ui_text(UI_UNITS + units(setup));
    if (is_off(kind)) {
        format_text_bounded(p.data(), p.size(), "%s,%s,,", u, ui_text(UI_OFF_ON));
    } else if (is_amplitude_kind(kind)) {
        format_text_bounded(p.data(), p.size(), "%s,%s,%s %d%%,", u, box_kind_name(static_cast<std::int32_t>(kind)),
                            box.text.data(),
                            static_cast<int>(amplitude_percent(reading, kind, rectification(setup), scan)));
    } else {
        format_text_bounded(p.data(), p.size(), "%s,%s,%s,", u, box_kind_name(static_cast<std::int32_t>(kind)),
                            box.text.data());
    }
}

void box2_piece(Piece& p, std::uint32_t kind, const MeasBox& box) {
    if (is_off(kind)) format_text_bounded(p.data(), p.size(), ",,");
    else if (kind > BOX_KIND_COATING) format_text_bounded(p.data(), p.size(), " ,%s,", box.text.data());
    else format_text_bounded(p.data(), p.size(), "%s,%s,", later_box_name(kind), box.text.data());
}

void box3_piece(Piece& p, std::uint32_t kind, const MeasBox& box, int setup_number) {
    if (is_off(kind)) format_text_bounded(p.data(), p.size(), ",,%i,", setup_number);
    else if (kind > BOX_KIND_COATING) format_text_bounded(p.data(), p.size(), " ,%s,%i,", box.text.data(), setup_number);
    else format_text_bounded(p.data(), p.size(), "%s,%s,%i,", later_box_name(kind), box.text.data(), setup_number);
}

// The letters of the set note bits, "A" for bit 0, with no separator. Under
// the amplitude kinds bits 12 to 15 are not notes.
void notes_piece(Piece& p, std::uint32_t mask, std::uint32_t kind) {
    const int bits = is_amplitude_kind(kind) ? 12 : 16;
    std::size_t n = 0;
    for (int b = 0; b < bits; ++b) {
        if ((mask >> b) & 1u) p[n++] = static_cast<char>('A' + b);
    }
    p[n++] = ',';
    p[n] = '\0';
}

void flag_piece(Piece& p, std::uint32_t flag) {
    format_text_bounded(p.data(), p.size(), "%s,", ui_text(UI_OFF_ON + (flag != 0 ? 1 : 0)));
}

int print_flaw_row(const ReadingRecord& reading, const FlawSetup& setup, CsvSink& sink,
                   const AscanRecord* scan, const ScanStore* store) {
    Piece p{};
    MeasBox box{};
    // Each box is written before the next one renders over the shared text.
    render_box(box, box1_kind(setup), reading.word1, setup);
    box1_piece(p, reading, setup, box, scan);
    if (write_piece(p, sink) == 0) return 0;

    const std::uint32_t kind2 = box2_kind(setup);
    render_box(box, kind2, reading.word2, setup);
    box2_piece(p, kind2, box);
    if (write_piece(p, sink) == 0) return 0;

    const std::uint32_t kind3 = box3_kind(setup);
    render_box(box, kind3, reading.word3, setup);
    box3_piece(p, kind3, box, static_cast<int>(flaw_setup_number(reading)));
    if (write_piece(p, sink) == 0) return 0;

    notes_piece(p, flaw_note_mask(reading), box1_kind(setup));
    if (write_piece(p, sink) == 0) return 0;
    flag_piece(p, ascan_mark(reading));
    if (write_piece(p, sink) == 0) return 0;
    flag_piece(p, bscan_mark(reading));
    if (write_piece(p, sink) == 0) return 0;

    const std::uint32_t gate1 = scan != nullptr ? gate_alarm(*scan) : gate1_alarm(reading);
    format_text_bounded(p.data(), p.size(), "%s,", alarm_state_text(gate1));
    if (write_piece(p, sink) == 0) return 0;

    const int gate2 = evaluate_gate2_alarm(setup, scan, store != nullptr ? store->dac_points : NO_DAC_POINTS);
    format_text_bounded(p.data(), p.size(), "%s\n", alarm_state_text(static_cast<std::uint32_t>(gate2)));
    return write_piece(p, sink);
}

}  // namespace

const char* alarm_state_text(std::uint32_t code) {
    return code_text(ALARM_STATE_TEXTS, code);
}

std::int32_t amplitude_percent(const ReadingRecord& reading, std::uint32_t box_kind,
                               std::uint32_t rectification, const AscanRecord* scan) {
    switch (record_type(reading)) {
        case RECORD_BSCAN_LINK:
            return 0;
        case RECORD_ASCAN_LINK: {
            // No A-scan at hand: nothing is known of the gate's amplitude.
            if (scan == nullptr) return 0;
            const std::uint16_t g = box_kind == BOX_KIND_GATE1_AMPLITUDE ? scan->gate1_amplitude : scan->gate2_amplitude;
            std::uint16_t a = 0;
            if (g != AMPLITUDE_LOST) {
                if (rectification != RECTIFICATION_RF) a = g;
                else if (g <= 256) a = static_cast<std::uint16_t>(512u - 2u * g);
                else a = static_cast<std::uint16_t>(2u * g - 512u);
            }
            if (a == 0) return 0;
            const float percent = (static_cast<float>(a) / 511.0f) * 100.0f;
            return static_cast<std::int32_t>(percent);
        }
        default:
            return static_cast<std::int32_t>((word_bits(reading.word0, 13, 3) << 4) | (reading.word1 & 0xFu));
    }
}

int evaluate_gate2_alarm(const FlawSetup& setup, const AscanRecord* scan,
                         std::span<const DacPoint, DAC_POINT_COUNT> dac_points) {
    AlarmInput input;
    input.alarm_kind = gate2_alarm(setup) & 31u;
    input.level = setup.gate2_level;
    input.min_depth_counts =
        length_to_counts(static_cast<std::int32_t>(setup.gate2_min_depth), units(setup), setup.velocity);
    DacCurve curve{};
    CurveFrame frame{};
    if (scan == nullptr) return gate_alarm_state(input, curve, frame, 0);

    input.peak_amplitude = scan->gate2_amplitude;
    input.peak_position = scan->gate2_mti;
    CurveSetup cs;
    cs.range = setup.range;
    cs.delay = setup.delay;
    cs.zero = setup.zero;
    cs.velocity = setup.velocity;
    cs.units = static_cast<std::uint8_t>(units(setup));
    cs.dac_mode = static_cast<std::uint8_t>(dac_mode(setup));
    cs.dac_on = static_cast<std::uint8_t>(dac_on(setup));
    cs.dac_gain = setup.dac_gain;
    cs.rl_gain = setup.rl_gain;
    cs.sl_gain = setup.sl_gain;
    cs.el_gain = setup.el_gain;
    prepare_dac_curve(cs, scan->sample_count, dac_points, curve, frame);
    return gate_alarm_state(input, curve, frame, 1);
}

int print_flaw_reading(const DlSession& session, const ReadingRecord& reading, CsvSink& sink,
                       int full, const AscanRecord* scan, const ScanStore* store) {
    const FlawSetup& setup = session.setups[flaw_setup_number(reading)].flaw;
    if (full == 0) {
        if (record_type(reading) == RECORD_EMPTY) return csv_write(",", sink);
        MeasBox box{};
        const std::uint32_t kind = box1_kind(setup);
        render_box(box, kind, reading.word1, setup);
        if (kind == BOX_KIND_OFF) return csv_write(",", sink);
        Piece p{};
        format_text_bounded(p.data(), p.size(), "%s,", box.text.data());
        return write_piece(p, sink);
    }
    if (record_type(reading) == RECORD_EMPTY) return csv_write(",,,,,,,,,,,\n", sink);
    return print_flaw_row(reading, setup, sink, scan, store);
}

}  // namespace ugf
