// The setup listing of built files: title rows by gage type and version, the
// rows of both thickness gauges cell by cell, the piece limit, and which
// setups are listed under which number.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "present/setup_listing.h"
#include "support/session_csv.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::GaugeSetupImage;

const std::string CORROSION_TITLES =
    "\nSETUP #,UNITS,VELOCITY,COATING VELOCITY,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,HIGH ALARM,ALARM %,"
    "BS RANGE,GAIN,TRANSDUCER,MB_BLANK,IF_BLANK,BS RESOLUTION,TEMPERATURE COMPENSATION,"
    "TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,COATING THICKNESS,MEASUREMENT TYPE";
const std::string PRECISION_TITLES =
    "\nSETUP #,NAME,MEAS MODE,UNITS,VELOCITY,ZERO,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,HIGH ALARM,"
    "ALARM %,BS RANGE,INITIAL GAIN,FINAL GAIN,SLOPE,TRANSDUCER,TRANSDUCER FREQUENCY,MB_BLANK,IF_BLANK,"
    "C3_BLANK,ECHO WINDOW,ECHO 1 DETECTION,ECHO 2 DETECTION,PULSER POWER,BS RESOLUTION,"
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,AUTO PHASE DETECT";

// The listing of a file of `gage` and `version` whose entries hold `setups`.
template <typename Setup>
test::CsvText listing_of(std::uint32_t gage, std::uint32_t version,
                         const std::vector<std::pair<int, Setup>>& setups) {
    test::SurveyHeader header;
    header.gage_type = gage;
    header.file_version = version;
    test::ImageBuilder image = test::survey_image(header);
    for (const auto& [entry, setup] : setups) {
        if constexpr (std::is_same_v<Setup, GaugeSetupImage>) {
            test::write_gauge_setup(image, 0, entry, setup);
        } else {
            test::write_flaw_setup(image, 0, entry, setup);
        }
    }
    test::OpenedSurvey opened(image);
    EXPECT_EQ(opened.result, 1);
    return test::csv_written_by([&](CsvSink& sink) { return write_setup_listing(opened.session, sink); });
}

// The rows under the title row of a listing with setup 0 alone.
std::string row_of(std::uint32_t gage, const GaugeSetupImage& setup) {
    const test::CsvText csv = listing_of<GaugeSetupImage>(gage, 24, {{0, setup}});
    EXPECT_EQ(csv.result, 1);
    return csv.text.substr(csv.text.find('\n', 1) + 1);
}

TEST(SetupListing, TitleRowByGageTypeAndVersion) {
    struct Case {
        std::uint32_t gage;
        std::uint32_t version;
        std::string expected;
    } cases[] = {
        {5, 20, CORROSION_TITLES + "\n"},
        {5, 19, CORROSION_TITLES + ",BSCAN DIRECTION\n"},
        {6, 24, PRECISION_TITLES + "\n"},
        {6, 19, PRECISION_TITLES + ",BSCAN DIRECTION\n"},
        {0, 20, CORROSION_TITLES + "\n"},  // an unknown gage with no setup lists nothing more
        {7, 24, ""},
    };
    for (const Case& c : cases) {
        const test::CsvText csv = listing_of<GaugeSetupImage>(c.gage, c.version, {});
        EXPECT_EQ(csv.result, 1) << c.gage << " " << c.version;
        EXPECT_EQ(csv.text, c.expected) << c.gage << " " << c.version;
    }
}

TEST(SetupListing, PresentSetupsUnderTheirTableNumbers) {
    GaugeSetupImage absent, velocity;
    absent.setup_present = 0;
    absent.transducer = 7;
    velocity.measurement_type = 1;
    const test::CsvText gauge = listing_of<GaugeSetupImage>(5, 24, {{0, {}}, {2, absent}, {5, velocity}});
    EXPECT_EQ(gauge.result, 1);
    EXPECT_EQ(gauge.text,
              CORROSION_TITLES + "\n" +
                  "0,IN,0.00000,0.00000,OFF, 0.00,OFF, 0.00, 0.00,0, 0.00,LOW ,XDCR-01 1.0 MHZ,0,0, 0.00,"
                  "OFF,+0.00000,   0 F,OFF,THICKNESS\n"
                  "5,IN/US,0.00000,0.00000,OFF, 0.000,OFF, 0.000, 0.000,0, 0.000,LOW ,XDCR-01 1.0 MHZ,0,0,"
                  " 0.000,OFF,+0.00000,   0 F,OFF,VELOCITY\n");

    // The flaw detector: no title row, a block for each present setup.
    const test::FlawSetupImage no_flaw{.setup_present = 0};
    const test::CsvText flaw = listing_of<test::FlawSetupImage>(7, 24, {{1, {}}, {3, no_flaw}, {4, {}}});
    EXPECT_EQ(flaw.result, 1);
    EXPECT_EQ(flaw.text.rfind("\nSETUP,1\nUNITS,IN\n", 0), 0u);
    EXPECT_NE(flaw.text.find("\nAPI K FACTOR,0.0000\n\nSETUP,4\nUNITS,IN\n"), std::string::npos);
    EXPECT_EQ(std::count(flaw.text.begin(), flaw.text.end(), '\n'), 2 * 64);

    // Any other gage type has the corrosion gauge's titles and no rows.
    const test::CsvText unknown = listing_of<GaugeSetupImage>(9, 24, {{3, {}}});
    EXPECT_EQ(unknown.result, 0);
    EXPECT_EQ(unknown.text, CORROSION_TITLES + "\n");
}

TEST(SetupListing, CorrosionGaugeRows) {
    struct Case {
        const char* what;
        void (*set)(GaugeSetupImage&);
        std::string row;
    } cases[] = {
        {"inch thickness, custom encoder x 100",
         [](GaugeSetupImage& s) {
             s.alarm_type = 1; s.diff_ref_blank = 1; s.resolution = 1; s.low_alarm = 1000;
             s.high_alarm = 123456; s.diff_reference = 12345; s.bs_range = 20000; s.alarm_percent = 10;
             s.velocity = 23300; s.gain_mode = 4; s.gain_db = 40; s.mb_blank = 4; s.if_blank = -3;
             s.temp_compensation = 1; s.bs_res_mode = 2; s.bs_encoder = 3; s.bs_step_code = 9;
             s.coating_velocity = 9000; s.temp_coefficient = -1500; s.temp_calibration = 68;
             s.custom_encoder_res = 50;
         },
         "0,IN,0.23300,0.09000,OFF,,HIGH, 0.100,12.346,10, 2.000,40DB,XDCR-01 1.0 MHZ,4,-3,0.0050000,"
         "ON,-0.01500,  68 F,OFF,THICKNESS\n"},
        {"velocity in millimetres: full resolution, 99 characters fit",
         [](GaugeSetupImage& s) {
             s.alarm_type = 2; s.diff_type = 2; s.units = 1; s.measurement_type = 1; s.low_alarm = 123450;
             s.diff_reference = 5000; s.bs_range = 1000000; s.alarm_percent = 5; s.transducer = 25;
             s.velocity = 5920; s.gain_mode = 1; s.auto_mb = 1; s.coating_thickness = 1; s.bs_res_mode = 1;
             s.coating_velocity = 2300; s.temp_coefficient = 1500; s.temp_calibration = 68;
         },
         "0,M/S, 5920, 2300,PERCENT,  0.50,LOW, 12.35,  0.00,5,100.00,STD ,XDCR-26 2.25 MHZ,AUTO MB,0,  0.00,"
         "OFF,+0.01500, 20.4 C,ON,VELOCITY\n"},
        {"velocity in microseconds, codes without a text, transducer past the table",
         [](GaugeSetupImage& s) {
             s.alarm_type = 6; s.diff_type = 3; s.units = 2; s.measurement_type = 1; s.transducer = 194;
         },
         "0,-----,    0,    0,,  0.00,,  0.00,  0.00,0,  0.00,LOW ,,0,0,  0.00,OFF,+0.00000,   0 F,OFF,VELOCITY\n"},
        {"measurement type 3 repeats the transducer; units 3",
         [](GaugeSetupImage& s) {
             s.alarm_type = 7; s.units = 3; s.resolution = 1; s.measurement_type = 3; s.transducer = 1;
         },
         "0,ALARM,    0,    0,OFF,  0.00,,  0.00,  0.00,0,  0.00,LOW ,XDCR-02 2.25 MHZ,0,0,  0.00,"
         "OFF,+0.00000,   0 F,OFF,XDCR-02 2.25 MHZ\n"},
        {"a long first piece is cut at 99 characters",
         [](GaugeSetupImage& s) {
             s.alarm_type = 5; s.diff_type = 1; s.resolution = 1; s.low_alarm = 1000;
             s.high_alarm = 123456; s.diff_reference = 12345; s.bs_range = 20000; s.alarm_percent = 255;
             s.transducer = 25; s.velocity = 4294967295u; s.gain_mode = 4; s.gain_db = 94;
             s.mb_blank = -32768; s.if_blank = -32768; s.coating_velocity = 65535;
         },
         "0,IN,0.4294967295,0.65535,ABSOLUTE, 1.235,PHASE REVERSAL, 0.100,12.346,255, 2.000,94DB MAX,XDCR-26 "
         "OFF,+0.00000,   0 F,OFF,THICKNESS\n"},
    };
    for (const Case& c : cases) {
        GaugeSetupImage setup;
        c.set(setup);
        EXPECT_EQ(row_of(5, setup), c.row) << c.what;
    }
}

TEST(SetupListing, PrecisionGaugeRows) {
    struct Case {
        const char* what;
        void (*set)(GaugeSetupImage&);
        std::string row;
    } cases[] = {
        {"inch setup, times of 0.0125 us (one cut to 9), custom encoder x 1000",
         [](GaugeSetupImage& s) {
             s.alarm_type = 3; s.diff_type = 1; s.resolution = 1; s.echo1_negative = 1; s.pulser_power = 2;
             s.low_alarm = 12345; s.high_alarm = 123456; s.diff_reference = 5000; s.alarm_percent = 50;
             s.zero = -1234; s.velocity = 23300; s.gain_mode = 123; s.gain_db = 5; s.slope = 40;
             s.transducer_frequency = 50; s.mb_blank = 4; s.if_blank = -4; s.c3_blank = -32768;
             s.echo_window = 65535; s.setup_name = "PIPE A"; s.auto_phase_detect = 1;
             s.temp_compensation = 1; s.bs_res_mode = 2; s.bs_encoder = 3; s.bs_step_code = 9;
             s.temp_coefficient = 1500; s.temp_calibration = 68; s.custom_encoder_res = 50;
         },
         "0,PIPE A,C1,IN,0.23300,-1234,ABSOLUTE,0.5000,HIGH-LOW,1.2345,12.346,50,0.0000,12.3,00.5,04.0,,5.0 MHZ,"
         "0.05 US,-0.05 US,-409.60 U,819.18 US,-,+,90 V,0.0500000,ON,+0.01500,  68 F,ON\n"},
        {"mode 5 in microns; the scan resolution stays in millimetres",
         [](GaugeSetupImage& s) {
             s.diff_type = 2; s.diff_ref_blank = 1; s.units = 1; s.resolution = 1; s.echo2_negative = 1;
             s.pulser_power = 3; s.low_alarm = 1234; s.transducer = 58; s.velocity = 5920;
             s.transducer_frequency = 5; s.setup_name = "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345";
             s.temp_calibration = 68; s.meas_mode = 5;
         },
         "0,ABCDEFGHIJKLMNOPQRSTUVWXYZ012345,CP,MICR, 5920,0,PERCENT,,OFF,  12.3,   0.0,0,   0.0,"
         "00.0,00.0,00.0,XDCR-58 2.25 MHZ,.5 MHZ,0.00 US,0.00 US,0.00 US,0.00 US,+,-,120 V, 0.000,"
         "OFF,+0.00000, 20.4 C,OFF\n"},
        {"velocity label wins over mode 5; the setup's resolution stays",
         [](GaugeSetupImage& s) { s.measurement_type = 1; s.low_alarm = 1234; s.meas_mode = 5; },
         "0,,CP,IN/US,0.00000,0,OFF,   0.0,OFF,  12.3,   0.0,0,   0.0,00.0,00.0,00.0,,.0 MHZ,"
         "0.00 US,0.00 US,0.00 US,0.00 US,+,+,30 V, 0.000,OFF,+0.00000,   0 F,OFF\n"},
        {"a mode without a name",
         [](GaugeSetupImage& s) { s.units = 2; s.meas_mode = 9; },
         "0,," + std::string(31, ' ') + ",US,    0,0,OFF,  0.00,OFF,  0.00,  0.00,0,  0.00,00.0,00.0,00.0,,.0 MHZ,"
         "0.00 US,0.00 US,0.00 US,0.00 US,+,+,30 V,  0.00,OFF,+0.00000,   0 F,OFF\n"},
    };
    for (const Case& c : cases) {
        GaugeSetupImage setup;
        c.set(setup);
        EXPECT_EQ(row_of(6, setup), c.row) << c.what;
    }
}

}  // namespace
}  // namespace ugf
