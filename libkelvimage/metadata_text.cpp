// The one-line text form of an image's record.
#include <base/exceptions.h>
#include <base/growing_text.h>
#include <libkelvimage/metadata.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Kelv {

namespace {

using MetaData = ImageSpec::MetaData;

const char kMagic[] = "KELVMETA1";
constexpr std::size_t kMagicLength = sizeof kMagic - 1;

/// Adds the entries of a record to its text. Stops at a name that the text cannot hold.
class Writer final : public VoidPtrMap::ForEachFunc {
public:
    explicit Writer(GrowingText& out) : out_(out) {}
    int void_call(VoidPtrMap::Entry* entry) override {
        const auto& tag = *static_cast<MetaData::Entry*>(entry);
        const char* name = tag.key()->text.c_str();
        if (std::strpbrk(name, " =") != nullptr) {
            return 1;
        }
        out_.add(' ');
        out_.add(tag.value->type_str());
        out_.add(':');
        out_.add(name);
        out_.add('=');
        out_.add(tag.value->stringify().c_str());
        return 0;
    }

private:
    GrowingText& out_;
};

/// The characters up to `end` or the end of the text, where `p` is left.
String read_word(const char*& p, char end) {
    GrowingText word;
    for (; *p != end && *p != '\0'; ++p) {
        word.add(*p);
    }
    return word.take();
}

/// The value in the quotes that begin at `p`, which is left behind them.
String read_quoted(const char*& p, const char* name) {
    GrowingText value;
    for (++p; *p != '"'; ++p) {
        if (*p == '\\') {
            ++p;
            if (*p == '\0') {
                XTHROW("unterminated \\ in metadata %s", name);
            }
        } else if (*p == '\0') {
            XTHROW("unterminated quoted string in metadata %s", name);
        }
        value.add(*p);
    }
    ++p;
    return value.take();
}

Matrix4<float> read_matrix(const char* text, const char* name) {
    Matrix4<float> m;
    const int count =
        std::sscanf(text, "%f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f", &m(0, 0), &m(0, 1),
                    &m(0, 2), &m(0, 3), &m(1, 0), &m(1, 1), &m(1, 2), &m(1, 3), &m(2, 0), &m(2, 1),
                    &m(2, 2), &m(2, 3), &m(3, 0), &m(3, 1), &m(3, 2), &m(3, 3));
    if (count != 16) {
        XTHROW("error reading m44f metadata '%s'", name);
    }
    return m;
}

void set_from_text(MetaData& record, const char* type, const char* name, const String& value) {
    if (std::strcmp(type, MetaTraits<float>::word) == 0) {
        record.set_meta(type, name, static_cast<float>(value.atof()));
    } else if (std::strcmp(type, MetaTraits<String>::word) == 0) {
        record.set_meta(type, name, value);
    } else if (std::strcmp(type, MetaTraits<Matrix4<float>>::word) == 0) {
        record.set_meta(type, name, read_matrix(value.c_str(), name));
    } else {
        XTHROW("unhandled type '%s'", type);
    }
}

}  // namespace

String MetaTraits<float>::text(const float& value) {
    return String::fmt("%g", static_cast<double>(value));
}

String MetaTraits<String>::text(const String& value) {
    if (value.find(' ') == String::kNotFound) {
        return String::fmt("%s", value.c_str());
    }
    GrowingText quoted;
    quoted.add('"');
    for (const char* p = value.c_str(); *p != '\0'; ++p) {
        // Backslashes stay alone: readers of this form have always dropped them.
        if (*p == '"') {
            quoted.add('\\');
        }
        quoted.add(*p);
    }
    quoted.add('"');
    return quoted.take();
}

String MetaTraits<Matrix4<float>>::text(const Matrix4<float>& value) {
    const auto at = [&value](int r, int c) { return static_cast<double>(value(r, c)); };
    return String::fmt(
        "\"%.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e\"",
        at(0, 0), at(0, 1), at(0, 2), at(0, 3), at(1, 0), at(1, 1), at(1, 2), at(1, 3), at(2, 0),
        at(2, 1), at(2, 2), at(2, 3), at(3, 0), at(3, 1), at(3, 2), at(3, 3));
}

String ImageSpec::MetaData::stringify() const {
    GrowingText text;
    text.add(kMagic);
    Writer writer(text);
    if (for_each_const(writer) != 0) {
        XTHROW("can't handle quoting yet");
    }
    return text.take();
}

bool ImageSpec::MetaData::string_valid(const char* text) {
    return std::strncmp(text, kMagic, kMagicLength) == 0;
}

void ImageSpec::MetaData::from_string(const char* text) {
    if (!string_valid(text)) {
        XTHROW("invalid metadata string");
    }
    const char* p = text + kMagicLength;
    while (*p != '\0') {
        XASSERT(*p == ' ');
        ++p;
        const String type = read_word(p, ':');
        XASSERT(*p == ':');
        ++p;
        const String name = read_word(p, '=');
        if (*p == '\0') {
            Xception::warning(__PRETTY_FUNCTION__, "image metadata appears to be truncated");
            return;
        }
        XASSERT(*p == '=');
        ++p;
        if (*p == '\0') {
            XTHROW("metadata %s is missing value", name.c_str());
        }
        const String value = *p == '"' ? read_quoted(p, name.c_str()) : read_word(p, ' ');
        set_from_text(*this, type.c_str(), name.c_str(), value);
    }
}

}  // namespace Kelv
