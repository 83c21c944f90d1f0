// How the program ends, in one place: the help's footer and the tests refer to these.
#pragma once

namespace lumivar {

enum ExitCode {
    kExitOk = 0,  ///< done
    kExitFailure =
        1,           ///< the work could not be done: unreadable input, full disk, failed frame ...
    kExitUsage = 2,  ///< the command line itself cannot be used
    // A caught signal is not turned into a code: after cleaning up, the program dies by that very
    // signal, which a shell shows as 128 + its number (SIGHUP 129, SIGINT 130, SIGPIPE 141,
    // SIGTERM 143).
};

inline constexpr const char* kExitCodesHelp =
    "Exit codes: 0 done; 1 the work failed, one line on standard error says why;\n"
    "2 the command line cannot be used. Interrupted by a signal it cleans up and dies\n"
    "by that signal: 130 for Ctrl-C, 143 for SIGTERM, 129 for SIGHUP in a shell.\n";

}  // namespace lumivar
