// What the tests of the image's record share.
#pragma once

#include <libkelvimage/metadata.h>

#include <string>
#include <vector>

#include "support/expect_throw.h"

using Kelv::ImageSpec;
using MetaData = Kelv::ImageSpec::MetaData;
using Matrix = Matrix4<float>;

inline void set_float(MetaData& record, const char* name, float value) {
    record.set_meta("float", name, value);
}
inline void set_string(MetaData& record, const char* name, const std::string& value) {
    record.set_meta("string", name, String(value.c_str()));
}
inline void set_matrix(MetaData& record, const char* name, const Matrix& value) {
    record.set_meta("m44f", name, value);
}

/// The value of a name that is there with that type; otherwise one that no test sets.
inline float float_of(const MetaData& record, const char* name) {
    float value = -12345.0F;
    record.get_meta("float", name, value);
    return value;
}
inline std::string string_of(const MetaData& record, const char* name) {
    String value("none");
    record.get_meta("string", name, value);
    return value.c_str();
}
inline Matrix matrix_of(const MetaData& record, const char* name) {
    Matrix value(-12345.0F);
    record.get_meta("m44f", name, value);
    return value;
}

/// Notes that the value of a name was written at a place in a file, as a writer would.
inline void mark_written(const MetaData& record, const char* name, s64 position) {
    record.lookup_entry(InString::intern(name))->value->position = position;
}

/// 1 to 16, row 0 first.
inline Matrix counting_matrix() {
    return Matrix(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
}
inline const std::string kCountingText =
    "1.000000000e+00 2.000000000e+00 3.000000000e+00 4.000000000e+00 5.000000000e+00 "
    "6.000000000e+00 7.000000000e+00 8.000000000e+00 9.000000000e+00 1.000000000e+01 "
    "1.100000000e+01 1.200000000e+01 1.300000000e+01 1.400000000e+01 1.500000000e+01 "
    "1.600000000e+01";

/// All that a visitor is told, as texts; positions grow by one.
class Visits final : public ImageSpec::MetaVisitor {
public:
    void float_meta(const char* type, const char* name, float value, s64& position) override {
        note(type, name, String::fmt("%g", static_cast<double>(value)).c_str(), position);
    }
    void string_meta(const char* type, const char* name, const String& value,
                     s64& position) override {
        note(type, name, value.c_str(), position);
    }
    void matrix_meta(const char* type, const char* name, const Matrix& value,
                     s64& position) override {
        note(type, name, String::fmt("..%g", static_cast<double>(value(3, 3))).c_str(), position);
    }

    std::vector<std::string> seen;

private:
    void note(const char* type, const char* name, const std::string& value, s64& position) {
        seen.push_back(std::string(type) + " " + name + " " + value + " @" +
                       std::to_string(position));
        ++position;
    }
};

/// Expects a message of the record's function in its own source.
inline void expect_failure(const std::string& message, const std::string& text,
                           const std::string& function) {
    expect_message(message, text, "Kelv::ImageSpec::MetaData::" + function,
                   "libkelvimage/metadata.cpp");
}
