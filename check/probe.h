// Work on the module in a process of its own, which may crash, hang or be left by an exception; and
// one process for a whole check, the reaper, in which these are made.
//
// The reaper outlives the process that asked for the check: when that is gone, even by SIGKILL,
// which no handler sees, it ends the probe that runs with all that the module left, and itself.
#pragma once

#include <host/violation.h>
#include <osapi/shared_text.h>

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace check {

/// Something that is not as promised.
struct Finding {
    std::string text;                     ///< what came back instead
    std::string deviation = {};           ///< its name, where a contract may keep it
    std::optional<host::Rule> rule = {};  ///< whose row it belongs in; none: the probe's own
    std::string during = {};              ///< what the process was about to do then
    std::string at = {};                  ///< in which of several plays
};

/// The way out of the process: what is said here arrives even if the process then dies. Each word
/// is a sign of life and restarts the clock.
class Notes {
public:
    Notes(int descriptor, std::chrono::milliseconds limit, OSAPI::SharedText& running);

    /// For the probe's own row.
    void find(std::string_view text, std::string_view deviation = {});
    void find(const std::vector<std::string>& texts);
    void find_own(const std::vector<host::Violation>& violations);
    /// For the row of a rule.
    void find(host::Rule rule, std::string_view text, std::string_view deviation = {});
    void find(const std::vector<host::Violation>& violations);

    /// What the process is about to do, for the report of a crash.
    void doing(std::string_view what) { keep("doing", what); }
    /// Which of several plays begins.
    void at(std::string_view play) { keep("at", play); }
    /// What came back, when all is well.
    void say(std::string_view text) { keep("said", text); }
    /// Any other value for whoever hears it. The last one of a name counts.
    void keep(std::string_view name, const nlohmann::json& value) { send({name, value}); }

    /// Which command, or what else of the plug-in, runs; null: none.
    void running(const char* command);

private:
    void send(const nlohmann::json& line);
    void restart_alarm() const;

    int descriptor_;
    unsigned alarm_seconds_;
    OSAPI::SharedText& running_;
};

/// What was heard from such a process.
struct Heard {
    std::vector<Finding> findings;
    nlohmann::json kept = nlohmann::json::object();  ///< the last value of each name
    std::string running;  ///< the command in which it ended; empty when none ran
    /// How it ended, in words: "killed by SIGSEGV", "no answer within 10 s"; empty when it came to
    /// its end.
    std::string died;
    std::string last_words;  ///< its last line on standard error

    /// A kept text; empty when there is none.
    std::string text(const char* name) const;
    /// All findings, how it ended included.
    std::vector<Finding> all() const;
    /// Those of the probe's own row.
    std::vector<Finding> own() const;
};

using Body = std::function<void(Notes&)>;

/// Descriptors of the process in which probes are made, none of which a probe gets; -1: none.
struct ReaperEnds {
    /// Comes to its end with the process that asked for the check. When that is seen while a probe
    /// runs, it is ended with all that it made.
    int parent = -1;
    int lines = -1;  ///< to the process that asked
};

/// Makes such processes, one at a time. Meant for a process that has no other children: it takes
/// over what they leave behind.
class Probes {
public:
    /// `limit`: how long one may go without a sign of life.
    explicit Probes(std::chrono::milliseconds limit, const ReaperEnds& ends = {});

    /// Runs `body` in a process of its own. Processes that it makes and that still run at its end
    /// are a finding, and are ended: on Linux wherever they went, elsewhere those of its group.
    ///
    /// A `host::HostError` out of `body` is a finding, as a want of memory is; anything else that
    /// it throws is a defect of the check. Standard input is empty, standard output goes nowhere.
    /// Throws `StrXception` when there can be no such process.
    Heard run(const Body& body);

private:
    std::chrono::milliseconds limit_;
    ReaperEnds ends_;
    bool adopts_;  ///< what left the group can be found
};

/// Sends a value to the process that asked.
using Tell = std::function<void(const nlohmann::json&)>;
using Work = std::function<void(const Tell& tell, const ReaperEnds& ends)>;

/// Runs `work` in a process of its own, which leads a group of its own and takes over the orphans
/// of its children where the system lets it; `hear` gets in this process what it tells. `ends` are
/// for its `Probes`.
///
/// Throws `Defect` with what `work` threw, or how its process ended before it was done; throws
/// `StrXception` when there can be no process, and what `hear` throws. The process is gone then.
void run_reaped(const Work& work, const Tell& hear);

}  // namespace check
