// lumivar check
#include <check/check.h>
#include <host/errors.h>

#include <cstdio>
#include <memory>

#include "check_report.h"
#include "command_line.h"
#include "failure.h"
#include "plugin_place.h"
#include "progress.h"

namespace lumivar {
namespace {

struct Arguments {
    std::string bundle;
    std::string rows;
    double seconds = 10.0;
    bool json = false;
};

check::Report report_of(const Arguments& arguments) {
    static const std::string remedy =
        "name a bundle, NAME.plugin with its module in Contents/MacOS/NAME";
    std::filesystem::path plugin;
    try {
        plugin = find_plugin(arguments.bundle, remedy);
    } catch (const Failure& failure) {
        // Of a bundle that was named, only that it is not there is told.
        throw arguments.bundle.empty() ? failure : Failure(failure.what() + ("; " + remedy));
    }
    Progress progress(0, "probes");
    check::Options options;
    options.time_limit = std::chrono::milliseconds(static_cast<int>(arguments.seconds * 1000.0));
    options.rows = arguments.rows;
    options.progress = [&](std::size_t probes, const std::string& row) {
        progress.update(probes, row);
    };
    try {
        return check::run(plugin, options);
    } catch (const host::ModuleError& error) {
        throw Failure(error.what() + ("; " + remedy));
    } catch (const check::Defect& error) {
        throw Failure(error.what());
    }
}

}  // namespace

void add_check_command(Command& program) {
    auto arguments = std::make_shared<Arguments>();
    Command command =
        program.add_command("check", "Check a plug-in against all that its host may ask and do");
    command.add("BUNDLE", arguments->bundle,
                "The plug-in's bundle; if not given, the one that goes with this program");
    command.add("--rows", arguments->rows,
                "Only rows whose ids begin so: frames., faults.checkout_param");
    command.add_flag("--json", arguments->json, "As JSON, for other programs");
    command
        .add("--time-limit", arguments->seconds,
             "Seconds that one command or frame may take before it counts as hung (10)")
        .between(0.1, 3600.0);
    command.footer(
        "Sends the plug-in every command, as After Effects and as Premiere Pro do, and asks for\n"
        "every kind of frame that it declares; makes every call that it makes to the host fail\n"
        "in turn and every suite be missing; and looks for writes outside the pixels, for suites,\n"
        "parameters, handles, memory and descriptors that are not given back, for processes\n"
        "left running, and for what differs from the bundle's registration. Each probe runs in\n"
        "a process of its own: a crash or a hang is a row like any other, and what is left\n"
        "running is ended, however the check ends. What cannot be played to a plug-in that\n"
        "declares dialogs, windows, sound or the graphics processor is told instead.\n\n"
        "Each row tells what was sent, what the interface promises, and what came back, under an\n"
        "id that stays the same. A row passes, fails, or is a kept deviation: behaviour that this\n"
        "effect's contract with saved projects keeps although the interface's guide says\n"
        "otherwise. These belong to the effect by its match name; in any other effect the same\n"
        "behaviour fails. The exit code is 1 if a row fails, or if the check itself does, which\n"
        "is told as its own fault and not as the plug-in's.\n\n"
        "The table tells the first findings of a row, --json tells all of them. Control\n"
        "characters in what the plug-in says stand as escapes, \\x1B, in both.\n\n"
        "Examples:\n"
        "  lumivar check\n"
        "  lumivar check build/asan-ubsan/plugin/Lumivar.plugin --time-limit 60\n"
        "  lumivar check My.plugin --rows frames.\n"
        "  lumivar check My.plugin | grep ^FAIL\n"
        "  lumivar check My.plugin --json |\n"
        "    jq -r '.rows[] | select(.verdict == \"fail\") | .id, .findings[].text'\n");
    command.run([arguments] {
        const check::Report report = report_of(*arguments);
        if (report.rows.empty() && report.unexamined.empty() && report.defects.empty()) {
            throw Failure("no row of this check begins with \"" + arguments->rows +
                          "\"; without --rows it tells them all");
        }
        const std::string text = arguments->json ? report_as_json(report) : report_as_text(report);
        // At once: the failure comes after it wherever both go.
        if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
            throw Failure("cannot write to standard output");
        }
        if (!report.passed()) {
            throw Failure(failure_text(report));
        }
    });
}

}  // namespace lumivar
