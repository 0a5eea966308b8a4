// Reads the slots of a survey the way the old converters read every field:
// for each byte a seek and a one-byte read on the buffered stream. Nothing
// is converted; the bytes are only summed, so that the reads can't be left
// out. run-bench.sh times it beside the converter, for scale.
//   legacy_read FILE
// Every byte from the slot table to the end of the file is read: for a
// thickness survey those are its slots, for a scan survey also the blocks
// behind them.
#include <cstdint>
#include <cstdio>

#include "file/file_map.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: legacy_read FILE\n");
        return 2;
    }
    std::FILE* file = std::fopen(argv[1], "rb");
    if (file == nullptr) return 1;
    const auto read_byte = [file](long offset) {
        if (std::fseek(file, offset, SEEK_SET) != 0) return -1;
        return std::fgetc(file);
    };
    const int hi = read_byte(static_cast<long>(ugf::HDR_FILE_TYPE));
    const int lo = read_byte(static_cast<long>(ugf::HDR_FILE_TYPE) + 1);
    if (hi < 0 || lo < 0) return 1;
    const ugf::FileMap map = ugf::file_map(hi << 8 | lo);
    std::uint64_t sum = 0;
    std::uint64_t bytes = 0;
    for (long offset = map.slot_table;; ++offset) {
        const int c = read_byte(offset);
        if (c < 0) break;
        sum += static_cast<std::uint64_t>(c);
        ++bytes;
    }
    std::fclose(file);
    std::printf("%llu bytes, sum %llu\n", static_cast<unsigned long long>(bytes),
                static_cast<unsigned long long>(sum));
    return 0;
}
