// A suite of the host's in the test effect's hands.
#pragma once

#include <host_api/effect_interface.h>

namespace test_effect {

/// A suite held for a scope.
template <class Table>
class Suite {
public:
    Suite(const PF_InData* in, const char* name, int version)
        : basic_(in->pica_basicP), name_(name), version_(version) {
        const void* table = nullptr;
        if (basic_->AcquireSuite(name, version, &table) == 0) {
            table_ = static_cast<const Table*>(table);
        }
    }
    ~Suite() {
        if (table_ != nullptr) {
            basic_->ReleaseSuite(name_, version_);
        }
    }
    Suite(const Suite&) = delete;
    Suite& operator=(const Suite&) = delete;
    explicit operator bool() const { return table_ != nullptr; }
    const Table* operator->() const { return table_; }
    const Table* get() const { return table_; }

private:
    SPBasicSuite* basic_;
    const char* name_;
    int version_;
    const Table* table_ = nullptr;
};

}  // namespace test_effect
