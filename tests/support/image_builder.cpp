#include "support/image_builder.h"

#include <fstream>

namespace ugf::test {

namespace {

void grow(std::vector<std::uint8_t>& bytes, std::size_t end) {
    if (bytes.size() < end) bytes.resize(end, 0);
}

}  // namespace

ImageBuilder& ImageBuilder::resize(std::size_t n) {
    bytes.resize(n, 0);
    return *this;
}

ImageBuilder& ImageBuilder::u8(std::size_t offset, std::uint32_t value) {
    grow(bytes, offset + 1);
    bytes[offset] = static_cast<std::uint8_t>(value);
    return *this;
}

ImageBuilder& ImageBuilder::u16(std::size_t offset, std::uint32_t value) {
    return u8(offset, value >> 8).u8(offset + 1, value);
}

ImageBuilder& ImageBuilder::u24(std::size_t offset, std::uint32_t value) {
    return u8(offset, value >> 16).u16(offset + 1, value);
}

ImageBuilder& ImageBuilder::u32(std::size_t offset, std::uint32_t value) {
    return u16(offset, value >> 16).u16(offset + 2, value);
}

ImageBuilder& ImageBuilder::u40(std::size_t offset, std::uint64_t value) {
    return u8(offset, static_cast<std::uint32_t>(value >> 32))
        .u32(offset + 1, static_cast<std::uint32_t>(value));
}

ImageBuilder& ImageBuilder::le16(std::size_t offset, std::uint32_t value) {
    return u8(offset, value).u8(offset + 1, value >> 8);
}

ImageBuilder& ImageBuilder::text(std::size_t offset, std::string_view text) {
    chars(offset, text);
    return u8(offset + text.size(), 0);
}

ImageBuilder& ImageBuilder::chars(std::size_t offset, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) u8(offset + i, static_cast<std::uint8_t>(text[i]));
    return *this;
}

ImageBuilder& ImageBuilder::fill(std::size_t offset, std::size_t count, std::uint8_t value) {
    grow(bytes, offset + count);
    for (std::size_t i = 0; i < count; ++i) bytes[offset + i] = value;
    return *this;
}

void ImageBuilder::save(const std::string& path) const {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace ugf::test
