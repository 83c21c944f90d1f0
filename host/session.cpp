#include <host/session.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "callbacks.h"
#include "declared_control.h"
#include "parameter_array.h"
#include "session_impl.h"

namespace host {
namespace {

/// First output flags that an effect may set with any command: requests for this one time.
constexpr PF_OutFlags kWishes = PF_OutFlag_REFRESH_UI | PF_OutFlag_NOP_RENDER |
                                PF_OutFlag_FORCE_RERENDER | PF_OutFlag_SEND_DO_DIALOG;

/// Commands with a record of their own. Effects that do not know the command leave it alone.
bool has_record(PF_Cmd command) {
    switch (command) {
        case PF_Cmd_USER_CHANGED_PARAM:
        case PF_Cmd_EVENT:
        case PF_Cmd_GET_EXTERNAL_DEPENDENCIES:
        case PF_Cmd_ARBITRARY_CALLBACK:
        case PF_Cmd_TRANSLATE_PARAMS_TO_PREFS:
        case PF_Cmd_SMART_RENDER_GPU:
        case PF_Cmd_GPU_DEVICE_SETUP:
        case PF_Cmd_GPU_DEVICE_SETDOWN:
            return true;
        default:
            return false;
    }
}

/// Zeroes in place of a command's record; larger than any of them.
struct BlankRecord {
    alignas(std::max_align_t) std::array<unsigned char, 1024> bytes{};

    bool blank() const {
        return std::all_of(bytes.begin(), bytes.end(),
                           [](unsigned char byte) { return byte == 0; });
    }
};

std::string answer_text(PF_Cmd command, PF_Err status) {
    return "the plug-in answered " + std::string(command_name(command)) + " with status " +
           std::to_string(status);
}

}  // namespace

std::string EffectInfo::version_text() const {
    const std::uint32_t major = (version >> 26 & 0xF) * 8 + (version >> 19 & 0x7);
    return std::to_string(major) + "." + std::to_string(version >> 15 & 0xF) + "." +
           std::to_string(version >> 11 & 0xF);
}

Session::Impl::Impl(const std::filesystem::path& plugin, SessionOptions options)
    : module(std::in_place, plugin), state(std::move(options)) {
    folder = module->folder();
    state.entry_point = reinterpret_cast<PF_EffectMain>(module->entry_point());
    state.parameters.push_back(input_layer_parameter());
    set_up();
}

PF_Err Session::Impl::send(PF_Cmd command, PF_ParamDef** params, PF_EffectWorld* output,
                           void* extra) {
    // Before each command these fields hold what the effect declared.
    PF_OutData& out = state.out();
    out.my_version = info.version;
    out.out_flags = info.out_flags;
    out.out_flags2 = info.out_flags2;
    out.num_params = info.num_params;
    const PF_Err status = state.send(command, params, output, extra);
    state.in.global_data = out.global_data;
    state.in.frame_data = out.frame_data;
    check_declarations(command);
    return status;
}

void Session::Impl::check_declarations(PF_Cmd command) {
    if (command == PF_Cmd_GLOBAL_SETUP) {
        return;
    }
    const bool query = command == PF_Cmd_QUERY_DYNAMIC_FLAGS;
    const PF_OutData& out = state.out();
    const auto check = [&](const char* field, bool changed) {
        if (changed) {
            state.violation(Rule::Records,
                            std::string(command_name(command)) + ": " + field + " was changed");
        }
    };
    const PF_OutFlags may = kWishes | (query ? kDynamicOutFlags : 0);
    const PF_OutFlags2 may2 = query ? kDynamicOutFlags2 : 0;
    check("my_version", out.my_version != info.version);
    check("out_flags", ((out.out_flags ^ info.out_flags) & ~may) != 0);
    check("out_flags2", ((out.out_flags2 ^ info.out_flags2) & ~may2) != 0);
    check("num_params", command != PF_Cmd_PARAMS_SETUP && out.num_params != info.num_params);
}

void Session::Impl::demand(PF_Cmd command, void* extra) {
    const PF_Err status = send(command, nullptr, nullptr, extra);
    state.rethrow_failure();
    if (status != PF_Err_NONE) {
        const std::string& text = state.message.text;
        throw EffectError(text.empty() ? answer_text(command, status) : text, command, status,
                          text);
    }
    if (!state.message.text.empty()) {
        messages.push_back(state.message);
    }
}

void Session::Impl::set_up() {
    try {
        demand(PF_Cmd_GLOBAL_SETUP);
    } catch (const EffectError& error) {
        refuse(error);
    }
    info.version = state.out().my_version;
    info.out_flags = state.out().out_flags;
    info.out_flags2 = state.out().out_flags2;
    // Hosts give no version during global set-up.
    state.in.version = {13, 4};
    try {
        demand(PF_Cmd_PARAMS_SETUP);
        info.num_params = state.out().num_params;
        const int added = static_cast<int>(state.parameters.size());
        if (info.num_params != added) {
            state.violation(Rule::ControlCount, "PF_Cmd_PARAMS_SETUP: num_params is " +
                                                    std::to_string(info.num_params) +
                                                    ", but with the input layer " +
                                                    std::to_string(added) + " were added");
        }
        state.in.num_params = added;
        for (const Parameter& parameter : state.parameters) {
            if (parameter.declared.index != 0) {
                controls.push_back(parameter.declared);
            }
        }
        demand_of(state.session_instance, PF_Cmd_SEQUENCE_SETUP);
    } catch (const EffectError& error) {
        send(PF_Cmd_GLOBAL_SETDOWN);
        refuse(error);
    }
}

void Session::Impl::refuse(const EffectError& error) {
    report_balance();
    throw EffectError(error.what(), error.command(), error.status(), error.message(),
                      state.violations);
}

Session::Session(const std::filesystem::path& plugin, SessionOptions options)
    : impl_(std::make_unique<Impl>(plugin, std::move(options))) {}

Session::~Session() {
    try {
        close();
    } catch (const std::exception&) {
        // A destructor must not throw. Callers that want the error call close() first.
        impl_->module.reset();
    }
}

void Session::close() {
    if (!impl_->module) {
        return;
    }
    const auto unload = [this] {
        impl_->module.reset();
        impl_->state.entry_point = nullptr;
    };
    try {
        impl_->demand_of(impl_->state.session_instance, PF_Cmd_SEQUENCE_SETDOWN);
        impl_->demand(PF_Cmd_GLOBAL_SETDOWN);
    } catch (...) {
        unload();
        throw;
    }
    impl_->report_balance();
    unload();
}

std::string Session::about() {
    const PF_Err status = impl_->send(PF_Cmd_ABOUT);
    const std::string& text = impl_->state.message.text;
    if (status != PF_Err_NONE) {
        throw EffectError(answer_text(PF_Cmd_ABOUT, status), PF_Cmd_ABOUT, status, text);
    }
    return text;
}

std::optional<std::string> Session::dependencies(int check_type) {
    PF_ExtDependenciesExtra extra{};
    extra.check_type = check_type;
    impl_->demand(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra);
    const PF_Handle handle = extra.dependencies_strH;
    HostState& state = impl_->state;
    if (handle == nullptr) {
        return std::nullopt;
    }
    const char* const command = "PF_Cmd_GET_EXTERNAL_DEPENDENCIES";
    if (!state.handles.owns(handle)) {
        state.refuse(command, "the result is no handle of this host");
        return std::nullopt;
    }
    const char* const begin = *handle;
    const char* const end = begin + state.handles.size_of(handle);
    const char* const terminator = std::find(begin, end, '\0');
    if (terminator == end) {
        state.refuse(command, "the text has no terminator");
    }
    std::string text(begin, terminator);
    state.handles.dispose(handle);
    return text;
}

Answer Session::command(std::int32_t number) {
    ParameterArray params(impl_->state.parameters, initial_record);
    BlankRecord record;
    Answer answer;
    answer.status =
        impl_->send(number, params.data(), nullptr, has_record(number) ? &record : nullptr);
    answer.message = impl_->state.message;
    answer.record_written = !record.blank();
    return answer;
}

const EffectInfo& Session::info() const { return impl_->info; }
const std::filesystem::path& Session::folder() const { return impl_->folder; }
const std::vector<DeclaredControl>& Session::controls() const { return impl_->controls; }
OutputFlags Session::dynamic_flags(const Scene& scene, Time time,
                                   std::optional<std::int32_t> before) {
    return impl_->dynamic_flags(scene, time, before);
}
Frame Session::render(const Scene& scene, Time time, const RenderOptions& options) {
    const Project project(scene);
    return impl_->render(impl_->state.session_instance, project, project.layers.front(), time,
                         options);
}
const std::vector<Violation>& Session::violations() const { return impl_->state.violations; }
const std::vector<Call>& Session::calls() const { return impl_->state.calls; }
const std::vector<Message>& Session::messages() const { return impl_->messages; }
const std::vector<std::int32_t>& Session::declared_pixel_formats() const {
    return impl_->state.pixel_formats;
}
std::size_t Session::live_handles() const { return impl_->state.handles.live(); }
void Session::forget() {
    impl_->state.violations.clear();
    impl_->state.calls.clear();
    impl_->messages.clear();
}

}  // namespace host
