// Work on the module in a process of its own, which may crash, hang or be left by an exception.
#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace conformance {

/// Something that is not as promised.
struct Finding {
    std::string rule;         ///< whose row it belongs in; empty: the probe's own
    std::string text;         ///< what came back instead
    std::string deviation;    ///< its name, where a contract may keep it
    std::string during = {};  ///< what the process was about to do then
};

class RunningCommand;

/// The way out of the process: what is said here arrives even if the process then dies. Each word
/// is a sign of life and restarts the clock.
class Notes {
public:
    Notes(int descriptor, std::chrono::milliseconds limit, RunningCommand& running);

    /// What the process is about to do, for the report of a crash.
    void doing(std::string_view what);
    void find(std::string_view rule, std::string_view text, std::string_view deviation = {});
    /// What came back, when all is well.
    void say(std::string_view text);
    /// For later probes.
    void keep(const std::string& name, const nlohmann::json& value);
    /// Which command, or what else of the plug-in, runs; null: none.
    void running(const char* command);
    /// The module called what the host lacks: nobody's fault, but the end.
    void lacking(const char* function);
    /// The last word: whoever goes without it did not go by himself.
    void end();
    /// The last word of a process that ends by `exit`, whoever called it.
    void exited();

private:
    void send(const nlohmann::json& line);

    /// Ends this process some time after its last sign of life, if checker and keeper should be
    /// gone: nobody else would end a module that hangs.
    void restart_alarm() const;

    int descriptor_;
    unsigned alarm_seconds_;
    RunningCommand& running_;
};

/// What was heard from such a process.
struct Heard {
    std::vector<Finding> findings;
    std::string said;
    std::string doing;
    std::string running;  ///< the command in which it ended; empty when none ran
    std::string lacking;  ///< the function that the host lacks, at which it ended
    nlohmann::json kept = nlohmann::json::object();
    /// How it ended, in words: "killed by SIGSEGV", "no answer within 10 s"; empty when it came to
    /// its end.
    std::string died;
    std::string last_words;  ///< its last line on standard error
};

using Body = std::function<void(Notes&)>;

/// Runs `body` in a process of its own, which outlives neither the call nor this process, whatever
/// ends that; neither do processes that it makes (`Keeper` tells which are found), and those still
/// running at its end are a finding. What `body` throws is one too. Standard input is empty,
/// standard output goes nowhere. Throws `StrXception` when there can be no such process.
Heard run_apart(const Body& body, std::chrono::milliseconds limit);

}  // namespace conformance
