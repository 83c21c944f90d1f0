// Slots of the host's tables that the stand-in host does not provide.
#pragma once

#include <algorithm>
#include <cstddef>

namespace host {

/// A text as a template argument.
template <std::size_t Size>
struct SlotName {
    char text[Size];
    consteval SlotName(const char (&name)[Size]) {  // NOLINT(google-explicit-constructor)
        std::copy_n(name, Size, text);
    }
};

/// Tells which function the plug-in called, then aborts.
[[noreturn]] void abort_unprovided(const char* name);

template <SlotName Name>
void unprovided() {
    abort_unprovided(Name.text);
}

}  // namespace host

/// Designated initialisers for some slots of a table, in the table's order:
///
///     UNPROVIDED("utils", iterate, premultiply)
///
/// The preprocessor has no loops: UNPROVIDED_SLOT makes one initialiser and, if slots are left,
/// writes down its own next call. Each UNPROVIDED_SCAN carries out the calls written down so far;
/// they allow 64 slots, and with more the code does not compile.
#define UNPROVIDED(table, ...) UNPROVIDED_SCAN(UNPROVIDED_SLOT(table, __VA_ARGS__))
// NOLINTBEGIN(bugprone-macro-parentheses): a member's name cannot stand in parentheses
#define UNPROVIDED_SLOT(table, slot, ...)             \
    .slot = &unprovided<table ": " #slot> __VA_OPT__( \
        , UNPROVIDED_NEXT UNPROVIDED_PARENTHESES(table, __VA_ARGS__))
// NOLINTEND(bugprone-macro-parentheses)
#define UNPROVIDED_NEXT() UNPROVIDED_SLOT
#define UNPROVIDED_PARENTHESES ()
#define UNPROVIDED_SCAN(...) \
    UNPROVIDED_SCAN16(UNPROVIDED_SCAN16(UNPROVIDED_SCAN16(UNPROVIDED_SCAN16(__VA_ARGS__))))
#define UNPROVIDED_SCAN16(...) \
    UNPROVIDED_SCAN4(UNPROVIDED_SCAN4(UNPROVIDED_SCAN4(UNPROVIDED_SCAN4(__VA_ARGS__))))
#define UNPROVIDED_SCAN4(...) \
    UNPROVIDED_SCAN1(UNPROVIDED_SCAN1(UNPROVIDED_SCAN1(UNPROVIDED_SCAN1(__VA_ARGS__))))
#define UNPROVIDED_SCAN1(...) __VA_ARGS__
