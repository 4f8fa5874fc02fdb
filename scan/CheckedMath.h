#pragma once
// Size arithmetic on figures read from a disk: every product and sum that
// sizes a read or an allocation goes through these, so a wild field clamps or
// fails instead of wrapping.

#include <cstdint>
#include <limits>

namespace checked {

inline bool mul(uint64_t a, uint64_t b, uint64_t* out) { return !__builtin_mul_overflow(a, b, out); }
inline bool add(uint64_t a, uint64_t b, uint64_t* out) { return !__builtin_add_overflow(a, b, out); }

// a * b, or the largest value when the product does not fit.
inline uint64_t mulSat(uint64_t a, uint64_t b)
{
    uint64_t r;
    return mul(a, b, &r) ? r : std::numeric_limits<uint64_t>::max();
}

inline uint64_t addSat(uint64_t a, uint64_t b)
{
    uint64_t r;
    return add(a, b, &r) ? r : std::numeric_limits<uint64_t>::max();
}

inline bool isPowerOfTwo(uint64_t v) { return v != 0 && (v & (v - 1)) == 0; }

} // namespace checked
