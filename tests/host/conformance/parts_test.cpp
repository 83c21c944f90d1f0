// The parts of a conformance run by themselves.
#include <conformance/deviations.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "apart.h"
#include "examination.h"
#include "fault_family.h"
#include "faults.h"
#include "growth.h"
#include "registration.h"
#include "rules.h"

namespace {

using namespace std::string_literals;
using conformance::Growth;
using conformance::growth_of;
using conformance::Heard;
using conformance::Notes;
using conformance::Registration;
using conformance::ResourceError;
using conformance::run_apart;

constexpr std::chrono::milliseconds kLimit{60000};

TEST(Apart, WhatIsSaidArrives) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.doing("this");
            notes.find("rule", "a text\nof two lines", "a habit");
            notes.say("fine");
            notes.keep("number", 7);
        },
        kLimit);
    EXPECT_EQ(heard.died, "");
    EXPECT_EQ(heard.doing, "this");
    EXPECT_EQ(heard.said, "fine");
    EXPECT_EQ(heard.kept["number"], 7);
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].rule, "rule");
    EXPECT_EQ(heard.findings[0].text, "a text\nof two lines");
    EXPECT_EQ(heard.findings[0].deviation, "a habit");
}

TEST(Apart, MuchCanBeSaid) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            for (int i = 0; i < 5000; ++i) {
                notes.find("", std::string(100, 'x'));
            }
        },
        kLimit);
    EXPECT_EQ(heard.findings.size(), 5000U);
}

TEST(Apart, WhatWasSaidBeforeADeathArrives) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.doing("the end");
            notes.find("", "found before");
            std::fputs("one\nlast words\n", stderr);
            std::abort();
        },
        kLimit);
    EXPECT_EQ(heard.died, "killed by SIGABRT");
    EXPECT_EQ(heard.doing, "the end");
    EXPECT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.last_words, "last words");
}

TEST(Apart, AnExceptionIsAFinding) {
    const Heard heard = run_apart([](Notes&) { throw std::runtime_error("no use"); }, kLimit);
    EXPECT_EQ(heard.died, "");
    ASSERT_EQ(heard.findings.size(), 1U);
    EXPECT_EQ(heard.findings[0].text, "no use");
}

TEST(Apart, AnEndByExitIsADeath) {
    EXPECT_EQ(run_apart([](Notes&) { _exit(0); }, kLimit).died,
              "the process was ended with exit code 0");
    EXPECT_EQ(run_apart([](Notes&) { _exit(3); }, kLimit).died,
              "the process was ended with exit code 3");
}

/// A handler of the parent's that must not run in the child.
void wait_for_ever() {
    for (;;) {
        pause();
    }
}

TEST(Apart, AnEndOfTheProgramIsADeathAtOnceAndLeavesTheParentsHandlersAlone) {
    const pid_t parent = fork();
    if (parent == 0) {
        std::atexit(wait_for_ever);
        const Heard heard = run_apart(
            [](Notes& notes) {
                notes.doing("this");
                std::exit(0);
            },
            kLimit);
        _exit(heard.died == "the process was ended by a call of exit" && heard.doing == "this" ? 0
                                                                                               : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    EXPECT_EQ(status, 0);
}

TEST(Apart, SilenceEndsAtTheLimitAndSignsOfLifeRestartTheClock) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            for (int i = 0; i < 4; ++i) {
                usleep(400000);
                notes.say("still here");
            }
            for (;;) {
                pause();
            }
        },
        std::chrono::milliseconds(1000));
    EXPECT_EQ(heard.died, "no answer within 1 s");
    EXPECT_EQ(heard.said, "still here");
}

TEST(Apart, StandardOutputGoesNowhere) {
    testing::internal::CaptureStdout();
    run_apart([](Notes&) { (void)!write(STDOUT_FILENO, "noise", 5); }, kLimit);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

/// A process that holds all that this one has open, and can outlive it.
pid_t fork_a_holder() {
    const pid_t holder = fork();
    if (holder == 0) {
        alarm(40);
        for (;;) {
            pause();
        }
    }
    return holder;
}

TEST(Apart, AnEndIsOneThoughOthersHoldThePipes) {
    for (const bool crash : {false, true}) {
        const auto begin = std::chrono::steady_clock::now();
        const Heard heard = run_apart(
            [=](Notes& notes) {
                notes.keep("holder", fork_a_holder());
                if (crash) {
                    std::fputs("last words\n", stderr);
                    std::abort();
                }
            },
            kLimit);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
        EXPECT_EQ(heard.died, crash ? "killed by SIGABRT" : "");
        EXPECT_EQ(heard.last_words, crash ? "last words" : "");
        kill(heard.kept["holder"].get<pid_t>(), SIGKILL);
    }
}

TEST(Apart, WhatIsNoAnswerIsAFindingAndTheChildIsGone) {
    const Heard heard = run_apart(
        [](Notes& notes) {
            notes.find("", "before");
            for (int descriptor = STDERR_FILENO + 1; descriptor < 100; ++descriptor) {
                struct stat about {};
                if (fstat(descriptor, &about) == 0 && S_ISFIFO(about.st_mode)) {
                    (void)!write(descriptor, "[\n[\"find\"]\n", 11);
                }
            }
            notes.find("", "after");
        },
        kLimit);
    EXPECT_EQ(heard.died, "");
    ASSERT_EQ(heard.findings.size(), 4U);
    EXPECT_EQ(heard.findings[0].text, "before");
    EXPECT_EQ(heard.findings[1].text, "between the answers stands \"[\"");
    EXPECT_EQ(heard.findings[2].text, "between the answers stands \"[\"find\"]\"");
    EXPECT_EQ(heard.findings[3].text, "after");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nobody is left to wait for";
}

long peak_kilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(Apart, OfMuchStandardErrorOnlyTheEndIsKept) {
    const long before = peak_kilobytes();
    const Heard heard = run_apart(
        [](Notes&) {
            const std::string line = std::string(999, 'x') + "\n";
            for (int i = 0; i < 64000; ++i) {
                (void)!write(STDERR_FILENO, line.data(), line.size());
            }
            std::fputs("the end\n", stderr);
        },
        kLimit);
    EXPECT_EQ(heard.last_words, "the end");
    EXPECT_LT(peak_kilobytes() - before, 16000) << "of 64 MB";
}

TEST(Growth, SeesTheSmallestLossInEveryRound) {
    std::vector<std::unique_ptr<char>> lost;
    lost.reserve(1000);
    const Growth growth = growth_of([&] { lost.push_back(std::make_unique<char>()); });
    EXPECT_GT(growth.heap, 0U);
    EXPECT_LE(growth.heap, 64U) << "a block of one byte";
}

TEST(Growth, IsNotTakenInByBlocksThatTheAllocatorHasAtHand) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{100}, std::size_t{1000}}) {
        {
            std::vector<std::unique_ptr<char[]>> used;
            for (int i = 0; i < 20; ++i) {
                used.push_back(std::make_unique<char[]>(size));
            }
        }
        std::vector<std::unique_ptr<char[]>> lost;
        lost.reserve(1000);
        EXPECT_GE(growth_of([&] { lost.push_back(std::make_unique<char[]>(size)); }).heap, size);
    }
}

TEST(Growth, IsNotTakenInByACacheThatFillsForAWhile) {
    std::vector<std::unique_ptr<char[]>> cache;
    cache.reserve(1000);
    const Growth growth = growth_of([&] {
        if (cache.size() < 20) {
            cache.push_back(std::make_unique<char[]>(100));
        }
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
}

TEST(Growth, SeesWhatIsLostInSomeRounds) {
    for (const int nth : {2, 3, 4}) {
        std::vector<std::unique_ptr<char[]>> lost;
        lost.reserve(1000);
        int rounds = 0;
        const Growth growth = growth_of([&] {
            if (++rounds % nth == 0) {
                lost.push_back(std::make_unique<char[]>(1000));
            }
        });
        EXPECT_EQ(growth.rounds, 8) << nth;
        EXPECT_GE(growth.heap, 8U / static_cast<unsigned>(nth) * 1000U) << nth;
    }
}

TEST(Growth, CountsWhatIsGivenBackInTheEnd) {
    std::vector<std::unique_ptr<char[]>> stock;
    stock.reserve(1000);
    const Growth growth = growth_of([&] {
        if (stock.size() < 2) {
            stock.push_back(std::make_unique<char[]>(1000));
        } else {
            stock.clear();
        }
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
}

TEST(Growth, IsNoneForWhatIsGivenBack) {
    int rounds = 0;
    const Growth growth = growth_of([&] {
        ++rounds;
        const std::vector<std::string> texts(100, std::string(200, 'x'));
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
    EXPECT_LT(rounds, 32) << "it stops when all is well";
}

TEST(Growth, SeesDescriptorsAndMappings) {
    std::vector<int> descriptors;
    descriptors.reserve(1000);
    Growth growth = growth_of([&] { descriptors.push_back(dup(STDERR_FILENO)); });
    EXPECT_EQ(growth.descriptors, 1);
    for (const int descriptor : descriptors) {
        close(descriptor);
    }
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<void*> places;
    places.reserve(1000);
    growth = growth_of([&] {
        places.push_back(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    });
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(growth.mapped, 0U) << "the sanitizer's own mappings come and go";
#else
    EXPECT_EQ(growth.mapped, size);
#endif
    for (void* const place : places) {
        munmap(place, size);
    }
}

TEST(Growth, IsToldInWords) {
    EXPECT_EQ(text_of(Growth{}), "nothing lost");
    EXPECT_EQ(text_of(Growth{32, 0, 0}), "32 bytes of heap lost each time");
    EXPECT_EQ(text_of(Growth{96, 0, 0, 16}), "96 bytes of heap lost in 16 rounds");
    EXPECT_EQ(text_of(Growth{1, 4096, 2}),
              "1 bytes of heap and 4096 bytes of address space and 2 file descriptors lost each "
              "time");
}

/// A resource file by hand: the data at 16, two types in the map, the second the registration with
/// two properties, of 4 and of 3 bytes.
std::string resource_file() {
    const std::string registration =
        "\0\0\0\0\0\0\0\2"s + "8BIMkind\0\0\0\0\0\0\0\4eFKT"s + "8BIMeMNA\0\0\0\0\0\0\0\3\2Hi\0"s;
    const std::string data = "\0\0\0\3abc"s + "\0\0\0\x30"s + registration;
    const std::string types = "\0\1"s + "TEXT\0\0\0\x12"s + "PiPL\0\0\0\x1E"s;
    const std::string references =
        "\0\1\xFF\xFF\0\0\0\0\0\0\0\0"s + "\0\2\xFF\xFF\0\0\0\7\0\0\0\0"s;
    const std::string map = std::string(24, '\0') + "\0\x1C\0\x3E"s + types + references;
    const std::string map_at = {'\0', '\0', '\0', static_cast<char>(16 + data.size())};
    return "\0\0\0\x10"s + map_at + std::string(8, '\0') + data + map;
}

TEST(RegistrationFile, IsFoundThroughTheMap) {
    const Registration registration(resource_file());
    EXPECT_EQ(registration.bytes("kind"), "eFKT");
    EXPECT_EQ(registration.number("kind"), 0x65464B54U);
    EXPECT_EQ(registration.text("eMNA"), "Hi");
    EXPECT_FALSE(registration.has("eVER"));
    EXPECT_EQ(registration.number("eVER"), std::nullopt);
    EXPECT_EQ(registration.text("kind"), std::nullopt) << "its length byte is 0x65";
    EXPECT_EQ(registration.number("eMNA"), std::nullopt) << "three bytes are no number";
}

TEST(RegistrationFile, CutShortIsRefusedWhereverItIsCut) {
    const std::string file = resource_file();
    // The last twelve bytes are the second reference, of which byte eight is the last that matters.
    for (std::size_t size = 0; size < file.size() - 4; ++size) {
        EXPECT_THROW(Registration(file.substr(0, size)), ResourceError) << size;
    }
    EXPECT_NO_THROW(Registration(file.substr(0, file.size() - 4)));
}

TEST(RegistrationFile, OfAnotherKindIsRefused) {
    std::string file = resource_file();
    file.replace(file.find("PiPL"), 4, "none");
    try {
        const Registration registration(file);
        FAIL() << "accepted";
    } catch (const ResourceError& error) {
        EXPECT_STREQ(error.what(), "it has no resource of the type PiPL");
    }
    EXPECT_THROW(Registration(std::string(300, '\xFF')), ResourceError);
}

TEST(Rules, SortWhatTheHostTells) {
    using conformance::rule_of;
    EXPECT_EQ(rule_of("1 host handles were not disposed of"), "handles");
    EXPECT_EQ(rule_of("suite \"S\" version 1 was acquired 1 times more than it was released"),
              "suites");
    EXPECT_EQ(rule_of("checkin_layer_pixels: the id 0 is not checked out"), "layers");
    EXPECT_EQ(rule_of("something new"), "calls") << "nothing is lost";
}

TEST(Rules, TellOfASetDownWhatWasNotToldBefore) {
    using conformance::beyond_at_set_down;
    const std::string one = "1 host handles were not disposed of";
    const std::string two = "2 host handles were not disposed of";
    const std::string suite =
        "suite \"S\" version 1 was acquired 1 times more than it was released";
    using Texts = std::vector<std::string>;
    EXPECT_EQ(beyond_at_set_down({two, suite, "x", "y"}, {one, "x"}), (Texts{suite, "y"}))
        << "the same handles, held still, with more of their kind";
    EXPECT_EQ(beyond_at_set_down({two, suite}, {}), (Texts{two, suite}));
}

TEST(Deviations, BelongToOneEffect) {
    EXPECT_EQ(conformance::deviations_of("Lumivar Star Field").size(), 8U);
    EXPECT_TRUE(conformance::deviations_of("").empty());
    EXPECT_TRUE(conformance::deviations_of("Lumivar Star Fiel").empty());
    for (const conformance::Deviation& one : conformance::deviations_of("Lumivar Star Field")) {
        EXPECT_FALSE(one.reason.empty()) << one.name;
        EXPECT_FALSE(one.guide.empty()) << one.name;
    }
}

TEST(FailingCalls, FailOneByOneAndAllTogether) {
    const auto calls = conformance::failing_calls({{"checkout_param", 2}});
    ASSERT_EQ(calls.size(), 1U);
    const auto faults = calls[0].faults();
    ASSERT_EQ(faults.size(), 3U);
    EXPECT_EQ(faults[0].nth, 1);
    EXPECT_EQ(faults[1].nth, 2);
    EXPECT_EQ(faults[2].nth, 0);
    EXPECT_EQ(calls[0].sent(), "checkout_param fails (2 calls)");
    EXPECT_EQ(calls[0].debt(), conformance::Debt::Error);
}

TEST(FailingCalls, OfASuiteIsThatItIsMissing) {
    const conformance::FailingCall call{host::acquire_call("PF World Suite"), 4};
    EXPECT_EQ(call.faults().size(), 1U);
    EXPECT_EQ(call.slug(), "missing-PF-World-Suite");
    EXPECT_EQ(call.sent(), "PF World Suite is missing");
    EXPECT_EQ(call.debt(), conformance::Debt::ErrorOrFallback);
    EXPECT_EQ((conformance::FailingCall{"sprintf", 1}.debt()), conformance::Debt::Nothing);
}

/// A family of which only the play differs: the good run makes one call.
conformance::Report report_of_family(const std::function<void(Notes&)>& play_well, int delivered) {
    conformance::Examination run(CONFORMING_EFFECT, {});
    run.enter({"base.row", "", ""}, {}, "");
    examine_family(run, {"kind",
                         "a play",
                         "base.row",
                         {},
                         [](const conformance::FailingCall&) { return "a promise"; },
                         [&](Notes& notes) {
                             play_well(notes);
                             return conformance::GoodRun{{{"abort", 1}}, {}, true};
                         },
                         [=](const conformance::FailingCall&, const conformance::GoodRun&, Notes&) {
                             return delivered;
                         }});
    conformance::Report report = run.finish();
    report.rows.erase(report.rows.begin());
    return report;
}

TEST(FaultFamily, HasARowWithoutFaultsAndOneForEachCall) {
    const auto report = report_of_family([](Notes&) {}, 1);
    ASSERT_EQ(report.rows.size(), 2U);
    EXPECT_EQ(report.rows[0].id, "faults.kind.without-faults");
    EXPECT_EQ(report.rows[0].answer, "status 0; calls that can fail: 1");
    EXPECT_EQ(report.rows[1].id, "faults.kind.abort");
    EXPECT_TRUE(report.passed());
    EXPECT_TRUE(report.unexamined.empty());
}

TEST(FaultFamily, LeavesOutByNameWhatCouldNotFail) {
    const auto report = report_of_family([](Notes&) {}, 0);
    EXPECT_EQ(report.rows.size(), 1U);
    EXPECT_EQ(report.unexamined,
              std::vector<std::string>{
                  "faults.kind.abort: the call was made in the run without faults alone"});
}

TEST(FaultFamily, FailsForWhatGoesWrongWithoutFaults) {
    for (const bool crash : {false, true}) {
        const auto report = report_of_family(
            [=](Notes& notes) {
                notes.doing("this");
                if (crash) {
                    std::abort();
                }
                notes.find("", "found");
            },
            1);
        ASSERT_EQ(report.rows.size(), 1U);
        EXPECT_EQ(report.rows[0].answer, crash ? "killed by SIGABRT during this" : "found");
        EXPECT_FALSE(report.passed());
        EXPECT_EQ(report.unexamined,
                  std::vector<std::string>{"faults.kind: it fails without faults, see "
                                           "faults.kind.without-faults"});
    }
}

}  // namespace
