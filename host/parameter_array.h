// The parameters as a command is handed them.
#pragma once

#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <vector>

#include "host_state.h"

namespace host {

/// Records and the pointers to them, with a null pointer behind the last.
class ParameterArray {
public:
    /// `record_of` makes a parameter's record.
    template <class RecordOf>
    ParameterArray(const std::vector<Parameter>& parameters, RecordOf record_of) {
        std::transform(parameters.begin(), parameters.end(), std::back_inserter(records_),
                       record_of);
        before_.resize(records_.size() * sizeof(PF_ParamDef));
        for (PF_ParamDef& record : records_) {
            pointers_.push_back(&record);
        }
        pointers_.push_back(nullptr);
        std::memcpy(before_.data(), records_.data(), before_.size());
    }
    ParameterArray(const ParameterArray&) = delete;
    ParameterArray& operator=(const ParameterArray&) = delete;

    PF_ParamDef** data() { return pointers_.data(); }
    /// Restores the records; returns whether one had changed.
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
