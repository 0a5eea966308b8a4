/* Converts each survey named into OUT_DIR in both forms, under the
   converter's names: the detailed form through a file, the grid form
   through a write function.
     convert_samples OUT_DIR FILE.ugf... */
#include <stdio.h>
#include <string.h>

#include <ugf/ugf.h>

static int write_piece(void* file, const char* data, size_t size) { return fwrite(data, 1, size, file) == size; }

static int convert(const char* out_dir, const char* input) {
    const char* slash = strrchr(input, '/');
    char name[1024], path[2048];
    if (ugf_output_name(slash != NULL ? slash + 1 : input, UGF_DETAILED, 0, name, sizeof name) >= sizeof name) return 0;
    snprintf(path, sizeof path, "%s/%s", out_dir, name);
    ugf_survey* survey = NULL;
    int ok = ugf_open(input, &survey) && ugf_convert_to_file(survey, UGF_DETAILED, 0, path);
    ugf_output_name(slash != NULL ? slash + 1 : input, UGF_GRID, 0, name, sizeof name);
    snprintf(path, sizeof path, "%s/%s", out_dir, name);
    FILE* grid = ok ? fopen(path, "w") : NULL;
    ok = grid != NULL && ugf_convert(survey, UGF_GRID, 0, write_piece, grid);
    if (grid != NULL && fclose(grid) != 0) ok = 0;
    if (!ok) fprintf(stderr, "%s: %s\n", input, ugf_errmsg(survey));
    ugf_close(survey);
    return ok;
}

int main(int argc, char** argv) {
    int status = argc > 2 ? 0 : 2;
    for (int i = 2; i < argc; ++i) {
        if (!convert(argv[1], argv[i])) status = 1;
    }
    return status;
}
