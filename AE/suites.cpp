#include <AE/suites.h>

namespace {

/// Sets the display flag and writes `error_text`, or `general_text` when that is null, into the
/// host's message buffer.
PF_Err report_suite_error(PF_InData* in_data, PF_OutData* out_data, const char* error_text,
                          const char* general_text) {
    out_data->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
    // 255 characters: the buffer's size less the terminator.
    in_data->utils->ansi.sprintf(out_data->return_msg, "%.255s",
                                 error_text != nullptr ? error_text : general_text);
    return PF_Err_BAD_CALLBACK_PARAM;
}

}  // namespace

AEGP_SuiteHandler::AEGP_SuiteHandler(const SPBasicSuite* basic) : basic_(basic) {
    if (basic_ == nullptr) {
        MissingSuiteError();
    }
}

const void* AEGP_SuiteHandler::LoadSuite(const char* name, A_long version) const {
    const void* loaded = nullptr;
    const SPErr error = basic_->AcquireSuite(name, version, &loaded);
    if (error != kSPNoError || loaded == nullptr) {
        MissingSuiteError();
    }
    return loaded;
}

template <class Table>
void AEGP_SuiteHandler::release(Slot<Table>& slot) {
    if (slot.loaded != nullptr) {
        basic_->ReleaseSuite(slot.name, slot.version);
        slot.loaded = nullptr;
    }
}

void AEGP_SuiteHandler::ReleaseAllSuites() {
    release(handle_);
    release(ansi_);
    release(fill_matte_);
    release(pf_interface_);
    release(layer_);
    release(item_);
    release(comp_);
    release(stream_);
}

void AEGP_SuiteHandler::MissingSuiteError() { throw PF_Err_BAD_CALLBACK_PARAM; }

PF_Err AEFX_AcquireSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, A_long version,
                         const char* error_text, const void** table) {
    *table = nullptr;
    if (in_data->pica_basicP != nullptr) {
        in_data->pica_basicP->AcquireSuite(name, version, table);
    }
    if (*table == nullptr) {
        return report_suite_error(in_data, out_data, error_text, "Not able to acquire AEFX Suite.");
    }
    return PF_Err_NONE;
}

PF_Err AEFX_ReleaseSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, A_long version,
                         const char* error_text) {
    if (in_data->pica_basicP == nullptr) {
        return report_suite_error(in_data, out_data, error_text, "Not able to release AEFX Suite.");
    }
    in_data->pica_basicP->ReleaseSuite(name, version);
    return PF_Err_NONE;
}

bool IsEmptyRect(const PF_LRect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

void UnionLRect(const PF_LRect& src, PF_LRect& dst) {
    if (IsEmptyRect(dst)) {
        dst = src;
    } else if (!IsEmptyRect(src)) {
        dst.left = src.left < dst.left ? src.left : dst.left;
        dst.top = src.top < dst.top ? src.top : dst.top;
        dst.right = src.right > dst.right ? src.right : dst.right;
        dst.bottom = src.bottom > dst.bottom ? src.bottom : dst.bottom;
    }
}
