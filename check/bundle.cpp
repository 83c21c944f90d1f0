// Rows of the bundle: its module, and what it tells a host before that is loaded.
#include <host/module.h>
#include <host_api/effect_interface.h>
#include <read_property_list.h>
#include <read_registration.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "run.h"

namespace check {
namespace {

namespace fs = std::filesystem;

/// A file beside the module, which a host reads before it loads the module.
struct BundleFile {
    fs::path path;
    std::string content;
    std::string trouble;  ///< why there is no content: "is missing", "cannot be read: ..."
};

/// More than such a file ever has; larger ones are not read.
constexpr std::size_t kLargestBundleFile = std::size_t{16} << 20U;

std::string unreadable(const std::error_code& error) {
    return "cannot be read: " + error.message();
}

/// Why the file cannot be read into `content`; empty when it was.
std::string trouble_in_reading(const fs::path& path, std::string& content) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        return status.type() == fs::file_type::not_found ? "is missing" : unreadable(error);
    }
    // A device may be without end, and a pipe may keep its reader waiting.
    if (!fs::is_regular_file(status)) {
        return "is no regular file";
    }
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) {
        return unreadable(error);
    }
    if (size > kLargestBundleFile) {
        return "has " + std::to_string(size) + " bytes; " + std::to_string(kLargestBundleFile) +
               " are read at most";
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    content.resize(static_cast<std::size_t>(size));
    if (in.read(content.data(), static_cast<std::streamsize>(size))) {
        return "";
    }
    return errno != 0 ? unreadable({errno, std::generic_category()})
                      : "ends before its " + std::to_string(size) + " bytes";
}

BundleFile read(const fs::path& path) {
    BundleFile file{path, "", ""};
    file.trouble = trouble_in_reading(path, file.content);
    return file;
}

std::string hex(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(number));
    return text;
}

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

/// Enters the row of a file: `wrong` is what is wrong with its content.
void enter(Run& run, const RowText& row, const BundleFile& file, const Texts& wrong,
           const std::string& answer) {
    std::vector<Finding> findings;
    for (const std::string& text : wrong) {
        findings.push_back({"\"" + file.path.string() + "\": " + text});
    }
    run.enter(row, findings, answer);
}

/// Enters the row of a file that is not there to be read; false when it is.
bool enter_trouble(Run& run, const RowText& row, const BundleFile& file,
                   const std::string& remedy) {
    if (!file.trouble.empty()) {
        run.enter(row, {{"\"" + file.path.string() + "\" " + file.trouble + "; " + remedy}}, "");
    }
    return !file.trouble.empty();
}

std::string text_of(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

std::string quoted(const std::string& text) {
    constexpr std::size_t kLongest = 40;
    return "\"" + text.substr(0, kLongest) + (text.size() > kLongest ? "..." : "") + "\"";
}

Texts wrong_entries(const std::string& list, const std::string& executable) {
    if (list.rfind("bplist", 0) == 0) {
        return {
            "is a binary property list, which cannot be read here; turn it into XML with plutil "
            "-convert xml1"};
    }
    const std::pair<std::string, std::string> expected[] = {
        {"CFBundlePackageType", "eFKT"},
        {"CFBundleSignature", "FXTC"},
        {"CFBundleExecutable", executable},
    };
    const bundle::PropertyList text(list);
    Texts wrong;
    for (const auto& [key, value] : expected) {
        const bundle::Entry entry = text.entry(key);
        const std::string found = entry.value ? quoted(*entry.value) : "no text";
        const std::string remedy =
            text_of({"; write <key>", key, "</key><string>", value, "</string>"});
        if (entry.line == 0) {
            wrong.push_back(text_of({"has no ", key, remedy}));
        } else if (entry.value != value) {
            wrong.push_back(
                text_of({"line ", std::to_string(entry.line), ": ", key, " is ", found, remedy}));
        }
    }
    return wrong;
}

void look_at_info_list(Run& run, const BundleFile& file, const std::string& executable) {
    const RowText row = {"bundle.info-list", "read Info.plist",
                         "the bundle is an effect's (eFKT, FXTC)"};
    if (!enter_trouble(run, row, file,
                       "write one with CFBundlePackageType eFKT, CFBundleSignature FXTC and "
                       "CFBundleExecutable " +
                           executable)) {
        enter(run, row, file, wrong_entries(file.content, executable), "eFKT, FXTC, " + executable);
    }
}

void look_at_package_info(Run& run, const BundleFile& file) {
    const RowText row = {"bundle.package-info", "read PkgInfo", "eight bytes, eFKTFXTC"};
    const std::string remedy = "write the eight bytes eFKTFXTC, without a line feed";
    if (!enter_trouble(run, row, file, remedy)) {
        const std::string size = std::to_string(file.content.size());
        const bool right = file.content == "eFKTFXTC";
        enter(run, row, file,
              right ? Texts()
                    : Texts{"holds " + size + " bytes, " + quoted(file.content) + "; " + remedy},
              "eFKTFXTC");
    }
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
        wrong.push_back((resource.has("kind") ? "kind is " + quoted(resource.bytes("kind"))
                                              : std::string("there is no kind")) +
                        "; register an effect, eFKT");
    }
    if (!resource.has("mi64") && !resource.has("mi32") && !resource.has("ma64")) {
        wrong.push_back("no entry point is named for any processor; register " + entry_point +
                        " as mi64, mi32 or ma64");
    }
    for (const std::string key : {"mi64", "mi32", "ma64"}) {
        if (resource.has(key) && resource.text(key) != entry_point) {
            const std::string named = quoted(resource.text(key).value_or(resource.bytes(key)));
            wrong.push_back(text_of(
                {key, " names ", named, "; register ", entry_point, ", which the module exports"}));
        }
    }
    return wrong;
}

void look_at_resource(Run& run, const BundleFile& file) {
    const RowText row = {"bundle.resource", "read the registration resource",
                         "kind eFKT, and the entry point's name"};
    const std::string remedy = "build it from the effect's property list (PiPL)";
    if (enter_trouble(run, row, file, remedy)) {
        return;
    }
    try {
        const bundle::Registration resource(file.content);
        enter(run, row, file, wrong_code(resource), "eFKT, " + std::string(host::kEntryPointName));
        const auto text = [&](const char* key) { return resource.text(key).value_or(""); };
        enter(
            run, {"bundle.names", row.sent, "name, category and match name of 1 to 31 characters"},
            file, wrong_names(resource), text("name") + ", " + text("catg") + ", " + text("eMNA"));
        run.set_match_name(text("eMNA"));
        run.registration = resource;
    } catch (const bundle::ResourceError& error) {
        enter(run, row, file, {error.what() + ("; " + remedy)}, "");
    }
}

}  // namespace

void compare_with_registration(Run& run) {
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
            findings.push_back({"declared " + hex(number.declared) + ", registered " +
                                (registered ? hex(*registered) : "nothing") + " as " + number.key +
                                "; write the same into both"});
        }
        run.enter(number.text, findings,
                  registered == number.declared
                      ? "both " + hex(number.declared)
                      : "declared " + hex(number.declared) + ", registered " +
                            hex(registered.value_or(0)) + " with a bit that may differ");
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
    look_at_info_list(run, read(contents / "Info.plist"), executable);
    look_at_package_info(run, read(contents / "PkgInfo"));
    look_at_resource(run, read(contents / "Resources" / (executable + ".rsrc")));
}

}  // namespace check
