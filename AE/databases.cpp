#include <AE/globals.h>
#include <AE/messages.h>
#include <base/exceptions.h>
#include <libimgops/star_database_name.h>
#include <libimgops/starfile.h>
#include <osapi/directories.h>
#include <osapi/module_path.h>
#include <osapi/path_text.h>

#include <cstdint>

namespace {

// The index between set-up and the first frame, while no database is open: that of no file.
constexpr std::int32_t kNoDatabase = -99;

// From the module's directory to the one where the databases stand.
#ifdef _WIN32
constexpr char kDatabases[] = "";
#else
// Out of the bundle.
constexpr char kDatabases[] = "/../../..";
#endif

}  // namespace

LumivarGlobals* globals = nullptr;

void drop_globals() {
    // Null before the database closes, which may throw.
    LumivarGlobals* dropped = globals;
    globals = nullptr;
    delete dropped;
}

String get_lumivar_path() {
    const String module = OSAPI::module_path(reinterpret_cast<const void*>(&get_lumivar_path));
    return module.len() == 0 ? String() : OSAPI::dirname(module.c_str()) + kDatabases;
}

PF_Err find_star_databases(const String& directory, LumivarGlobals& found, PF_OutData* out_data) {
    Array<String> entries;
    OSAPI::lsdir(directory.c_str(), entries);
    for (uword i = 0; i < entries.len(); ++i) {
        if (!is_star_database_name(entries[i].c_str())) {
            continue;
        }
        const String path = directory + "/" + entries[i];
        found.starfiles.append(path);
        try {
            found.stardb.reset(op_stars_file_input(path.c_str()));
        } catch (const Xception&) {
            out_data->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
            set_return_msg(out_data,
                           String::fmt("Error reading Lumivar database file %s.", path.c_str()));
            return PF_Err_INTERNAL_STRUCT_DAMAGED;
        }
    }
    if (found.starfiles.empty()) {
        // Deliberately without the display flag: the host shows this one as a notice.
        set_return_msg(out_data,
                       String::fmt("Cannot locate any Lumivar star database files. Please place "
                                   "the .stars file in the same directory as the Lumivar plugin "
                                   "(%s).",
                                   directory.c_str()));
        return PF_Err_INTERNAL_STRUCT_DAMAGED;
    }
    found.stardb_index = kNoDatabase;
    found.stardb.reset();
    return PF_Err_NONE;
}
