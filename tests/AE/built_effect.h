// The built module in a bundle of the test's own, with databases beside it, driven by a light host.
// Needs LUMIVAR_MODULE.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <libimgops/star_database_name.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>

#include "fake_host.h"
#include "star_ahead.h"

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

class BuiltEffect : public testing::Test {
protected:
    BuiltEffect() {
        host.set_default_values();
        host.has_camera = false;
    }
    ~BuiltEffect() override {
        dispose();
        // Whatever a test took away: what set-up made must go before the module does.
        host.in_data.pica_basicP = &host.basic;
        send(PF_Cmd_GLOBAL_SETDOWN);
    }

    PF_Err send(PF_Cmd cmd, void* extra = nullptr, PF_LayerDef* output = nullptr) {
        return bundle.entry()(cmd, &host.in_data, &host.out_data, nullptr, output, extra);
    }
    /// Sets the effect up; what it asked and wrote until then is forgotten.
    void set_up() {
        ASSERT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
        host.out_data = {};
        host.log.clear();
    }
    /// The names that the database control offers.
    std::string offered_databases() {
        EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 0);
        EXPECT_EQ(host.declared.size(), 16U);
        return host.declared.empty() ? "none declared" : host.declared.back().text;
    }
    std::string message() const { return host.out_data.return_msg; }

    void add_database(const std::string& name, const std::string& bytes) {
        write_file(bundle.root / name, bytes);
    }
    /// Takes the place of the file of this name; whoever has it open keeps the old one.
    void replace_database(const std::string& name, const std::string& bytes) {
        write_file(bundle.root / "new", bytes);
        std::filesystem::rename(bundle.root / "new", bundle.root / name);
    }
    /// The names of the databases in the order in which the system lists them.
    Log listing() const {
        Log names;
        for (const auto& entry : std::filesystem::directory_iterator(bundle.root.path())) {
            const std::string name = entry.path().filename();
            if (is_star_database_name(name.c_str())) {
                names.push_back(name);
            }
        }
        return names;
    }

    PF_Err pre_render() {
        dispose();
        return send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra);
    }
    /// The last pre-render's data, drawn; leaves the effect's handle in the record, as hosts find
    /// it.
    PF_Err smart_render() {
        host.render_input.pre_render_data = host.pre_output.pre_render_data;
        host.render_extra.cb = &host.render_callbacks;
        return send(PF_Cmd_SMART_RENDER, &host.render_extra);
    }
    /// Frees the last pre-render's data as a host does.
    void dispose() {
        if (host.pre_output.pre_render_data != nullptr) {
            host.pre_output.delete_pre_render_data_func(host.pre_output.pre_render_data);
        }
        host.pre_output = {};
    }
    /// Red of the middle of a whole frame in float, which a star ahead lights; -1 when the frame
    /// was left untouched.
    float middle() {
        FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
        host.input_world = &world;
        host.output_world = &world;
        EXPECT_EQ(pre_render(), 0);
        EXPECT_EQ(smart_render(), 0);
        host.input_world = nullptr;
        host.output_world = nullptr;
        return world.untouched() ? -1.0F : world.at_float(kWidth / 2, kHeight / 2).red;
    }

    Bundle bundle;
    FakeHost host;
};
