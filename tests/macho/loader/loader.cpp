// The plug-in that is built for macOS, run on Linux: the part of macOS's loader that it needs.
//
// Preloaded into a program or linked with it, this library makes dlopen and its kin understand
// Mach-O files: the slice for the processor is mapped, its pointers are set, its imports are bound,
// and the file's own machine code runs, with the C++ run-time that is part of the file. Everything
// else is passed on.
//
// It replaces, and so does not test, what the file leaves to macOS: the loader itself, the C
// library (files, memory, threads, text; records, flags and error numbers are translated), its
// mathematics, which is this system's here, and the unwinder, which is this system's with tables
// made from the file's. On arm64 the file cannot call functions of the host with arguments of any
// number, which the two systems pass in different ways. That the file works on macOS itself is not
// shown by any of this.
#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "image_exits.h"
#include "loaded_image.h"

namespace loader {
namespace {

/// The program's own dlopen and so on. The version is that of the first C library that has them in
/// one piece; asked for by name, since dlsym is one of those that this library stands in for.
template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlvsym(RTLD_NEXT, name, "GLIBC_2.34"));
}

struct Opened {
    dev_t device;
    ino_t number;
    int count;
    std::unique_ptr<LoadedImage> image;
};

// An image's own code may ask for it while it is loaded.
std::recursive_mutex mutex;
std::list<Opened>& opened() {
    static std::list<Opened> all;
    return all;
}
thread_local std::string last_error;
thread_local bool has_error = false;

void remember(const std::string& error) {
    last_error = error;
    has_error = true;
}

std::list<Opened>::iterator find(const void* handle) {
    auto found = opened().begin();
    while (found != opened().end() && found->image.get() != handle) {
        ++found;
    }
    return found;
}

LoadedImage* image_around(const void* address) {
    for (const Opened& one : opened()) {
        if (one.image != nullptr && one.image->contains(address)) {
            return one.image.get();
        }
    }
    return nullptr;
}

/// The bytes of a Mach-O file; empty for any other, which the system's loader may judge.
std::string macho_bytes(const char* path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes(8, '\0');
    if (!in.read(bytes.data(), 8) ||
        !macho::is_macho({reinterpret_cast<const std::uint8_t*>(bytes.data()), 8, path})) {
        return {};
    }
    bytes.append(std::istreambuf_iterator<char>(in), {});
    return bytes;
}

void* open(const char* path, const std::string& bytes, bool only_if_loaded) {
    struct stat status = {};
    if (stat(path, &status) != 0) {
        throw macho::FileError(std::string(path) + ": " + std::strerror(errno));
    }
    for (Opened& one : opened()) {
        if (one.device == status.st_dev && one.number == status.st_ino) {
            ++one.count;
            return one.image.get();
        }
    }
    if (only_if_loaded) {
        return nullptr;
    }
    auto image = std::make_unique<LoadedImage>(
        path,
        macho::Bytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), path));
    opened().push_back({status.st_dev, status.st_ino, 1, std::move(image)});
    opened().back().image->run_initialisers();
    return opened().back().image.get();
}

}  // namespace

int run_at_unloading(void (*function)(void*), void* argument, void* within) {
    const std::lock_guard lock(mutex);
    LoadedImage* const image = image_around(within);
    if (image == nullptr) {
        return -1;
    }
    image->run_at_end(function, argument);
    return 0;
}

}  // namespace loader

#define LUMIVAR_INTERPOSED extern "C" __attribute__((visibility("default")))

LUMIVAR_INTERPOSED void* dlopen(const char* path, int mode) {
    static auto* const real = loader::next<void*(const char*, int)>("dlopen");
    if (path == nullptr || std::strchr(path, '/') == nullptr) {
        return real(path, mode);
    }
    try {
        const std::string bytes = loader::macho_bytes(path);
        if (bytes.empty()) {
            return real(path, mode);
        }
        const std::lock_guard lock(loader::mutex);
        return loader::open(path, bytes, (mode & RTLD_NOLOAD) != 0);
    } catch (const std::exception& error) {
        loader::remember(error.what());
        return nullptr;
    }
}

LUMIVAR_INTERPOSED void* dlsym(void* handle, const char* name) {
    static auto* const real = loader::next<void*(void*, const char*)>("dlsym");
    const std::unique_lock lock(loader::mutex);
    const auto found = loader::find(handle);
    if (found == loader::opened().end()) {
        return real(handle, name);
    }
    void* const symbol = found->image->symbol(name);
    if (symbol == nullptr) {
        loader::remember(found->image->path() + ": exports no " + name);
    }
    return symbol;
}

LUMIVAR_INTERPOSED int dlclose(void* handle) {
    static auto* const real = loader::next<int(void*)>("dlclose");
    const std::lock_guard lock(loader::mutex);
    const auto found = loader::find(handle);
    if (found == loader::opened().end()) {
        return real(handle);
    }
    if (--found->count == 0) {
        // Its exits may still ask whose they are.
        found->image->run_exits();
        loader::opened().erase(found);
    }
    return 0;
}

LUMIVAR_INTERPOSED int dladdr(const void* address, Dl_info* info) {
    static auto* const real = loader::next<int(const void*, Dl_info*)>("dladdr");
    const std::lock_guard lock(loader::mutex);
    const loader::LoadedImage* const image = loader::image_around(address);
    if (image == nullptr) {
        return real(address, info);
    }
    *info = {image->path().c_str(), image->begin(), nullptr, nullptr};
    return 1;
}

LUMIVAR_INTERPOSED char* dlerror() {
    static auto* const real = loader::next<char*()>("dlerror");
    if (!loader::has_error) {
        return real();
    }
    loader::has_error = false;
    return loader::last_error.data();
}
