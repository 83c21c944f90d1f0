// What the files of the test effect share.
#pragma once

#include <host_api/effect_interface.h>

#include <array>
#include <cstddef>
#include <vector>

#include "test_effect.h"

namespace test_effect {

#ifdef CONFORMING
inline constexpr bool kConforming = true;
#else
inline constexpr bool kConforming = false;
#endif

enum Parameter {
    kInput,
    kGainId,
    kCountId,
    kInvertId,
    kShadeId,
    kModeId,
    kMischiefId,
    kParamCount
};

/// For all commands; `kNone` unless it conforms but for this.
Mischief asked_mischief();

/// What is done for one mischief where `Place` is at hand.
template <class Place>
struct Deed {
    Mischief mischief;
    void (*act)(Place&);
};

template <class Place, std::size_t count>
void act(const Deed<Place> (&deeds)[count], int mischief, Place& place) {
    for (const Deed<Place>& deed : deeds) {
        if (deed.mischief == mischief) {
            deed.act(place);
        }
    }
}

/// The first error is passed on; unless it conforms, the effect does not care.
void pass_on(PF_Err& err, PF_Err next);

// For good, and so that the compiler keeps them.
void lose_memory();
void lose_descriptor();
void lose_mapping();
void stay_loaded();

/// Asks the host for a handle and gives it back.
bool gets_handle(const PF_InData* in);

// What several commands do when it is asked of the effect.
void lose_memory_for(Mischief mischief);
void crash_for(Mischief mischief);
PF_Err refuse_for(Mischief mischief);
/// Makes a process that does not end for a while, in a session of its own if wished.
void leave_process(bool own_session);

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

// Controls.

/// Breaks the one thing that was asked for, if it is this control's.
void spoil_control(PF_ParamDef& control);
/// To be declared behind the others.
std::vector<PF_ParamDef> further_controls();

// Frames.

using Facts = std::array<double, kFactEnd>;

/// Time, sizes and scales, and what of the host's tables is null.
void tell_in_data(const PF_InData* in, Facts& facts);
/// The camera and the shutter, where the host has the suites for them.
PF_Err read_camera(PF_InData* in, Facts& facts);

/// The sequence was flattened, and set up again since.
void flatten_sequence();
void set_up_sequence_again();
/// Whether any were drawn since the module was loaded, which every host session does anew.
bool frames_made();

PF_Err pre_render(PF_InData* in, PF_OutData* out, PF_PreRenderExtra* extra);
PF_Err smart_render(PF_InData* in, PF_OutData* out, PF_SmartRenderExtra* extra);
/// The plain way: alpha full, red from the first slider, through the host's own fill.
PF_Err plain_render(PF_InData* in, PF_OutData* out, PF_ParamDef** params, PF_EffectWorld* output);

// Premiere Pro.

void declare_premiere_formats(PF_InData* in);
/// Fills the output, or does what the mischief has for its pixels.
PF_Err premiere_render(PF_InData* in, PF_EffectWorld* output, const PF_Pixel& colour);

// Commands that the effect need not know.

/// What it declares so that some of them come after all.
void declare_other_commands(PF_OutData* out);
PF_Err other_command(PF_Cmd command, PF_ParamDef** params, void* extra);

}  // namespace test_effect
