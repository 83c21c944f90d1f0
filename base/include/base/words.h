// The fixed-size and machine-word integers that every room uses.
#pragma once

#include <cstdint>

/// Unsigned machine word: 64 bits on 64-bit targets, 32 bits on 32-bit ones. Not `long`, which has
/// 32 bits on some 64-bit systems. Prints with PRIuPTR.
using uword = std::uintptr_t;
/// Signed machine word; prints with PRIdPTR.
using sword = std::intptr_t;

using u32 = std::uint32_t;
using s64 = std::int64_t;
using u64 = std::uint64_t;

static_assert(sizeof(uword) == sizeof(void*), "a machine word is as wide as an address");
