// Star databases, controls and a snapshot of them: what the rendering tests start from.
#pragma once

#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <support/scratch.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>

#include "fake_host.h"
#include "star_ahead.h"

class Rendering : public testing::Test {
protected:
    Rendering() {
        globals = new LumivarGlobals;
        host.set_default_values();
        host.has_camera = false;
    }
    ~Rendering() override {
        drop_globals();
        if (host.pre_output.pre_render_data != nullptr) {
            host.pre_output.delete_pre_render_data_func(host.pre_output.pre_render_data);
        }
    }

    void add_database(const std::string& name, const std::string& bytes) {
        write_file(folder / name, bytes);
        globals->starfiles.append((folder / name).c_str());
    }
    /// Takes the place of the file of this name; whoever has it open keeps the old one.
    void replace_database(const std::string& name, const std::string& bytes) {
        write_file(folder / "new", bytes);
        std::filesystem::rename(folder / "new", folder / name);
    }
    /// A snapshot of the host's controls.
    const MyInstance& snapshot() {
        AEGP_SuiteHandler suites(&host.basic);
        instance = std::make_unique<MyInstance>();
        get_params(&host.in_data, *instance, suites);
        return *instance;
    }
    void draw(FakeWorld& world) {
        Lumivar_Render(snapshot(), world.world.width, world.world.height, world.format,
                       &world.world);
    }
    /// Red of the pixel in the middle, in float.
    float middle() {
        FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
        draw(world);
        return world.at_float(kWidth / 2, kHeight / 2).red;
    }
    PF_Err send(PF_Cmd cmd, void* extra = nullptr, PF_LayerDef* output = nullptr) {
        return dispatch_command(cmd, &host.in_data, &host.out_data, nullptr, output, extra);
    }
    PF_Err pre_render() { return send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra); }
    /// One level down from the dispatcher, which replaces the status.
    PF_Err smart_render() {
        host.render_input.pre_render_data = host.pre_output.pre_render_data;
        return SmartRender(&host.in_data, &host.out_data, &host.render_extra);
    }

    ScratchFolder folder;
    FakeHost host;
    std::unique_ptr<MyInstance> instance;
};
