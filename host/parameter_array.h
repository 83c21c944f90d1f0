// The parameters as a command is handed them.
#pragma once

#include <host_api/effect_interface.h>

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace host {

/// Records and the pointers to them, with a null pointer behind the last.
class ParameterArray {
public:
    explicit ParameterArray(std::vector<PF_ParamDef> records)
        : records_(std::move(records)), before_(records_.size() * sizeof(PF_ParamDef)) {
        pointers_.reserve(records_.size() + 1);
        for (PF_ParamDef& record : records_) {
            pointers_.push_back(&record);
        }
        pointers_.push_back(nullptr);
        std::memcpy(before_.data(), records_.data(), before_.size());
    }
    ParameterArray(const ParameterArray&) = delete;
    ParameterArray& operator=(const ParameterArray&) = delete;

    PF_ParamDef** data() { return pointers_.data(); }
    /// Whether a record was written to since; all are then as before again.
    bool restore() {
        const bool written = std::memcmp(before_.data(), records_.data(), before_.size()) != 0;
        std::memcpy(static_cast<void*>(records_.data()), before_.data(), before_.size());
        return written;
    }

private:
    std::vector<PF_ParamDef> records_;
    std::vector<std::byte> before_;  ///< their bytes
    std::vector<PF_ParamDef*> pointers_;
};

}  // namespace host
