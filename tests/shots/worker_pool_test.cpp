#include "worker_pool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "failure.h"
#include "support/scratch.h"

namespace {

using lumivar::PoolEnd;
using lumivar::run_worker_pool;
using lumivar::WorkerFunction;
using lumivar::WorkerLink;

/// Everything that a pool told, item by item.
class Heard : public lumivar::PoolEvents {
public:
    void done(std::size_t item, const std::string& text) override {
        done_texts[item] = text;
        settled.push_back(item);
    }
    void failed(std::size_t item, const std::string& text) override {
        failures[item] = text;
        settled.push_back(item);
    }
    void tried_again(std::size_t item, const std::string& how) override { again[item] = how; }
    void given_up(std::size_t item, const std::string& how) override {
        lost[item] = how;
        settled.push_back(item);
    }
    void worker_ended() override { ++ended; }
    void said(const std::string& line) override { lines.push_back(line); }
    void waited() override {}

    std::map<std::size_t, std::string> done_texts, failures, again, lost;
    std::vector<std::size_t> settled;
    std::vector<std::string> lines;
    int ended = 0;
};

/// A worker that does one item after the other.
WorkerFunction one_by_one(void (*work)(WorkerLink& link, std::size_t item)) {
    return [work](WorkerLink& link) {
        while (const auto task = link.next().task) {
            work(link, task->item);
        }
    };
}

void tell_process(WorkerLink& link, std::size_t item) { link.done(item, std::to_string(getpid())); }

std::set<std::string> texts_of(const std::map<std::size_t, std::string>& texts) {
    std::set<std::string> set;
    for (const auto& [item, text] : texts) {
        set.insert(text);
    }
    return set;
}

TEST(WorkerPool, DoesEveryItemOnceInOtherProcesses) {
    Heard heard;
    const PoolEnd end = run_worker_pool(40, 3, one_by_one(tell_process), heard);
    EXPECT_FALSE(end.stopped);
    EXPECT_EQ(end.signal, 0);
    EXPECT_EQ(heard.settled.size(), 40U);
    EXPECT_EQ(heard.done_texts.size(), 40U);
    EXPECT_EQ(texts_of(heard.done_texts).count(std::to_string(getpid())), 0U);
    EXPECT_EQ(heard.ended, 3);
}

TEST(WorkerPool, WithOneWorkerGoesInOrder) {
    Heard heard;
    run_worker_pool(5, 1, one_by_one(tell_process), heard);
    EXPECT_EQ(heard.settled, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(texts_of(heard.done_texts).size(), 1U);
}

TEST(WorkerPool, StartsNoMoreWorkersThanThereAreItems) {
    Heard heard;
    run_worker_pool(2, 8, one_by_one(tell_process), heard);
    EXPECT_EQ(heard.ended, 2);
    Heard nothing;
    run_worker_pool(0, 8, one_by_one(tell_process), nothing);
    EXPECT_EQ(nothing.ended, 0);
}

TEST(WorkerPool, LetsAWorkerHoldTwoItemsAndAsksForTheLast) {
    // As a renderer does that writes one frame while it draws the next.
    const WorkerFunction overlapping = [](WorkerLink& link) {
        std::vector<std::size_t> held;
        while (true) {
            const WorkerLink::Next next = link.next();
            if (next.task && held.size() == 1) {
                link.done(held.front(), "while " + std::to_string(next.task->item));
                held.clear();
            } else if (!next.task && !held.empty()) {
                link.done(held.front(), "at rest");
                held.clear();
            }
            if (next.task) {
                held.push_back(next.task->item);
            } else if (next.rest == WorkerLink::Rest::End) {
                return;
            }
        }
    };
    Heard heard;
    run_worker_pool(3, 1, overlapping, heard);
    EXPECT_EQ(heard.done_texts[0], "while 1");
    EXPECT_EQ(heard.done_texts[1], "while 2");
    EXPECT_EQ(heard.done_texts[2], "at rest");
}

TEST(WorkerPool, TriesAnItemAgainWhoseWorkerDied) {
    char mark[] = "/tmp/worker_pool_test.XXXXXX";
    close(mkstemp(mark));
    static std::string first_time;
    first_time = mark;
    Heard heard;
    run_worker_pool(6, 2, one_by_one([](WorkerLink& link, std::size_t item) {
                        if (item == 3 && unlink(first_time.c_str()) == 0) {
                            std::fprintf(stderr, "first words\nlast words");
                            std::fflush(stderr);
                            raise(SIGKILL);
                        }
                        link.done(item, "");
                    }),
                    heard);
    EXPECT_EQ(heard.done_texts.size(), 6U);
    ASSERT_EQ(heard.again.size(), 1U);
    EXPECT_EQ(heard.again[3], "its worker died (killed by SIGKILL): last words");
    EXPECT_TRUE(heard.lost.empty());
    EXPECT_EQ(heard.lines, (std::vector<std::string>{"first words", "last words"}));
}

TEST(WorkerPool, GivesUpAnItemThatKillsTwiceAndDoesTheOthers) {
    Heard heard;
    const PoolEnd end = run_worker_pool(6, 2, one_by_one([](WorkerLink& link, std::size_t item) {
                                            if (item == 3) {
                                                _exit(7);
                                            }
                                            link.done(item, "");
                                        }),
                                        heard);
    EXPECT_FALSE(end.stopped);
    EXPECT_EQ(heard.done_texts.size(), 5U);
    ASSERT_EQ(heard.lost.size(), 1U);
    EXPECT_EQ(heard.lost[3], "its worker died (ended with exit code 7)");
}

TEST(WorkerPool, SparesTheItemThatWasHeldBesideAKiller) {
    // Each worker holds its first item unreported while it takes the second, which kills.
    const WorkerFunction work = [](WorkerLink& link) {
        std::vector<std::size_t> held;
        while (true) {
            const WorkerLink::Next next = link.next();
            if (next.task && next.task->item == 1) {
                raise(SIGKILL);
            }
            if (next.task && next.task->alone) {
                link.done(next.task->item, "alone");
            } else if (next.task) {
                held.push_back(next.task->item);
            } else if (next.rest == WorkerLink::Rest::End) {
                return;
            } else {
                for (const std::size_t item : held) {
                    link.done(item, "");
                }
                held.clear();
            }
        }
    };
    Heard heard;
    run_worker_pool(2, 1, work, heard);
    EXPECT_EQ(heard.done_texts[0], "alone");
    EXPECT_EQ(heard.lost.count(1), 1U);
}

TEST(WorkerPool, BeginsNothingMoreAfterAFailureForAll) {
    Heard heard;
    const PoolEnd end = run_worker_pool(50, 1, one_by_one([](WorkerLink& link, std::size_t item) {
                                            if (item == 2) {
                                                link.failed_for_all(item, "the disk\nis full");
                                            } else if (item == 1) {
                                                link.failed(item, "odd");
                                            } else {
                                                link.done(item, "");
                                            }
                                        }),
                                        heard);
    EXPECT_TRUE(end.stopped);
    EXPECT_EQ(heard.settled, (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(heard.failures[1], "odd");
    EXPECT_EQ(heard.failures[2], "the disk is full");
}

TEST(WorkerPool, TellsWhatAWorkerThrows) {
    Heard heard;
    run_worker_pool(
        1, 1, one_by_one([](WorkerLink&, std::size_t) { throw lumivar::Failure("nothing works"); }),
        heard);
    EXPECT_EQ(heard.lost[0], "its worker died (ended with exit code 1): nothing works");
}

TEST(WorkerPool, FailsWhereWorkersDieBeforeTheyBegin) {
    Heard heard;
    try {
        run_worker_pool(
            5, 2, [](WorkerLink&) { throw lumivar::Failure("no plug-in"); }, heard);
        FAIL();
    } catch (const lumivar::Failure& failure) {
        EXPECT_EQ(std::string(failure.what()),
                  "cannot begin: its worker died (ended with exit code 1): "
                  "no plug-in");
    }
}

TEST(WorkerPool, GoesOnWhereALaterWorkerDiesBeforeItBegins) {
    Heard heard;
    const ScratchFolder folder;
    const std::string mark = folder / "first";
    const WorkerFunction work = [&mark](WorkerLink& link) {
        // One makes the mark; another waits until that one has begun, and dies before it asks.
        const int first = open(mark.c_str(), O_CREAT | O_EXCL, 0600);
        const std::string second = mark + ".second";
        const std::string begun = mark + ".begun";
        if (first < 0 && close(open(second.c_str(), O_CREAT | O_EXCL, 0600)) == 0) {
            while (access(begun.c_str(), F_OK) != 0) {
                usleep(1000);
            }
            raise(SIGKILL);
        }
        while (const auto task = link.next().task) {
            if (first >= 0) {
                close(open(begun.c_str(), O_CREAT, 0600));
            }
            link.done(task->item, "done");
        }
    };
    const PoolEnd end = run_worker_pool(200, 3, work, heard);
    EXPECT_FALSE(end.stopped);
    EXPECT_EQ(heard.done_texts.size(), 200U);
    ASSERT_EQ(heard.lines.size(), 1U);
    EXPECT_EQ(heard.lines[0], "before its first frame its worker died (killed by SIGKILL)");
}

TEST(WorkerPool, SaysThatAWorkerDiedAfterItsLastItem) {
    Heard heard;
    run_worker_pool(
        1, 1,
        [](WorkerLink& link) {
            while (const auto task = link.next().task) {
                link.done(task->item, "done");
            }
            raise(SIGKILL);
        },
        heard);
    EXPECT_EQ(heard.done_texts.size(), 1U);
    ASSERT_EQ(heard.lines.size(), 1U);
    EXPECT_EQ(heard.lines[0], "when its frames were done its worker died (killed by SIGKILL)");
}

TEST(WorkerPool, DoesAllByTheWorkersThatThereAre) {
    // Three pipes for each worker: here are descriptors for two or three of them.
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit few = before;
    const int next = dup(STDIN_FILENO);
    few.rlim_cur = static_cast<rlim_t>(next) + 16;
    close(next);
    Heard heard;
    setrlimit(RLIMIT_NOFILE, &few);
    const PoolEnd end = run_worker_pool(40, 12, one_by_one(tell_process), heard);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(end.stopped);
    EXPECT_EQ(heard.done_texts.size(), 40U);
    ASSERT_EQ(heard.lines.size(), 1U);
    EXPECT_EQ(heard.lines[0].rfind("only ", 0), 0U) << heard.lines[0];
}

TEST(WorkerPool, AnInterruptEndsTheWorkersWithinASecond) {
    /// Interrupts the run at the first item.
    class Impatient : public Heard {
        void done(std::size_t item, const std::string& text) override {
            Heard::done(item, text);
            worker = std::stoi(text);
            raise(SIGINT);
        }

    public:
        int worker = 0;
    } heard;
    const auto start = std::chrono::steady_clock::now();
    const PoolEnd end =
        run_worker_pool(9, 1, one_by_one([](WorkerLink& link, std::size_t item) {
                            tell_process(link, item);
                            if (item == 0) {
                                std::signal(SIGTERM, SIG_IGN);
                                std::this_thread::sleep_for(std::chrono::seconds(60));
                            }
                        }),
                        heard);
    EXPECT_EQ(end.signal, SIGINT);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(kill(heard.worker, 0), -1) << "the worker is gone";
    EXPECT_EQ(heard.settled.size(), 1U);
}

}  // namespace
