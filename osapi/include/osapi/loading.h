// Modules that are loaded while the program runs.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// Owns one loaded module, or none; unloads it when destroyed. Not copyable.
class LoadedModule {
public:
    /// Of a function, which is called through its own prototype.
    using Address = void (*)();

    LoadedModule() = default;
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    ~LoadedModule();

    /// Loads the file at `path` and tells whether that went well; asserts that none is loaded yet.
    bool load(const char* path);
    /// The loader's own words after a `load` that failed.
    const String& failure() const { return failure_; }
    /// The function that the module exports by this name; null when there is none.
    Address find(const char* name) const;

private:
    void* handle_ = nullptr;
    String failure_;
};

/// Whether the module file at `path` is part of the process, whoever has loaded it.
bool is_loaded(const char* path);

}  // namespace OSAPI
