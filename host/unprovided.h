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

/// Says which function was called in vain, then aborts.
[[noreturn]] void abort_unprovided(const char* name);

template <SlotName Name>
void unprovided() {
    abort_unprovided(Name.text);
}

}  // namespace host

/// Designated initialiser for one slot of a table.
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name cannot stand in parentheses
#define UNPROVIDED(table, slot) .slot = &unprovided<table ": " #slot>
