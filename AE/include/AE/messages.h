// Texts for the user: the table of fixed ones, and the host's message buffer.
#pragma once

#include <base/string.h>
#include <host_api/effect_interface.h>

/// The fixed texts that something reads, by their number in the table.
enum TableString : A_u_long {
    kStringNone = 0,
    kStringName = 1,
    kStringNotice = 2,
    kStringAllDependencies = 6,
    kStringMissingDependencies = 7
};

/// A text of the table; never null.
const char* table_string(TableString index);

/// Puts `text` into the host's message buffer, in the system's 8-bit encoding and cut to the 256
/// characters, terminator included.
void set_return_msg(PF_OutData* out_data, String text);

// Where the exceptions that name fixed lines say they were raised, whichever source and function of
// the room that is: support requests quote them.
inline constexpr char kShellSource[] = "AE/LumivarAE.cpp";
inline constexpr char kRenderFunction[] =
    "void Lumivar_Render(const MyInstance&, int, int, PF_PixelFormat, PF_EffectWorld*)";
