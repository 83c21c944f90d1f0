#include <base/ptrmap.h>
#include <base/words.h>

class VoidPtrMapImpl {
public:
    explicit VoidPtrMapImpl(int size_hint)
        : log2(log2_of(size_hint)),
          mask((1U << log2) - 1U),
          buckets(new VoidList[uword{mask} + 1]) {}

    VoidList& bucket(unsigned int hash) const { return buckets[hash & mask]; }

    // The smallest k with 2^k >= size_hint.
    static unsigned int log2_of(int size_hint) {
        unsigned int k = 0;
        while ((std::int64_t{1} << k) < size_hint) {
            ++k;
        }
        return k;
    }

    const unsigned int log2;
    const unsigned int mask;
    const scoped_array<VoidList> buckets;
};

namespace {

using Entry = VoidPtrMap::Entry;

Entry* find_in(const VoidList& bucket, const void* key) {
    for (VoidList::Element* node = bucket.begin(); node != bucket.end(); node = node->next) {
        auto* entry = static_cast<Entry*>(node);
        if (entry->void_key == key) {
            return entry;
        }
    }
    return nullptr;
}

/// Calls `visitor` for the entries of `bucket` that `wanted` accepts, until it returns non-zero.
template <class Wanted>
int walk(const VoidList& bucket, VoidPtrMap::ForEachFunc& visitor, Wanted wanted) {
    for (VoidList::Element* node = bucket.begin(); node != bucket.end();) {
        auto* entry = static_cast<Entry*>(node);
        // Read before the call, which may free the entry.
        node = node->next;
        if (wanted(*entry)) {
            const int stop = visitor.void_call(entry);
            if (stop != 0) {
                return stop;
            }
        }
    }
    return 0;
}

}  // namespace

VoidPtrMap::VoidPtrMap(int size_hint) : impl_(new VoidPtrMapImpl(size_hint)) {}

VoidPtrMap::~VoidPtrMap() = default;

VoidPtrMap::Entry* VoidPtrMap::insert(unsigned int hash, Entry* entry) {
    impl_->bucket(hash).append(entry);
    return entry;
}

VoidPtrMap::Entry* VoidPtrMap::lookup(unsigned int hash, void* key) const {
    return find_in(impl_->bucket(hash), key);
}

VoidPtrMap::Entry* VoidPtrMap::remove(unsigned int hash, void* key) {
    Entry* entry = find_in(impl_->bucket(hash), key);
    if (entry != nullptr) {
        VoidList::remove(entry);
    }
    return entry;
}

int VoidPtrMap::for_each(ForEachFunc& visitor) { return for_each_const(visitor); }

int VoidPtrMap::for_each_const(ForEachFunc& visitor) const {
    for (unsigned int i = 0; i < buckets(); ++i) {
        const int stop = walk(impl_->bucket(i), visitor, [](const Entry&) { return true; });
        if (stop != 0) {
            return stop;
        }
    }
    return 0;
}

int VoidPtrMap::for_each_value(unsigned int hash, void* key, ForEachFunc& visitor) {
    return walk(impl_->bucket(hash), visitor,
                [key](const Entry& entry) { return entry.void_key == key; });
}

bool VoidPtrMap::empty() const {
    for (unsigned int i = 0; i < buckets(); ++i) {
        if (!impl_->bucket(i).empty()) {
            return false;
        }
    }
    return true;
}

void VoidPtrMap::clear() {
    for (unsigned int i = 0; i < buckets(); ++i) {
        VoidList& bucket = impl_->bucket(i);
        while (!bucket.empty()) {
            VoidList::remove(bucket.begin());
        }
    }
}

unsigned int VoidPtrMap::buckets() const { return 1U << impl_->log2; }
