// Where the tasks of a job are.
#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace lumivar {

/// By the number of their chunk. What is in none of the sets has ended.
struct FarmTasks {
    std::set<std::size_t> waiting;
    std::set<std::size_t> running;
    std::set<std::size_t> cancelled;  ///< by somebody: they are not to be tried again
    /// Why tasks wait, if not for their turn: "JobHeldUser". Empty: they wait for their turn.
    std::string held_by;
};

}  // namespace lumivar
