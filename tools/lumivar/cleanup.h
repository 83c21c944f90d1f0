// Files and folders that must not outlive the program, whatever ends it short of SIGKILL.
//
// The list belongs to the thread that called `install_signal_handlers` (the main thread); use it
// from there only.
#pragma once

#include <filesystem>

namespace lumivar {

/// From now on SIGINT, SIGTERM, SIGHUP and SIGPIPE first remove what is on the list, the latest
/// entry first, and then end the program by that same signal. A signal that was ignored when the
/// program started (nohup) stays ignored. SIGXFSZ is ignored, so that a file-size limit shows as an
/// error of the write, like a full disk.
void install_signal_handlers();

/// Puts one file or one empty-by-then folder on the list for the lifetime of the object; does not
/// remove it itself. Registered before the entry is created, so that there is no moment in which a
/// signal could leave it behind; an entry that is not there is passed over.
class RemoveOnSignal {
public:
    enum class Kind { kFile, kFolder };
    RemoveOnSignal(const std::filesystem::path& path, Kind kind);
    ~RemoveOnSignal();
    RemoveOnSignal(const RemoveOnSignal&) = delete;
    RemoveOnSignal& operator=(const RemoveOnSignal&) = delete;

    struct Entry;  ///< one link of the list; the signal handler walks it

private:
    Entry* entry_;
};

}  // namespace lumivar
