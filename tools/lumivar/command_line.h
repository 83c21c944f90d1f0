// The program: its subcommands and their arguments.
#pragma once

#include <CLI/CLI.hpp>

namespace lumivar {

/// Parses, runs and reports; the program's exit code. Errors are one line on standard error.
int run_command_line(int argc, const char* const* argv);

/// Refuses an empty text where one is given: a script's unset variable must not mean the default.
CLI::Validator not_empty();

/// Each adds its subcommand; its callback does the work and throws `Failure`.
void add_render_command(CLI::App& program);
void add_controls_command(CLI::App& program);
void add_catalog_command(CLI::App& program);
void add_check_command(CLI::App& program);

}  // namespace lumivar
