// Access to the host's function tables ("suites"), and its rectangles.
#pragma once

#include <host_api/effect_interface.h>

/// Loads each of the host's tables at its first use and gives all loaded ones back when it dies.
/// Lives for one command of the host.
class AEGP_SuiteHandler {
public:
    /// Throws as `MissingSuiteError` does when `basic` is null; does not own it.
    explicit AEGP_SuiteHandler(const SPBasicSuite* basic);
    AEGP_SuiteHandler(const AEGP_SuiteHandler&) = delete;
    AEGP_SuiteHandler& operator=(const AEGP_SuiteHandler&) = delete;
    ~AEGP_SuiteHandler() { ReleaseAllSuites(); }

    // The tables belong to the host and are valid as long as this handler. Each accessor throws as
    // `MissingSuiteError` does when the host has no such table.
    const PF_HandleSuite1* HandleSuite1() { return table(handle_); }
    const PF_ANSICallbacksSuite1* ANSICallbacksSuite1() { return table(ansi_); }
    const PF_FillMatteSuite2* FillMatteSuite2() { return table(fill_matte_); }
    const AEGP_PFInterfaceSuite1* PFInterfaceSuite1() { return table(pf_interface_); }
    const AEGP_LayerSuite5* LayerSuite5() { return table(layer_); }
    const AEGP_ItemSuite6* ItemSuite6() { return table(item_); }
    const AEGP_CompSuite4* CompSuite4() { return table(comp_); }
    const AEGP_StreamSuite2* StreamSuite2() { return table(stream_); }

private:
    /// One table: its name and version, and its address once it is loaded.
    template <class Table>
    struct Slot {
        const char* name;
        A_long version;
        const Table* loaded = nullptr;
    };

    template <class Table>
    const Table* table(Slot<Table>& slot) {
        if (slot.loaded == nullptr) {
            slot.loaded = static_cast<const Table*>(LoadSuite(slot.name, slot.version));
        }
        return slot.loaded;
    }
    template <class Table>
    void release(Slot<Table>& slot);

    const void* LoadSuite(const char* name, A_long version) const;
    void ReleaseAllSuites();
    /// Throws the integer 516, which the entry point returns to the host as the status.
    [[noreturn]] static void MissingSuiteError();

    const SPBasicSuite* basic_;
    Slot<PF_HandleSuite1> handle_{kPFHandleSuite, kPFHandleSuiteVersion1};
    Slot<PF_ANSICallbacksSuite1> ansi_{kPFANSISuite, kPFANSISuiteVersion1};
    Slot<PF_FillMatteSuite2> fill_matte_{kPFFillMatteSuite, kPFFillMatteSuiteVersion2};
    Slot<AEGP_PFInterfaceSuite1> pf_interface_{kAEGPPFInterfaceSuite,
                                               kAEGPPFInterfaceSuiteVersion1};
    Slot<AEGP_LayerSuite5> layer_{kAEGPLayerSuite, kAEGPLayerSuiteVersion5};
    Slot<AEGP_ItemSuite6> item_{kAEGPItemSuite, kAEGPItemSuiteVersion6};
    Slot<AEGP_CompSuite4> comp_{kAEGPCompSuite, kAEGPCompSuiteVersion4};
    Slot<AEGP_StreamSuite2> stream_{kAEGPStreamSuite, kAEGPStreamSuiteVersion2};
};

/// Takes one table outside the handler: 0, or 516 with the display flag and a message in `out_data`
/// (`error_text`, or a general one when that is null) when there is no basic suite or it gives no
/// table. Success is a table that is not null; what the host returns is not looked at.
PF_Err AEFX_AcquireSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, A_long version,
                         const char* error_text, const void** table);

/// Gives a table back: 0, or 516 with flag and message as above when there is no basic suite.
PF_Err AEFX_ReleaseSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, A_long version,
                         const char* error_text);

/// No pixels: left >= right or top >= bottom.
bool IsEmptyRect(const PF_LRect& rect);

/// Makes `dst` the box round both rectangles. An empty `dst` becomes `src`, empty or not; an empty
/// `src` changes nothing else.
void UnionLRect(const PF_LRect& src, PF_LRect& dst);
