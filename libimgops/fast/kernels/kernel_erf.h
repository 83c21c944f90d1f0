// The C library's error function, nearly to the last bit.
// For `kernel_source.h` alone.
//
// A slow star's pixel is a difference of two error functions that hardly differ, divided by a short
// length: what remains of them hangs on their last bits. Of a function that is only as accurate as
// the library's, that difference is another by several units in the last place. This one takes the
// library's pieces and its last steps, which were first published with Sun's library in 1993 and
// which C libraries follow since:
//
//     |x| < 0.84375       x + x r          r: a ratio of polynomials of x^2
//     |x| < 1.25          0.845.. + r      r: one of |x| - 1
//     otherwise           1 - r            r: erfc |x|, with the help of two exponentials
//
// Here r is one of seven polynomials, off by little beside a unit in the last place of the sum: the
// result is the library's for 97 of 100 arguments, and the next number to it for the others.
#pragma once

#include <cstdint>

#include "kernel_math.h"

namespace {

/// Below this the first piece; and from here on the library's function is 1.
constexpr float kFirstErfPiece = 0.84375F;
constexpr float kLibraryErfIsOne = 4.0F;
/// Around what the first piece's polynomial is one of x^2.
constexpr float kMiddleOfSquares = 0.35546875F;

/// What r is added to, by the nearest half of |x|; nothing in the first piece.
alignas(64) constexpr float kErfBases[kTableSize] = {0.0F, 0.0F, 0x1.b0ac16p-1F, 1.0F,
                                                     1.0F, 1.0F, 1.0F,           1.0F};
/// r around 0 for the first piece, around 1, 1.5 ... 3.5 for those behind it: the coefficient of
/// each power of the distance, minimax, rounded to single precision: off by 6e-9 at most.
alignas(64) constexpr float kErfRests[7][kTableSize] = {
    {0x1.ffb4f8p-8F, 0.0F, -0x1.359ba8p-9F, -0x1.15aaa8p-5F, -0x1.328f6p-8F, -0x1.aab85ep-12F,
     -0x1.729dd4p-16F, -0x1.8f345cp-21F},
    {-0x1.388a78p-2F, 0.0F, 0x1.a911fp-2F, 0x1.e72352p-4F, 0x1.529b3ep-6F, 0x1.1d838cp-9F,
     0x1.240e88p-13F, 0x1.69ec78p-18F},
    {0x1.6797fep-4F, 0.0F, -0x1.a91174p-2F, -0x1.6d5ab4p-3F, -0x1.529b5p-5F, -0x1.64e36ep-8F,
     -0x1.b610c4p-12F, -0x1.3b657ep-16F},
    {-0x1.4e86cp-6F, 0.0F, 0x1.1b5fdcp-3F, 0x1.1c3228p-3F, 0x1.8b231ep-5F, 0x1.118ee8p-7F,
     0x1.9d039p-11F, 0x1.655d9cp-15F},
    {0x1.005606p-8F, 0.0F, 0x1.1aaa08p-4F, -0x1.6d3b2p-5F, -0x1.1a4114p-5F, -0x1.1a980cp-7F,
     -0x1.118fccp-10F, -0x1.2a88aap-14F},
    {-0x1.4d66cap-11F, 0.0F, -0x1.198a6ap-4F, -0x1.f7a09ap-7F, 0x1.a0c958p-7F, 0x1.94a4f6p-8F,
     0x1.15b556p-10F, 0x1.59a102p-14F},
    {0x1.752d3cp-14F, 0.0F, 0x1.1f9e84p-7F, 0x1.372fdcp-6F, 0x1.6434bep-11F, -0x1.69df98p-9F,
     -0x1.8cc554p-11F, -0x1.8312f8p-15F},
};

LANES_INLINE Floats library_erf_of(Floats x) {
    // Adding this rounds to the nearest half, whose number then stands in the lowest bits.
    constexpr float kToHalves = 6291456.0F;  // 1.5 x 2^22
    constexpr float kLastPiece = 3.5F;
    const Floats a = absolute(x);
    const Ints is_first = a < splat(kFirstErfPiece);
    // What is not a number goes on as it is.
    const Floats limited = select(a > splat(kLibraryErfIsOne), splat(kLibraryErfIsOne), a);
    const Floats rounded =
        select(limited > splat(kLastPiece), splat(kLastPiece), limited) + splat(kToHalves);
    const Ints piece = bits_of(rounded) & (is_first ^ splat(-1));
    const Floats d =
        select(is_first, a * a - splat(kMiddleOfSquares), limited - (rounded - splat(kToHalves)));
    const Floats r = polynomial(kErfRests, piece, d);
    const Floats of_a = look_up(kErfBases, piece) + r;
    const Floats of_large = floats_of(bits_of(of_a) | (bits_of(x) & splat(INT32_MIN)));
    return select(is_first, x + x * r, of_large);
}

}  // namespace
