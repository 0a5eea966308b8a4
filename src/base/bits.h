// The single-precision float whose IEEE-754 bits a stored word holds. (Kept
// apart from std::bit_cast, which not every C++ library of our targets has.)
#pragma once

#include <cstdint>
#include <cstring>

namespace ugf {

inline float float_from_bits(std::uint32_t bits) {
    float f = 0.0f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

}  // namespace ugf
