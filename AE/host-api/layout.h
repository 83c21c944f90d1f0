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

/// The size of a type: `sizeof` itself must not see the fields, some of which are pointers on
/// purpose.
template <class T>
constexpr size_t size_of() {
    return sizeof(T);  // NOLINT(bugprone-sizeof-expression): some fields are pointers
}

/// For naming a record's fields; never called.
template <class Record>
Record& record();

}  // namespace layout

// NOLINTBEGIN(bugprone-macro-parentheses): a field's name cannot stand in parentheses.
#define FIELD(type, field, offset64, size64, offset32, size32)               \
    static_assert(layout::holds(offsetof(type, field), offset64, offset32)); \
    static_assert(                                                           \
        layout::holds(layout::size_of<decltype(layout::record<type>().field)>(), size64, size32))
// NOLINTEND(bugprone-macro-parentheses)

#define RECORD(type, size64, size32) static_assert(layout::holds(sizeof(type), size64, size32))

#define SLOT(table, function, index) \
    FIELD(table, function, size_t{8} * (index), 8, size_t{4} * (index), 4)

#define TABLE(table, slots) RECORD(table, size_t{8} * (slots), size_t{4} * (slots))
