// Failures of the room: each says what failed, in which function of which source file.
#pragma once

#include <string>

#include "support/faults.h"
#include "support/unwinding.h"

/// Expects failures that come from one source file.
class FailuresOf {
public:
    explicit FailuresOf(const char* file) : file_(file) {}

    /// `run` throws "CALL: ERROR" from OSAPI::FUNCTION.
    template <class Run>
    void expect(const std::string& call, int error, const std::string& function, Run run) const {
        expect_text(with_error(call, error), function, run);
    }
    /// The same with a text of another form.
    template <class Run>
    void expect_text(const std::string& text, const std::string& function, Run run) const {
        expect_message(thrown_message(run), text, "OSAPI::" + function, file_);
    }
    /// `run` throws every error of the system call, and does not call a second time.
    template <auto Call, class Run>
    void expect_every(const std::string& call, const std::string& function, Run run) const {
        for (const int error : kErrors) {
            const Fault<Call> fault(error);
            expect(call, error, function, run);
            EXPECT_EQ(fault.calls(), 1);
        }
    }
    /// The destructor of what `live` makes throws: see `expect_failing_destructor`.
    template <class Live>
    void expect_from_destructor(const std::string& call, int error, const std::string& function,
                                Live live) const {
        expect_failing_destructor(with_error(call, error), "OSAPI::" + function, file_, live);
    }

private:
    const char* file_;
};

inline const FailuresOf kFiles("osapi/osapi-unix.cpp");
inline const FailuresOf kPaths("osapi/osapi-unix-paths.cpp");
