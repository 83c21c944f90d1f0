// LANES floats at once as a plain array, one element after the other: what every operation of the
// kernels means, on any processor. For `kernel_lanes.h` alone, before which LANES is defined.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

struct Floats {
    float lane[LANES];
    float operator[](int k) const { return lane[k]; }
};
/// Integers that wrap around, and the results of comparisons: all bits of a lane set, or none.
struct Ints {
    std::int32_t lane[LANES];
    std::int32_t operator[](int k) const { return lane[k]; }
};

/// `result` filled lane by lane.
template <class Result, class Lane>
inline Result each(Lane lane) {
    Result result;
    for (int k = 0; k < LANES; ++k) {
        result.lane[k] = lane(k);
    }
    return result;
}

inline Floats splat(float x) {
    return each<Floats>([=](int) { return x; });
}
inline Ints splat(std::int32_t x) {
    return each<Ints>([=](int) { return x; });
}
inline Floats load(const float* from) {
    return each<Floats>([=](int k) { return from[k]; });
}
inline void store(float* to, const Floats& x) { std::memcpy(to, x.lane, sizeof x.lane); }
inline void store(std::int32_t* to, const Ints& x) { std::memcpy(to, x.lane, sizeof x.lane); }
inline Ints load_ints(const std::int32_t* from) {
    return each<Ints>([=](int k) { return from[k]; });
}
inline Ints bits_of(const Floats& x) { return __builtin_bit_cast(Ints, x); }
inline Floats floats_of(const Ints& x) { return __builtin_bit_cast(Floats, x); }
inline Floats select(const Ints& which, const Floats& yes, const Floats& no) {
    return each<Floats>([&](int k) { return which[k] != 0 ? yes[k] : no[k]; });
}

// --- arithmetic -------------------------------------------------------------------------------

#define LANES_ARITHMETIC(op)                                      \
    inline Floats operator op(const Floats& a, const Floats& b) { \
        return each<Floats>([&](int k) { return a[k] op b[k]; }); \
    }
LANES_ARITHMETIC(+)
LANES_ARITHMETIC(-)
LANES_ARITHMETIC(*)
LANES_ARITHMETIC(/)
#undef LANES_ARITHMETIC
inline Floats operator-(const Floats& a) {
    return each<Floats>([&](int k) { return -a[k]; });
}

#define LANES_COMPARISON(op)                                             \
    inline Ints operator op(const Floats& a, const Floats& b) {          \
        return each<Ints>([&](int k) { return a[k] op b[k] ? -1 : 0; }); \
    }
LANES_COMPARISON(<)
LANES_COMPARISON(<=)
LANES_COMPARISON(>)
LANES_COMPARISON(>=)
#undef LANES_COMPARISON

// Unsigned underneath: what overflows wraps around, as in a register.
inline std::int32_t wrapped(std::uint32_t x) { return static_cast<std::int32_t>(x); }
#define LANES_BITS(op)                                                                            \
    inline Ints operator op(const Ints& a, const Ints& b) {                                       \
        return each<Ints>([&](int k) {                                                            \
            return wrapped(static_cast<std::uint32_t>(a[k]) op static_cast<std::uint32_t>(b[k])); \
        });                                                                                       \
    }
LANES_BITS(+)
LANES_BITS(-)
LANES_BITS(&)
LANES_BITS(|)
LANES_BITS(^)
#undef LANES_BITS
inline Ints operator<<(const Ints& a, int n) {
    return each<Ints>([&](int k) { return wrapped(static_cast<std::uint32_t>(a[k]) << n); });
}
inline Ints operator>>(const Ints& a, int n) {
    return each<Ints>([&](int k) { return a[k] >> n; });
}

/// The integer part, of what fits.
inline Ints truncated(const Floats& x) {
    return each<Ints>([&](int k) { return static_cast<std::int32_t>(x[k]); });
}

// --- across lanes -----------------------------------------------------------------------------

/// Tables hold 8 values.
constexpr int kTableSize = 8;
/// The value of `table` that the lowest three bits of each lane say.
inline Floats look_up(const float* table, const Ints& which) {
    return each<Floats>([&](int k) { return table[which[k] & (kTableSize - 1)]; });
}

/// One bit a lane, lane 0 lowest.
inline unsigned mask_of(const Ints& which) {
    unsigned mask = 0;
    for (int k = 0; k < LANES; ++k) {
        mask |= which[k] != 0 ? 1U << static_cast<unsigned>(k) : 0U;
    }
    return mask;
}

/// A weight a pixel, each on its pixel's four lanes.
inline Floats load_for_pixels(const float* weights) {
    return each<Floats>([=](int k) { return weights[k / 4]; });
}
/// Each pixel's coverage on all its four lanes.
inline Floats coverage_of(const Floats& pixels) {
    return each<Floats>([&](int k) { return pixels[k / 4 * 4]; });
}
/// `lit` with the coverage of `pixels`, bit for bit.
inline Floats with_coverage_of(const Floats& pixels, const Floats& lit) {
    Floats result = lit;
    for (int k = 0; k < LANES; k += 4) {
        std::memcpy(&result.lane[k], &pixels.lane[k], sizeof(float));
    }
    return result;
}

/// The first `n` pixels of a register, where `n` is less than it holds; 0 behind them.
inline Floats load_part(const float* from, std::ptrdiff_t n) {
    return each<Floats>([=](int k) { return k < 4 * n ? from[k] : 0.0F; });
}
inline void store_part(float* to, std::ptrdiff_t n, const Floats& x) {
    std::memcpy(to, x.lane, 16 * static_cast<std::size_t>(n));
}

/// The low 8 or 16 bits of each lane, one after the other. Any alignment.
template <class Part>
inline void store_low_parts(void* to, const Ints& lanes) {
    for (int k = 0; k < LANES; ++k) {
        const Part part = static_cast<Part>(lanes[k]);
        std::memcpy(static_cast<unsigned char*>(to) + sizeof part * static_cast<std::size_t>(k),
                    &part, sizeof part);
    }
}

}  // namespace
