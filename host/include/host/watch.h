// Looking on while sessions of this process run, for those who have to tell how it ended.
#pragma once

namespace host {

struct Watch {
    /// The plug-in is about to answer the command of this name, or to run its deleter; null: it
    /// came back, by an exception too.
    void (*command)(const char* name) = nullptr;
    /// The plug-in called this function, which the host lacks. It must not come back; without it
    /// the process is aborted.
    void (*lacking)(const char* function) = nullptr;
};

/// From now on, for all sessions of the process.
void set_watch(const Watch& watch);

}  // namespace host
