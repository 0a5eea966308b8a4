/* A survey through the C library: opens it, prints its statistics, and
   writes its grid CSV (the bytes ugf2csv writes) beside it, or into the file
   named second.
     survey_summary FILE.ugf [OUTPUT.csv] */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <ugf/ugf.h>

/* The library hands the CSV out in pieces; they go to a text file. */
static int write_piece(void* context, const char* data, size_t size) {
    return fwrite(data, 1, size, (FILE*)context) == size;
}

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: survey_summary FILE.ugf [OUTPUT.csv]   (ugf %s)\n", ugf_version());
        return 2;
    }
    ugf_survey* survey = NULL;
    if (!ugf_open(argv[1], &survey)) {
        fprintf(stderr, "survey_summary: %s: %s\n", argv[1], ugf_errmsg(survey));
        ugf_close(survey);
        return 1;
    }

    ugf_statistics stats;
    if (!ugf_stats(survey, NAN, &stats)) {
        fprintf(stderr, "survey_summary: %s: %s\n", argv[1], ugf_errmsg(survey));
        ugf_close(survey);
        return 1;
    }
    printf("%s: %s survey of a %s (%s)\n", argv[1], stats.file_type_name, stats.instrument, stats.model);
    printf("%llu points, %llu readings in %s, %llu empty, %llu lost\n", (unsigned long long)stats.points,
           (unsigned long long)stats.readings, stats.units, (unsigned long long)stats.empty,
           (unsigned long long)stats.lost);
    if (stats.readings > 0) {
        printf("thinnest %s at %s, thickest %s at %s, mean %.4f\n", stats.min_text, stats.min_id, stats.max_text,
               stats.max_id, stats.mean);
    }

    /* The converter's name for the grid form, unless one was given. */
    char name[4096];
    const char* output = argv[2];
    if (output == NULL) {
        if (ugf_output_name(argv[1], UGF_GRID, 0, name, sizeof name) >= sizeof name) {
            fprintf(stderr, "survey_summary: %s: the name is too long\n", argv[1]);
            ugf_close(survey);
            return 1;
        }
        output = name;
    }
    FILE* file = fopen(output, "w");
    if (file == NULL) {
        perror(output);
        ugf_close(survey);
        return 1;
    }
    const int converted = ugf_convert(survey, UGF_GRID, 0, write_piece, file);
    if (fclose(file) != 0 || !converted) {
        fprintf(stderr, "survey_summary: %s: %s\n", output, converted ? "cannot write" : ugf_errmsg(survey));
        remove(output);
        ugf_close(survey);
        return 1;
    }
    printf("grid written to %s\n", output);
    ugf_close(survey);
    return 0;
}
