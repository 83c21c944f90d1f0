// Worker processes that share out the items of a list, and outlive each other.
//
// Each worker is a copy of this process, made when it is needed. An item that takes its worker down
// takes nothing else: it is tried once more, in a new process and alone there, and the others go
// on.
//
// A worker may hold two items, one that it still writes and one that it works on already. Both are
// tried again when it dies, as nobody can tell which of them was at fault.
#pragma once

#include <osapi/streams.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace lumivar {

/// An item for a worker.
struct WorkerTask {
    std::size_t item = 0;
    /// Whether it is to be reported before `WorkerLink::next` is called again: its last worker
    /// died.
    bool alone = false;
};

/// A worker's way to the process that made it. For the worker's main thread.
class WorkerLink {
public:
    WorkerLink(OSAPI::fd_t tasks, OSAPI::fd_t reports) : tasks_(tasks), reports_(reports) {}

    /// What `next` brings where there is no item.
    enum class Rest {
        Report,  ///< nothing for now: report every item that is held, then ask again
        End      ///< nothing any more
    };
    struct Next {
        std::optional<WorkerTask> task;
        Rest rest = Rest::End;  ///< where there is no task
    };
    /// Waits until the maker answers. Also ends where the maker is gone. Throws "read: ...".
    Next next();

    // Each item is reported once. A line feed in `text` arrives as a blank. Throw "write: ...".
    void done(std::size_t item, const std::string& text);
    void failed(std::size_t item, const std::string& text);
    /// It failed in a way in which all others would: no further item is begun anywhere.
    void failed_for_all(std::size_t item, const std::string& text);

private:
    void send(const std::string& word, std::size_t item, std::string text);

    OSAPI::fd_t tasks_;
    OSAPI::fd_t reports_;
};

/// Runs in each worker, until `next` brings the end. What it throws is printed on its standard
/// error, and the worker has died then. Standard input is empty there, and what it writes to
/// standard output is lost.
using WorkerFunction = std::function<void(WorkerLink&)>;

/// What a pool tells while it works; called in the process that runs it, for the items as they are
/// settled. The last word on an item is one of `done`, `failed` and `given_up`, or none when the
/// run stops before it was begun.
class PoolEvents {
public:
    virtual ~PoolEvents() = default;
    virtual void done(std::size_t item, const std::string& text) = 0;
    virtual void failed(std::size_t item, const std::string& text) = 0;
    /// Its worker died, for the first time: it will be tried again. `how` as "killed by SIGKILL",
    /// with the last line of what the worker wrote to standard error.
    virtual void tried_again(std::size_t item, const std::string& how) = 0;
    /// Its worker died again.
    virtual void given_up(std::size_t item, const std::string& how) = 0;
    /// A worker has ended, well or not; what it left is of no use to anybody.
    virtual void worker_ended() = 0;
    /// A line that a worker wrote to standard error.
    virtual void said(const std::string& line) = 0;
    /// Some time has passed, a second at most.
    virtual void waited() = 0;
};

/// How a run of a pool ended.
struct PoolEnd {
    bool stopped = false;  ///< by an item that failed for all
    int signal = 0;  ///< that interrupted it; the workers are gone, the signal is to be raised yet
};

/// Shares out items 0 to `items` - 1, in this order, to `workers` processes at most, 1 at least.
/// SIGINT, SIGTERM and SIGHUP stop the run: the workers get SIGTERM and, if they do not end within
/// half a second, SIGKILL.
///
/// Where the system does not let so many start, those that there are do all. Throws `Failure` when
/// none can be started, when the first to end or many in a row die before they ask for an item, and
/// the errors of the operating-system layer; no worker is left then. For a process without threads,
/// from its main thread.
PoolEnd run_worker_pool(std::size_t items, int workers, const WorkerFunction& work,
                        PoolEvents& events);

}  // namespace lumivar
