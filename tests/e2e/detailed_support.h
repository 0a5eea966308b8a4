// Runs of the converter on built surveys for the tests of whole detailed and
// list-form files, and the fixed blocks of text that many of those files
// share, written out once.
#pragma once

#include <optional>
#include <string>

#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf::test {

inline const std::string PREAMBLE_CORROSION =
    "UFH: 1,PRODUCT: 40-116,VERSION: V3.03.03\nFILENAME,TYPE,FILE VERSION,";
inline const std::string PREAMBLE_PRECISION =
    "UFH: 1,PRODUCT: 40-117,VERSION: V3.03.03\nFILENAME,TYPE,FILE VERSION,";
inline const std::string PREAMBLE_FLAW =
    "UFH: 1,PRODUCT: 40-118,VERSION: V3.03.03\nFILENAME,TYPE,FILE VERSION,";

inline const std::string COLUMNS_LINEAR =
    "PREFIX,START COL,END COL,COL STEP,PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n";

// The end of every header value row: the notes count, the two stamps and a
// blank line.
inline const std::string STAMPS = "16,0/0/65516 0:0,0/0/65516 0:0\n\n";

inline const std::string IDENTITY_EMPTY = "DESCRIPTION:,\nLOCATION:,\nINSPECTOR ID:,\n";

inline const std::string NOTES_EMPTY =
    "\nNOTES DESIGNATOR,NOTE TEXT\n"
    "A,\nB,\nC,\nD,\nE,\nF,\nG,\nH,\nI,\nJ,\nK,\nL,\nM,\nN,\nO,\nP,\n";

inline const std::string CUSTOM_POINTS_TITLE = "\nCUSTOM POINT #,CUSTOM POINT TEXT\n";
inline const std::string CUSTOM_POINTS_2_TO_19 =
    "2,\n3,\n4,\n5,\n6,\n7,\n8,\n9,\n10,\n11,\n12,\n13,\n14,\n15,\n16,\n17,\n18,\n19,\n";

inline const std::string TITLES_CORROSION =
    "\nID,THICKNESS,UNITS,ALARM,DIFF,GAIN,FAST,NOTE #,SETUP #,MEAS MODE,B SCAN,A SCAN,"
    "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n";
inline const std::string TITLES_PRECISION =
    "\nID,THICKNESS,UNITS,ALARM,FAST,NOTE #,SETUP #,B SCAN,A SCAN,"
    "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n";
inline const std::string TITLES_FLAW =
    "\nID,UNITS,MEAS BOX 1,VALUE,MEAS BOX 2,VALUE,MEAS BOX 3,VALUE,SETUP,NOTES,A SCAN,B SCAN,"
    "GATE1 ALARM,GATE2 ALARM\n";

inline const std::string BSCAN_TITLE = ",BSCAN INDEX,THICKNESS,UNITS,ALARM,MIN/MAX\n";

// The setup table titles of files of version 20 and later.
inline const std::string SETUP_TITLES_CORROSION =
    "\nSETUP #,UNITS,VELOCITY,COATING VELOCITY,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,"
    "HIGH ALARM,ALARM %,BS RANGE,GAIN,TRANSDUCER,MB_BLANK,IF_BLANK,BS RESOLUTION,"
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,"
    "COATING THICKNESS,MEASUREMENT TYPE\n";
inline const std::string SETUP_TITLES_PRECISION =
    "\nSETUP #,NAME,MEAS MODE,UNITS,VELOCITY,ZERO,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,"
    "HIGH ALARM,ALARM %,BS RANGE,INITIAL GAIN,FINAL GAIN,SLOPE,TRANSDUCER,"
    "TRANSDUCER FREQUENCY,MB_BLANK,IF_BLANK,C3_BLANK,ECHO WINDOW,ECHO 1 DETECTION,"
    "ECHO 2 DETECTION,PULSER POWER,BS RESOLUTION,TEMPERATURE COMPENSATION,"
    "TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,AUTO PHASE DETECT\n";

// A corrosion gauge's A-scan of three samples behind a reading of 4.57 MM
// (high alarm, min/max fast mode, echo to echo), and the dump the detailed
// form writes under its row.
ThicknessAscanImage small_ascan();
inline const std::string SMALL_ASCAN_DUMP =
    ",MAX DATA [3][7][2]\n" ",10,20,30,\n" ",\n" ",MIN DATA [3][7][2]\n" ",1,2,3,\n"
    ",DELAY=12.34MM,RANGE=50.00MM,RECT=FULL,ZOOM=ON,FREEZE=OFF,MB BLANK=10,IF BLANK=20,"
    "MARKER1=5,MARKER2=20,WAVEFORM=FILLED\n";

inline const std::string FAILED_CONSOLE =
    "STATUS: Opening Datalogger Session...\n" "STATUS: Exporting Data Logger File...\n"
    "ERROR: Operation failed!\n";

struct Conversion {
    RunResult run;
    std::optional<std::string> output;
};

// A header of the file type and gage type with the identifier prefix.
SurveyHeader survey_header(std::uint32_t file_type, std::uint32_t gage_type,
                           const std::string& prefix = "");

// Converts `image`, saved as survey.ugf in a fresh folder, with the output
// form "d" or "g" and the echo choice "a" or "v".
Conversion convert(const ImageBuilder& image, const std::string& form, const std::string& echo = "a");

// A run that succeeds and writes exactly `expected`.
void expect_converts(const ImageBuilder& image, const std::string& form, const std::string& expected);

// A run whose export fails once `written` is in the file.
void expect_fails_after(const ImageBuilder& image, const std::string& form, const std::string& written);

}  // namespace ugf::test
