// Faults of the host drawn at random, the same ones for the same seed on every machine.
#pragma once

#include <host/faults.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// What can fail and how often it is called is learned from the calls of a good run, so that
/// nothing the plug-in uses is left out.
class RandomFaults {
public:
    /// Throws `std::invalid_argument` without calls or statuses.
    RandomFaults(std::uint64_t seed, const std::vector<host::Call>& calls,
                 std::vector<std::int32_t> statuses)
        : engine_(seed), calls_(host::calls_that_can_fail(calls)), statuses_(std::move(statuses)) {
        for (const auto& [name, count] : calls_) {
            names_.push_back(name);
        }
        if (names_.empty() || statuses_.empty()) {
            throw std::invalid_argument("nothing can fail, or in no way");
        }
    }

    /// What can fail, with the number of calls in the good run.
    const std::map<std::string, int>& calls() const { return calls_; }

    /// One to `most` faults: every name is as likely as any other, and of its calls each as well,
    /// or, one time in eight, all.
    std::vector<host::CallFault> draw(int most = 3) {
        std::vector<host::CallFault> faults(1 + below(static_cast<std::size_t>(most)));
        for (host::CallFault& fault : faults) {
            fault.call = names_[below(names_.size())];
            const auto count = static_cast<std::size_t>(calls_.at(fault.call));
            fault.nth = below(8) == 0 ? 0 : static_cast<int>(1 + below(count));
            fault.status = statuses_[below(statuses_.size())];
        }
        return faults;
    }

private:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }

    std::mt19937_64 engine_;
    std::map<std::string, int> calls_;
    std::vector<std::string> names_;
    std::vector<std::int32_t> statuses_;
};
