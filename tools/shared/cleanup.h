// Files and folders that must not outlive the program, whatever ends it short of SIGKILL.
//
// The list belongs to the thread that made the `SignalCleanup` (the main thread); use it from there
// only.
#pragma once

#include <osapi/signals.h>

#include <deque>
#include <filesystem>

namespace lumivar {

/// While it lives SIGINT, SIGTERM, SIGHUP and SIGPIPE first remove what is on the list, the latest
/// entry first, and then end the program by that same signal. A signal that was ignored before
/// (nohup) stays ignored. SIGXFSZ is ignored, so that a file-size limit shows as an error of the
/// write, like a full disk. One at a time.
class SignalCleanup {
public:
    SignalCleanup();
    SignalCleanup(const SignalCleanup&) = delete;
    SignalCleanup& operator=(const SignalCleanup&) = delete;

private:
    OSAPI::SignalIgnore file_size_limit_;
    std::deque<OSAPI::Signal> ends_;
};

/// A copy of the process that goes on in this program: 0 in the child, its id in the parent. What
/// is on the list stays the parent's to remove: the child begins with an empty one, and signals end
/// it as `SignalCleanup` says, whatever the parent does at them by then. Throws as `OSAPI::fork`.
int fork_with_own_cleanup();

/// Puts one file or one empty-by-then folder on the list for the lifetime of the object; does not
/// remove it itself. Registered before the entry is created, so that there is no moment in which a
/// signal could leave it behind; an entry that is not there is passed over.
class RemoveOnSignal {
public:
    enum class Kind { File, Folder };
    RemoveOnSignal(const std::filesystem::path& path, Kind kind);
    ~RemoveOnSignal();
    RemoveOnSignal(const RemoveOnSignal&) = delete;
    RemoveOnSignal& operator=(const RemoveOnSignal&) = delete;

    struct Entry;  ///< one link of the list; the signal handler walks it

private:
    Entry* entry_;
};

}  // namespace lumivar
