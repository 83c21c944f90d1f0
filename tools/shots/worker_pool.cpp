#include "worker_pool.h"

#include <osapi/descriptor_flags.h>
#include <osapi/files.h>
#include <osapi/offspring.h>
#include <osapi/open_mode.h>
#include <osapi/pipe_readers.h>
#include <osapi/pipes.h>
#include <osapi/polling.h>
#include <osapi/processes.h>
#include <osapi/reason.h>
#include <osapi/signals.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <deque>
#include <exception>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "cleanup.h"
#include "failure.h"
#include "working_folder.h"

namespace lumivar {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// What goes through the pipes, a line each: to a worker "do ITEM" or "alone ITEM", "report", "end";
// from it "next", and "done ITEM TEXT", "failed ITEM TEXT" or "stop ITEM TEXT".
constexpr const char* kDo = "do";
constexpr const char* kAlone = "alone";
constexpr const char* kReport = "report";
constexpr const char* kEnd = "end";
constexpr const char* kNext = "next";
constexpr const char* kDone = "done";
constexpr const char* kFailed = "failed";
constexpr const char* kStop = "stop";

constexpr milliseconds kBetweenWaits{1000};
constexpr milliseconds kTimeToEnd{500};
constexpr milliseconds kGlance{10};
/// One still being written and one being worked on.
constexpr std::size_t kMostHeld = 2;
constexpr std::array<int, 3> kInterrupts = {SIGINT, SIGTERM, SIGHUP};

void send_line(OSAPI::fd_t fd, const std::string& line) {
    const std::string whole = line + "\n";
    OSAPI::write(fd, whole.data(), whole.size());
}

// Set while a pool runs; a signal's handler knows no object.
volatile OSAPI::fd_t interrupt_end = OSAPI::kNoDescriptor;

extern "C" {
static void note_interrupt(int number) {
    const int saved_errno = errno;
    const char byte = static_cast<char>(number);
    // A full pipe tells of a signal already.
    [[maybe_unused]] const ssize_t written = write(interrupt_end, &byte, 1);
    errno = saved_errno;
}
}

/// While it lives, interrupts are bytes in a pipe, and a worker's closed pipe is an error of the
/// write.
class Interrupts {
public:
    Interrupts() : closed_pipe_(SIGPIPE) {
        pipe_.open();
        OSAPI::set_blocking(pipe_.write_end().fd(), false);
        interrupt_end = pipe_.write_end().fd();
        for (const int number : kInterrupts) {
            if (!OSAPI::is_signal_ignored(number)) {
                handlers_.emplace_back(number, note_interrupt, true);
            }
        }
    }
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    OSAPI::fd_t fd() { return pipe_.read_end().fd(); }
    int read_signal() {
        char byte = 0;
        OSAPI::read_short(pipe_.read_end().fd(), &byte, 1);
        return byte;
    }
    void close_all() {
        pipe_.read_end().close();
        pipe_.write_end().close();
    }

private:
    OSAPI::Pipe pipe_;
    OSAPI::SignalIgnore closed_pipe_;
    std::deque<OSAPI::SignalHandler> handlers_;  // after the pipe, which they write to
};

/// A worker process as its maker sees it.
struct Worker {
    int id = -1;
    OSAPI::Pipe tasks;
    OSAPI::Pipe reports;
    OSAPI::Pipe words;
    std::unique_ptr<OSAPI::LineReader> lines;
    std::string unfinished;  ///< of what it says, the last line so far
    std::string last_words;
    std::vector<std::size_t> held;
    bool asks = false;       ///< it waits for an answer
    bool has_asked = false;  ///< ever
    bool alone = false;      ///< what it holds is to be reported first

    void close_all() {
        for (OSAPI::Pipe* pipe : {&tasks, &reports, &words}) {
            pipe->read_end().close();
            pipe->write_end().close();
        }
    }
};

std::string died(const Worker& worker, int status) {
    return "its worker died (" + OSAPI::how_ended(status) + ")" +
           (worker.last_words.empty() ? "" : ": " + worker.last_words);
}

/// How many workers in a row may die before they begin, where others have begun.
constexpr int kMostEarlyDeaths = 10;
/// How much later than its workers this process may see a terminal's interrupt, in milliseconds.
constexpr int kInterruptIsLate = 100;

bool is_of_interrupt(int status) {
    return WIFSIGNALED(status) && std::find(std::begin(kInterrupts), std::end(kInterrupts),
                                            WTERMSIG(status)) != std::end(kInterrupts);
}

class Pool {
public:
    Pool(std::size_t items, int workers, const WorkerFunction& work, PoolEvents& events)
        : items_(items),
          most_(static_cast<std::size_t>(std::max(workers, 1))),
          work_(work),
          events_(events),
          deaths_(items) {}
    ~Pool() { end_workers(); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    PoolEnd run() {
        while (has_work() || !workers_.empty()) {
            while (workers_.size() < most_ && unserved() > 0) {
                start_worker_if_possible();
            }
            answer_all();
            wait();
            if (end_.signal != 0) {
                break;
            }
        }
        end_workers();
        if (end_.signal == 0) {
            note_interrupt_within(0);
        }
        return end_;
    }

private:
    bool has_work() const { return !end_.stopped && (!again_.empty() || next_ < items_); }
    /// Items for which no worker is there that would ask for one.
    std::size_t unserved() const {
        const std::size_t waiting = end_.stopped ? 0 : again_.size() + items_ - next_;
        const auto free = static_cast<std::size_t>(
            std::count_if(workers_.begin(), workers_.end(),
                          [](const auto& worker) { return worker->held.empty(); }));
        return waiting > free ? waiting - free : 0;
    }

    /// A system that has no more processes or descriptors for it leaves the run those that it has.
    void start_worker_if_possible() {
        try {
            start_worker();
        } catch (const StrXception& failure) {
            if (workers_.empty()) {
                throw Failure(std::string("cannot start a worker process: ") +
                              OSAPI::reason(failure).c_str());
            }
            most_ = workers_.size();
            events_.said("only " + std::to_string(most_) +
                         " worker processes can be started: " + OSAPI::reason(failure).c_str());
        }
    }

    void start_worker() {
        auto worker = std::make_unique<Worker>();
        worker->tasks.open();
        worker->reports.open();
        worker->words.open();
        std::fflush(nullptr);  // or the copy writes it too
        worker->id = fork_with_own_cleanup();
        if (worker->id == 0) {
            be_worker(*worker);
        }
        worker->tasks.read_end().close();
        worker->reports.write_end().close();
        worker->words.write_end().close();
        worker->lines = std::make_unique<OSAPI::LineReader>(worker->reports.read_end());
        workers_.push_back(std::move(worker));
    }

    /// In the child. Lets no exception out: the frames above belong to the maker.
    [[noreturn]] void be_worker(Worker& own) noexcept {
        int code = 0;
        try {
            leave_working_folders_to_parent();
            // An end that this copy held open would hide the end of another worker.
            interrupts_.close_all();
            for (const auto& other : workers_) {
                other->close_all();
            }
            OSAPI::dup2(OSAPI::open("/dev/null", OSAPI::kRead), STDIN_FILENO);
            OSAPI::dup2(OSAPI::open("/dev/null", OSAPI::kWrite), STDOUT_FILENO);
            OSAPI::dup2(own.words.write_end().fd(), STDERR_FILENO);
            own.tasks.write_end().close();
            own.reports.read_end().close();
            own.words.read_end().close();
            own.words.write_end().close();
            WorkerLink link(own.tasks.read_end().fd(), own.reports.write_end().fd());
            work_(link);
        } catch (const StrXception& failure) {
            std::fprintf(stderr, "%s\n", failure.message().c_str());
            code = 1;
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "%s\n", failure.what());
            code = 1;
        } catch (...) {
            std::fprintf(stderr, "an exception of an unknown kind\n");
            code = 1;
        }
        std::fflush(nullptr);
        // The maker's objects, and what else an end of the program does, are the maker's.
        OSAPI::exit_now(code);
    }

    void answer_all() {
        for (const auto& worker : workers_) {
            if (worker->asks) {
                answer(*worker);
            }
        }
    }

    void answer(Worker& worker) {
        if (has_work() && worker.held.empty() && !again_.empty()) {
            const std::size_t item = again_.front();
            again_.pop_front();
            hand(worker, kAlone, item);
            worker.alone = true;
        } else if (has_work() && next_ < items_ && worker.held.size() < kMostHeld &&
                   !worker.alone && again_.empty()) {
            hand(worker, kDo, next_++);
        } else if (!worker.held.empty()) {
            tell(worker, kReport);
        } else if (!has_work() && nothing_is_held()) {
            tell(worker, kEnd);
        }
        // Otherwise it waits: an item of another worker may come back.
    }

    bool nothing_is_held() const {
        return std::all_of(workers_.begin(), workers_.end(),
                           [](const auto& worker) { return worker->held.empty(); });
    }

    void hand(Worker& worker, const char* how, std::size_t item) {
        worker.held.push_back(item);
        tell(worker, std::string(how) + " " + std::to_string(item));
    }

    /// A worker that is gone already shows at the end of its reports.
    static void tell(Worker& worker, const std::string& line) {
        worker.asks = false;
        try {
            send_line(worker.tasks.write_end().fd(), line);
        } catch (const StrXception&) {
        }
    }

    /// Until something has come from anywhere.
    void wait() {
        std::vector<pollfd> ends = {{interrupts_.fd(), POLLIN, 0}};
        for (const auto& worker : workers_) {
            // An end that is closed, -1, is passed over by the call.
            ends.push_back({worker->reports.read_end().fd(), POLLIN, 0});
            ends.push_back({worker->words.read_end().fd(), POLLIN, 0});
        }
        OSAPI::poll(ends.data(), static_cast<unsigned>(ends.size()),
                    static_cast<int>(kBetweenWaits.count()), true);
        if (ends[0].revents != 0) {
            end_.signal = interrupts_.read_signal();
            return;
        }
        for (std::size_t at = 0; at < workers_.size(); ++at) {
            Worker& worker = *workers_[at];
            if (ends[2 * at + 2].revents != 0) {
                read_words(worker);
            }
            if (ends[2 * at + 1].revents != 0) {
                worker.lines->read([&](const std::string& line) { take(worker, line); });
            }
        }
        bury();
        if (end_.signal == 0) {
            events_.waited();
        }
    }

    /// Takes note of a signal that has come, or comes within `wait_ms` milliseconds.
    bool note_interrupt_within(int wait_ms) {
        pollfd end = {interrupts_.fd(), POLLIN, 0};
        OSAPI::poll(&end, 1, wait_ms, true);
        if (end.revents != 0) {
            end_.signal = interrupts_.read_signal();
        }
        return end_.signal != 0;
    }

    void read_words(Worker& worker) {
        const bool goes_on = OSAPI::append_what_came(worker.words.read_end(), worker.unfinished);
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = worker.unfinished.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            hear(worker, worker.unfinished.substr(begin, end - begin));
        }
        worker.unfinished.erase(0, begin);
        if (!goes_on && !worker.unfinished.empty()) {
            hear(worker, worker.unfinished);
        }
    }
    void hear(Worker& worker, const std::string& line) {
        if (!line.empty()) {
            worker.last_words = line;
            events_.said(line);
        }
    }

    /// A line of a worker's reports.
    void take(Worker& worker, const std::string& line) {
        if (line == kNext) {
            worker.asks = true;
            worker.has_asked = any_has_asked_ = true;
            return;
        }
        std::istringstream words(line);
        std::string word;
        std::size_t item = 0;
        words >> word >> item;
        words.ignore(1);
        std::string text;
        std::getline(words, text);
        std::erase(worker.held, item);
        worker.alone = worker.alone && !worker.held.empty();
        if (word == kDone) {
            events_.done(item, text);
        } else {
            events_.failed(item, text);
            end_.stopped = end_.stopped || word == kStop;
        }
    }

    /// Takes note of the workers whose reports have ended.
    void bury() {
        for (std::size_t at = 0; at < workers_.size();) {
            if (workers_[at]->reports.read_end().is_open()) {
                ++at;
                continue;
            }
            const std::unique_ptr<Worker> worker = std::move(workers_[at]);
            workers_.erase(workers_.begin() + static_cast<std::ptrdiff_t>(at));
            while (worker->words.read_end().is_open()) {
                read_words(*worker);
            }
            const int status = OSAPI::wait_for(worker->id);
            // A terminal's interrupt reaches workers too, and they may be gone first.
            if (end_.signal == 0 &&
                !(is_of_interrupt(status) && note_interrupt_within(kInterruptIsLate))) {
                settle(*worker, status);
            }
            events_.worker_ended();
        }
    }

    void settle(const Worker& worker, int status) {
        if (worker.has_asked) {
            early_deaths_ = 0;
        } else if (++early_deaths_ == kMostEarlyDeaths || !any_has_asked_) {
            throw Failure("cannot begin: " + died(worker, status));
        }
        if (worker.held.empty() && status != 0) {
            events_.said(std::string(worker.has_asked ? "when its frames were done "
                                                      : "before its first frame ") +
                         died(worker, status));
        }
        for (const std::size_t item : worker.held) {
            if (++deaths_[item] == 1) {
                again_.push_back(item);
                events_.tried_again(item, died(worker, status));
            } else {
                events_.given_up(item, died(worker, status));
            }
        }
    }

    /// Those that are still there, after an interrupt or an exception.
    void end_workers() {
        for (const auto& worker : workers_) {
            signal(worker->id, SIGTERM);
        }
        const Clock::time_point deadline = Clock::now() + kTimeToEnd;
        for (const auto& worker : workers_) {
            int child = 0;
            while (OSAPI::_wait_until_dead(worker->id, &child, true) == -1) {
                if (Clock::now() >= deadline) {
                    signal(worker->id, SIGKILL);
                    OSAPI::wait_for(worker->id);
                    break;
                }
                poll(nullptr, 0, static_cast<int>(kGlance.count()));
            }
            events_.worker_ended();
        }
        workers_.clear();
    }

    static void signal(int id, int number) {
        try {
            OSAPI::kill(id, number);
        } catch (const StrXception&) {
        }
    }

    const std::size_t items_;
    std::size_t most_;
    const WorkerFunction& work_;
    PoolEvents& events_;
    Interrupts interrupts_;
    std::vector<std::unique_ptr<Worker>> workers_;
    std::size_t next_ = 0;           ///< the first item that was not handed out yet
    std::deque<std::size_t> again_;  ///< items whose worker died
    std::vector<int> deaths_;        ///< of workers, for each item
    bool any_has_asked_ = false;     ///< a worker of this run has begun
    int early_deaths_ = 0;           ///< of workers that had not begun, in a row
    PoolEnd end_;
};

}  // namespace

WorkerLink::Next WorkerLink::next() {
    send_line(reports_, kNext);
    std::string line;
    for (char byte = 0; OSAPI::read_short(tasks_, &byte, 1) == 1 && byte != '\n';) {
        line += byte;
    }
    std::istringstream words(line);
    std::string word;
    std::size_t item = 0;
    words >> word >> item;
    if (word == kDo || word == kAlone) {
        return {WorkerTask{item, word == kAlone}, Rest::End};
    }
    return {std::nullopt, word == kReport ? Rest::Report : Rest::End};
}

void WorkerLink::send(const std::string& word, std::size_t item, std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    send_line(reports_, word + " " + std::to_string(item) + " " + text);
}
void WorkerLink::done(std::size_t item, const std::string& text) { send(kDone, item, text); }
void WorkerLink::failed(std::size_t item, const std::string& text) { send(kFailed, item, text); }
void WorkerLink::failed_for_all(std::size_t item, const std::string& text) {
    send(kStop, item, text);
}

PoolEnd run_worker_pool(std::size_t items, int workers, const WorkerFunction& work,
                        PoolEvents& events) {
    return Pool(items, workers, work, events).run();
}

}  // namespace lumivar
