#include "command_line.h"

#include <base/exceptions.h>
#include <host/printable.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "cleanup.h"
#include "exit_codes.h"
#include "failure.h"
#include "program_version.h"

namespace lumivar {
namespace {

int complain(std::string text, int code) {
    // One line, whatever a file's name or a library's text brings along.
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    std::fprintf(stderr, "lumivar: %s\n", host::printable(text).c_str());
    return code;
}

int usage_error(const std::string& text) {
    return complain(text + " (lumivar --help shows the ways)", kExitUsage);
}

/// CLI11 reports "lumivar paint" as a missing subcommand; the message names the unknown word.
std::string usage_text(const CLI::App& program, const CLI::Error& error) {
    const std::vector<std::string> unknown = program.remaining(true);
    if (unknown.empty()) {
        return error.what();
    }
    return "there is no command or option \"" + unknown.front() + "\"";
}

/// Output may still be in a buffer; that the disk is full shows only when it is flushed.
int finish() {
    // It may have been flushed before, in vain.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        return complain("cannot write to standard output", kExitFailure);
    }
    return kExitOk;
}

CLI::Validator not_empty() {
    return {[](const std::string& text) {
                return std::string(text.empty() ? "give a value, not an empty text" : "");
            },
            ""};
}

}  // namespace

Argument Argument::required() {
    option_->required();
    return *this;
}
Argument Argument::excludes(Argument other) {
    option_->excludes(other.option_);
    return *this;
}
Argument Argument::one_of(const std::vector<int>& values) {
    option_->check(CLI::IsMember(values))->capture_default_str();
    return *this;
}
Argument Argument::one_of(const std::vector<std::string>& values) {
    option_->check(CLI::IsMember(values))->capture_default_str();
    return *this;
}
Argument Argument::between(double lowest, double highest) {
    option_->check(CLI::Range(lowest, highest));
    return *this;
}

Command Command::add_command(const std::string& name, const std::string& description) {
    app_->require_subcommand(1);
    return Command(app_->add_subcommand(name, description));
}
Argument Command::add(const std::string& names, std::string& value,
                      const std::string& description) {
    return Argument(app_->add_option(names, value, description)->check(not_empty()));
}
Argument Command::add(const std::string& names, int& value, const std::string& description) {
    return Argument(app_->add_option(names, value, description));
}
Argument Command::add(const std::string& names, double& value, const std::string& description) {
    return Argument(app_->add_option(names, value, description));
}
Argument Command::add(const std::string& names, std::optional<int>& value,
                      const std::string& description) {
    return Argument(app_->add_option(names, value, description));
}
Argument Command::add(const std::string& names, std::optional<double>& value,
                      const std::string& description) {
    return Argument(app_->add_option(names, value, description));
}
Argument Command::add(const std::string& names, std::vector<std::string>& values,
                      const std::string& description) {
    return Argument(app_->add_option(names, values, description)
                        ->allow_extra_args(false)
                        ->trigger_on_parse(false));
}
Argument Command::add_all(const std::string& name, std::vector<std::string>& values,
                          const std::string& description) {
    return Argument(app_->add_option(name, values, description)->check(not_empty()));
}
Argument Command::add_rest(const std::string& name, std::vector<std::string>& values,
                           const std::string& description) {
    return Argument(app_->add_option(name, values, description));
}
Argument Command::add_flag(const std::string& names, bool& value, const std::string& description) {
    return Argument(app_->add_flag(names, value, description));
}
void Command::footer(const std::string& text) { app_->footer(text); }
void Command::run(const std::function<void()>& work) { app_->callback(work); }

int run_command_line(int argc, const char* const* argv) {
    const SignalCleanup cleanup;
    CLI::App program("Renders photographic star fields and makes the star databases for them.",
                     "lumivar");
    program.set_version_flag("--version", kProgramVersion);
    program.footer(std::string("Examples:\n"
                               "  lumivar render scenes/orion.json -o orion.png\n"
                               "  lumivar controls\n"
                               "  lumivar catalog import data/hip.csv -o hipparcos.stars\n"
                               "  lumivar catalog info hipparcos.stars\n"
                               "  lumivar camera info shot.chan\n"
                               "  lumivar check\n"
                               "Each command has a --help of its own, with more of them.\n\n") +
                   kExitCodesHelp);
    Command commands(&program);
    add_render_command(commands);
    add_controls_command(commands);
    add_catalog_command(commands);
    add_camera_command(commands);
    add_check_command(commands);
    add_farm_command(commands);
    try {
        program.parse(argc, argv);
        return finish();
    } catch (const CLI::Success& help) {
        std::ostringstream text;
        program.exit(help, text, text);
        std::fputs(text.str().c_str(), stdout);
        return finish();
    } catch (const CLI::RequiredError& error) {
        return usage_error(usage_text(program, error));
    } catch (const CLI::Error& error) {
        return usage_error(error.what());
    } catch (const UsageError& error) {
        return usage_error(error.what());
    } catch (const StrXception& error) {
        return complain(error.message().c_str(), kExitFailure);
    } catch (const AssertXception& error) {
        return complain(std::string("a defect of the program: ") + error.expression(),
                        kExitFailure);
    } catch (const std::bad_alloc&) {
        return complain("there is not enough memory for this", kExitFailure);
    } catch (const std::exception& error) {
        return complain(error.what(), kExitFailure);
    }
}

}  // namespace lumivar
