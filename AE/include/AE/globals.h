// What the loaded effect keeps between commands: the star databases beside it.
#pragma once

#include <base/array.h>
#include <base/scoped_ptr.h>
#include <base/string.h>
#include <base/words.h>
#include <host_api/effect_interface.h>
#include <libimgops/star_input.h>

#include <cstdint>

/// One instance while the effect is set up. Its destructor may throw: it closes the database.
struct LumivarGlobals {
    /// Full paths in the order in which the directory lists them.
    Array<String> starfiles;
    /// Which of `starfiles` is open in `stardb`; any number outside the list while none is.
    std::int32_t stardb_index = 0;
    /// The open database, or nothing.
    scoped_ptr<StarInput> stardb;
};

/// Null before set-up, after a failed set-up and after set-down. The host calls the effect from one
/// thread at a time, so nothing guards it.
extern LumivarGlobals* globals;

/// Destroys the globals, if there are any. `globals` is null afterwards, also when closing the
/// database throws.
void drop_globals();

/// The directory of the databases, which holds the bundle that this code was loaded from (on
/// Windows the module file itself); empty when the loader cannot tell.
String get_lumivar_path();

/// Fills the lists of `found` with every file in `directory` whose name contains ".stars", in
/// listing order, opening each once to prove it readable; leaves none open.
///
/// Returns 0, or 512 with a message for the user in `out_data`: for a file that cannot be read (the
/// later ones are then not looked at), and when there is no such file. Throws `StrXception` when
/// the directory cannot be listed.
PF_Err find_star_databases(const String& directory, LumivarGlobals& found, PF_OutData* out_data);
