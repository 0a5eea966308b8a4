// Tables of fixed texts kept as characters rather than as pointers: they need
// no relocation when a program loads the library, so they stay in read-only
// memory like any other constant.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ugf {

// The text of a small code from its list of texts; a code past the end of the
// list gives `other` (the empty text unless a rule names one).
template <std::size_t N, std::size_t W>
constexpr const char* code_text(const char (&texts)[N][W], std::uint32_t code,
                                const char* other = "") {
    return code < N ? texts[code] : other;
}

}  // namespace ugf
