// The parameters as a command is handed them.
#pragma once

#include <host_api/effect_interface.h>

#include <utility>
#include <vector>

namespace host {

/// Records and the pointers to them, with a null pointer behind the last.
class ParameterArray {
public:
    explicit ParameterArray(std::vector<PF_ParamDef> records) : records_(std::move(records)) {
        pointers_.reserve(records_.size() + 1);
        for (PF_ParamDef& record : records_) {
            pointers_.push_back(&record);
        }
        pointers_.push_back(nullptr);
    }
    ParameterArray(const ParameterArray&) = delete;
    ParameterArray& operator=(const ParameterArray&) = delete;

    PF_ParamDef** data() { return pointers_.data(); }

private:
    std::vector<PF_ParamDef> records_;
    std::vector<PF_ParamDef*> pointers_;
};

}  // namespace host
