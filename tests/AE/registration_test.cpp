// What the built bundle tells the host before its module is loaded, read back byte by byte, and
// against what the module then says itself.
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "built_effect.h"

using namespace std::string_literals;

namespace {

namespace fs = std::filesystem;

fs::path contents() { return fs::path(LUMIVAR_MODULE).parent_path().parent_path(); }

std::string resource_file() { return read_file(contents() / "Resources/Lumivar.rsrc"); }

/// A big-endian number of `size` bytes; throws behind the end.
std::uint32_t number(const std::string& bytes, std::size_t offset, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value = value * 256 + static_cast<unsigned char>(bytes.at(offset + i));
    }
    return value;
}

struct Property {
    std::string vendor;
    std::string key;
    std::uint32_t index;
    std::string data;     ///< without the padding
    std::string padding;  ///< up to a multiple of four
};

/// The bytes of the first resource, found by its place in the map.
std::string only_resource(const std::string& file) {
    const std::size_t data = number(file, 0, 4);
    const std::size_t map = number(file, 4, 4);
    const std::size_t types = map + number(file, map + 24, 2);
    const std::size_t references = types + number(file, types + 8, 2);
    const std::size_t at = data + number(file, references + 5, 3);
    return file.substr(at + 4, number(file, at, 4));
}

std::vector<Property> properties() {
    const std::string resource = only_resource(resource_file());
    std::vector<Property> found;
    std::size_t at = 8;
    for (std::uint32_t left = number(resource, 4, 4); left > 0; --left) {
        const std::size_t length = number(resource, at + 12, 4);
        const std::size_t padded = (length + 3) / 4 * 4;
        if (at + 16 + padded > resource.size()) {
            throw std::runtime_error("a property goes over the end of the resource");
        }
        found.push_back({resource.substr(at, 4), resource.substr(at + 4, 4),
                         number(resource, at + 8, 4), resource.substr(at + 16, length),
                         resource.substr(at + 16 + length, padded - length)});
        at += 16 + padded;
    }
    EXPECT_EQ(at, resource.size()) << "bytes behind the last property";
    return found;
}

Property property(const std::string& key) {
    for (const Property& candidate : properties()) {
        if (candidate.key == key) {
            return candidate;
        }
    }
    throw std::runtime_error("no property " + key);
}

/// The entries of the property list; "true" for a flag that is set.
std::map<std::string, std::string> list_entries(const std::string& text) {
    const std::regex pair("<key>([^<]*)</key>\\s*<(?:string>([^<]*)</string|(true)/)>");
    std::map<std::string, std::string> entries;
    for (std::sregex_iterator at(text.begin(), text.end(), pair), end; at != end; ++at) {
        const std::smatch& entry = *at;
        EXPECT_TRUE(entries.emplace(entry[1], entry.str(2) + entry.str(3)).second) << entry[1];
    }
    return entries;
}

using BuiltRegistration = BuiltEffect;

/// Of the one processor that this module is for.
#if defined(__x86_64__)
const std::string kProcessorKey = "mi64";
#elif defined(__i386__)
const std::string kProcessorKey = "mi32";
#elif defined(__aarch64__)
const std::string kProcessorKey = "ma64";
#else
#error "no host runs on this processor"
#endif

}  // namespace

// 8 bytes before the properties, which take 20 24 28 32 20 20 20 20 20 20 36 20: 288 bytes of
// resource, 4 of its length before them.
TEST(ResourceFile, BeginsWithPlacesAndLengths) {
    const std::string file = resource_file();
    EXPECT_EQ(number(file, 0, 4), 256U) << "the data";
    EXPECT_EQ(number(file, 4, 4), 256U + 292U) << "the map";
    EXPECT_EQ(number(file, 8, 4), 292U) << "length of the data";
    EXPECT_EQ(number(file, 12, 4), 50U) << "length of the map";
    EXPECT_EQ(file.substr(16, 240), std::string(240, '\0'));
    EXPECT_EQ(number(file, 256, 4), 288U) << "length of the resource";
    EXPECT_EQ(file.size(), 256U + 292U + 50U);
}

TEST(ResourceFile, MapListsOneNamelessResource) {
    const std::string file = resource_file();
    const std::string map = file.substr(number(file, 4, 4));
    ASSERT_EQ(map.size(), 50U);
    EXPECT_EQ(map.substr(0, 16), file.substr(0, 16));
    EXPECT_EQ(map.substr(16, 8), std::string(8, '\0')) << "next map, file reference, attributes";
    EXPECT_EQ(number(map, 24, 2), 28U) << "the list of types";
    EXPECT_EQ(number(map, 26, 2), 50U) << "the list of names";
    EXPECT_EQ(number(map, 28, 2), 0U) << "types less one";
    EXPECT_EQ(map.substr(30, 4), "PiPL");
    EXPECT_EQ(number(map, 34, 2), 0U) << "resources less one";
    EXPECT_EQ(number(map, 36, 2), 10U) << "the references, from the list of types";
    EXPECT_EQ(number(map, 38, 2), 16000U) << "identifier";
    EXPECT_EQ(number(map, 40, 2), 0xFFFFU) << "no name";
    EXPECT_EQ(number(map, 42, 4), 0U) << "attributes, offset in the data";
    EXPECT_EQ(number(map, 46, 4), 0U);
}

// Bytes as hosts of this kind are known to read them. Texts begin with their length.
TEST(Registration, HasThePropertiesThatTheHostReadsInOrder) {
    const std::pair<std::string, std::string> expected[] = {
        {"kind", "eFKT"},
        {"name", "\x07Lumivar"},
        {"catg", "\x0ASimulation"},
        {kProcessorKey,
         "\x0E"
         "EntryPointFunc"},
        {"ePVR", "\x00\x02\x00\x00"s},
        {"eSVR", "\x00\x0D\x00\x00"s},
        {"eVER", "\x00\x10\x00\x01"s},
        {"eINF", "\x00\x00"s},
        {"eGLO", "\x03\x08\x00\x00"s},
        {"eGL2", "\x00\x00\x14\x07"s},
        {"eMNA", "\x12Lumivar Star Field"},  // saved projects know the effect by it
        {"aeFL", "\x00\x00\x00\x00"s},
    };
    EXPECT_EQ(number(only_resource(resource_file()), 0, 4), 0U) << "version of the format";
    const std::vector<Property> found = properties();
    ASSERT_EQ(found.size(), std::size(expected));
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].vendor, "8BIM") << i;
        EXPECT_EQ(found[i].key, expected[i].first) << i;
        EXPECT_EQ(found[i].index, 0U) << i;
        EXPECT_EQ(found[i].data, expected[i].second) << i;
        EXPECT_EQ(found[i].padding, std::string(found[i].padding.size(), '\0')) << i;
    }
}

TEST_F(BuiltRegistration, SaysWhatTheModuleSaysAndHasEveryFlagThatAFrameMayTurnOn) {
    add_database("sky.stars", kHeader);
    ASSERT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    const std::uint32_t flags_2 = number(property("eGL2").data, 0, 4);
    EXPECT_EQ(number(property("eVER").data, 0, 4), host.out_data.my_version);
    EXPECT_EQ(number(property("eGLO").data, 0, 4),
              static_cast<std::uint32_t>(host.out_data.out_flags));
    EXPECT_EQ(flags_2, static_cast<std::uint32_t>(host.out_data.out_flags2));
    host.out_data.out_flags2 = 0;
    ASSERT_EQ(send(PF_Cmd_QUERY_DYNAMIC_FLAGS), 0);
    const auto turned_on = static_cast<std::uint32_t>(host.out_data.out_flags2);
    EXPECT_NE(turned_on, 0U);
    EXPECT_EQ(turned_on & ~flags_2, 0U);
}

TEST(Registration, NamesAnEntryPointThatTheModuleHas) {
    void* const module = dlopen(LUMIVAR_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_NE(dlsym(module, property(kProcessorKey).data.c_str() + 1), nullptr);
    dlclose(module);
}

TEST(BundleFiles, PackageInfoIsEightBytes) {
    EXPECT_EQ(read_file(contents() / "PkgInfo"), "eFKTFXTC");
}

TEST(BundleFiles, InfoListNamesTheBundleAndItsKind) {
    const std::string text = read_file(contents() / "Info.plist");
    EXPECT_EQ(list_entries(text), (std::map<std::string, std::string>{
                                      {"CFBundleExecutable", "Lumivar"},
                                      {"CFBundleIdentifier", "org.lumivar.effect"},
                                      {"CFBundleInfoDictionaryVersion", "6.0"},
                                      {"CFBundleName", "Lumivar"},
                                      {"CFBundlePackageType", "eFKT"},
                                      {"CFBundleShortVersionString", LUMIVAR_VERSION},
                                      {"CFBundleSignature", "FXTC"},
                                      {"CFBundleVersion", LUMIVAR_VERSION},
                                      {"CSResourcesFileMapped", "true"},
                                      {"LSRequiresCarbon", "true"},
                                  }));
}

// Old hosts look for the resources under the executable's name, and the loader for the executable
// under the list's.
TEST(BundleFiles, ExecutableAndResourceFileHaveTheNamesThatTheListGives) {
    const std::string executable =
        list_entries(read_file(contents() / "Info.plist")).at("CFBundleExecutable");
    EXPECT_TRUE(fs::is_regular_file(contents() / "MacOS" / executable));
    EXPECT_TRUE(fs::is_regular_file(contents() / "Resources" / (executable + ".rsrc")));
    EXPECT_EQ(fs::path(LUMIVAR_MODULE).filename(), executable);
}
