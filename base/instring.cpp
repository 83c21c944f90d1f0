#include <base/instring.h>

#include <cstdio>

namespace {

constexpr unsigned int kBuckets = 256;

struct Table {
    List<InString*> bkt[kBuckets];
    // Apart from the buckets, so that no look-up meets a generated symbol.
    List<InString*> gensyms;
    unsigned int gensym_count = 0;

    List<InString*>& bucket_of(unsigned int hash) { return bkt[hash & (kBuckets - 1)]; }
};

// Made at first use, so that static initialisers may intern. Lists have nothing to destroy: the
// entries stay until `InString::cleanup`.
Table& table() {
    static Table the_table;
    return the_table;
}

InString* find(const String& text) {
    for (const List<InString*>::Element* element : table().bucket_of(text.hash())) {
        if (element->value->text == text) {
            return element->value;
        }
    }
    return nullptr;
}

}  // namespace

InString::InString(const String& t) : Element(this), hash(t.hash()), text(t) {}

InString* InString::intern(const String& text) {
    InString* string = find(text);
    if (string == nullptr) {
        string = new InString(text);
        table().bucket_of(string->hash).append(string, string);
    }
    return string;
}

InString* InString::intern(const char* text) { return intern(String(text)); }

InString* InString::gensym() {
    const auto number = static_cast<int>(table().gensym_count++);
    auto* symbol = new InString(String::fmt("G%d", number));
    table().gensyms.append(symbol, symbol);
    return symbol;
}

void InString::cleanup() {
    const auto delete_all = [](List<InString*>& list) {
        while (!list.empty()) {
            delete list.remove_nodelete(*list.begin())->value;
        }
    };
    for (List<InString*>& bucket : table().bkt) {
        delete_all(bucket);
    }
    delete_all(table().gensyms);
}

void InString::dump() {
    for (unsigned int b = 0; b < kBuckets; ++b) {
        std::printf("chain %u: ", b);
        for (const List<InString*>::Element* element : table().bkt[b]) {
            std::printf(" %s", element->value->text.c_str());
        }
        std::printf("\n");
    }
}

TempInString::TempInString(const String& text) : temporary_(false), string_(find(text)) {
    if (string_ == nullptr) {
        string_ = new InString(text);
        temporary_ = true;
    }
}

InString* TempInString::make_permanent() {
    if (temporary_) {
        table().bucket_of(string_->hash).append(string_, string_);
        temporary_ = false;
    }
    return string_;
}

TempInString::~TempInString() {
    if (temporary_) {
        delete string_;
    }
}
