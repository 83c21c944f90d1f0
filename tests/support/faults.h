// Makes chosen system calls of the operating-system room fail on demand.
#pragma once

#include <sys/mman.h>
#include <syscalls.h>

#include <cerrno>
#include <functional>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "expect_throw.h"

/// Puts a function of the test in the place of one system call while the object lives:
///
///     Intercept<&OSAPI::FileCalls::read> reads([&](int fd, void* buffer, size_t count) {
///         return reads.real(fd, buffer, std::min<size_t>(count, 7));
///     });
///
/// One at a time for each call.
template <auto Call>
class Intercept;

template <class Table, class Result, class... Arguments, Result (*Table::*Call)(Arguments...)>
class Intercept<Call> {
public:
    using Replacement = std::function<Result(Arguments...)>;

    explicit Intercept(Replacement replacement)
        : replacement_(std::move(replacement)), real_(OSAPI::calls<Table>().*Call) {
        if (current_ != nullptr) {
            throw std::logic_error("this call is being intercepted already");
        }
        current_ = this;
        OSAPI::calls<Table>().*Call = [](Arguments... arguments) {
            ++current_->calls_;
            return current_->replacement_(arguments...);
        };
    }
    Intercept(const Intercept&) = delete;
    Intercept& operator=(const Intercept&) = delete;
    ~Intercept() {
        OSAPI::calls<Table>().*Call = real_;
        current_ = nullptr;
    }

    /// The system's own call.
    Result real(Arguments... arguments) const { return real_(arguments...); }
    /// Calls since construction.
    int calls() const { return calls_; }

private:
    static inline Intercept* current_ = nullptr;

    Replacement replacement_;
    Result (*real_)(Arguments...);
    int calls_ = 0;
};

/// Lets every descriptor be closed while it lives, and reports `error` nevertheless: a descriptor
/// whose close fails is gone, as it is with the system.
class CloseFault {
public:
    explicit CloseFault(int error)
        : intercept_([this, error](int fd) {
              intercept_.real(fd);
              errno = error;
              return -1;
          }) {}

    int calls() const { return intercept_.calls(); }

private:
    Intercept<&OSAPI::FileCalls::close> intercept_;
};

/// What a system call returns when it fails.
template <class Result>
Result failure_of_call() {
    if constexpr (std::is_same_v<Result, void*>) {
        return MAP_FAILED;
    } else if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(-1);
    }
}

/// Which calls of a kind fail: `times` of them after the first `after`.
struct When {
    int after = 0;
    int times = 1;
};
inline constexpr When kAlways = {0, std::numeric_limits<int>::max()};

/// Makes one system call fail with `error` (an errno value) while the object lives; a failing call
/// does nothing else:
///
///     Fault<&OSAPI::FileCalls::write> full(ENOSPC, {.after = 2});
template <auto Call>
class Fault;

template <class Table, class Result, class... Arguments, Result (*Table::*Call)(Arguments...)>
class Fault<Call> {
public:
    explicit Fault(int error, When when = {})
        : intercept_([this, error, when](Arguments... arguments) {
              const int earlier = intercept_.calls() - 1;
              if (earlier < when.after || earlier - when.after >= when.times) {
                  return intercept_.real(arguments...);
              }
              errno = error;
              return failure_of_call<Result>();
          }) {}

    /// Calls since construction, good and bad.
    int calls() const { return intercept_.calls(); }

private:
    Intercept<Call> intercept_;
};

/// Of all calls of the kinds named, counted together, the n-th (from 1) fails with `error` while
/// the object lives, and with `lasting` all after it too. A descriptor whose close fails is gone
/// nevertheless, as it is with the system. To try every place where a piece of code can fail:
///
///     for (int n = 1;; ++n) {
///         NthCallFault<&OSAPI::FileCalls::open, &OSAPI::FileCalls::read> fault(EIO, n);
///         ...
///         if (!fault.failed()) break;
///     }
template <auto... Calls>
class NthCallFault {
public:
    NthCallFault(int error, int n, bool lasting = false)
        : error_(error), n_(n), lasting_(lasting), intercepts_(replacement<Calls>()...) {}

    /// Calls since construction, good and bad.
    int calls() const { return count_; }
    /// Whether a call has failed.
    bool failed() const { return count_ >= n_; }
    /// The kind that failed first.
    template <auto Call>
    bool was() const {
        return failed() && first_ == &typeid(Intercept<Call>);
    }

private:
    template <auto Call>
    auto replacement() {
        return typename Intercept<Call>::Replacement([this](auto... arguments) {
            const Intercept<Call>& intercept = std::get<Intercept<Call>>(intercepts_);
            using Result = decltype(intercept.real(arguments...));
            ++count_;
            if (count_ < n_ || (count_ > n_ && !lasting_)) {
                return intercept.real(arguments...);
            }
            if (count_ == n_) {
                first_ = &typeid(Intercept<Call>);
            }
            using OfClose = Intercept<&OSAPI::FileCalls::close>;
            if constexpr (std::is_same_v<Intercept<Call>, OfClose>) {
                intercept.real(arguments...);
            }
            errno = error_;
            return failure_of_call<Result>();
        });
    }

    int error_;
    int n_;
    bool lasting_;
    int count_ = 0;
    const std::type_info* first_ = nullptr;
    std::tuple<Intercept<Calls>...> intercepts_;
};

/// The errors that every operation is tried with.
inline constexpr int kErrors[] = {EINTR, EAGAIN, ENOSPC, EIO, EMFILE};
