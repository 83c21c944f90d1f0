// Assertions about where the fields of the host's records lie.
//
// Two layouts are known: that of 64-bit hosts, and that of 32-bit hosts whose doubles are aligned
// to 4 bytes inside records. On other targets there is no host to agree with, and nothing is
// asserted.
#pragma once

#include <stddef.h>

namespace layout {

struct DoubleAfterByte {
    char byte;
    double number;
};

constexpr bool kIs64 = sizeof(void*) == 8 && offsetof(DoubleAfterByte, number) == 8;
constexpr bool kIs32 = sizeof(void*) == 4 && offsetof(DoubleAfterByte, number) == 4;

constexpr bool holds(size_t actual, size_t on64, size_t on32) {
    return kIs64 ? actual == on64 : !kIs32 || actual == on32;
}

}  // namespace layout

#define FIELD(record, field, offset64, size64, offset32, size32)               \
    static_assert(layout::holds(offsetof(record, field), offset64, offset32)); \
    static_assert(layout::holds(sizeof(static_cast<record*>(nullptr)->field), size64, size32))

#define RECORD(record, size64, size32) static_assert(layout::holds(sizeof(record), size64, size32))

#define SLOT(table, function, index) FIELD(table, function, (index)*8, 8, (index)*4, 4)

#define TABLE(table, slots) RECORD(table, (slots)*8, (slots)*4)
