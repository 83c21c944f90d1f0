// A light stand-in for the host: its callbacks and suites as far as the effect uses them, with a
// log of every call and a way to make any of them fail.
#pragma once

#include <host_api/effect_interface.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Frames of pixels with rows further apart than they need be, and marked bytes between and behind.
class FakeWorld {
public:
    static constexpr unsigned char kMark = 0xA5;

    FakeWorld(int width, int height, PF_PixelFormat format, int row_padding = 12);

    PF_EffectWorld world = {};
    PF_PixelFormat format;

    PF_Pixel at8(int x, int y) const { return at<PF_Pixel>(x, y); }
    PF_Pixel16 at16(int x, int y) const { return at<PF_Pixel16>(x, y); }
    PF_PixelFloat at_float(int x, int y) const { return at<PF_PixelFloat>(x, y); }
    /// Whether nothing at all has been written.
    bool untouched() const;
    /// Whether the bytes that are no pixels are as they were.
    bool margins_intact() const;

private:
    template <class Pixel>
    Pixel at(int x, int y) const;

    int pixel_bytes_;
    std::vector<unsigned char> bytes_;
};

/// One host with one instance of the effect. One at a time: the callbacks find it by a static
/// pointer.
class FakeHost {
public:
    struct Failure {
        PF_Err status;
        int from_call = 1;  ///< the first call that fails, counted from 1
    };
    struct ParamCheckout {
        PF_ParamIndex index;
        A_long time;
        A_long time_step;
        A_u_long time_scale;
        bool operator==(const ParamCheckout&) const = default;
    };
    struct Time {
        A_long value;
        A_u_long scale;
        bool operator==(const Time&) const = default;
    };
    /// A declared control; `text` is its choices or label, `bytes` the record as it came, padding
    /// included.
    struct Declared {
        PF_ParamIndex index;
        PF_ParamDef def;
        std::string text;
        std::string bytes;
    };

    FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;
    ~FakeHost();

    // What the effect is given.
    PF_InData in_data = {};
    PF_OutData out_data = {};
    PF_UtilCallbacks utils = {};
    SPBasicSuite basic = {};
    PF_PreRenderInput pre_input = {};
    PF_PreRenderOutput pre_output = {};
    PF_PreRenderCallbacks pre_callbacks = {};
    PF_PreRenderExtra pre_extra = {&pre_input, &pre_output, &pre_callbacks};
    PF_SmartRenderInput render_input = {};
    PF_SmartRenderCallbacks render_callbacks = {};
    PF_SmartRenderExtra render_extra = {&render_input, &render_callbacks};

    // How the host behaves.
    std::map<std::string, Failure> failures;  ///< by the callback's name
    std::set<std::string> missing_suites;
    bool suites_succeed_with_null = false;  ///< acquisition returns 0 and no table
    std::map<PF_ParamIndex, PF_ParamDef> values;
    bool has_camera = true;
    A_Time comp_time = {7, 24};
    A_Matrix4 camera_matrix = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    double zoom = 2000.0;
    /// Called before the camera's place or zoom at a time is told; may change both.
    std::function<void(const Time&)> move_camera = [](const Time&) {};
    A_long comp_width = 1920;
    A_long comp_height = 1080;
    A_Time shutter_start = {1, 24};
    A_Time shutter_duration = {1, 48};
    PF_CheckoutResult checkout_result = {};
    FakeWorld* input_world = nullptr;
    FakeWorld* output_world = nullptr;
    PF_EffectWorld* leftover_output = nullptr;  ///< given out by a checkout that fails

    // What the effect did.
    std::vector<std::string> log;  ///< every call, with what matters of its arguments
    std::vector<Declared> declared;
    std::vector<ParamCheckout> checkouts;
    bool cleared_records = true;  ///< every record handed to `checkout_param` was zero throughout
    std::vector<Time> matrix_times;
    std::vector<Time> zoom_times;
    std::vector<Time> camera_times;   ///< asked for the camera
    std::vector<Time> shutter_times;  ///< asked for the shutter
    PF_RenderRequest layer_request = {};
    PF_Pixel fill_colour = {};
    std::map<std::string, int> held_suites;  ///< acquired less released, by name and version

    /// Whether every suite that was acquired has been released as often.
    bool suites_balanced() const;
    /// The text in a handle made by `host_new_handle`, and the size that was asked for.
    static std::string handle_text(PF_Handle handle) { return *handle; }
    A_HandleSize handle_size(PF_Handle handle) const { return handles_.at(handle); }

    /// Sets the controls to what the effect declares as their defaults.
    void set_default_values();

    /// Notes a call and says how it ends.
    PF_Err enter(const std::string& name, const std::string& detail = "");
    static FakeHost& current() { return *current_; }

private:
    void fill_tables();
    PF_Err fill(const char* name, PF_ProgPtr effect_ref, const PF_Pixel* colour,
                const PF_Rect* area, PF_EffectWorld* world);

    static FakeHost* current_;

    std::map<std::string, int> calls_;
    std::map<PF_Handle, A_HandleSize> handles_;
    std::vector<std::vector<char>*> blocks_;

    PF_HandleSuite1 handle_suite_ = {};
    PF_ANSICallbacksSuite1 ansi_suite_ = {};
    PF_FillMatteSuite2 fill_suite_ = {};
    AEGP_PFInterfaceSuite1 interface_suite_ = {};
    AEGP_LayerSuite5 layer_suite_ = {};
    AEGP_ItemSuite6 item_suite_ = {};
    AEGP_CompSuite4 comp_suite_ = {};
    AEGP_StreamSuite2 stream_suite_ = {};
    PF_WorldSuite2 world_suite_ = {};
    PF_PixelFormatSuite1 format_suite_ = {};
    std::map<std::string, const void*> suites_;  ///< by name and version
};
