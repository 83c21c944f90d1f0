// The program: its subcommands and their arguments. The library that parses them is known to
// `command_line.cpp` alone: its header takes longer to compile than all of a subcommand.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace lumivar {

/// An argument of a subcommand. Refers to the program that is parsed.
class Argument {
public:
    explicit Argument(CLI::Option* option) : option_(option) {}

    Argument required();
    /// Refuses the command line when both are given.
    Argument excludes(Argument other);
    /// Refuses all other values; `--help` shows which one stands there without the argument.
    Argument one_of(const std::vector<int>& values);
    Argument one_of(const std::vector<std::string>& values);
    Argument between(double lowest, double highest);

private:
    CLI::Option* option_;
};

/// A subcommand and what it understands. Refers to the program that is parsed.
class Command {
public:
    explicit Command(CLI::App* app) : app_(app) {}

    /// A subcommand of this one, of which one must be given.
    Command add_command(const std::string& name, const std::string& description);

    /// `names` as in "-o,--output", or "SCENE" for what is known by its place. What is given is
    /// stored in `value`, which must live until the command has run. A single text is refused when
    /// empty: a script's unset variable must not mean the default. Of a list each value needs its
    /// own `names` before it.
    Argument add(const std::string& names, std::string& value, const std::string& description);
    Argument add(const std::string& names, int& value, const std::string& description);
    Argument add(const std::string& names, double& value, const std::string& description);
    Argument add(const std::string& names, std::optional<int>& value,
                 const std::string& description);
    Argument add(const std::string& names, std::optional<double>& value,
                 const std::string& description);
    Argument add(const std::string& names, std::vector<std::string>& values,
                 const std::string& description);
    /// One value or more, known by their place. None may be empty.
    Argument add_all(const std::string& name, std::vector<std::string>& values,
                     const std::string& description);
    /// The same, but there may be none.
    Argument add_rest(const std::string& name, std::vector<std::string>& values,
                      const std::string& description);
    Argument add_flag(const std::string& names, bool& value, const std::string& description);

    /// What `--help` says below the arguments.
    void footer(const std::string& text);
    /// Does the work; throws `Failure` or `UsageError`.
    void run(const std::function<void()>& work);

private:
    CLI::App* app_;
};

/// Parses, runs and reports; the program's exit code. Errors are one line on standard error.
int run_command_line(int argc, const char* const* argv);

/// Each adds its subcommand.
void add_render_command(Command& program);
void add_controls_command(Command& program);
void add_catalog_command(Command& program);
void add_camera_command(Command& program);
void add_check_command(Command& program);
void add_farm_command(Command& program);

}  // namespace lumivar
