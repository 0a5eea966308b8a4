/* The C interface of the ugf library: datalogger files (.ugf) of handheld
   ultrasonic instruments opened as surveys, read point by point, converted
   into the converter's CSV (byte for byte), a workbook or JSON, and their
   statistics, report page and comparison. C99; docs/c-api.md describes every
   call.

   Conventions:
   - A call that can fail returns an int, 1 on success and 0 on failure; the
     failure is then read off the survey with ugf_errcode and ugf_errmsg.
   - Strings handed out (const char*) are UTF-8, owned by the survey, and
     valid until the next call on that survey or ugf_close.
   - Output goes to a file or to the caller's write function; the library
     never keeps a pointer the caller gave after the call returns.
   - A survey is used by one thread at a time; different surveys may be used
     on any threads at once. The library keeps no global state.
   - Callbacks must not call the library on the same survey. */
#ifndef UGF_UGF_H
#define UGF_UGF_H

#include <stddef.h>
#include <stdint.h>

#include "ugf/ugf_version.h"

#if defined(_WIN32)
#if defined(UGF_BUILDING_LIBRARY)
#define UGF_API __declspec(dllexport)
#else
#define UGF_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define UGF_API __attribute__((visibility("default")))
#else
#define UGF_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The library's version: UGF_VERSION_STRING and UGF_VERSION_NUMBER of the
   library that is loaded, which may be newer than the header. */
UGF_API const char* ugf_version(void);
UGF_API int ugf_version_number(void);

/* What went wrong. */
enum {
    UGF_ERROR_NONE = 0,
    UGF_ERROR_OPEN = 1,       /* no such file, or it cannot be opened */
    UGF_ERROR_NOT_SURVEY = 2, /* the header names no survey this library reads */
    UGF_ERROR_READ = 3,       /* a field lies beyond the end of the file */
    UGF_ERROR_NO_OUTPUT = 4,  /* a survey type without output (NOTES, SETUP, ...) */
    UGF_ERROR_DAMAGED = 5,    /* the survey's walk or a scan block is out of range */
    UGF_ERROR_OUTPUT = 6,     /* the output could not be created or written, or the sink was full */
    UGF_ERROR_ARGUMENT = 7,   /* a wrong argument, or a survey that is not open */
    UGF_ERROR_MEMORY = 8      /* no memory */
};

/* An open survey. */
typedef struct ugf_survey ugf_survey;

/* Opens a file for reading only (path in UTF-8), or a copy of `size` bytes.
   *survey is set even on failure, so that the error can be read; it is NULL
   only when there was no memory for it. Close it with ugf_close either way. */
UGF_API int ugf_open(const char* path_utf8, ugf_survey** survey);
UGF_API int ugf_open_memory(const void* bytes, size_t size, ugf_survey** survey);
/* Closes the survey and frees everything it handed out. NULL is fine. */
UGF_API void ugf_close(ugf_survey* survey);

/* The failure of the last call that returned 0 or NULL: a UGF_ERROR_* code
   and the text that the ugf command prints after "ugf: PATH: " ("" when
   none). A call that succeeds sets UGF_ERROR_NONE. A NULL survey gives
   UGF_ERROR_MEMORY and "no memory". */
UGF_API int ugf_errcode(const ugf_survey* survey);
UGF_API const char* ugf_errmsg(const ugf_survey* survey);
/* A fixed text for a code ("unknown error" for a code that is none). */
UGF_API const char* ugf_errstr(int code);

/* A fact of the survey's header: "file_type_name", "instrument", "model",
   "first_id", "last_id", "walk_pattern_name", "description",
   "inspector_id", "location". NULL for any other name. */
UGF_API const char* ugf_fact(ugf_survey* survey, const char* name);
/* The number of test points; 0 when the survey is not open. */
UGF_API uint32_t ugf_point_count(ugf_survey* survey);

/* One test point and the text and number of its grid cell. */
typedef struct ugf_point {
    int64_t index;         /* storage index of its slot */
    const char* id;        /* as the detailed form writes it ("" from ugf_read_point) */
    const char* text;      /* the grid cell's text, leading blanks kept */
    double value;          /* the number the cell shows; NaN when it shows none */
    int decimals;          /* of that number */
    int empty;             /* 1: no reading stored */
    int lost;              /* 1: a lost signal; the cell shows a marker or notes */
    int velocity;          /* 1: a sound velocity check, not a thickness */
    const char* units;     /* "IN", "MM", ... as the detailed form names them */
    uint32_t notes;        /* note mask, bit 0 is note "A" */
    int setup;             /* 0 to 31 */
    const char* alarm;     /* the reading's alarm state text */
    double low_alarm;      /* of its setup, where one is set; else NaN */
    int ascan, bscan;      /* 1: a stored A-scan or B-scan */
} ugf_point;

/* Called for each point; returns 1 to go on, 0 to stop. */
typedef int (*ugf_point_fn)(void* context, const ugf_point* point);
/* Calls `visit` for every point in the walk's order (the detailed form's).
   1 when the walk ended or `visit` stopped it; 0 when a read failed. */
UGF_API int ugf_points(ugf_survey* survey, ugf_point_fn visit, void* context);
/* The point in slot `index` (a storage index, as ugf_grid_cells gives). */
UGF_API int ugf_read_point(ugf_survey* survey, int64_t index, ugf_point* point);

/* The tables of the grid form: one for a 2D survey, one for each position of
   dimension 2 of a 3D survey, ...; none for LINEAR and MANUAL surveys. */
UGF_API int ugf_grid_count(ugf_survey* survey, size_t* count);
/* Table k's rows and columns, and its title ("" with one table). */
UGF_API int ugf_grid_shape(ugf_survey* survey, size_t k, size_t* rows, size_t* columns, const char** title);
/* Table k's row and column titles; NULL out of range. */
UGF_API const char* ugf_grid_row_title(ugf_survey* survey, size_t k, size_t row);
UGF_API const char* ugf_grid_column_title(ugf_survey* survey, size_t k, size_t column);
/* The storage index of each cell of table k, row by row, into the caller's
   `indexes`, which holds `count` >= rows * columns of them. */
UGF_API int ugf_grid_cells(ugf_survey* survey, size_t k, int64_t* indexes, size_t count);

/* A position the instrument marked on an A-scan: a marker, or a gate with
   its detection. -1 where there is none. */
typedef struct ugf_mark {
    const char* name; /* "MB BLANK", "MARKER1", "GATE 1", ... */
    int position;     /* trace sample; -1 when the gate lost its signal */
    int amplitude;    /* detection amplitude of a gate; -1 when none */
} ugf_mark;

/* A point of the flaw detector's distance-amplitude curve. */
typedef struct ugf_dac_point {
    int count;     /* detection count */
    int amplitude;
} ugf_dac_point;

/* A stored A-scan: the waveform of the reading that saved it. */
typedef struct ugf_ascan {
    const char* id;
    const char* reading; /* the point's cell text */
    const char* units;
    const int* max_samples;
    size_t max_count;
    const int* min_samples;
    size_t min_count;
    const int* peak_samples; /* flaw detector, when the display shows them */
    size_t peak_count;
    const char* delay; /* thickness gauges: the display's start and width, with units */
    const char* range;
    const ugf_mark* marks;
    size_t mark_count;
    const char* gate1_alarm; /* flaw detector */
    const char* gate2_alarm;
    const ugf_dac_point* dac_points;
    size_t dac_count;
} ugf_ascan;

/* A stored B-scan: the thickness profile saved with a reading. */
typedef struct ugf_bscan {
    const char* id;
    const char* reading;
    const char* units;
    size_t count;               /* of texts, values and alarms */
    const char* const* texts;   /* each point as the detailed form prints it */
    const double* values;       /* NaN for a lost or empty point */
    const char* const* alarms;
} ugf_bscan;

typedef int (*ugf_ascan_fn)(void* context, const ugf_ascan* scan);
typedef int (*ugf_bscan_fn)(void* context, const ugf_bscan* scan);
/* Calls `ascan` and `bscan` (either may be NULL) for every stored scan, in
   the walk's order; each returns 1 to go on, 0 to stop. The scan is valid
   during the call. 1 when the walk ended or a call stopped it. */
UGF_API int ugf_scans(ugf_survey* survey, ugf_ascan_fn ascan, ugf_bscan_fn bscan, void* context);

/* Receives output in pieces, in order; returns 1 to go on, 0 when it can
   take no more (the call then fails with UGF_ERROR_OUTPUT). */
typedef int (*ugf_write_fn)(void* context, const char* data, size_t size);

/* Output forms and flags. */
enum { UGF_GRID = 0, UGF_DETAILED = 1 };
enum {
    UGF_QUOTE = 1, /* stored texts quoted as RFC 4180 asks */
    UGF_XLSX = 2,  /* a workbook of the same rows and cells */
    UGF_JSON = 4   /* every field of the survey as JSON; the form is ignored */
};

/* Converts into the sink. Without flags the bytes are exactly those the
   converter (ugf2csv) writes for the form, with "\n" line ends. */
UGF_API int ugf_convert(ugf_survey* survey, int form, int flags, ugf_write_fn write, void* context);
/* Converts into a file, through a temporary file beside it: a failure
   leaves no file and an older one as it was. CSV is written as a text file
   (CR LF on Windows, as the converter writes it). */
UGF_API int ugf_convert_to_file(ugf_survey* survey, int form, int flags, const char* path_utf8);
/* The name the converter gives the output of `input_name`
   ("plant7.ugf": "plant7_detailed_output.csv"), like snprintf: writes at
   most size - 1 bytes and a terminating zero into buffer (which may be NULL
   when size is 0) and returns the length of the whole name, or 0 for a wrong
   form or flags. */
UGF_API size_t ugf_output_name(const char* input_name, int form, int flags, char* buffer, size_t size);

/* The figures of the survey's readings (as `ugf stats` gives them). */
typedef struct ugf_statistics {
    const char* path; /* as opened; "" for bytes */
    const char* instrument;
    const char* model;
    const char* file_type_name;
    const char* units; /* of most readings; the others are converted to them */
    uint64_t points, readings, empty, lost, velocity;
    double min, max;  /* NaN without readings */
    const char* min_text; /* the extremes as their cells print them, with their points */
    const char* min_id;
    const char* max_text;
    const char* max_id;
    double mean, stddev, cv; /* population standard deviation; cv in percent */
    int decimals;            /* the most a reading shows */
    const char* minimum_source; /* "--minimum", "low alarm" or "" */
    double minimum;             /* the minimum given; NaN for low alarms */
    uint64_t below;             /* readings below the minimum */
    double below_share;         /* percent of the readings */
} ugf_statistics;

/* `minimum` in the survey's units; NaN for each reading's setup's low alarm. */
UGF_API int ugf_stats(ugf_survey* survey, double minimum, ugf_statistics* stats);
/* The line `ugf stats --json` prints for the survey, "\n" included. */
UGF_API int ugf_stats_json(ugf_survey* survey, double minimum, ugf_write_fn write, void* context);

/* Compares two surveys of one part (`ugf compare`): the CSV and the page
   into their sinks, either of which may be NULL. `years` between them (NaN:
   no rate), `minimum` in the latest's units (NaN: its low alarms). Errors go
   on latest's handle. */
UGF_API int ugf_compare(ugf_survey* baseline, ugf_survey* latest, double years, double minimum, ugf_write_fn csv,
                        void* csv_context, ugf_write_fn page, void* page_context);

/* The report page (`ugf report`); `minimum` and `nominal` NaN when not given. */
UGF_API int ugf_report(ugf_survey* survey, double minimum, double nominal, ugf_write_fn write, void* context);

#ifdef __cplusplus
}
#endif

#endif
