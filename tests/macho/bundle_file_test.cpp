// The file that ships for macOS, taken apart: what the system and a host see of it before they run
// it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "code_signature.h"
#include "support/scratch.h"
#include "unwind_table.h"

namespace {

using namespace macho;

Bytes view(const std::string& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), LUMIVAR_MODULE};
}

const std::string& shipped() {
    static const std::string bytes = read_file(LUMIVAR_MODULE);
    return bytes;
}

Image image_for(Processor processor, const std::string& file = shipped()) {
    for (const Slice& slice : read_slices(view(file))) {
        if (slice.processor == processor) {
            return read_image(bytes_of(view(file), slice));
        }
    }
    throw FileError("no slice for " + name_of(processor));
}

/// All that the module may ask of the system. macOS 11 has each: of aligned_alloc the system's
/// headers say since 10.15, and the others bear no such mark, as they are older than the marks. The
/// names with a dollar sign are those of x86_64 for records with 64-bit file numbers, from 10.5 on;
/// arm64 never had other records.
const std::set<std::string> kKnownSince11 = {
    // Memory, texts, numbers
    "_abort", "_aligned_alloc", "_bzero", "___bzero", "_calloc", "_free", "_malloc", "_memchr",
    "_memcmp", "_memcpy", "_memmove", "_memset", "_posix_memalign", "_realloc", "_strcmp",
    "_strlen", "_strncmp", "_strncpy", "_strrchr", "_strstr", "_snprintf", "_vsnprintf",
    "__DefaultRuneLocale",
    // Mathematics
    "___sincos_stret", "_asin", "_ceilf", "_erff", "_expf", "_floorf", "_logf", "_pow", "_powf",
    // Errors, and diagnostics on standard error
    "___error", "_strerror", "___stderrp", "_fprintf", "_fputc", "_fputs", "_fwrite", "_vfprintf",
    // Files and folders; where the module is
    "_close", "_closedir", "_dladdr", "_fstat", "_fstat$INODE64", "_fsync", "_ftruncate", "_lseek",
    "_mlock", "_mmap", "_munlock", "_munmap", "_open", "_opendir", "_opendir$INODE64", "_pread",
    "_pwrite", "_read", "_readdir", "_readdir$INODE64", "_sync", "_write",
    // Threads: for static variables of functions, and for exceptions in flight
    "__tlv_bootstrap", "_pthread_cond_broadcast", "_pthread_cond_wait", "_pthread_mach_thread_np",
    "_pthread_mutex_lock", "_pthread_mutex_unlock", "_pthread_self",
    // Exceptions
    "__Unwind_DeleteException", "__Unwind_GetIP", "__Unwind_GetLanguageSpecificData",
    "__Unwind_GetRegionStart", "__Unwind_RaiseException", "__Unwind_Resume", "__Unwind_SetGR",
    "__Unwind_SetIP",
    // Binding at the first call
    "dyld_stub_binder"};

std::set<std::string> imports(const Image& image) {
    std::set<std::string> names;
    for (const auto* binds : {&image.binds, &image.lazy_binds}) {
        for (const Bind& bind : *binds) {
            names.insert(bind.symbol);
        }
    }
    return names;
}

/// Texts of the file that end with a zero byte, as those in code do.
std::set<std::string> texts(const std::string& bytes) {
    std::set<std::string> found;
    std::string text;
    for (const char c : bytes) {
        if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            if (c == 0 && text.size() > 2) {
                found.insert(text);
            }
            text.clear();
        }
    }
    return found;
}

/// Texts that show where the file was built.
std::vector<std::string> traces(const std::string& bytes) {
    std::vector<std::string> needles = {"/home/",
                                        "/root/",
                                        "/tmp/",
                                        "/usr/lib/llvm",
                                        "ziglang",
                                        ".zig-cache",
                                        LUMIVAR_SOURCE_DIR "/"};
    if (const char* const home = std::getenv("HOME"); home != nullptr && std::string(home) != "/") {
        needles.push_back(home);
    }
    std::vector<std::string> found;
    for (const std::string& needle : needles) {
        if (bytes.find(needle) != std::string::npos) {
            found.push_back(needle);
        }
    }
    // Whatever else looks like a file's place.
    for (const std::string& text : texts(bytes)) {
        const std::size_t next = text.find('/', 1);
        // Shorter ones may be anything.
        if (text.size() >= 8 && text[0] == '/' && next != std::string::npos && next > 2 &&
            text != "/usr/lib/libSystem.B.dylib" && text != "/../../..") {
            found.push_back(text);
        }
    }
    return found;
}

class ShippedFile : public testing::TestWithParam<Processor> {
protected:
    const Image image = image_for(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Slices, ShippedFile, testing::Values(Processor::X86_64, Processor::Arm64),
                         [](const auto& processor) { return name_of(processor.param); });

/// The digits of a table of handlers: LEB128.
struct Handlers {
    std::uint64_t calls = 0;
    std::uint64_t landings = 0;
};

/// Reads the table of a function's handlers and sees that each lies within the function.
Handlers read_handlers(const Image& image, const UnwoundFunction& function) {
    const Section* const section = image.section("__TEXT", "__gcc_except_tab");
    if (section == nullptr || function.language_data < section->address) {
        throw FileError("no table of handlers");
    }
    Cursor cursor(image.bytes_of(*section), function.language_data - section->address);
    constexpr std::uint8_t omitted = 0xFF;
    constexpr std::uint8_t uleb = 0x01;
    if (cursor.u8() != omitted) {
        cursor.fail("begins with a place for landings");
    }
    if (cursor.u8() != omitted) {
        cursor.uleb();
    }
    if (cursor.u8() != uleb) {
        cursor.fail("has its calls in another form");
    }
    const std::uint64_t size = cursor.uleb();
    const std::uint64_t end = cursor.position() + size;
    Handlers handlers;
    while (cursor.position() < end) {
        const std::uint64_t begin = cursor.uleb();
        const std::uint64_t length = cursor.uleb();
        const std::uint64_t landing = cursor.uleb();
        cursor.uleb();
        const std::uint64_t whole = function.end - function.begin;
        if (begin > whole || length > whole - begin || landing >= whole) {
            cursor.fail("leads out of its function");
        }
        ++handlers.calls;
        handlers.landings += landing != 0 ? 1 : 0;
    }
    return handlers;
}

}  // namespace

TEST(WholeShippedFile, HasASliceForEachProcessor) {
    const std::vector<Slice> slices = read_slices(view(shipped()));
    ASSERT_EQ(slices.size(), 2U);
    EXPECT_EQ(slices[0].processor, Processor::X86_64);
    EXPECT_EQ(slices[1].processor, Processor::Arm64);
    // Of whole pages, as large as each processor has them.
    EXPECT_EQ(slices[0].offset % 4096, 0U);
    EXPECT_EQ(slices[1].offset % 16384, 0U);
    EXPECT_EQ(slices[1].offset + slices[1].size, shipped().size());
}

TEST_P(ShippedFile, IsALoadableBundleForMacOS11) {
    EXPECT_EQ(image.kind, kBundle);
    EXPECT_EQ(image.platform, 1U);
    EXPECT_EQ(image.minimum_system, 0x000B0000U);
}

TEST_P(ShippedFile, NeedsTheSystemsLibraryAlone) {
    EXPECT_EQ(image.libraries, std::vector<std::string>{"/usr/lib/libSystem.B.dylib"});
    for (const auto* binds : {&image.binds, &image.lazy_binds}) {
        for (const Bind& bind : *binds) {
            EXPECT_EQ(bind.library, 1) << bind.symbol;
        }
    }
}

TEST_P(ShippedFile, ExportsTheEntryPointAlone) {
    ASSERT_EQ(image.exports.size(), 1U);
    EXPECT_EQ(image.exports[0].name, "_EntryPointFunc");
    const Section* const code = image.section("__TEXT", "__text");
    ASSERT_NE(code, nullptr);
    EXPECT_GE(image.exports[0].address + image.begin(), code->address);
    EXPECT_LT(image.exports[0].address + image.begin(), code->address + code->size);
}

TEST_P(ShippedFile, ImportsNothingThatCameAfterMacOS11) {
    const std::set<std::string> names = imports(image);
    for (const std::string& name : names) {
        EXPECT_EQ(kKnownSince11.count(name), 1U) << name;
    }
    EXPECT_EQ(names.count("_mmap"), 1U) << "the list of imports is not what it should be";
    EXPECT_EQ(names.count("__Unwind_RaiseException"), 1U);
    // Not of a compiler's library in their place, which has them in plain loops and with other
    // rounding.
    for (const char* const function : {"_memcpy", "_strlen", "_expf", "_logf", "_powf", "_erff"}) {
        EXPECT_EQ(names.count(function), 1U) << function;
    }
    // The table of symbols names the same.
    std::set<std::string> undefined;
    for (const Symbol& symbol : image.symbols) {
        if (symbol.undefined()) {
            undefined.insert(symbol.name);
        }
    }
    EXPECT_EQ(undefined, names);
}

TEST_P(ShippedFile, HasNoSymbolsForADebugger) {
    std::vector<std::string> defined;
    for (const Symbol& symbol : image.symbols) {
        EXPECT_FALSE(symbol.of_debugger()) << symbol.name;
        if (!symbol.undefined()) {
            defined.push_back(symbol.name);
        }
    }
    EXPECT_EQ(defined, std::vector<std::string>{"_EntryPointFunc"});
    for (const Section& section : image.sections) {
        EXPECT_NE(section.segment, "__DWARF");
    }
}

TEST_P(ShippedFile, AdHocSignatureCoversEveryPage) {
    const CodeSignature signature = read_signature(image);
    EXPECT_EQ(signature.flags & kAdHoc, kAdHoc);
    EXPECT_EQ(signature.covered, image.signature_offset);
    EXPECT_EQ(signature.page_size, 4096U);
    EXPECT_EQ(signature.pages.size(), (signature.covered + 4095) / 4096);
    EXPECT_EQ(changed_pages(image, signature), std::vector<std::size_t>());
}

TEST_P(ShippedFile, SignatureTellsEachChangedPage) {
    std::uint64_t slice_offset = 0;
    for (const Slice& slice : read_slices(view(shipped()))) {
        slice_offset = slice.processor == GetParam() ? slice.offset : slice_offset;
    }
    const std::size_t pages = read_signature(image).pages.size();
    for (const std::size_t page : {std::size_t{1}, pages / 2, pages - 1}) {
        std::string changed = shipped();
        changed[slice_offset + page * 4096 + 17] ^= 1;
        const std::uint64_t size = image.bytes.size();
        const Bytes slice = view(changed).part(slice_offset, size, "changed");
        // What the first page says of the slice is the same: the other pages are looked at alone.
        Image damaged = image;
        damaged.bytes = slice;
        EXPECT_EQ(changed_pages(damaged, read_signature(image)), std::vector<std::size_t>{page});
    }
}

TEST_P(ShippedFile, FramesOfAllFunctionsAreDescribed) {
    const std::vector<UnwoundFunction> functions = read_unwind_table(image);
    const Section* const code = image.section("__TEXT", "__text");
    ASSERT_NE(code, nullptr);
    ASSERT_GT(functions.size(), 100U);
    EXPECT_EQ(functions.front().begin, code->address);
    std::uint64_t behind = code->address;
    for (const UnwoundFunction& function : functions) {
        EXPECT_GE(function.begin, behind);
        EXPECT_NE(function.encoding & kModeBits, kNoMode) << std::hex << function.begin;
        behind = function.end;
    }
    EXPECT_GE(behind, code->address + code->size);
}

TEST_P(ShippedFile, HandlersOfExceptionsLieWithinTheirFunctions) {
    const Section* const tables = image.section("__TEXT", "__gcc_except_tab");
    ASSERT_NE(tables, nullptr);
    std::uint64_t functions = 0;
    std::uint64_t landings = 0;
    std::set<std::uint64_t> personalities;
    std::set<std::uint64_t> begins;
    for (const UnwoundFunction& function : read_unwind_table(image)) {
        // The routine that finds the handler and what it reads come together.
        EXPECT_EQ(function.personality_slot != 0, function.language_data != 0);
        if (function.language_data == 0) {
            continue;
        }
        ++functions;
        personalities.insert(function.personality_slot);
        begins.insert(function.language_data);
        const Handlers handlers = read_handlers(image, function);
        EXPECT_GT(handlers.calls, 0U);
        landings += handlers.landings;
    }
    // Every table is some function's: the first begins the section, and none is shared.
    ASSERT_FALSE(begins.empty());
    EXPECT_EQ(*begins.begin(), tables->address);
    EXPECT_EQ(begins.size(), functions);
    EXPECT_GT(landings, functions / 2);
    // The C++ run-time's, which is in the file: the pointer to it is one into the file itself.
    ASSERT_EQ(personalities.size(), 1U);
    EXPECT_EQ(std::count(image.rebases.begin(), image.rebases.end(), *personalities.begin()), 1);
}

// One source for both: only what the compiler takes into its callers differs between processors. A
// linker that loses tables on one of them loses most.
TEST(WholeShippedFile, BothSlicesHaveAboutAsManyTablesOfHandlers) {
    std::vector<std::uint64_t> counts;
    for (const Processor processor : {Processor::X86_64, Processor::Arm64}) {
        const std::vector<UnwoundFunction> functions = read_unwind_table(image_for(processor));
        counts.push_back(static_cast<std::uint64_t>(std::count_if(
            functions.begin(), functions.end(),
            [](const UnwoundFunction& function) { return function.language_data != 0; })));
    }
    const auto [least, most] = std::minmax_element(counts.begin(), counts.end());
    EXPECT_GT(*least, 50U);
    EXPECT_LE(*most - *least, *most / 20);
}

// Of what is damaged some is still read; nothing is read beyond the end, and everything ends.
TEST_P(ShippedFile, DamagedTablesAreReadOrRefused) {
    std::string slice(image.bytes.at(0, image.bytes.size()),
                      image.bytes.at(0, image.bytes.size()) + image.bytes.size());
    Image damaged = image;
    damaged.bytes = view(slice);
    int refused = 0;
    const auto damage = [&](std::uint64_t offset, std::uint64_t size, const auto& read) {
        for (std::uint64_t at = offset; at < offset + size; at += 31) {
            const char whole = slice[at];
            slice[at] = static_cast<char>(whole ^ 0xFF);
            try {
                read();
            } catch (const FileError&) {
                ++refused;
            }
            slice[at] = whole;
        }
    };
    for (const char* const name : {"__unwind_info", "__eh_frame"}) {
        if (const Section* const section = image.section("__TEXT", name); section != nullptr) {
            damage(section->file_offset, section->size, [&] { read_unwind_table(damaged); });
        }
    }
    EXPECT_GT(refused, 20);
    damage(image.signature_offset, 64, [&] { changed_pages(damaged, read_signature(damaged)); });
}

TEST(WholeShippedFile, SaysNothingOfWhereItWasBuilt) {
    EXPECT_EQ(traces(shipped()), std::vector<std::string>());
}

TEST(WholeShippedFile, TracesWouldBeFound) {
    const std::string_view zero("\0", 1);
    for (const std::string text : {"/opt/builder/base/string.cpp",
                                   LUMIVAR_SOURCE_DIR "/AE/render.cpp", "/srv/cache/libc++.a"}) {
        std::string file = shipped();
        file.replace(file.size() / 2, text.size() + 2,
                     std::string(zero) + text + std::string(zero));
        EXPECT_FALSE(traces(file).empty()) << text;
    }
}

TEST(WholeShippedFile, ThinFileHasNoSliceForTheOtherProcessor) {
    const Slice first = read_slices(view(shipped())).at(0);
    const std::string thin = shipped().substr(first.offset, first.size);
    ASSERT_EQ(read_slices(view(thin)).size(), 1U);
    EXPECT_EQ(image_for(Processor::X86_64, thin).kind, kBundle);
    EXPECT_THROW(image_for(Processor::Arm64, thin), FileError);
}
