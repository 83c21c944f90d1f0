// A hidden folder for half-made things, beside the place where they will stand.
//
// The plug-in takes every name that contains ".stars" in its folder for a database, so nothing
// half-written may have such a name there, not even for a moment. Work is done in
// ".lumivar-work-PID-N/" on the same file system and moved out by a rename when it is whole.
//
// Each working folder holds a file "lock" that its owner keeps locked (flock): a folder whose lock
// is free belongs to nobody any more (its owner was killed hard, or the power failed) and the next
// run that works beside it removes it. A process number alone would not tell: numbers are used
// again.
#pragma once

#include <deque>
#include <filesystem>
#include <string>

#include "cleanup.h"

namespace lumivar {

class WorkingFolder {
public:
    /// Removes orphans from `parent`, if it is the process's first there, then makes a working
    /// folder there. Throws `Failure`, which begins with `complaint`: what the user then does not
    /// get ("cannot write a.exr").
    WorkingFolder(const std::filesystem::path& parent, std::string complaint);
    /// Removes the folder and everything in it.
    ~WorkingFolder();
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of a file that the caller is about to create in the folder, at any depth; a signal
    /// removes it.
    std::filesystem::path file(const std::filesystem::path& relative);
    /// Creates a folder within. Throws `Failure`.
    std::filesystem::path make_folder(const std::filesystem::path& relative);

private:
    bool claim(const std::filesystem::path& candidate);

    std::string complaint_;
    std::filesystem::path path_;
    std::deque<RemoveOnSignal> entries_;
    int lock_ = -1;
};

/// For a copy of the process, to be called first: closes its copies of the locks, by which the
/// folders of the parent would look as if they had an owner after the parent's end. The objects
/// must not be used there.
void leave_working_folders_to_parent();

/// Removes the working folders in `parent` whose owner is gone, and says how many. What cannot be
/// listed, locked or removed is left alone: it is not this run's business to fail over it.
int remove_orphans(const std::filesystem::path& parent);

}  // namespace lumivar
