// The loader of macOS's files, by an image that the test makes.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <thread>

#include "made_image.h"
#include "support/scratch.h"

namespace {

using macho::MadeImage;
using macho::universal;

template <class Function>
Function* function(void* handle, const char* name) {
    return reinterpret_cast<Function*>(dlsym(handle, name));
}

class Loader : public testing::Test {
protected:
    void* open(const std::string& bytes) {
        write_file(path, bytes);
        return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    std::string error() {
        const char* const text = dlerror();
        return text == nullptr ? "" : text;
    }

    ScratchFolder folder;
    const std::string path = folder / "image";
};

}  // namespace

TEST_F(Loader, SetsPointersAndRunsTheInitialiser) {
    void* const handle = open(MadeImage{.imports = {"strlen"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    EXPECT_EQ(function<long()>(handle, "counter")(), 8);
    EXPECT_EQ(function<std::size_t(const char*)>(handle, "call_strlen")("seven"), 5U);
    EXPECT_EQ(dlsym(handle, "strlen"), nullptr);
    EXPECT_EQ(error(), path + ": exports no strlen");
    EXPECT_EQ(dlclose(handle), 0);
}

TEST_F(Loader, TakesTheSliceForThisProcessor) {
    const macho::Processor other = macho::own_processor() == macho::Processor::X86_64
                                       ? macho::Processor::Arm64
                                       : macho::Processor::X86_64;
    void* const handle = open(universal({{other, {"abort"}}, {macho::own_processor(), {}}}));
    ASSERT_NE(handle, nullptr) << error();
    EXPECT_EQ(function<long()>(handle, "counter")(), 8);
    dlclose(handle);
    EXPECT_EQ(open(universal({{other, {}}})), nullptr);
    EXPECT_EQ(error(), path + ": it has no slice for " + macho::name_of(macho::own_processor()));
}

TEST_F(Loader, TellsWhichFileAnAddressIsFrom) {
    void* const handle = open(MadeImage{}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    void* const code = dlsym(handle, "counter");
    Dl_info info = {};
    ASSERT_NE(dladdr(code, &info), 0);
    EXPECT_EQ(info.dli_fname, path);
    EXPECT_EQ(static_cast<char*>(code) - static_cast<char*>(info.dli_fbase), 0x400);
    dlclose(handle);
    EXPECT_EQ(dladdr(code, &info), 0) << "it is gone";
}

TEST_F(Loader, IsLoadedOnceAndAnewAfterItWent) {
    void* const first = open(MadeImage{}.bytes());
    ASSERT_NE(first, nullptr) << error();
    EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW), first);
    EXPECT_EQ(function<long()>(first, "counter")(), 8) << "initialised once";
    dlclose(first);
    void* const still = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    EXPECT_EQ(still, first);
    dlclose(still);
    dlclose(first);
    EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
    void* const again = dlopen(path.c_str(), RTLD_NOW);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(function<long()>(again, "counter")(), 8);
    dlclose(again);
}

TEST_F(Loader, RunsTheImagesExitsWhenItGoes) {
    void* const handle = open(MadeImage{.imports = {"__cxa_atexit"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    static std::string ran;
    const auto run = [](void* name) { ran += static_cast<const char*>(name); };
    auto* const at_exit =
        function<int(void (*)(void*), const void*, void*)>(handle, "call___cxa_atexit");
    EXPECT_EQ(at_exit(run, "first", dlsym(handle, "counter")), 0);
    EXPECT_EQ(at_exit(run, "second ", dlsym(handle, "counter")), 0);
    EXPECT_EQ(ran, "");
    dlclose(handle);
    EXPECT_EQ(ran, "second first");
}

TEST_F(Loader, CodeAndConstantsCannotBeWritten) {
    void* const handle = open(MadeImage{}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    EXPECT_DEATH(*static_cast<char*>(dlsym(handle, "counter")) = 0, "");
    dlclose(handle);
}

TEST_F(Loader, CallOfAnUnknownFunctionEndsTheProcessWithItsName) {
    void* const handle = open(MadeImage{.imports = {"strlen", "no_such_function"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    EXPECT_DEATH(function<void()>(handle, "call_no_such_function")(),
                 "the image called _no_such_function, which is not there");
    dlclose(handle);
}

TEST_F(Loader, TranslatesErrorsFlagsAndRecords) {
    void* const handle =
        open(MadeImage{.imports = {"fstat", "mmap", "__error", "strerror", "close"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    write_file(folder / "file", std::string(1234, 'x'));
    std::FILE* const file = std::fopen((folder / "file").c_str(), "rb");
    ASSERT_NE(file, nullptr);
    // By macOS's record: the mode at byte 4, the size at byte 96 of 144.
    unsigned char record[144] = {};
    ASSERT_EQ((function<int(int, void*)>(handle, "call_fstat")(fileno(file), record)), 0);
    std::int64_t size = 0;
    std::memcpy(&size, record + 96, sizeof size);
    EXPECT_EQ(size, 1234);
    EXPECT_EQ((record[5] << 8 | record[4]) & 0170000, 0100000) << "an ordinary file";
    std::fclose(file);
    // Memory of no file is 0x1000 there; 0x20 here.
    auto* const map = function<void*(void*, std::size_t, int, int, int, long)>(handle, "call_mmap");
    auto* const memory = static_cast<char*>(map(nullptr, 4096, 3, 0x1002, -1, 0));
    ASSERT_NE(memory, MAP_FAILED);
    memory[4095] = 1;
    munmap(memory, 4096);
    EXPECT_DEATH(map(nullptr, 4096, 3, 0x4002, -1, 0), "mmap with flags 0x4000");
    auto* const error_place = function<int*()>(handle, "call___error");
    EXPECT_EQ(function<int(int)>(handle, "call_close")(-1), -1);
    EXPECT_EQ(*error_place(), 9) << "a bad descriptor is the same number there";
    EXPECT_STREQ(function<char*(int)>(handle, "call_strerror")(35), std::strerror(EAGAIN));
    EXPECT_STREQ(function<char*(int)>(handle, "call_strerror")(66), std::strerror(ENOTEMPTY));
    EXPECT_STREQ(function<char*(int)>(handle, "call_strerror")(2), std::strerror(ENOENT));
    dlclose(handle);
}

TEST_F(Loader, ListsFoldersInTheOtherSystemsRecords) {
    void* const handle =
        open(MadeImage{.imports = {"opendir", "readdir", "closedir", "__error"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    const auto open_folder = function<void*(const char*)>(handle, "call_opendir");
    void* const listed = open_folder(folder.path().c_str());
    ASSERT_NE(listed, nullptr);
    auto* const next = function<const char*(void*)>(handle, "call_readdir");
    std::set<std::string> names;
    // The length of the name at byte 18 of a record, the name at byte 21.
    while (const char* const record = next(listed)) {
        names.insert(record + 21);
        EXPECT_EQ(static_cast<std::size_t>(record[18]), std::strlen(record + 21));
    }
    EXPECT_EQ(names, (std::set<std::string>{".", "..", "image"}));
    EXPECT_EQ(function<int(void*)>(handle, "call_closedir")(listed), 0);
    EXPECT_EQ(open_folder((folder / "none").c_str()), nullptr);
    EXPECT_EQ(*function<int*()>(handle, "call___error")(), 2) << "no such folder";
    dlclose(handle);
}

// By the compiler's initial bytes of a lock, which are none of this system's.
TEST_F(Loader, LocksOfAnImageLockHere) {
    void* const handle =
        open(MadeImage{.imports = {"pthread_mutex_lock", "pthread_mutex_unlock"}}.bytes());
    ASSERT_NE(handle, nullptr) << error();
    auto* const lock = function<int(void*)>(handle, "call_pthread_mutex_lock");
    auto* const unlock = function<int(void*)>(handle, "call_pthread_mutex_unlock");
    long mutex[8] = {0x32AAABA7};
    int count = 0;
    const auto add = [&] {
        for (int i = 0; i < 20000; ++i) {
            EXPECT_EQ(lock(mutex), 0);
            ++count;
            EXPECT_EQ(unlock(mutex), 0);
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(count, 40000);
    dlclose(handle);
}

TEST_F(Loader, DamagedFileIsRefusedWithAReason) {
    std::string bytes = MadeImage{}.bytes();
    bytes.resize(bytes.size() - 1);
    EXPECT_EQ(open(bytes), nullptr);
    EXPECT_NE(error().find(path + ": slice for "), std::string::npos);
    EXPECT_EQ(error(), "") << "it was told once";
}

TEST_F(Loader, LeavesOtherFilesToTheSystem) {
    Dl_info info = {};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&std::strtol), &info), 0);
    void* const handle = dlopen(info.dli_fname, RTLD_NOW);
    ASSERT_NE(handle, nullptr) << error();
    EXPECT_NE(dlsym(handle, "strtol"), nullptr);
    EXPECT_EQ(dlclose(handle), 0);
    EXPECT_EQ(open("no module of any kind"), nullptr);
    EXPECT_NE(error(), "");
}
