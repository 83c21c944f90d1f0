// A copy of the built bundle in a folder of the test's own.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <host_api/effect_interface.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>

/// ROOT/Lumivar.plugin/Contents/MacOS/Lumivar, loaded; databases belong into ROOT.
class Bundle {
public:
    Bundle() : executable_(root / "Lumivar.plugin/Contents/MacOS/Lumivar") {
        std::filesystem::create_directories(std::filesystem::path(executable_).parent_path());
        std::filesystem::copy_file(LUMIVAR_MODULE, executable_);
        module_ = dlopen(executable_.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
        entry_ = reinterpret_cast<PF_EffectMain>(dlsym(module_, "EntryPointFunc"));
        if (entry_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;
    ~Bundle() { dlclose(module_); }

    PF_EffectMain entry() const { return entry_; }
    /// The folder of the databases, spelt as the effect finds it.
    std::string database_folder() const { return root / "Lumivar.plugin/Contents/MacOS/../../.."; }

    ScratchFolder root;

private:
    std::string executable_;
    void* module_ = nullptr;
    PF_EffectMain entry_ = nullptr;
};
