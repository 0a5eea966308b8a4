// Composes datalogger images field by field for the tests: big-endian
// numbers, texts and raw bytes at absolute offsets. The image grows to hold
// whatever is put into it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ugf::test {

struct ImageBuilder {
    std::vector<std::uint8_t> bytes;

    // Makes the image exactly n bytes long (cuts or pads with zeros).
    ImageBuilder& resize(std::size_t n);
    ImageBuilder& u8(std::size_t offset, std::uint32_t value);
    ImageBuilder& u16(std::size_t offset, std::uint32_t value);
    ImageBuilder& u24(std::size_t offset, std::uint32_t value);
    ImageBuilder& u32(std::size_t offset, std::uint32_t value);
    // Five bytes: the high byte first, then the low 32 bits.
    ImageBuilder& u40(std::size_t offset, std::uint64_t value);
    // Little-endian 16-bit word (the one such structure of the format).
    ImageBuilder& le16(std::size_t offset, std::uint32_t value);
    // The characters of text followed by a zero byte.
    ImageBuilder& text(std::size_t offset, std::string_view text);
    // The characters of text with no terminator.
    ImageBuilder& chars(std::size_t offset, std::string_view text);
    ImageBuilder& fill(std::size_t offset, std::size_t count, std::uint8_t value);

    void save(const std::string& path) const;
};

}  // namespace ugf::test
