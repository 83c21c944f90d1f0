// Hash maps keyed by addresses: a chained table of bare entries, and a typed map over it.
//
// The number of buckets is fixed when the table is made: it never grows or rehashes, so give a hint
// of about the number of entries. Unguarded: one thread at a time.
#pragma once

#include <base/list.h>
#include <base/scoped_ptr.h>

#include <cstdint>

class VoidPtrMapImpl;

/// The untyped table. Entries are linked in, not copied, and never freed by it.
class VoidPtrMap {
public:
    /// A node of a bucket and its key. Typed entries append the value behind it.
    struct Entry : VoidList::Element {
        explicit Entry(void* key) : void_key(key) {}
        void* void_key;
    };

    /// What a walk calls for each entry.
    class ForEachFunc {
    public:
        /// Returns non-zero to stop the walk. May free `entry`, and unlink it before that.
        virtual int void_call(Entry* entry) = 0;
        virtual ~ForEachFunc() = default;
    };

    /// A table of the smallest power of two of buckets that is at least `size_hint`; one bucket for
    /// a hint below 2.
    explicit VoidPtrMap(int size_hint);
    VoidPtrMap(const VoidPtrMap&) = delete;
    VoidPtrMap& operator=(const VoidPtrMap&) = delete;
    ~VoidPtrMap();

    /// Links `entry` at the tail of the bucket of `hash` and returns it. Equal keys are not looked
    /// for: duplicates are allowed, and the older one is found first.
    Entry* insert(unsigned int hash, Entry* entry);
    /// The oldest entry with this key, or null.
    Entry* lookup(unsigned int hash, void* key) const;
    /// Unlinks the oldest entry with this key and returns it, now the caller's; null if there is
    /// none.
    Entry* remove(unsigned int hash, void* key);

    /// Calls `visitor` for every entry, bucket by bucket, each from its oldest entry on. Returns
    /// the non-zero value that stopped the walk, or 0.
    int for_each(ForEachFunc& visitor);
    int for_each_const(ForEachFunc& visitor) const;
    /// The same for the entries with this key only.
    int for_each_value(unsigned int hash, void* key, ForEachFunc& visitor);

    bool empty() const;
    /// Unlinks every entry without freeing any.
    void clear();
    /// The number of buckets.
    unsigned int buckets() const;

private:
    scoped_ptr<VoidPtrMapImpl> impl_;
};

/// A map from addresses of `K` to copies of `V`. Owns its entries, not the keys' objects.
template <class K, class V>
class PtrMap {
public:
    struct Entry : VoidPtrMap::Entry {
        Entry(K* key, const V& v) : VoidPtrMap::Entry(key), value(v) {}
        K* key() const { return static_cast<K*>(this->void_key); }
        V value;
    };

    /// Destroys and frees the entries that it visits.
    class Deleter : public VoidPtrMap::ForEachFunc {
    public:
        int void_call(VoidPtrMap::Entry* entry) override {
            delete static_cast<Entry*>(entry);
            return 0;
        }
    };

    /// See `VoidPtrMap` for the hint.
    explicit PtrMap(int size_hint) : table_(size_hint) {}
    PtrMap(const PtrMap&) = delete;
    PtrMap& operator=(const PtrMap&) = delete;
    /// Destroys every value.
    ~PtrMap() {
        Deleter deleter;
        table_.for_each(deleter);
    }

    /// The address without its four lowest bits, which are the same in most allocated objects, cut
    /// to 32 bits.
    static unsigned int hash(K* key) {
        return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(key) >> 4);
    }

    /// A new entry with a copy of `value`, owned by the map. An equal key stays, and stays the one
    /// that is found.
    Entry* insert(K* key, const V& value) {
        auto* entry = new Entry(key, value);
        table_.insert(hash(key), entry);
        return entry;
    }
    /// The oldest entry with this key, still owned by the map, or null.
    Entry* lookup_entry(K* key) const { return static_cast<Entry*>(table_.lookup(hash(key), key)); }
    /// Unlinks the oldest entry with this key and returns it: the caller deletes it. Null if there
    /// is none.
    Entry* remove(K* key) { return static_cast<Entry*>(table_.remove(hash(key), key)); }

    /// Walks all entries, as `VoidPtrMap` does; each is an `Entry` of this map.
    int for_each(VoidPtrMap::ForEachFunc& visitor) { return table_.for_each(visitor); }
    int for_each_const(VoidPtrMap::ForEachFunc& visitor) const {
        return table_.for_each_const(visitor);
    }

    bool empty() const { return table_.empty(); }
    unsigned int buckets() const { return table_.buckets(); }

private:
    VoidPtrMap table_;
};
