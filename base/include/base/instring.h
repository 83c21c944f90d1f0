// Interned texts: one object for each different text, so that equal texts have equal addresses and
// a comparison of keys is a comparison of pointers.
//
// The table is one for the process, unguarded (one thread at a time), and usable from static
// initialisers. Only `InString::cleanup` releases it.
#pragma once

#include <base/list.h>
#include <base/ptrmap.h>
#include <base/string.h>

/// An interned text: a node of its own bucket in the table. Made by `intern`, `gensym` and
/// `TempInString` only, and owned by the table.
class InString : public List<InString*>::Element {
public:
    /// `String::hash` of the text.
    const unsigned int hash;
    const String text;

    /// The one object with this text, made now if there is none. Texts are equal as `String`s are.
    static InString* intern(const String& text);
    static InString* intern(const char* text);
    /// A new symbol with the text "G0", "G1", ... It is not in the buckets: `intern` never returns
    /// it, even for an equal text.
    static InString* gensym();
    /// Deletes every object of the table, generated symbols included. All addresses returned so far
    /// dangle; the numbering of symbols goes on.
    static void cleanup();
    /// Writes the 256 buckets to standard output, one line each: "chain B: " and " TEXT" for each
    /// entry.
    static void dump();

private:
    friend class TempInString;
    explicit InString(const String& t);
    ~InString() = default;
};

/// A map from interned texts to copies of `V`.
template <class V>
using StringMap = PtrMap<InString, V>;

/// A text looked up in the table but, if it is new there, kept out of it until `make_permanent`:
/// for look-ups that are not to fill the table.
class TempInString {
public:
    explicit TempInString(const String& text);
    TempInString(const TempInString&) = delete;
    TempInString& operator=(const TempInString&) = delete;
    /// Deletes the object unless it is in the table.
    ~TempInString();

    /// The object; lives as long as this holder, or as the table does once permanent.
    InString* get() const { return string_; }
    /// True while the object is this holder's own.
    bool temporary() const { return temporary_; }
    /// Enters the object in the table if it is not there, and returns it.
    InString* make_permanent();

private:
    bool temporary_;
    InString* string_;
};
