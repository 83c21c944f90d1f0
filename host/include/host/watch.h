// For a caller that has to tell which command a plug-in was running when the process ended.
#pragma once

namespace host {

struct Watch {
    /// Called before the plug-in runs a command or its deleter, with the name; and with null when
    /// it has returned or thrown.
    void (*command)(const char* name) = nullptr;
    /// Called when the plug-in calls a function that the host lacks. It must not return. If it is
    /// null, the process is aborted.
    void (*lacking)(const char* function) = nullptr;
};

/// From now on, for all sessions of the process.
void set_watch(const Watch& watch);

}  // namespace host
