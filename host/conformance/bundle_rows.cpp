// Rows of the bundle: its module, and what it tells a host before that is loaded.
#include <host/module.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "bundle_files.h"
#include "examination.h"
#include "registration.h"

namespace conformance {
namespace {

std::string hex(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(number));
    return text;
}

void look_at_module(Examination& run) {
    const RowText row = {"bundle.module", "load the module", "it opens and exports EntryPointFunc"};
    const Heard heard = run.probe(row.id, [&](Notes& notes) {
        notes.doing("loading");
        try {
            const host::Module module(run.file());
            notes.say("opened; the entry point is there");
        } catch (const host::ModuleError& error) {
            const std::string text = error.what();
            const bool no_symbol = text.find("exports no entry point") != std::string::npos;
            notes.find("", text + (no_symbol ? "; export it with C linkage and default visibility"
                                             : "; build it for this machine, with all it needs"));
        }
    });
    run.enter(row, heard);
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

Finding fault_of(const BundleFile& file, const std::string& text) {
    return {"", file.name() + ": " + text, ""};
}

/// Of a file that is not there to be read.
Finding without(const BundleFile& file, const std::string& remedy) {
    return {"", file.name() + " " + file.trouble + "; " + remedy, ""};
}

/// What stands behind a key of a property list, as far as it is a text.
struct Entry {
    std::size_t line = 0;  ///< of the key, from 1; 0: there is none
    std::optional<std::string> value;
};

Entry entry_of(const std::string& list, const std::string& key) {
    static const std::string open = "<string>";
    const std::string name = "<key>" + key + "</key>";
    const std::size_t at = list.find(name);
    if (at == std::string::npos) {
        return {};
    }
    const auto lines =
        std::count(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    Entry entry{static_cast<std::size_t>(lines) + 1, std::nullopt};
    const std::size_t next = list.find_first_not_of(" \t\r\n", at + name.size());
    if (next != std::string::npos && list.compare(next, open.size(), open) == 0) {
        const std::size_t begin = next + open.size();
        const std::size_t end = list.find("</string>", begin);
        if (end != std::string::npos) {
            entry.value = list.substr(begin, end - begin);
        }
    }
    return entry;
}

/// The list with blanks in place of its comments: what they hold is not there, and what is there
/// keeps its line.
std::string without_comments(std::string list) {
    static const std::string end = "-->";
    for (std::size_t at = list.find("<!--"); at != std::string::npos; at = list.find("<!--", at)) {
        const std::size_t close = list.find(end, at + 4);
        const std::size_t behind = close == std::string::npos ? list.size() : close + end.size();
        std::replace_if(
            list.begin() + static_cast<std::ptrdiff_t>(at),
            list.begin() + static_cast<std::ptrdiff_t>(behind), [](char c) { return c != '\n'; },
            ' ');
    }
    return list;
}

std::string quoted(const std::string& text) {
    constexpr std::size_t kLongest = 40;
    return "\"" + text.substr(0, kLongest) + (text.size() > kLongest ? "..." : "") + "\"";
}

std::vector<Finding> wrong_entries(const BundleFile& list, const std::string& executable) {
    const std::pair<const char*, std::string> expected[] = {
        {"CFBundlePackageType", "eFKT"},
        {"CFBundleSignature", "FXTC"},
        {"CFBundleExecutable", executable},
    };
    if (!list.content) {
        return {without(list,
                        "write one with CFBundlePackageType eFKT, CFBundleSignature FXTC and "
                        "CFBundleExecutable " +
                            executable)};
    }
    if (list.content->rfind("bplist", 0) == 0) {
        return {fault_of(list,
                         "is a binary property list, which cannot be read here; turn it into XML "
                         "with plutil -convert xml1")};
    }
    const std::string text = without_comments(*list.content);
    std::vector<Finding> findings;
    for (const auto& [name, value] : expected) {
        const std::string key = name;
        const Entry entry = entry_of(text, key);
        const std::string remedy =
            joined({"; write <key>", key, "</key><string>", value, "</string>"});
        if (entry.line == 0) {
            findings.push_back(fault_of(list, joined({"has no ", key, remedy})));
        } else if (entry.value != value) {
            const std::string found = entry.value ? quoted(*entry.value) : "no text";
            findings.push_back(fault_of(list, joined({"line ", std::to_string(entry.line), ": ",
                                                      key, " is ", found, remedy})));
        }
    }
    return findings;
}

std::vector<Finding> wrong_package(const BundleFile& package) {
    const std::string remedy = "write the eight bytes eFKTFXTC, without a line feed";
    if (!package.content) {
        return {without(package, remedy)};
    }
    if (*package.content != "eFKTFXTC") {
        return {fault_of(package, "holds " + std::to_string(package.content->size()) + " bytes, " +
                                      quoted(*package.content) + "; " + remedy)};
    }
    return {};
}

std::vector<Finding> wrong_names(const BundleFile& file, const Registration& resource) {
    constexpr std::size_t kLongest = 31;
    std::vector<Finding> findings;
    for (const std::string key : {"name", "catg", "eMNA"}) {
        const auto text = resource.text(key);
        if (text && !text->empty() && text->size() <= kLongest) {
            continue;
        }
        const std::string found =
            !resource.has(key) ? "there is no " + key
            : !text            ? key + " is no text with its length before it"
                               : key + " has " + std::to_string(text->size()) + " characters";
        findings.push_back(fault_of(file, found + "; register one of 1 to 31 characters"));
    }
    return findings;
}

std::vector<Finding> wrong_code(const BundleFile& file, const Registration& resource) {
    const std::string entry_point = host::kEntryPointName;
    std::vector<Finding> findings;
    if (resource.bytes("kind") != "eFKT") {
        findings.push_back(
            fault_of(file, (resource.has("kind") ? "kind is " + quoted(resource.bytes("kind"))
                                                 : std::string("there is no kind")) +
                               "; register an effect, eFKT"));
    }
    if (!resource.has("mi64") && !resource.has("mi32") && !resource.has("ma64")) {
        findings.push_back(fault_of(file, "no entry point is named for any processor; register " +
                                              entry_point + " as mi64, mi32 or ma64"));
    }
    for (const std::string key : {"mi64", "mi32", "ma64"}) {
        if (resource.has(key) && resource.text(key) != entry_point) {
            const std::string named = quoted(resource.text(key).value_or(resource.bytes(key)));
            findings.push_back(fault_of(file, joined({key, " names ", named, "; register ",
                                                      entry_point, ", which the module exports"})));
        }
    }
    return findings;
}

constexpr RowText kResourceRow = {"bundle.resource", "read the registration resource",
                                  "kind eFKT, and the entry point's name"};

void look_at_resource(Examination& run, const BundleFile& file) {
    static const std::string remedy = "build it from the effect's property list (PiPL)";
    if (!file.content) {
        run.enter(kResourceRow, {without(file, remedy)}, "");
        return;
    }
    try {
        const Registration resource(*file.content);
        run.enter(kResourceRow, wrong_code(file, resource),
                  "eFKT, " + std::string(host::kEntryPointName));
        const std::string match_name = resource.text("eMNA").value_or("");
        run.enter({"bundle.names", "read the registration resource",
                   "name, category and match name of 1 to 31 characters"},
                  wrong_names(file, resource),
                  resource.text("name").value_or("") + ", " + resource.text("catg").value_or("") +
                      ", " + match_name);
        run.set_match_name(match_name);
        run.registration = resource;
    } catch (const ResourceError& error) {
        run.enter(kResourceRow, {fault_of(file, error.what() + ("; " + remedy))}, "");
    }
}

}  // namespace

void compare_with_registration(Examination& run) {
    struct Number {
        RowText text;
        const char* key;
        std::uint32_t declared;
        std::uint32_t of_the_resource = 0;  ///< bits that stand there alone
    };
    const Number numbers[] = {
        {{"setup.registered-version", "global set-up", "my_version is the registration's eVER"},
         "eVER",
         run.declared->version},
        {{"setup.registered-flags", "global set-up", "out_flags are the registration's eGLO"},
         "eGLO",
         run.declared->out_flags,
         PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS},
        {{"setup.registered-flags2", "global set-up", "out_flags2 are the registration's eGL2"},
         "eGL2",
         run.declared->out_flags2},
    };
    for (const Number& number : numbers) {
        const auto registered = run.registration->number(number.key);
        std::vector<Finding> findings;
        const std::uint32_t compared = ~number.of_the_resource;
        if (!registered || (*registered & compared) != (number.declared & compared)) {
            findings.push_back({"",
                                "declared " + hex(number.declared) + ", registered " +
                                    (registered ? hex(*registered) : "nothing") + " as " +
                                    number.key + "; write the same into both",
                                ""});
        }
        run.enter(number.text, findings,
                  registered == number.declared
                      ? "both " + hex(number.declared)
                      : "declared " + hex(number.declared) + ", registered " +
                            hex(registered.value_or(0)) + " with a bit that may differ");
    }
}

void examine_bundle(Examination& run) {
    look_at_module(run);
    const std::string executable = run.file().filename().string();
    const BundleFiles files(run.file());
    if (!files.in_bundle) {
        run.leave_out("registration", "there is no Info.plist, PkgInfo or Resources/" + executable +
                                          ".rsrc beside the module");
        return;
    }
    run.enter({"bundle.info-list", "read Info.plist", "the bundle is an effect's (eFKT, FXTC)"},
              wrong_entries(files.info_list, executable), "eFKT, FXTC, " + executable);
    run.enter({"bundle.package-info", "read PkgInfo", "eight bytes, eFKTFXTC"},
              wrong_package(files.package_info), "eFKTFXTC");
    look_at_resource(run, files.resource);
}

}  // namespace conformance
