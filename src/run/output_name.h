// The name of a conversion's output: the input's name without its extension
// (the last four characters, ".ugf" or ".UGF"), the form's suffix and the
// kind's extension: "plant7.ugf" gives "plant7_detailed_output.csv" or
// "plant7_grid_output.csv". Every program names its outputs here.
#pragma once

#include <cstddef>

#include "base/console.h"

namespace ugf {

inline constexpr std::size_t INPUT_EXTENSION_SIZE = 4;
inline constexpr const char* CSV_EXTENSION = ".csv";

inline const char* output_form_suffix(int output_form) {
    return output_form == OUTPUT_DETAILED ? "_detailed_output" : "_grid_output";
}

// The length of the name's stem: all of it but its extension.
inline std::size_t output_stem_length(std::size_t name_length) {
    return name_length >= INPUT_EXTENSION_SIZE ? name_length - INPUT_EXTENSION_SIZE : 0;
}

}  // namespace ugf
