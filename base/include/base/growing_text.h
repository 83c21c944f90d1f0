// Texts that are made piece by piece.
#pragma once

#include <base/array.h>
#include <base/string.h>

#include <cstddef>
#include <cstring>

/// A text in the making. Adding a character costs the same however long the text is, and a want of
/// memory is reported; a `String` does neither.
class GrowingText {
public:
    /// Throw `StrXception` "out of memory (...)". The character 0 is lost, as a `String` cannot
    /// hold it.
    void add(char character) {
        if (character != '\0') {
            *characters_._append() = character;
        }
    }
    void add(const char* text) {
        const std::size_t length = std::strlen(text);
        if (length != 0) {
            std::memcpy(characters_.reserve(length) - (length - 1), text, length);
        }
    }

    /// Gives the text out, which ends this object's use. Throws like `add`.
    String take() {
        *characters_._append() = '\0';
        return String::fmt("%s", &characters_[0]);
    }

private:
    Array<char> characters_;
};
