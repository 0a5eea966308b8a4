// The page cache of a file input: whatever order the fields are read in
// (one front, fronts whose pages share an entry, a cycle over more pages
// than the cache holds, one page between the reads of many, jumps), every
// read gives the file's bytes, and a read at or past the end fails with its
// error line; a stream opened again gives the new file's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "file/field.h"

namespace ugf {
namespace {

std::uint8_t byte_at(std::uint64_t offset, std::uint64_t seed = 0) {
    return static_cast<std::uint8_t>(((offset + seed) * 2654435761u) >> 13);
}

TEST(PageCache, EveryOrderOfReadsGivesTheFilesBytes) {
    const std::uint64_t size = 40 * FILE_PAGE_SIZE + 1000;
    const std::string path = testing::TempDir() + "page_cache_test.bin";
    std::FILE* out = std::fopen(path.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    for (std::uint64_t i = 0; i < size; ++i) std::fputc(byte_at(i), out);
    std::fclose(out);

    const std::uint64_t P = FILE_PAGE_SIZE;
    // Each order is a list of offsets; the read at each is a u32 when it
    // fits before the end of the file, and a byte after it.
    std::vector<std::vector<std::uint64_t>> orders(6);
    for (std::uint64_t i = 0; i < size; i += 1001) orders[0].push_back(i);  // one front
    for (std::uint64_t i = 0; i < 3000; ++i) {
        orders[1].push_back(i * 7);                                      // the table at page 0
        orders[1].push_back(4 * P + i * 301);                            // and records in entries 0, 1, ...
        orders[2].push_back((i % 41) * P + i);                           // a cycle over every page
        orders[3].push_back((i * 2654435761u) % (size + 9));             // jumps, past the end too
        orders[4].push_back(i % 2 == 0 ? P - 2 + (i % 5) : size - 3 + (i % 7));  // across pages and the end
        orders[5].push_back(i % 3 == 0 ? i : 2 * P + i * 997);                   // page 0 between blocks
    }
    for (const auto& order : orders) {
        DlStream stream;
        ASSERT_EQ(dl_open_read_only(stream, path.c_str()), 1);
        for (std::uint64_t offset : order) {
            int ok = 0;
            const std::uint32_t value = read_u32_be(stream, offset, &ok);
            if (offset + 4 <= size) {
                ASSERT_EQ(ok, 1) << offset;
                const std::uint32_t expected = std::uint32_t{byte_at(offset)} << 24 | byte_at(offset + 1) << 16 |
                                               byte_at(offset + 2) << 8 | byte_at(offset + 3);
                ASSERT_EQ(value, expected) << offset;
            } else {
                ASSERT_EQ(ok, 0) << offset;
                ASSERT_STREQ(stream.error, "ERROR: FS_READ_ERROR.\n");
                ASSERT_EQ(stream.error_offset, std::max(offset, size));
            }
        }
        dl_close(stream);
    }
    // The same stream on another file of other bytes: no page of the first
    // answers for it.
    const std::string other = testing::TempDir() + "page_cache_test_2.bin";
    out = std::fopen(other.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    for (std::uint64_t i = 0; i < 5 * P; ++i) std::fputc(byte_at(i, 77), out);
    std::fclose(out);
    DlStream stream;
    for (const std::string* file : {&path, &other, &path}) {
        ASSERT_EQ(dl_open_read_only(stream, file->c_str()), 1);
        const std::uint64_t seed = file == &other ? 77 : 0;
        for (std::uint64_t offset = 0; offset < 5 * P; offset += 4099) {
            int ok = 0;
            ASSERT_EQ(read_u8(stream, offset, &ok), byte_at(offset, seed)) << offset;
        }
    }
    dl_close(stream);
    std::remove(other.c_str());
    std::remove(path.c_str());
}

}  // namespace
}  // namespace ugf
