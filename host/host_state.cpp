#include "host_state.h"

#include <cxxabi.h>
#include <host/watch.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <typeinfo>

#include "callbacks.h"
#include "kept_record.h"
#include "suites.h"
#include "unprovided.h"

namespace host {
namespace {

constexpr unsigned char kOutGuard = 0x5A;

thread_local HostState* current_state = nullptr;

/// Calls from threads without a command, of all sessions, since the last command ended.
std::atomic<int> stray_calls = 0;
Watch process_watch;

/// Tells the watch when the plug-in starts and stops to work.
class Watched {
public:
    explicit Watched(const char* name) { tell(name); }
    ~Watched() { tell(nullptr); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

private:
    static void tell(const char* name) {
        if (process_watch.command != nullptr) {
            process_watch.command(name);
        }
    }
};

/// Type and text of the exception being handled. The host may not know its type.
std::string describe_current_exception() {
    std::string type = "of an unknown type";
    if (const std::type_info* const info = abi::__cxa_current_exception_type()) {
        int status = 0;
        const std::unique_ptr<char, decltype(&std::free)> name(
            abi::__cxa_demangle(info->name(), nullptr, nullptr, &status), &std::free);
        type = "of type " + std::string(status == 0 && name ? name.get() : info->name());
    }
    try {
        throw;
    } catch (const std::exception& error) {
        return type + " (\"" + error.what() + "\")";
    } catch (int number) {
        return type + " (" + std::to_string(number) + ")";
    } catch (...) {
        return type;
    }
}

}  // namespace

void set_watch(const Watch& watch) { process_watch = watch; }

void abort_unprovided(const char* name) {
    if (process_watch.lacking != nullptr) {
        process_watch.lacking(name);
    }
    std::fprintf(stderr, "stand-in host: the plug-in called %s, which this host does not provide\n",
                 name);
    std::abort();
}

std::string shown_time(A_long value, A_u_long scale) {
    return std::to_string(value) + "/" + std::to_string(scale);
}

HostState* HostState::current() { return current_state; }

HostState* HostState::called() {
    if (current_state == nullptr) {
        ++stray_calls;
    }
    return current_state;
}

void HostState::tell_stray_calls() {
    if (const int count = stray_calls.exchange(0)) {
        violation(Rule::Calls, std::to_string(count) + " calls from a thread without a command");
    }
}

HostState::HostState(SessionOptions session_options) : options(std::move(session_options)) {
    std::fill(std::begin(guarded_out_.guard), std::end(guarded_out_.guard), kOutGuard);
    in.inter = interact_callbacks();
    utils = util_callbacks();
    in.utils = &utils;
    in.quality = PF_Quality_HI;
    in.appl_id = premiere() ? kAppID_Premiere : kAppID_AfterEffects;
    in.num_params = 1;
    in.time_scale = 1;
    in.downsample_x = in.downsample_y = in.pixel_aspect_ratio = {1, 1};
    in.pica_basicP = basic_suite();
}

void HostState::run(const char* name, const std::function<void()>& function) {
    const Exchanged<HostState*> running(current_state, this);
    const Watched watched(name);
    std::string thrown;
    try {
        function();
    } catch (...) {
        // The exception's code may be the module's, so only its text leaves this handler.
        thrown = describe_current_exception();
    }
    tell_stray_calls();
    if (!thrown.empty()) {
        throw ModuleDefect("defect of the plug-in: an exception " + thrown + " left it during " +
                           name + "; a real host would have crashed");
    }
}

PF_Err HostState::send(PF_Cmd sent, PF_ParamDef** params, PF_EffectWorld* output, void* extra) {
    command = sent;
    message = {};
    std::fill(std::begin(out().return_msg), std::end(out().return_msg), '\0');
    in.effect_ref = effect_ref();
    in.sequence_data = out().sequence_data = instance->sequence_data;
    const std::size_t entry = calls.size();
    const char* const name = command_name(sent);
    calls.push_back({name, "", 0});
    KeptRecord kept(in);
    PF_Err status = PF_Err_NONE;
    run(name, [&] { status = entry_point(sent, &in, &out(), params, output, extra); });
    if (kept.restore()) {
        violation(Rule::Records, std::string(name) + ": the input record was written to");
    }
    calls[entry].status = status;
    instance->sequence_data = out().sequence_data;
    check_out_record();
    command = -1;
    return status;
}

void HostState::check_out_record() {
    const char* const name = command_name(command);
    const auto guard_end = std::end(guarded_out_.guard);
    if (std::find_if(std::begin(guarded_out_.guard), guard_end,
                     [](unsigned char byte) { return byte != kOutGuard; }) != guard_end) {
        violation(Rule::Records,
                  std::string(name) + ": bytes behind the output record were written to");
        std::fill(std::begin(guarded_out_.guard), guard_end, kOutGuard);
    }
    const A_char* const begin = out().return_msg;
    const A_char* const end = begin + sizeof out().return_msg;
    const A_char* const terminator = std::find(begin, end, '\0');
    if (terminator == end) {
        violation(Rule::Messages,
                  std::string(name) + ": return_msg has no terminator within its 256 characters");
    }
    message.text.assign(begin, terminator);
    message.is_error = (out().out_flags & PF_OutFlag_DISPLAY_ERROR_MESSAGE) != 0;
    // The flag holds for this command's message only and must not reach the next command.
    out().out_flags &= ~PF_OutFlag_DISPLAY_ERROR_MESSAGE;
}

World* HostState::world_of(const PF_EffectWorld* record) {
    if (frame == nullptr || !frame->rendering) {
        return nullptr;
    }
    if (record == &frame->output_record) {
        return &frame->output;
    }
    return record == &frame->input_record ? &frame->input : nullptr;
}

void HostState::rethrow_failure() {
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

std::optional<std::int32_t> HostState::consult(std::string_view name) {
    const auto counted = counts_.try_emplace(std::string(name), 0).first;
    const int count = ++counted->second;
    return options.filter ? options.filter(name, count) : std::nullopt;
}

std::optional<std::int32_t> HostState::note(const char* name, std::string arguments) {
    const std::size_t entry = calls.size();
    calls.push_back({name, std::move(arguments), 0});
    const auto failure = consult(name);
    calls[entry].status = failure.value_or(0);
    return failure;
}

std::int32_t HostState::answer(const char* name, std::string arguments,
                               const std::function<std::int32_t()>& body) {
    try {
        const std::size_t entry = calls.size();
        calls.push_back({name, std::move(arguments), 0});
        const auto failure = consult(name);
        const std::int32_t status = failure ? *failure : body();
        calls[entry].status = status;
        return status;
    } catch (const std::bad_alloc&) {
        return PF_Err_OUT_OF_MEMORY;
    } catch (const std::exception&) {
        failure_ = std::current_exception();
        return PF_Err_INTERNAL_STRUCT_DAMAGED;
    }
}

}  // namespace host
