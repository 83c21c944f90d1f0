// The record of an image: setting, reading and comparing its values.
#include <base/exceptions.h>
#include <libkelvimage/metadata.h>

#include <cmath>
#include <cstring>
#include <memory>

namespace Kelv {

namespace {

using std::strcmp;

using MetaData = ImageSpec::MetaData;

// Records hold some ten or twenty values.
constexpr int kSizeHint = 16;

const char kOtherType[] = "metadata tag '%s' already present but with type '%s' not '%s'";

bool same_word(const char* a, const char* b) { return strcmp(a, b) == 0; }

/// The value of an entry whose type word or code says that it is a `T`.
template <class T>
TypedInfo<T>& typed(MetaInfo& info) {
    auto* const found = dynamic_cast<TypedInfo<T>*>(&info);
    XASSERT(found != nullptr);
    return *found;
}

bool same_number(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

bool same_matrix(const Matrix4<float>& a, const Matrix4<float>& b) {
    for (int i = 0; i < 16; ++i) {
        if (!same_number(a(i / 4, i % 4), b(i / 4, i % 4))) {
            return false;
        }
    }
    return true;
}

bool same_value(MetaInfo& a, MetaInfo& b) {
    if (!same_word(a.type_str(), b.type_str())) {
        return false;
    }
    switch (a.type()) {
        case MetaTraits<float>::code:
            return same_number(typed<float>(a).value, typed<float>(b).value);
        case MetaTraits<String>::code:
            return same_word(typed<String>(a).value.c_str(), typed<String>(b).value.c_str());
        case MetaTraits<Matrix4<float>>::code:
            return same_matrix(typed<Matrix4<float>>(a).value, typed<Matrix4<float>>(b).value);
        default:
            return same_word(a.stringify().c_str(), b.stringify().c_str());
    }
}

/// Calls `visit` for the entries in the order of the record until it returns true. Whether it did.
template <class Visit>
bool any_entry(const MetaData& record, Visit visit) {
    class Walk final : public VoidPtrMap::ForEachFunc {
    public:
        explicit Walk(Visit& visit) : visit_(visit) {}
        int void_call(VoidPtrMap::Entry* entry) override {
            return visit_(*static_cast<MetaData::Entry*>(entry)) ? 1 : 0;
        }

    private:
        Visit& visit_;
    };
    Walk walk(visit);
    return record.for_each_const(walk) != 0;
}

/// Whether `record` has every value of `part`.
bool includes(const MetaData& record, const MetaData& part) {
    return !any_entry(part, [&record](const MetaData::Entry& entry) {
        const MetaData::Entry* other = record.lookup_entry(entry.key());
        return other == nullptr || !same_value(*entry.value, *other->value);
    });
}

}  // namespace

template <MetaValue T>
TypedInfo<T>* new_MetaInfo(const char* type, const T& value) {
    auto ret = std::make_unique<TypedInfo<T>>(value);
    XASSERT(!strcmp(type, ret->type_str()));
    return ret.release();
}

ImageSpec::MetaData::MetaData() : StringMap<MetaInfoRef>(kSizeHint) {}

ImageSpec::MetaData::MetaData(const MetaData& other) : MetaData() {
    any_entry(other, [this](const Entry& entry) {
        insert(entry.key(), entry.value);
        return false;
    });
}

MetaInfo* ImageSpec::MetaData::find(const char* name) const {
    // Names that are only asked for do not fill the table of interned texts.
    const TempInString key(name);
    const Entry* entry = lookup_entry(key.get());
    return entry != nullptr ? entry->value.get() : nullptr;
}

template <MetaValue T>
void ImageSpec::MetaData::set_meta(const char* type, const char* name, const T& value) {
    InString* key = InString::intern(name);
    const Entry* entry = lookup_entry(key);
    if (entry == nullptr) {
        insert(key, MetaInfoRef(new_MetaInfo<T>(type, value)));
        return;
    }
    MetaInfo& info = *entry->value;
    if (!same_word(info.type_str(), type)) {
        XTHROW(kOtherType, name, info.type_str(), type);
    }
    if (info.position != 0) {
        XTHROW("no updates allowed after writing to file, use update_meta");
    }
    typed<T>(info).value = value;
}

template <MetaValue T>
s64 ImageSpec::MetaData::update_meta(const char* type, const char* name, const T& value) {
    MetaInfo* info = find(name);
    if (info == nullptr) {
        XTHROW("metadata tag '%s' does not exist", name);
    }
    if (info->position == 0) {
        XTHROW("metadata tag '%s' was never written to file", name);
    }
    if (!same_word(info->type_str(), type)) {
        XTHROW(kOtherType, name, info->type_str(), type);
    }
    typed<T>(*info).value = value;
    return info->position;
}

template <MetaValue T>
int ImageSpec::MetaData::get_meta(const char* type, const char* name, T& value) const {
    MetaInfo* info = find(name);
    if (info == nullptr) {
        return 1;
    }
    if (!same_word(info->type_str(), type)) {
        Xception::warning(__PRETTY_FUNCTION__, "metadata type mismatch; wanted %s got %s", type,
                          info->type_str());
        return 2;
    }
    value = typed<T>(*info).value;
    return 0;
}

void ImageSpec::MetaData::for_each_meta(MetaVisitor& visitor) const {
    // The type that the walk stops at.
    const char* unhandled = nullptr;
    any_entry(*this, [&](const Entry& entry) {
        MetaInfo& info = *entry.value;
        const char* name = entry.key()->text.c_str();
        switch (info.type()) {
            case MetaTraits<float>::code:
                visitor.float_meta(info.type_str(), name, typed<float>(info).value, info.position);
                break;
            case MetaTraits<String>::code:
                visitor.string_meta(info.type_str(), name, typed<String>(info).value,
                                    info.position);
                break;
            case MetaTraits<Matrix4<float>>::code:
                visitor.matrix_meta(info.type_str(), name, typed<Matrix4<float>>(info).value,
                                    info.position);
                break;
            default:
                unhandled = info.type_str();
        }
        return unhandled != nullptr;
    });
    if (unhandled != nullptr) {
        XTHROW("unhandled type '%s'", unhandled);
    }
}

bool ImageSpec::MetaData::operator==(const MetaData& other) const {
    return includes(*this, other) && includes(other, *this);
}

template <MetaValue T>
void ImageSpec::set_meta(const char* type, const char* name, const T& value) {
    if (!has_metadata()) {
        metadata.reset(new MetaData);
    }
    metadata->set_meta(type, name, value);
}

template <MetaValue T>
int ImageSpec::get_meta(const char* type, const char* name, T& value) const {
    return has_metadata() ? metadata->get_meta(type, name, value) : 1;
}

void ImageSpec::for_each_meta(MetaVisitor& visitor) const {
    if (has_metadata()) {
        metadata->for_each_meta(visitor);
    }
}

// There are no values of other types, and so no other users of these templates.
// NOLINTBEGIN(bugprone-macro-parentheses): a type is none in parentheses
#define INSTANTIATE(T)                                                                 \
    template TypedInfo<T>* new_MetaInfo(const char*, const T&);                        \
    template void ImageSpec::MetaData::set_meta(const char*, const char*, const T&);   \
    template s64 ImageSpec::MetaData::update_meta(const char*, const char*, const T&); \
    template int ImageSpec::MetaData::get_meta(const char*, const char*, T&) const;    \
    template void ImageSpec::set_meta(const char*, const char*, const T&);             \
    template int ImageSpec::get_meta(const char*, const char*, T&) const
// NOLINTEND(bugprone-macro-parentheses)

INSTANTIATE(float);
INSTANTIATE(String);
INSTANTIATE(Matrix4<float>);

}  // namespace Kelv
