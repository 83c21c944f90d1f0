// Rows of the bundle: its module, and what it tells a host before that is loaded.
#include <base/string.h>
#include <host/module.h>
#include <host_api/effect_interface.h>
#include <osapi/whole_file.h>
#include <read_property_list.h>
#include <read_registration.h>
#include <read_slices.h>

#include <algorithm>
#include <cstddef>

#include "run.h"

namespace check {
namespace {

namespace fs = std::filesystem;

/// More than such a file ever has; larger ones are not read.
constexpr std::size_t kLargestBundleFile = std::size_t{16} << 20U;

void look_at_module(Run& run) {
    const RowText row = {"bundle.module", "load the module", "it opens and exports EntryPointFunc"};
    run.enter(row, [&](Notes& notes) {
        notes.doing("loading");
        try {
            const host::Module module(run.file());
            notes.say("opened; the entry point is there");
        } catch (const host::NoEntryPoint& error) {
            notes.find(error.what() +
                       std::string("; export it with C linkage and default visibility"));
        } catch (const host::ModuleError& error) {
            notes.find(error.what() +
                       std::string("; build it for this machine, with all it needs"));
        }
    });
}

using Texts = std::vector<std::string>;

/// Of the content of a file beside the module.
std::vector<Finding> findings_of(const fs::path& path, const Texts& wrong) {
    std::vector<Finding> findings;
    for (const std::string& text : wrong) {
        findings.push_back({"\"" + path.string() + "\": " + text});
    }
    return findings;
}

/// The same, or why the file cannot be read and what to do then.
std::vector<Finding> findings_in(const fs::path& path, const std::string& remedy,
                                 const std::function<Texts(const std::string& content)>& wrong_in) {
    std::string content;
    try {
        content = OSAPI::read_whole(path.c_str(), kLargestBundleFile);
    } catch (const StrXception& failure) {
        return {{OSAPI::cannot_read(path.string(), failure) + "; " + remedy}};
    }
    return findings_of(path, wrong_in(content));
}

std::string hex(std::uint32_t number) {
    return String::fmt("0x%08X", static_cast<unsigned>(number)).c_str();
}

std::string in_short_quotes(const std::string& text) {
    constexpr std::size_t kLongest = 40;
    return "\"" + text.substr(0, kLongest) + (text.size() > kLongest ? "..." : "") + "\"";
}

Texts wrong_entries(const std::string& list, const std::string& executable) {
    if (list.starts_with("bplist")) {
        return {
            "is a binary property list, which cannot be read here; turn it into XML with plutil "
            "-convert xml1"};
    }
    const bundle::PropertyList text(list);
    Texts wrong;
    const auto look_at = [&](const std::string& key, const std::string& value) {
        const bundle::Entry entry = text.entry(key);
        const std::string found = entry.value ? in_short_quotes(*entry.value) : "no text";
        const std::string remedy = "; write <key>" + key + "</key><string>" + value + "</string>";
        if (entry.line == 0) {
            wrong.push_back("has no " + key + remedy);
        } else if (entry.value != value) {
            wrong.push_back("line " + std::to_string(entry.line) + ": " + key + " is " + found +
                            remedy);
        }
    };
    look_at("CFBundlePackageType", "eFKT");
    look_at("CFBundleSignature", "FXTC");
    look_at("CFBundleExecutable", executable);
    return wrong;
}

Texts wrong_names(const bundle::Registration& resource) {
    constexpr std::size_t kLongest = 31;
    Texts wrong;
    for (const std::string key : {"name", "catg", "eMNA"}) {
        const auto text = resource.text(key);
        if (text && !text->empty() && text->size() <= kLongest) {
            continue;
        }
        const std::string found =
            !resource.has(key) ? "there is no " + key
            : !text            ? key + " is no text with its length before it"
                               : key + " has " + std::to_string(text->size()) + " characters";
        wrong.push_back(found + "; register one of 1 to 31 characters");
    }
    return wrong;
}

Texts wrong_code(const bundle::Registration& resource) {
    const std::string entry_point = host::kEntryPointName;
    Texts wrong;
    if (resource.bytes("kind") != "eFKT") {
        wrong.push_back((resource.has("kind") ? "kind is " + in_short_quotes(resource.bytes("kind"))
                                              : std::string("there is no kind")) +
                        "; register an effect, eFKT");
    }
    if (!resource.has("mi64") && !resource.has("mi32") && !resource.has("ma64")) {
        wrong.push_back("no entry point is named for any processor; register " + entry_point +
                        " as mi64, mi32 or ma64");
    }
    const auto look_at = [&](const std::string& key) {
        if (resource.has(key) && resource.text(key) != entry_point) {
            const std::string named =
                in_short_quotes(resource.text(key).value_or(resource.bytes(key)));
            wrong.push_back(key + " names " + named + "; register " + entry_point +
                            ", which the module exports");
        }
    };
    for (const bundle::Processor& processor : bundle::kProcessors) {
        look_at(std::string(processor.key));
    }
    return wrong;
}

std::string names_of(const std::vector<const bundle::Processor*>& processors) {
    std::string names;
    for (const bundle::Processor* processor : processors) {
        names += (names.empty() ? "" : ", ") + std::string(processor->name);
    }
    return names.empty() ? "no processor of these hosts" : names;
}

std::string without_key(const std::string& processor, const std::string& key) {
    return "there is no " + key + ", but the module has code for " + processor + "; register " +
           host::kEntryPointName + " as " + key;
}

std::string without_slice(const std::string& processor, const std::string& key) {
    return "there is " + key + ", but the module has no code for " + processor +
           "; remove the property, or build the module for " + processor + " too";
}

Texts wrong_slices(const bundle::Registration& resource,
                   const std::vector<const bundle::Processor*>& slices) {
    Texts wrong;
    for (const bundle::Processor& processor : bundle::kProcessors) {
        const std::string name(processor.name);
        const std::string key(processor.key);
        const bool is_there = std::find(slices.begin(), slices.end(), &processor) != slices.end();
        if (is_there && !resource.has(key)) {
            wrong.push_back(without_key(name, key));
        } else if (!is_there && resource.has(key)) {
            wrong.push_back(without_slice(name, key));
        }
    }
    return wrong;
}

/// A host finds no code without the key of its processor, and none behind the key of another.
void look_at_slices(Run& run, const fs::path& resource) {
    const RowText row = {"bundle.slices", "compare the module with the registration resource",
                         "an entry point for each processor of the module, and for no other"};
    std::string head;
    try {
        head = OSAPI::read_head(run.file().c_str(), bundle::kModuleHead);
    } catch (const StrXception& failure) {
        run.leave_out(row.id, OSAPI::cannot_read(run.file().string(), failure));
        return;
    }
    const auto slices = bundle::slices_of(head);
    if (slices) {
        run.enter(row, findings_of(resource, wrong_slices(*run.registration, *slices)),
                  names_of(*slices));
    } else {
        run.leave_out(row.id, "the module is of a kind that is not read here");
    }
}

void look_at_resource(Run& run, const fs::path& path) {
    const RowText row = {"bundle.resource", "read the registration resource",
                         "kind eFKT, and the entry point's name"};
    const std::string remedy = "build it from the effect's property list (PiPL)";
    const auto wrong_in = [&](const std::string& content) -> Texts {
        try {
            run.registration = bundle::Registration(content);
            return wrong_code(*run.registration);
        } catch (const bundle::ResourceError& error) {
            return {error.what() + ("; " + remedy)};
        }
    };
    run.enter(row, findings_in(path, remedy, wrong_in),
              "eFKT, " + std::string(host::kEntryPointName));
    if (run.registration) {
        const auto text = [&](const char* key) { return run.registration->text(key).value_or(""); };
        run.enter({"bundle.names", row.sent, "name, category and match name of 1 to 31 characters"},
                  findings_of(path, wrong_names(*run.registration)),
                  text("name") + ", " + text("catg") + ", " + text("eMNA"));
        run.set_match_name(text("eMNA"));
        look_at_slices(run, path);
    }
}

}  // namespace

void compare_with_registration(Run& run) {
    struct Number {
        const char* name;
        const char* promise;
        const char* key;
        std::uint32_t declared;
        std::uint32_t of_the_resource;  ///< bits that stand there alone
    };
    const Declared& effect = *run.declared;
    const Number numbers[] = {
        {"version", "my_version is the registration's eVER", "eVER", effect.version, 0},
        {"flags", "out_flags are the registration's eGLO", "eGLO", effect.out_flags,
         PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS},
        {"flags2", "out_flags2 are the registration's eGL2", "eGL2", effect.out_flags2, 0},
    };
    for (const auto& [name, promise, key, declared, of_the_resource] : numbers) {
        const auto registered = run.registration->number(key);
        const std::string both = "declared " + hex(declared) + ", registered " +
                                 (registered ? hex(*registered) : "nothing");
        std::vector<Finding> findings;
        if (!registered || ((*registered ^ declared) & ~of_the_resource) != 0) {
            findings.push_back({both + " as " + key + "; write the same into both"});
        }
        run.enter({std::string("setup.registered-") + name, "global set-up", promise}, findings,
                  registered == declared ? "both " + hex(declared)
                                         : both + " with a bit that may differ");
    }
}

void check_bundle(Run& run) {
    look_at_module(run);
    const std::string executable = run.file().filename().string();
    // NAME.plugin/Contents/MacOS/NAME. Nobody expects the files of a module that stands alone.
    const fs::path folder = run.file().parent_path();
    const fs::path contents = folder.parent_path();
    if (folder.filename() != "MacOS" || contents.filename() != "Contents") {
        run.leave_out("bundle.registration", "there is no Info.plist, PkgInfo or Resources/" +
                                                 executable + ".rsrc beside the module");
        return;
    }
    run.enter({"bundle.info-list", "read Info.plist", "the bundle is an effect's (eFKT, FXTC)"},
              findings_in(contents / "Info.plist",
                          "write one with CFBundlePackageType eFKT, CFBundleSignature FXTC and "
                          "CFBundleExecutable " +
                              executable,
                          [&](const std::string& list) { return wrong_entries(list, executable); }),
              "eFKT, FXTC, " + executable);
    const std::string remedy = "write the eight bytes eFKTFXTC, without a line feed";
    const auto wrong_bytes = [&](const std::string& text) {
        return text == "eFKTFXTC" ? Texts()
                                  : Texts{"holds " + std::to_string(text.size()) + " bytes, " +
                                          in_short_quotes(text) + "; " + remedy};
    };
    run.enter({"bundle.package-info", "read PkgInfo", "eight bytes, eFKTFXTC"},
              findings_in(contents / "PkgInfo", remedy, wrong_bytes), "eFKTFXTC");
    look_at_resource(run, contents / "Resources" / (executable + ".rsrc"));
}

}  // namespace check
