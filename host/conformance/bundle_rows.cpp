// Rows of the bundle: its module, and what it tells a host before that is loaded.
#include <host/module.h>
#include <host_api/effect_interface.h>

#include <cstdio>

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

std::vector<Finding> missing_entries(const std::string& list, const std::string& executable) {
    const std::pair<const char*, std::string> expected[] = {
        {"CFBundlePackageType", "eFKT"},
        {"CFBundleSignature", "FXTC"},
        {"CFBundleExecutable", executable},
    };
    std::vector<Finding> findings;
    for (const auto& [key, value] : expected) {
        const std::size_t at = list.find("<key>" + std::string(key) + "</key>");
        const std::size_t open = at == std::string::npos ? at : list.find("<string>", at);
        const std::string entry = "<string>" + value + "</string>";
        if (open == std::string::npos || list.compare(open, entry.size(), entry) != 0) {
            findings.push_back({"", std::string(key) + " is not " + value, ""});
        }
    }
    return findings;
}

/// Else the module stands alone, and nobody expects a registration.
bool in_bundle(const std::filesystem::path& module) {
    return module.parent_path().parent_path().filename() == "Contents";
}

std::vector<Finding> wrong_names(const Registration& resource) {
    std::vector<Finding> findings;
    for (const char* key : {"name", "catg", "eMNA"}) {
        const auto text = resource.text(key);
        if (!text || text->empty() || text->size() > 31) {
            findings.push_back({"", std::string(key) + " is no text of 1 to 31 characters", ""});
        }
    }
    return findings;
}

std::vector<Finding> wrong_code(const Registration& resource) {
    std::vector<Finding> findings;
    if (resource.bytes("kind") != "eFKT") {
        findings.push_back({"", "the kind is not eFKT", ""});
    }
    if (!resource.has("mi64") && !resource.has("mi32") && !resource.has("ma64")) {
        findings.push_back({"", "no entry point is named for any processor", ""});
    }
    for (const char* key : {"mi64", "mi32", "ma64"}) {
        if (resource.has(key) && resource.text(key) != host::kEntryPointName) {
            findings.push_back({"", std::string(key) + " names another entry point", ""});
        }
    }
    return findings;
}

}  // namespace

void compare_with_registration(Examination& run) {
    struct Number {
        RowText text;
        const char* key;
        std::uint32_t declared;
    };
    const Number numbers[] = {
        {{"setup.registered-version", "global set-up", "my_version is the registration's eVER"},
         "eVER",
         run.declared->version},
        {{"setup.registered-flags", "global set-up", "out_flags are the registration's eGLO"},
         "eGLO",
         run.declared->out_flags},
        {{"setup.registered-flags2", "global set-up", "out_flags2 are the registration's eGL2"},
         "eGL2",
         run.declared->out_flags2},
    };
    for (const Number& number : numbers) {
        const auto registered = run.registration->number(number.key);
        std::vector<Finding> findings;
        if (registered != number.declared) {
            findings.push_back({"",
                                "declared " + hex(number.declared) + ", registered " +
                                    (registered ? hex(*registered) : "nothing"),
                                ""});
        }
        run.enter(number.text, findings, "both " + hex(number.declared));
    }
}

void examine_bundle(Examination& run) {
    look_at_module(run);
    const BundleFiles files(run.file());
    if (files.none() && !in_bundle(run.file())) {
        run.leave_out("registration", "there is no Info.plist, PkgInfo or Resources/" +
                                          run.file().filename().string() +
                                          ".rsrc beside the module");
        return;
    }
    const std::string executable = run.file().filename().string();
    run.enter({"bundle.info-list", "read Info.plist", "the bundle is an effect's (eFKT, FXTC)"},
              files.info_list ? missing_entries(*files.info_list, executable)
                              : std::vector<Finding>{{"", "there is none", ""}},
              "eFKT, FXTC, " + executable);
    std::vector<Finding> package;
    if (files.package_info != "eFKTFXTC") {
        package.push_back(
            {"", files.package_info ? "it holds something else" : "there is none", ""});
    }
    run.enter({"bundle.package-info", "read PkgInfo", "eight bytes, eFKTFXTC"}, package,
              "eFKTFXTC");

    const RowText resource_row = {"bundle.resource", "read the registration resource",
                                  "kind eFKT, and the entry point's name"};
    if (!files.resource) {
        run.enter(resource_row, {{"", "there is no Resources/" + executable + ".rsrc", ""}}, "");
        return;
    }
    try {
        const Registration resource(*files.resource);
        run.enter(resource_row, wrong_code(resource),
                  "eFKT, " + std::string(host::kEntryPointName));
        const std::string match_name = resource.text("eMNA").value_or("");
        run.enter({"bundle.names", "read the registration resource",
                   "name, category and match name of 1 to 31 characters"},
                  wrong_names(resource),
                  resource.text("name").value_or("") + ", " + resource.text("catg").value_or("") +
                      ", " + match_name);
        run.set_match_name(match_name);
        run.registration = resource;
    } catch (const ResourceError& error) {
        run.enter(resource_row, {{"", error.what(), ""}}, "");
    }
}

}  // namespace conformance
