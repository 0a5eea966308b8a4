// Scan payloads: read_reading over every slot type and behind links, both
// A-scan families, B-scans with their points and embedded A-scans, values
// that a block leaves for the next, and blocks that are wrong or cut short.
#include <gtest/gtest.h>

#include <string>

#include "store/scan.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::BscanImage;
using test::FlawAscanImage;
using test::ImageBuilder;
using test::ThicknessAscanImage;

const char* const READ_ERROR = "ERROR: FS_READ_ERROR.\n";
constexpr int DETAILED = 1;
constexpr int GRID = 0;
constexpr std::uint32_t BLOCK = 0x4000;  // where the tests put their blocks
constexpr std::uint32_t OTHER_BLOCK = 0x6000;

ScanStore store;  // far too large for the stack

struct ImageSession {
    test::ScratchDir dir;
    DlSession session;
    ImageSession(const ImageBuilder& image, std::int32_t gage_type, std::uint16_t version = 24,
                 std::int32_t file_type = 0) {
        image.save(dir.file("s.ugf"));
        EXPECT_EQ(dl_open(session.stream, dir.file("s.ugf").c_str()), 1);
        session.gage_type = gage_type;
        session.file_version = version;
        session.file_type = file_type;
    }
    ~ImageSession() { dl_close(session.stream); }
};

template <typename Read>
std::string console_of(Read read) {
    testing::internal::CaptureStdout();
    read();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// read_reading of `index`, with its console text.
int read_slot(ImageSession& s, std::int64_t index, ReadingRecord& reading, int load_bscan_points,
              std::string* console) {
    int result = -1;
    *console = console_of([&] { result = read_reading(s.session, index, reading, store, load_bscan_points); });
    return result;
}

class ScanRead : public testing::Test {
protected:
    void SetUp() override { store = ScanStore{}; }
};

TEST_F(ScanRead, SlotsWithoutBlocks) {
    struct Case {
        std::uint32_t type;
        int ok;
    } cases[] = {{0, 1}, {1, 1}, {3, 0}, {5, 0}, {6, 1}, {7, 1}};
    const std::int32_t gage_types[] = {5, 7};
    for (std::int32_t gage : gage_types) {
        for (const Case& c : cases) {
            ImageBuilder image;
            test::write_slot(image, 2, 4, {c.type << 29 | 0x1234, 0x01020304, 0x05060708, 0x090A0B0C});
            ImageSession s(image, gage, 24, 2);
            for (int mode : {DETAILED, GRID}) {
                ReadingRecord r;
                std::string console;
                EXPECT_EQ(read_slot(s, 4, r, mode, &console), c.ok) << gage << " " << c.type;
                EXPECT_EQ(console, "") << "a block head in a slot fails silently";
                EXPECT_EQ(r.word0, c.type << 29 | 0x1234);
            }
        }
    }
}

ThicknessAscanImage thickness_scan() {
    ThicknessAscanImage a;
    a.head.thickness = 0x1E240;
    a.min_samples = {10, 20, 30};
    a.max_samples = {1000, 2000, 3000};
    a.range = 0x00010002;
    a.marker1 = 100;
    a.marker2 = -200;
    return a;
}

TEST_F(ScanRead, ThicknessAscanSampleCountLimits) {
    struct Case {
        int sample_count;
        int ok;
    } cases[] = {{0, 1}, {1, 1}, {318, 1}, {319, 0}, {65535, 0}};
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
        ThicknessAscanImage a = thickness_scan();
        a.sample_count = c.sample_count;
        a.min_samples.assign(318, 7);
        a.max_samples.assign(318, 9);
        test::write_ascan_thickness(image, BLOCK, a);
        ImageSession s(image, 6);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), c.ok) << c.sample_count;
        EXPECT_EQ(console, "") << c.sample_count;
        if (c.ok) { EXPECT_EQ(store.ascan.sample_count, c.sample_count); }
        if (c.sample_count == 318) {
            EXPECT_EQ(store.min_samples[317], 7);
            EXPECT_EQ(store.max_samples[317], 9);
            EXPECT_EQ(store.max_samples[318], 0) << "nothing beyond the count";
        }
    }
}

TEST_F(ScanRead, ThicknessAscanCutByTheEndOfTheFile) {
    // Block offsets at which the file ends: inside the head, the minimum and
    // maximum samples, the fixed fields, and one byte before the end.
    const std::size_t ends[] = {2, 9, 17, 21, 653, 657, 1288, 1289, 1301, 1315};
    for (std::size_t end : ends) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
        test::write_ascan_thickness(image, BLOCK, thickness_scan());
        image.resize(BLOCK + end);
        ImageSession s(image, 5);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), 0) << end;
        EXPECT_EQ(console, READ_ERROR) << end;
    }
}

FlawAscanImage flaw_scan() {
    FlawAscanImage a;
    a.gate_alarm = 5;
    a.block_setup_number = 21;
    a.flaw_note_mask = 0x8421;
    a.box_value = {0x11111111, 0x22222222, 0x33333333};
    a.max_samples = {200, 201, 202, 203};
    a.min_samples = {10, 11, 12, 13};
    a.gate1_amplitude = 0x0101;
    a.gate2_mti = 0x0404;
    return a;
}

TEST_F(ScanRead, FlawAscanGateFieldsFromVersionNine) {
    struct Case {
        std::uint16_t version;
        std::size_t end;  // block bytes the file has
        int ok;
        const char* console;
        std::uint16_t gate1_amplitude;
    } cases[] = {
        {8, 1046, 1, "", 0},        // the bytes are there but version 8 has no gates
        {8, 1038, 1, "", 0},
        {9, 1046, 1, "", 0x0101},
        {9, 1040, 0, READ_ERROR, 0},  // ends inside the gate fields
        {9, 1045, 0, READ_ERROR, 0},
        {200, 1046, 1, "", 0x0101},
    };
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
        test::write_ascan_flaw(image, BLOCK, flaw_scan());
        image.resize(BLOCK + c.end);
        ImageSession s(image, 7, c.version);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), c.ok) << c.version << " " << c.end;
        EXPECT_EQ(console, c.console) << c.version << " " << c.end;
        if (c.ok) {
            EXPECT_EQ(store.ascan.gate1_amplitude, c.gate1_amplitude);
            if (c.version < 9) { EXPECT_EQ(store.ascan.gate2_mti, 0); }
        }
    }
}

TEST_F(ScanRead, FlawAscanSampleCountIsCheckedBeforeAnySample) {
    struct Case {
        int sample_count;
        std::size_t end;
        int ok;
        const char* console;
    } cases[] = {
        {318, 1046, 1, ""},
        {319, 34, 0, ""},          // refused before the pairs, which the file doesn't have
        {318, 34 + 2 * 318 - 1, 0, READ_ERROR},  // the last pair is cut
    };
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
        FlawAscanImage a = flaw_scan();
        a.sample_count = c.sample_count;
        a.with_gates = false;
        test::write_ascan_flaw(image, BLOCK, a);
        image.resize(BLOCK + c.end);
        ImageSession s(image, 7, 8);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), c.ok) << c.sample_count;
        EXPECT_EQ(console, c.console) << c.sample_count;
    }
}

TEST_F(ScanRead, FlawAscanDacPointsAndPeakDataByTheirFlags) {
    std::vector<DacPoint> dac;
    for (std::uint16_t i = 0; i < 25; ++i) dac.push_back({static_cast<std::uint16_t>(0x100 + i), static_cast<std::uint16_t>(0x200 + i)});
    const std::vector<std::uint8_t> peaks = {0xA1, 0xA2, 0xA3, 0xA4};

    struct Case {
        std::uint32_t dac_stored, peak_stored;
        bool dac_read;
        std::size_t peak_at;  // 0: no peak data read
    } cases[] = {{1, 1, true, 720}, {0, 1, false, 670}, {1, 0, true, 0}, {0, 0, false, 0}};
    for (const Case& c : cases) {
        store = ScanStore{};
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
        FlawAscanImage a = flaw_scan();
        a.dac_stored = c.dac_stored;
        a.peak_stored = c.peak_stored;
        a.dac_points = dac;
        test::write_ascan_flaw(image, BLOCK, a);
        // The peak bytes at both places they could be read from.
        for (std::size_t i = 0; i < peaks.size(); ++i) {
            image.u8(BLOCK + 670 + i, peaks[i] ^ 0x0F).u8(BLOCK + 720 + i, peaks[i]);
        }
        ImageSession s(image, 7, 9);
        ReadingRecord r;
        std::string console;
        ASSERT_EQ(read_slot(s, 0, r, DETAILED, &console), 1);
        if (c.dac_read) {
            // Entry 0 stands where the 670 bytes were overwritten for the test.
            EXPECT_EQ(store.dac_points[0].dac_count, 0xAEAD);
            EXPECT_EQ(store.dac_points[1].dac_count, 0x101);
            EXPECT_EQ(store.dac_points[11].dac_amplitude, 0x20B);
            // Entry 12 spans 718 to 721: its amplitude is the first pair of peak bytes.
            EXPECT_EQ(store.dac_points[12].dac_count, 0x10C);
            EXPECT_EQ(store.dac_points[12].dac_amplitude, 0xA1A2);
            EXPECT_EQ(store.dac_points[24].dac_amplitude, 0x218);
        } else {
            EXPECT_EQ(store.dac_points[1].dac_count, 0) << "no DAC points read";
        }
        if (c.peak_at == 720) {
            EXPECT_EQ(store.peak_samples[0], 0xA2);
            EXPECT_EQ(store.peak_samples[1], 0xA1);
            EXPECT_EQ(store.peak_samples[2], 0xA4);
            EXPECT_EQ(store.peak_samples[3], 0xA3);
        } else if (c.peak_at == 670) {
            EXPECT_EQ(store.peak_samples[0], 0xAD);
            EXPECT_EQ(store.peak_samples[1], 0xAE);
        } else {
            EXPECT_EQ(store.peak_samples[0], 0);
        }
        EXPECT_EQ(store.peak_samples[4], 0) << "as many peak bytes as samples";
    }
}

TEST_F(ScanRead, BytePairsSwapAndAnOddCountReadsOneMore) {
    ImageBuilder image;
    image.u8(0, 0x12).u8(1, 0x34).u8(2, 0x56).u8(3, 0x78).u8(4, 0x9A);
    ImageSession s(image, 7);
    SampleStore samples{};
    EXPECT_EQ(read_byte_pairs(s.session.stream, 0, samples, 2), 1);
    EXPECT_EQ(samples[0], 0x34);
    EXPECT_EQ(samples[1], 0x12);
    EXPECT_EQ(samples[2], 0);
    EXPECT_EQ(read_byte_pairs(s.session.stream, 0, samples, 3), 1);
    EXPECT_EQ(samples[2], 0x78);
    EXPECT_EQ(samples[3], 0x56) << "entry 3 is filled although the count is 3";
    std::string console = console_of([&] { EXPECT_EQ(read_byte_pairs(s.session.stream, 0, samples, 5), 0); });
    EXPECT_EQ(console, READ_ERROR) << "the sixth byte is past the end";
    console = console_of([&] { EXPECT_EQ(read_byte_pairs(s.session.stream, 0, samples, 321), 0); });
    EXPECT_EQ(console, "") << "a count beyond the store reads nothing";
}

TEST_F(ScanRead, ValuesBeyondANewBlockKeepWhatAnEarlierOneStored) {
    // Slot 0: five samples with DAC points and peak data; slot 1: two samples
    // and neither.
    ImageBuilder image;
    test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
    test::write_slot(image, 0, 1, test::link_record(2, OTHER_BLOCK));
    FlawAscanImage first = flaw_scan();
    first.max_samples = {1, 2, 3, 4, 5};
    first.min_samples = {6, 7, 8, 9, 10};
    first.dac_stored = 1;
    first.peak_stored = 1;
    first.dac_points = {{40, 400}, {80, 300}};
    first.peak_bytes = {0x21, 0x22, 0x23, 0x24, 0x25, 0x26};
    test::write_ascan_flaw(image, BLOCK, first);
    FlawAscanImage second = flaw_scan();
    second.max_samples = {91, 92};
    second.min_samples = {93, 94};
    second.bracket_2 = 5;
    test::write_ascan_flaw(image, OTHER_BLOCK, second);
    ImageSession s(image, 7, 9);
    ReadingRecord r;
    std::string console;
    ASSERT_EQ(read_slot(s, 0, r, DETAILED, &console), 1);
    ASSERT_EQ(read_slot(s, 1, r, DETAILED, &console), 1);
    EXPECT_EQ(store.ascan.bracket_2, 5);
    EXPECT_EQ(store.ascan.sample_count, 2);
    EXPECT_EQ(store.max_samples[0], 91);
    EXPECT_EQ(store.min_samples[1], 94);
    EXPECT_EQ(store.max_samples[2], 3) << "stale beyond the new count";
    EXPECT_EQ(store.min_samples[4], 10);
    EXPECT_EQ(store.dac_points[1].dac_amplitude, 300) << "stale DAC points";
    EXPECT_EQ(store.peak_samples[0], 0x22) << "stale peak data";
    EXPECT_EQ(store.peak_samples[4], 0x26);

    // The thickness gauges keep stale samples the same way.
    ImageBuilder gauge;
    test::write_slot(gauge, 0, 0, test::link_record(2, BLOCK));
    test::write_slot(gauge, 0, 1, test::link_record(2, OTHER_BLOCK));
    ThicknessAscanImage long_scan = thickness_scan();
    long_scan.min_samples = {1, 2, 3, 4};
    long_scan.max_samples = {5, 6, 7, 8};
    test::write_ascan_thickness(gauge, BLOCK, long_scan);
    ThicknessAscanImage short_scan = thickness_scan();
    short_scan.min_samples = {9};
    short_scan.max_samples = {10};
    short_scan.marker1 = 0;
    test::write_ascan_thickness(gauge, OTHER_BLOCK, short_scan);
    ImageSession g(gauge, 5);
    ASSERT_EQ(read_slot(g, 0, r, DETAILED, &console), 1);
    ASSERT_EQ(read_slot(g, 1, r, DETAILED, &console), 1);
    EXPECT_EQ(store.min_samples[0], 9);
    EXPECT_EQ(store.max_samples[0], 10);
    EXPECT_EQ(store.min_samples[3], 4);
    EXPECT_EQ(store.max_samples[3], 8);
    EXPECT_EQ(store.ascan.marker1, 0);
}

TEST_F(ScanRead, LinksToAHeadOfTheWrongType) {
    // An A-scan link needs a type 3 head in both outputs; a B-scan link needs
    // a type 5 head only when its points are loaded.
    for (std::uint32_t head_type = 0; head_type < 8; ++head_type) {
        for (int mode : {DETAILED, GRID}) {
            ImageBuilder image;
            test::write_slot(image, 0, 0, test::link_record(2, BLOCK));
            test::write_slot(image, 0, 1, test::link_record(4, OTHER_BLOCK));
            ThicknessAscanImage a = thickness_scan();
            a.head.record_type = head_type;
            test::write_ascan_thickness(image, BLOCK, a);
            BscanImage b;
            b.head = test::gauge_record({.record_type = head_type, .thickness = 777});
            test::write_bscan(image, OTHER_BLOCK, b);
            ImageSession s(image, 5);
            ReadingRecord r;
            std::string console;
            EXPECT_EQ(read_slot(s, 0, r, mode, &console), head_type == 3 ? 1 : 0) << head_type;
            EXPECT_EQ(console, "");
            const int bscan_ok = head_type == 5 || mode == GRID ? 1 : 0;
            EXPECT_EQ(read_slot(s, 1, r, mode, &console), bscan_ok) << head_type << " " << mode;
            EXPECT_EQ(console, "");
            EXPECT_EQ(record_type(store.bscan.head), head_type);
        }
    }
}

TEST_F(ScanRead, LinksPastTheEndOfTheFile) {
    for (std::uint32_t type : {2u, 4u}) {
        for (int mode : {DETAILED, GRID}) {
            for (std::uint32_t target : {0x1510u, 0x10000u, 0xFFFFFFFFu}) {
                ImageBuilder image;
                test::write_slot(image, 0, 0, test::link_record(type, target));
                ImageSession s(image, 6);
                ReadingRecord r;
                std::string console;
                EXPECT_EQ(read_slot(s, 0, r, mode, &console), 0) << type << " " << target;
                EXPECT_EQ(console, READ_ERROR) << "one line for the whole read";
            }
        }
    }
}

TEST_F(ScanRead, BscanPointsFromHandMadeLittleEndianBytes) {
    ImageBuilder image;
    test::write_slot(image, 0, 0, test::link_record(4, BLOCK));
    BscanImage b;
    b.head = test::gauge_record({.record_type = 5, .units = 1, .thickness = 4321});
    b.point_count = 3;
    test::write_bscan(image, BLOCK, b);
    const std::size_t points = BLOCK + 3164;
    image.u8(points + 0, 0x10).u8(points + 1, 0x01).u8(points + 2, 0x34).u8(points + 3, 0x12);
    image.u8(points + 4, 0x00).u8(points + 5, 0xFC).u8(points + 6, 0xFF).u8(points + 7, 0xFF);
    image.u8(points + 8, 0xC0).u8(points + 9, 0x83).u8(points + 10, 0x01).u8(points + 11, 0x00);
    ImageSession s(image, 5);
    ReadingRecord r;
    std::string console;
    ASSERT_EQ(read_slot(s, 0, r, DETAILED, &console), 1);
    EXPECT_EQ(store.bscan.point_count, 3);
    EXPECT_EQ(raw_thickness(store.bscan.head), 4321u);
    EXPECT_EQ(units(store.bscan.head), 1u);

    // Little-endian words: 0x0110 (negative, hi 4), 0xFC00 (lost, alarm 7,
    // minimum, maximum), 0x83C0 (lost, hi 15).
    struct Expected {
        std::uint32_t lost, alarm, min, max, negative, hi, magnitude;
    } expected[] = {{0, 0, 0, 0, 1, 4, 0x41234}, {1, 7, 1, 1, 0, 0, 0xFFFF}, {1, 0, 0, 0, 0, 15, 0xF0001}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        const BscanPoint p = bscan_point(store, i);
        const Expected& e = expected[i];
        EXPECT_EQ(point_lost(p), e.lost) << i;
        EXPECT_EQ(point_alarm(p), e.alarm) << i;
        EXPECT_EQ(point_min(p), e.min) << i;
        EXPECT_EQ(point_max(p), e.max) << i;
        EXPECT_EQ(point_negative(p), e.negative) << i;
        EXPECT_EQ(point_hi(p), e.hi) << i;
        EXPECT_EQ(point_magnitude(p), e.magnitude) << i;
    }
}

TEST_F(ScanRead, BscanPointCountAndStoreSize) {
    struct Case {
        const char* name;
        int point_count;
        std::uint32_t store_full;
        std::size_t file_points;  // points the file holds behind the block
        int ok;
    } cases[] = {
        {"no points", 0, 0, 0, 1},
        {"all there", 3, 0, 3, 1},
        {"last point cut", 3, 0, 2, 0},
        {"full store read whatever the count", 3, 1, 10000, 1},
        {"full store cut short", 3, 1, 9999, 0},
        {"largest count", 10000, 0, 10000, 1},
        {"count above the store", 10001, 0, 10001, 0},
        {"count above the store, nothing behind", 10001, 0, 0, 0},
    };
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(4, BLOCK));
        BscanImage b;
        b.point_count = c.point_count;
        test::write_bscan(image, BLOCK, b);
        image.resize(BLOCK + 3164 + 4 * c.file_points);
        if (c.file_points == 0) image.resize(BLOCK + 40);
        if (c.file_points > 0) image.u8(BLOCK + 3164 + 4 * c.file_points - 1, 0x5A);
        image.u16(BLOCK + 38, c.store_full);
        ImageSession s(image, 6);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), c.ok) << c.name;
        EXPECT_EQ(console, "") << c.name << ": the points fail with no message";
        if (c.ok && c.file_points == 10000) {
            EXPECT_EQ(bscan_point(store, 9999).second, 0x5A00) << c.name;
            const BscanPoint beyond = bscan_point(store, 10000);
            EXPECT_EQ(beyond.first | beyond.second, 0) << "no point beyond the store";
        }
    }
}

TEST_F(ScanRead, EmbeddedAscanThatCantBeReadFailsTheBscan) {
    struct Case {
        const char* name;
        std::uint32_t ascan_follows;
        int inner_sample_count;
        std::size_t end;  // bytes of the block in the file; 0: whole
        int ok;
        const char* console;
    } cases[] = {
        {"read", 1, 2, 0, 1, ""},
        {"too many samples", 1, 319, 0, 0, ""},
        {"cut inside the embedded fixed fields", 1, 2, 76 + 1300, 0, READ_ERROR},
        {"only the value 1 announces an A-scan", 2, 319, 0, 1, ""},
    };
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(4, BLOCK));
        BscanImage b;
        b.ascan_follows = c.ascan_follows;
        test::write_bscan(image, BLOCK, b);
        ThicknessAscanImage inner = thickness_scan();
        inner.sample_count = c.inner_sample_count;
        test::write_ascan_thickness(image, BLOCK + 76, inner);
        if (c.end != 0) image.resize(BLOCK + c.end);
        ImageSession s(image, 6);
        ReadingRecord r;
        std::string console;
        EXPECT_EQ(read_slot(s, 0, r, DETAILED, &console), c.ok) << c.name;
        EXPECT_EQ(console, c.console) << c.name;
    }
}

}  // namespace
}  // namespace ugf
