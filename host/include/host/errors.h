// What the stand-in host throws.
#pragma once

#include <host/violation.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace host {

/// Root of the host's failures; the message is one whole line for the user. (A scene that cannot be
/// used is a `SceneError`.)
class HostError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The plug-in cannot be opened: the bundle is missing, is no loadable module, has no entry point.
class ModuleError : public HostError {
public:
    using HostError::HostError;
};

class NoEntryPoint : public ModuleError {
public:
    using ModuleError::ModuleError;
};

/// The plug-in did what would bring a real host down: an exception left its entry point.
class ModuleDefect : public HostError {
public:
    using HostError::HostError;
};

/// The plug-in answered a command with a status other than 0.
class EffectError : public HostError {
public:
    EffectError(const std::string& what, std::int32_t command, std::int32_t status,
                std::string message, std::vector<Violation> violations = {})
        : HostError(what),
          command_(command),
          status_(status),
          message_(std::move(message)),
          violations_(std::move(violations)) {}

    std::int32_t command() const { return command_; }
    std::int32_t status() const { return status_; }
    /// What the plug-in left for the user; may be empty.
    const std::string& message() const { return message_; }
    /// Rules that it broke on the way, where no session is left to ask: after a refused set-up.
    const std::vector<Violation>& violations() const { return violations_; }

private:
    std::int32_t command_;
    std::int32_t status_;
    std::string message_;
    std::vector<Violation> violations_;
};

/// A frame that is refused, or that came back undrawn: the message names the cause and the remedy.
class FrameError : public HostError {
public:
    using HostError::HostError;
};

}  // namespace host
