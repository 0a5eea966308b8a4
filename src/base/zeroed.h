// Large blocks that begin all zero, taken from calloc instead of new.
//
// The system hands out a large block as fresh pages that read as zero and
// cost nothing until first used; constructing the object with new writes
// its zeros, and so faults in every page of it, at the start of each run.
// For the memos and the page cache of a session, which a run uses only a
// small part of, those faults cost more than the conversion of a small
// survey's rows. Only for aggregates whose members all start as zero
// bytes (false, 0, nullptr, empty texts), which calloc's bytes then are.
#pragma once

#include <cstdlib>
#include <memory>
#include <type_traits>

namespace ugf {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

template <class T>
using ZeroedPtr = std::unique_ptr<T, FreeBlock>;

// The block, or nullptr when no memory is left.
template <class T>
ZeroedPtr<T> make_zeroed() {
    static_assert(std::is_aggregate_v<T> && std::is_trivially_destructible_v<T>);
    return ZeroedPtr<T>(static_cast<T*>(std::calloc(1, sizeof(T))));
}

}  // namespace ugf
